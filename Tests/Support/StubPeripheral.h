#pragma once

#include "AuriskSDK/Platform/Bluetooth.h"
#include "AuriskSDK/Shared/Utils/HexToData.h"

#include <string>
#include <vector>

namespace aurisk::tests {

/// A device that answers nothing by itself: it writes down what is asked of it.
class StubPeripheral final : public CBPeripheral {
public:
    explicit StubPeripheral(std::uint8_t number = 1, std::optional<std::string> itsName = "X1-L")
        : id(CBUUID::Bytes{ 1, 2, 3, 4, number })
        , named(std::move(itsName))
    {
    }

    const CBUUID& identifier() const override { return id; }
    std::optional<std::string> name() const override { return named; }
    CBPeripheralState state() const override { return itsState; }
    void setDelegate(std::weak_ptr<CBPeripheralDelegate>) override { }
    std::vector<std::shared_ptr<CBService>> services() const override { return itsServices; }
    void discoverServices() override { asked.push_back("services"); }
    void discoverCharacteristics(const std::shared_ptr<CBService>& service) override
    {
        asked.push_back("characteristics " + service->uuid().uuidString());
    }
    void setNotifyValue(bool enabled, const std::shared_ptr<CBCharacteristic>& characteristic) override
    {
        asked.push_back((enabled ? "subscribe " : "unsubscribe ") + characteristic->uuid().uuidString());
    }
    void readValue(const std::shared_ptr<CBCharacteristic>& characteristic) override
    {
        asked.push_back("read " + characteristic->uuid().uuidString());
    }
    void writeValue(DataView value, const std::shared_ptr<CBCharacteristic>& characteristic,
        CBCharacteristicWriteType type) override
    {
        const auto how = type == CBCharacteristicWriteType::withResponse ? "" : " without response";
        asked.push_back("write " + characteristic->uuid().uuidString() + " " + ask_hexadecimal(value) + how);
    }
    std::size_t maximumWriteValueLength(CBCharacteristicWriteType) const override { return longestWrite; }

    std::vector<std::string> take() { return std::exchange(asked, {}); }

    CBUUID id;
    std::optional<std::string> named;
    CBPeripheralState itsState = CBPeripheralState::connected;
    std::vector<std::shared_ptr<CBService>> itsServices;
    std::size_t longestWrite = 20;
    std::vector<std::string> asked;
};

} // namespace aurisk::tests
