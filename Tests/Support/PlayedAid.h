#pragma once

#include "AuriskSDK/HearingAid/Aurisk/AuriskAccessory.h"
#include "AuriskSDK/Shared/Accessory/AccessoryManager.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// The least that a Bluetooth port can be, for whoever wants to play a device by hand, a byte at a time: nothing here
/// happens by itself, and nothing takes time.

namespace aurisk::tests {

/// A radio that is on and does nothing.
class PlayedCentral final : public CBCentralManager {
public:
    CBManagerState state() const override { return CBManagerState::poweredOn; }
    void scanForPeripherals(const CBScanOptions&) override { }
    void stopScan() override { }
    void connectPeripheral(const std::shared_ptr<CBPeripheral>&) override { }
    void cancelPeripheralConnection(const std::shared_ptr<CBPeripheral>&) override { }
};

class PlayedPlatform final : public BluetoothPlatform {
public:
    std::shared_ptr<CBCentralManager> makeCentralManager(
        std::weak_ptr<CBCentralManagerDelegate>, const CBCentralManagerOptions&) override
    {
        return central;
    }

    std::shared_ptr<PlayedCentral> central = std::make_shared<PlayedCentral>();
};

/// A hearing aid's GATT table. What is written to it goes to `onWrite`, which answers later, by `notify`.
class PlayedAid final : public CBPeripheral, public std::enable_shared_from_this<PlayedAid> {
public:
    static std::shared_ptr<PlayedAid> create(CBUUID identifier, std::string name)
    {
        using Properties = CBCharacteristicProperties;
        auto made = std::make_shared<PlayedAid>(identifier, std::move(name));
        made->writes = made->add(0xAE30, 0xAE01, Properties::writeWithoutResponse);
        made->replies = made->add(0xAE30, 0xAE02, Properties::notify);
        made->battery = made->add(0x180F, 0x2A19, Properties::read | Properties::notify);
        made->add(0xAE3A, 0xAE3B, Properties::writeWithoutResponse);
        made->updateAnswers = made->add(0xAE3A, 0xAE3C, Properties::notify);
        return made;
    }
    PlayedAid(CBUUID identifier, std::string name)
        : _identifier(identifier)
        , _name(std::move(name))
    {
    }

    std::function<void(DataView)> onWrite;
    std::shared_ptr<CBCharacteristic> writes, replies, battery, updateAnswers;

    /// The link is there: the services, their characteristics and the subscriptions are reported one after another.
    void connected()
    {
        isConnected = true;
        tell(&CBPeripheralDelegate::peripheralDidDiscoverServices);
        for (const auto& service : _services)
            tell(&CBPeripheralDelegate::peripheralDidDiscoverCharacteristicsFor, service);
        for (const auto& characteristic : { replies, battery, updateAnswers })
            subscribed(characteristic);
    }

    void subscribed(const std::shared_ptr<CBCharacteristic>& characteristic)
    {
        tell(&CBPeripheralDelegate::peripheralDidUpdateNotificationStateFor, characteristic);
    }

    void notify(const std::shared_ptr<CBCharacteristic>& characteristic, Data value)
    {
        characteristic->setValue(std::move(value));
        tell(&CBPeripheralDelegate::peripheralDidUpdateValueFor, characteristic);
    }

    bool isConnected = false;
    std::size_t longestWrite = 512;

    const CBUUID& identifier() const override { return _identifier; }
    std::optional<std::string> name() const override { return _name; }
    CBPeripheralState state() const override
    {
        return isConnected ? CBPeripheralState::connected : CBPeripheralState::disconnected;
    }
    void setDelegate(std::weak_ptr<CBPeripheralDelegate> delegate) override { _delegate = std::move(delegate); }
    std::vector<std::shared_ptr<CBService>> services() const override { return _services; }
    void discoverServices() override { }
    void discoverCharacteristics(const std::shared_ptr<CBService>&) override { }
    void setNotifyValue(bool, const std::shared_ptr<CBCharacteristic>&) override { }
    void readValue(const std::shared_ptr<CBCharacteristic>&) override { }
    void writeValue(DataView value, const std::shared_ptr<CBCharacteristic>&, CBCharacteristicWriteType) override
    {
        if (onWrite)
            onWrite(value);
    }
    std::size_t maximumWriteValueLength(CBCharacteristicWriteType) const override { return longestWrite; }

private:
    std::shared_ptr<CBCharacteristic> add(
        std::uint16_t service, std::uint16_t characteristic, CBCharacteristicProperties properties)
    {
        if (_services.empty() || _services.back()->uuid() != CBUUID(service))
            _services.push_back(std::make_shared<CBService>(CBUUID(service), weak_from_this()));
        const auto& owner = _services.back();
        auto made = std::make_shared<CBCharacteristic>(CBUUID(characteristic), properties, owner);
        auto all = owner->characteristics();
        all.push_back(made);
        owner->setCharacteristics(std::move(all));
        return made;
    }

    template <typename... Declared, typename... Given>
    void tell(void (CBPeripheralDelegate::*event)(CBPeripheral&, Declared...), const Given&... given)
    {
        if (const auto delegate = _delegate.lock())
            (delegate.get()->*event)(*this, given..., std::nullopt);
    }

    CBUUID _identifier;
    std::string _name;
    std::vector<std::shared_ptr<CBService>> _services;
    std::weak_ptr<CBPeripheralDelegate> _delegate;
};

/// A manager on a radio that is on.
struct PlayedRadio {
    PlayedRadio() { manager->centralManagerDidUpdateState(*platform->central); }

    void hear(const std::shared_ptr<PlayedAid>& peripheral, const CBAdvertisementData& advertisement)
    {
        manager->centralManagerDidDiscover(*platform->central, peripheral, advertisement, -60);
    }

    /// Makes an accessory that has been heard connect, up to where requests are answered.
    void connect(const std::shared_ptr<PlayedAid>& peripheral, Accessory& accessory,
        std::weak_ptr<AccessoryDelegate> delegate = {})
    {
        accessory.connect(std::move(delegate), std::nullopt);
        manager->centralManagerDidConnect(*platform->central, peripheral);
        peripheral->connected();
    }

    /// The link to `peripheral` goes, as if the device had walked out of range.
    void loseLink(const std::shared_ptr<PlayedAid>& peripheral)
    {
        peripheral->isConnected = false;
        const BluetoothError error{ .domain = "played", .code = 1, .localizedDescription = "The link has gone." };
        manager->centralManagerDidDisconnectPeripheral(*platform->central, peripheral, error);
    }

    std::shared_ptr<PlayedPlatform> platform = std::make_shared<PlayedPlatform>();
    std::shared_ptr<AccessoryManager> manager = AccessoryManager::create(platform);
};

} // namespace aurisk::tests
