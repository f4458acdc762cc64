#pragma once

#include "AuriskSDK/Platform/Bluetooth.h"

#include <algorithm>
#include <string>
#include <vector>

namespace aurisk::bluez {

struct GattFlag {
    const char* name;
    CBCharacteristicProperties property;
};

/// The daemon's words for the properties of a characteristic, as far as the port knows these.
inline constexpr GattFlag gattFlags[] = {
    { "read", CBCharacteristicProperties::read },
    { "write-without-response", CBCharacteristicProperties::writeWithoutResponse },
    { "write", CBCharacteristicProperties::write },
    { "notify", CBCharacteristicProperties::notify },
    { "indicate", CBCharacteristicProperties::indicate },
};

inline std::vector<std::string> flagsOf(CBCharacteristicProperties properties)
{
    std::vector<std::string> names;
    for (const auto& flag : gattFlags)
        if (contains(properties, flag.property))
            names.emplace_back(flag.name);
    return names;
}

inline CBCharacteristicProperties propertiesOf(const std::vector<std::string>& flags)
{
    auto properties = CBCharacteristicProperties::none;
    for (const auto& flag : gattFlags)
        if (std::find(flags.begin(), flags.end(), flag.name) != flags.end())
            properties = properties | flag.property;
    return properties;
}

} // namespace aurisk::bluez
