#pragma once

#include "AuriskSDK/Platform/Data.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

/// What travels over the bus, as plain data.

namespace aurisk::bluez {

struct BusValue;

/// The path of an object on the bus; a type of its own there.
struct ObjectPath {
    std::string text = {};

    friend bool operator==(const ObjectPath&, const ObjectPath&) = default;
    friend auto operator<=>(const ObjectPath&, const ObjectPath&) = default;
};

using BusDictionary = std::map<std::string, BusValue, std::less<>>; ///< a{sv}
using BusInterfaces = std::map<std::string, BusDictionary, std::less<>>; ///< a{sa{sv}}: properties by interface
using BusObjects = std::map<std::string, BusInterfaces, std::less<>>; ///< a{oa{sa{sv}}}: interfaces by path
using CompanyData = std::map<std::uint16_t, Data>; ///< a{qv} with byte arrays

/// A value together with its type, where an argument is to be that; what arrives so is unwrapped.
struct BusVariant {
    explicit BusVariant(BusValue inner);
    std::shared_ptr<const BusValue> value;
};

/// One value. Whatever has a type that the Bluetooth daemon's interfaces do not use arrives as std::monostate.
struct BusValue
    : std::variant<std::monostate, bool, std::uint8_t, std::int16_t, std::uint16_t, std::int32_t, std::uint32_t,
          std::int64_t, std::uint64_t, std::string, ObjectPath, Data, std::vector<std::string>, std::vector<ObjectPath>,
          BusDictionary, CompanyData, BusInterfaces, BusObjects, BusVariant> {
    using variant::variant;
    BusValue(const char* text)
        : variant(std::string(text))
    {
    }

    template <typename T> const T* as() const { return std::get_if<T>(static_cast<const variant*>(this)); }
};

inline BusVariant::BusVariant(BusValue inner)
    : value(std::make_shared<const BusValue>(std::move(inner)))
{
}

using BusValues = std::vector<BusValue>;

/// What `dictionary` holds under `key`; null where there is nothing, or something of another type.
template <typename T> const T* find(const BusDictionary& dictionary, std::string_view key)
{
    const auto found = dictionary.find(key);
    return found == dictionary.end() ? nullptr : found->second.as<T>();
}

/// The same of a list of arguments.
template <typename T> const T* find(const BusValues& values, std::size_t place)
{
    return place < values.size() ? values[place].as<T>() : nullptr;
}

} // namespace aurisk::bluez
