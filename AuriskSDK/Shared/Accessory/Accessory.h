#pragma once

#include "AuriskSDK/Platform/Bluetooth.h"
#include "AuriskSDK/Platform/Dispatch.h"
#include "AuriskSDK/Shared/Accessory/AccessoryService.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace aurisk {

class Accessory;
class AccessoryManager;

enum class AccessoryState : std::uint8_t {
    disconnected = 0, ///< at first; after a failed connection; after a disconnection
    disconnecting = 1, ///< `disconnect` has asked the radio to end the connection
    connecting = 2, ///< `connect` has asked the radio for a connection
    connected = 3, ///< the radio has reported the connection
};

/// Hears what becomes of one accessory. Called on the main queue; each change of state is told before its own event.
class AccessoryDelegate {
public:
    virtual ~AccessoryDelegate() = default;

    virtual void deviceDidUpdate(const std::shared_ptr<Accessory>& accessory, AccessoryState state) = 0;
    /// From here on requests can be made; those made earlier in this connection may be lost.
    virtual void deviceDidDiscoverServices(
        const std::shared_ptr<Accessory>& accessory, const std::vector<std::shared_ptr<AccessoryService>>& services)
        = 0;
    /// The link is there; its services are being discovered. There is never an error.
    virtual void deviceDidConnect(const std::shared_ptr<Accessory>& accessory, const MaybeError& error) = 0;
    /// The link is gone; no error where the application asked for it.
    virtual void deviceDidDisconnect(const std::shared_ptr<Accessory>& accessory, const MaybeError& error) = 0;
    /// No error where the time limit of the connection was reached.
    virtual void deviceDidFailToConnect(const std::shared_ptr<Accessory>& accessory, const MaybeError& error) = 0;
};

/// One device that a scan found: its connection and its services. A family derives from it and says, in `initial`,
/// which services it knows. Everything here is called, and calls back, on the main queue.
class Accessory : public CBPeripheralDelegate, public std::enable_shared_from_this<Accessory> {
protected:
    struct Key {
        explicit Key() = default;
    };

public:
    Accessory(Key, std::shared_ptr<CBPeripheral> peripheral, DataView mfgData, std::weak_ptr<AccessoryManager> manager);
    ~Accessory() override = default;

    /// A device of no particular family. A family's class has a `create` of the same shape.
    static std::shared_ptr<Accessory> create(
        std::shared_ptr<CBPeripheral> peripheral, DataView mfgData, std::weak_ptr<AccessoryManager> manager);

    /// The label that begins every log line of this accessory; "?" until `connect` sets one.
    const std::string& tag() const { return _tag; }
    virtual void setTag(std::string tag) { _tag = std::move(tag); }

    /// The manager that found it; none once that is gone.
    std::shared_ptr<AccessoryManager> manager() const { return _manager.lock(); }

    std::shared_ptr<AccessoryDelegate> delegate() const { return _delegate.lock(); }
    virtual void setDelegate(std::weak_ptr<AccessoryDelegate> delegate) { _delegate = std::move(delegate); }

    /// Hears the peripheral's callbacks that no service of this accessory consumed.
    std::shared_ptr<CBPeripheralDelegate> alphaDelegate() const { return _alphaDelegate.lock(); }
    void setAlphaDelegate(std::weak_ptr<CBPeripheralDelegate> delegate) { _alphaDelegate = std::move(delegate); }

    const std::shared_ptr<CBPeripheral>& peripheral() const { return _peripheral; }

    /// The services that the family adopted, by their UUID strings. Those of the last connection stay until a new
    /// connection replaces them.
    const std::map<std::string, std::shared_ptr<AccessoryService>>& serviceDictionary() const
    {
        return _serviceDictionary;
    }

    /// The peripheral's name, or "peripheral name not found".
    virtual std::string name() const;

    /// The name in the last advertisement; none where it had none.
    virtual const std::optional<std::string>& localName() const { return _localName; }
    virtual void setLocalName(std::optional<std::string> name) { _localName = std::move(name); }

    /// The peripheral's identifier as text: the key under which the manager knows this accessory.
    virtual std::string deviceId() const;

    /// The manufacturer data of the last advertisement, from the company identifier on.
    virtual const Data& mfgData() const { return _mfgData; }

    virtual AccessoryState state() const { return _state; }

    /// The name of its class, which says the family and the chip.
    virtual std::string_view className() const { return "Accessory"; }

    /// Class, identifier and name: `<AuriskA4Accessory 6E40… "X1-L">`.
    std::string description() const;

    /// Asks for a connection. False, and nothing happens, where the manager is gone or the radio is off (logged), or
    /// where the accessory is connecting or connected. True: what becomes of it is told to `delegate`. No tag is an
    /// empty one.
    bool connect(std::weak_ptr<AccessoryDelegate> delegate, std::optional<std::string> tag);

    /// The same with a time limit: where the accessory is not connected `duration` from now, the delegate hears
    /// `deviceDidFailToConnect` without an error. A duration of zero or less is no limit. The check looks at the state
    /// alone, deliberately: where the connection has come and gone by then, or another attempt is under way, it fails,
    /// too. The radio goes on trying after it, and may yet report the connection; `disconnectFromPerpheral` of the
    /// manager ends that.
    bool connect(std::weak_ptr<AccessoryDelegate> delegate, Seconds duration, std::optional<std::string> tag);

    /// Asks the radio to end the connection or the attempt; false where there is neither. Where the manager is gone or
    /// the radio is off, the accessory becomes disconnected at once, and the result is true deliberately: it is
    /// disconnected now.
    bool disconnect();

    /// Called by the manager when it hears the device again.
    virtual void updateManufacturerData(std::shared_ptr<CBPeripheral> peripheral, DataView mfgData);

    /// Called by the manager when the radio reports what became of the connection.
    void didConnect();
    void didFailToConnect(const MaybeError& error);
    virtual void didDisconnect(const MaybeError& error);

    void peripheralDidDiscoverServices(CBPeripheral& peripheral, const MaybeError& error) override;
    void peripheralDidDiscoverCharacteristicsFor(
        CBPeripheral& peripheral, const std::shared_ptr<CBService>& service, const MaybeError& error) override;
    void peripheralDidUpdateValueFor(CBPeripheral& peripheral, const std::shared_ptr<CBCharacteristic>& characteristic,
        const MaybeError& error) override;
    void peripheralDidWriteValueFor(CBPeripheral& peripheral, const std::shared_ptr<CBCharacteristic>& characteristic,
        const MaybeError& error) override;
    void peripheralDidUpdateNotificationStateFor(CBPeripheral& peripheral,
        const std::shared_ptr<CBCharacteristic>& characteristic, const MaybeError& error) override;

protected:
    /// The object that handles one discovered service, or none for a service that the family does not know. It, or the
    /// object, starts the discovery of the characteristics.
    virtual std::shared_ptr<AccessoryService> initial(const std::shared_ptr<CBService>& service);

    /// Stores the state and tells the delegate.
    virtual void setState(AccessoryState state);

    void log(std::string_view message) const;

private:
    std::shared_ptr<AccessoryService> serviceFor(const std::shared_ptr<CBService>& service) const;
    std::shared_ptr<AccessoryManager> availableManager() const;

    std::string _tag = "?";
    std::weak_ptr<AccessoryManager> _manager;
    std::weak_ptr<AccessoryDelegate> _delegate;
    std::shared_ptr<CBPeripheral> _peripheral;
    std::map<std::string, std::shared_ptr<AccessoryService>> _serviceDictionary;
    std::weak_ptr<CBPeripheralDelegate> _alphaDelegate;
    std::optional<std::string> _localName;
    Data _mfgData;
    AccessoryState _state = AccessoryState::disconnected;
};

} // namespace aurisk
