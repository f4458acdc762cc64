#pragma once

#include "AuriskSDK/Platform/BlueZ/Connector.h"

#include <deque>

namespace aurisk::bluez {

class BlueZCentral;
class BlueZRadio;

/// A characteristic, and which object of the daemon's it is.
class BlueZCharacteristic final : public CBCharacteristic {
public:
    BlueZCharacteristic(
        CBUUID uuid, CBCharacteristicProperties properties, std::weak_ptr<CBService> service, std::string objectPath)
        : CBCharacteristic(uuid, properties, std::move(service))
        , path(std::move(objectPath))
    {
    }

    const std::string path; ///< empty for the battery level that the daemon keeps for itself
    bool isSubscribed = false;
};

class BlueZService final : public CBService {
public:
    BlueZService(CBUUID uuid, std::weak_ptr<CBPeripheral> peripheral, std::string objectPath)
        : CBService(uuid, std::move(peripheral))
        , path(std::move(objectPath))
    {
    }

    const std::string path; ///< empty for the battery service that the daemon keeps for itself
};

/// One device as one central sees it.
class BlueZPeripheral final : public CBPeripheral,
                              public ConnectionClient,
                              public std::enable_shared_from_this<BlueZPeripheral> {
    class Key {
        friend class BlueZPeripheral;
        Key() = default;
    };

public:
    static std::shared_ptr<BlueZPeripheral> create(std::weak_ptr<BlueZCentral> central,
        std::shared_ptr<BlueZRadio> radio, const std::string& address, std::string devicePath);
    BlueZPeripheral(Key, std::weak_ptr<BlueZCentral> central, std::shared_ptr<BlueZRadio> radio,
        const std::string& address, std::string devicePath);
    ~BlueZPeripheral() override;

    const CBUUID& identifier() const override { return _identifier; }
    std::optional<std::string> name() const override;
    CBPeripheralState state() const override { return _state; }
    void setDelegate(std::weak_ptr<CBPeripheralDelegate> delegate) override { _delegate = std::move(delegate); }
    std::vector<std::shared_ptr<CBService>> services() const override { return _services; }
    void discoverServices() override;
    void discoverCharacteristics(const std::shared_ptr<CBService>& service) override;
    void setNotifyValue(bool enabled, const std::shared_ptr<CBCharacteristic>& characteristic) override;
    void readValue(const std::shared_ptr<CBCharacteristic>& characteristic) override;
    void writeValue(DataView value, const std::shared_ptr<CBCharacteristic>& characteristic,
        CBCharacteristicWriteType type) override;
    std::size_t maximumWriteValueLength(CBCharacteristicWriteType) const override;

    std::string devicePath() const override { return _path; }
    std::string label() const override;
    void connectionIsMade() override;
    void connectionFailed(const BluetoothError& error) override;
    void connectionIsGivenUp() override;

    // What the central wants, or has heard

    void connect();
    void cancel();
    void abandon();
    void linkDidGo(const BluetoothError& error);
    void valueDidChange(const std::string& path, const Data& value);
    void batteryDidChange();
    void objectDidVanish(const std::string& path);

private:
    using Characteristic = std::shared_ptr<BlueZCharacteristic>;
    using Delegate = CBPeripheralDelegate;

    /// `work` with this peripheral in front of its arguments, while this connection lasts.
    template <typename Step> auto inThisConnection(Step work)
    {
        return [weak = weak_from_this(), connection = _connection, work](const auto&... arguments) mutable {
            if (const auto self = weak.lock(); self && self->_connection == connection)
                work(*self, arguments...);
        };
    }

    /// Nothing is told of a connection that the host has given up.
    template <typename... Declared, typename... Given>
    void tell(void (Delegate::*event)(CBPeripheral&, Declared...), const Given&... given)
    {
        const auto delegate = _delegate.lock();
        if (delegate && _state == CBPeripheralState::connected)
            (delegate.get()->*event)(*this, given...);
    }
    template <typename... Declared, typename... Given>
    void tellSoon(void (Delegate::*event)(CBPeripheral&, Declared...), const Given&... given)
    {
        DispatchQueue::main().async(
            inThisConnection([event, given...](BlueZPeripheral& self) { self.tell(event, given...); }));
    }

    void enqueue(std::function<void(BlueZPeripheral&)> operation);
    void beginNext();
    void operationDidEnd();
    void callCharacteristic(const Characteristic& characteristic, const char* member, BusValues arguments,
        std::function<void(BlueZPeripheral&, const BusReply&)> answered);

    void didAskForServices(bool mayWait);
    bool isBatteryLate() const;
    void makeServices();
    void makeCharacteristics(const std::shared_ptr<CBService>& service) const;
    void writeCommand(const Characteristic& characteristic, DataView value, const MaybeError& problem);
    bool has(const std::shared_ptr<CBService>& service) const;
    bool uses(const std::string& path) const;
    Characteristic mine(const std::shared_ptr<CBCharacteristic>& characteristic) const;
    void didRead(const Characteristic& characteristic, const BusReply& reply);
    void take(const Characteristic& characteristic, Data value);
    std::optional<Data> batteryLevel() const;
    MaybeError problemOf(CBCharacteristicProperties needed, const CBCharacteristic& characteristic) const;
    MaybeError errorOf(const char* what, const CBCharacteristic& characteristic, const BusReply& reply) const;

    void disconnect();
    void end(const MaybeError& error);
    void forgetConnection();
    void enter(CBPeripheralState state);
    BlueZObjects& objects() const;

    std::weak_ptr<BlueZCentral> _central;
    std::shared_ptr<BlueZRadio> _radio;
    CBUUID _identifier;
    std::string _path;
    std::optional<std::string> _lastName; ///< for while the daemon does not know the device
    std::weak_ptr<CBPeripheralDelegate> _delegate;
    CBPeripheralState _state = CBPeripheralState::disconnected;
    bool _connectsAgain = false; ///< asked to connect while it was still disconnecting
    int _connection = 0; ///< counts those that have ended
    std::vector<std::shared_ptr<CBService>> _services;
    std::deque<std::function<void(BlueZPeripheral&)>> _operations; ///< one at a time is under way
    bool _isOperating = false;
    bool _isOutdated = false; ///< what has been handed out is not there any more
    bool _endsOnceIdle = false; ///< the link is to end with the last operation
    Characteristic _reading; ///< what is being read
    std::vector<Data> _heardWhileReading; ///< its values meanwhile, one of which is the answer itself
};

} // namespace aurisk::bluez
