#include "AuriskSDK/Platform/BlueZ/GattTable.h"

#include "AuriskSDK/Platform/BlueZ/BlueZObjects.h"
#include "AuriskSDK/Platform/BlueZ/GattFlags.h"

namespace aurisk::bluez {

GattTable::GattTable(const std::string& root, const std::vector<GattService>& services)
{
    for (std::size_t i = 0; i < services.size(); ++i) {
        const auto service = root + "/service" + std::to_string(i);
        _objects[service][interface::service] = { { "UUID", services[i].uuid.uuidString() }, { "Primary", true } };
        for (std::size_t j = 0; j < services[i].characteristics.size(); ++j) {
            const auto& characteristic = services[i].characteristics[j];
            const auto path = service + "/characteristic" + std::to_string(j);
            _objects[path][interface::characteristic] = { { "UUID", characteristic.uuid.uuidString() },
                { "Service", ObjectPath{ service } }, { "Flags", flagsOf(characteristic.properties) } };
            _characteristics.emplace(path, characteristic);
            _paths.emplace(characteristic.uuid, path);
        }
    }
}

const GattCharacteristic* GattTable::characteristicAt(std::string_view path) const
{
    const auto found = _characteristics.find(path);
    return found == _characteristics.end() ? nullptr : &found->second;
}

const std::string* GattTable::pathOf(const CBUUID& characteristic) const
{
    const auto found = _paths.find(characteristic);
    return found == _paths.end() ? nullptr : &found->second;
}

BusDictionary propertiesOf(const CBAdvertisementData& advertisement)
{
    BusDictionary properties = { { "Type", "peripheral" }, { "Discoverable", true } };
    if (advertisement.localName)
        properties.emplace("LocalName", *advertisement.localName);
    const auto& data = advertisement.manufacturerData;
    if (data && data->size() >= 2) {
        const auto company = std::uint16_t((*data)[0] | (*data)[1] << 8);
        properties.emplace("ManufacturerData", CompanyData{ { company, Data(data->begin() + 2, data->end()) } });
    }
    return properties;
}

} // namespace aurisk::bluez
