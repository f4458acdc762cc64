#include "Tools/aurisk/CodecOperations.h"

#include "AuriskSDK/Shared/Accessory/Accessory.h"
#include "AuriskSDK/Shared/Accessory/AccessorySelectorDelegate.h"

#include <memory>

namespace aurisk::codec {

namespace {

/// A device that has been heard and no more: it has a name, or none, and is never connected.
class HeardPeripheral final : public CBPeripheral {
public:
    explicit HeardPeripheral(std::optional<std::string> name)
        : _name(std::move(name))
    {
    }

    const CBUUID& identifier() const override { return _identifier; }
    std::optional<std::string> name() const override { return _name; }
    CBPeripheralState state() const override { return CBPeripheralState::disconnected; }
    void setDelegate(std::weak_ptr<CBPeripheralDelegate>) override { }
    std::vector<std::shared_ptr<CBService>> services() const override { return {}; }
    void discoverServices() override { }
    void discoverCharacteristics(const std::shared_ptr<CBService>&) override { }
    void setNotifyValue(bool, const std::shared_ptr<CBCharacteristic>&) override { }
    void readValue(const std::shared_ptr<CBCharacteristic>&) override { }
    void writeValue(DataView, const std::shared_ptr<CBCharacteristic>&, CBCharacteristicWriteType) override { }
    std::size_t maximumWriteValueLength(CBCharacteristicWriteType) const override { return 20; }

private:
    CBUUID _identifier{ std::uint16_t{ 0 } };
    std::optional<std::string> _name;
};

} // namespace

Answer selectAccessory(const Members& line)
{
    const auto bytes = line.get<Data>("bytes");
    const auto peripheral = std::make_shared<HeardPeripheral>(line.get<std::optional<std::string>>("name"));
    const auto accessory = DefaultAccesorySelector().select(peripheral, bytes, nullptr);
    return accessory ? Answer(accessory->className()) : Answer();
}

} // namespace aurisk::codec
