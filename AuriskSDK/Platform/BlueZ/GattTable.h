#pragma once

#include "AuriskSDK/Platform/BlueZ/BusValue.h"
#include "AuriskSDK/Platform/BlueZ/GattServer.h"

#include <map>
#include <string>
#include <string_view>

namespace aurisk::bluez {

/// A table of services as objects on the bus, which is how the daemon wants to be told of it.
///
///     /root/service0/characteristic0
class GattTable {
public:
    GattTable(const std::string& root, const std::vector<GattService>& services);

    const BusObjects& objects() const { return _objects; }

    /// Null where there is none.
    const GattCharacteristic* characteristicAt(std::string_view path) const;
    const std::string* pathOf(const CBUUID& characteristic) const;

private:
    BusObjects _objects;
    std::map<std::string, GattCharacteristic, std::less<>> _characteristics; ///< by path
    std::map<CBUUID, std::string> _paths;
};

/// The properties of an advertisement on the bus. Manufacturer data too short to name a company is left out.
BusDictionary propertiesOf(const CBAdvertisementData& advertisement);

} // namespace aurisk::bluez
