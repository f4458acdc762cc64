#pragma once

#include "AuriskSDK/Platform/Data.h"

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The Bluetooth port: the central role as the hearing-aid families need it, and nothing more. A backend implements
/// CBCentralManager, CBPeripheral and BluetoothPlatform; services and characteristics are plain values that it fills.
///
/// One rule about time holds everywhere: every call returns at once, and what becomes of it arrives at a delegate on
/// the main queue, never before the call has returned. All of it is called on the main queue, too.

namespace aurisk {

class CBCentralManager;
class CBPeripheral;
class CBService;

/// A Bluetooth UUID of 16 or 128 bits. The short form stands for a UUID on the Bluetooth base
/// (0000xxxx-0000-1000-8000-00805F9B34FB; Core Specification, Vol 3 Part B 2.5.1), so both forms of one compare equal.
class CBUUID {
public:
    using Bytes = std::array<std::uint8_t, 16>;

    explicit CBUUID(std::uint16_t shortForm);
    explicit constexpr CBUUID(const Bytes& bytes) ///< in the order in which the text form shows them
        : _bytes(bytes)
    {
    }

    /// Four hexadecimal digits, or 8-4-4-4-12 of them, in either case; none for any other text.
    static std::optional<CBUUID> fromString(std::string_view text);

    /// Four upper-case digits for a UUID on the Bluetooth base, upper-case 8-4-4-4-12 otherwise.
    std::string uuidString() const;

    const Bytes& bytes() const { return _bytes; }

    friend bool operator==(const CBUUID&, const CBUUID&) = default;
    friend std::strong_ordering operator<=>(const CBUUID&, const CBUUID&) = default;

private:
    Bytes _bytes;
};

/// Whether the radio can be used. The numbers are the ones that the log shows.
enum class CBManagerState : int {
    unknown = 0,
    resetting = 1,
    unsupported = 2,
    unauthorized = 3,
    poweredOff = 4,
    poweredOn = 5,
};

enum class CBPeripheralState { disconnected, connecting, connected, disconnecting };

enum class CBCharacteristicWriteType { withResponse, withoutResponse };

/// The properties of a characteristic, with the bit values of the Core Specification (Vol 3 Part G 3.3.1.1).
enum class CBCharacteristicProperties : std::uint8_t {
    none = 0x00,
    read = 0x02,
    writeWithoutResponse = 0x04,
    write = 0x08,
    notify = 0x10,
    indicate = 0x20,
};

constexpr CBCharacteristicProperties operator|(CBCharacteristicProperties a, CBCharacteristicProperties b)
{
    return CBCharacteristicProperties(std::uint8_t(a) | std::uint8_t(b));
}

/// Whether `all` contains `one`.
constexpr bool contains(CBCharacteristicProperties all, CBCharacteristicProperties one)
{
    return (std::uint8_t(all) & std::uint8_t(one)) != 0;
}

/// What the platform says went wrong.
struct BluetoothError {
    std::string domain = {}; ///< who says so: a backend's name, or the daemon's error name
    int code = 0; ///< the domain's own number
    std::string localizedDescription = {}; ///< a sentence for a person

    friend bool operator==(const BluetoothError&, const BluetoothError&) = default;
};

using MaybeError = std::optional<BluetoothError>;

/// One GATT characteristic of one connection. Made and filled by a backend; the same object for the whole connection.
class CBCharacteristic {
public:
    CBCharacteristic(CBUUID uuid, CBCharacteristicProperties properties, std::weak_ptr<CBService> service)
        : _uuid(uuid)
        , _properties(properties)
        , _service(std::move(service))
    {
    }
    virtual ~CBCharacteristic() = default;

    const CBUUID& uuid() const { return _uuid; }
    CBCharacteristicProperties properties() const { return _properties; }

    /// None once the service is gone.
    std::shared_ptr<CBService> service() const { return _service.lock(); }

    /// The value last read or notified; none before the first.
    const std::optional<Data>& value() const { return _value; }

    /// For the backend alone, just before it reports a new value.
    void setValue(std::optional<Data> value) { _value = std::move(value); }

private:
    CBUUID _uuid;
    CBCharacteristicProperties _properties;
    std::weak_ptr<CBService> _service;
    std::optional<Data> _value;
};

/// One GATT service of one connection. Made and filled by a backend.
class CBService {
public:
    CBService(CBUUID uuid, std::weak_ptr<CBPeripheral> peripheral)
        : _uuid(uuid)
        , _peripheral(std::move(peripheral))
    {
    }
    virtual ~CBService() = default;

    const CBUUID& uuid() const { return _uuid; }

    /// None once the peripheral is gone.
    std::shared_ptr<CBPeripheral> peripheral() const { return _peripheral.lock(); }

    /// Empty until `discoverCharacteristics` has been answered.
    const std::vector<std::shared_ptr<CBCharacteristic>>& characteristics() const { return _characteristics; }

    /// For the backend alone, just before it reports the discovery.
    void setCharacteristics(std::vector<std::shared_ptr<CBCharacteristic>> characteristics)
    {
        _characteristics = std::move(characteristics);
    }

private:
    CBUUID _uuid;
    std::weak_ptr<CBPeripheral> _peripheral;
    std::vector<std::shared_ptr<CBCharacteristic>> _characteristics;
};

/// Hears what becomes of the calls to one peripheral. Whoever does not need a callback leaves it alone.
class CBPeripheralDelegate {
public:
    virtual ~CBPeripheralDelegate() = default;

    /// `peripheral.services()` is complete, or `error` says why not.
    virtual void peripheralDidDiscoverServices(CBPeripheral& peripheral, const MaybeError& error);
    /// `service->characteristics()` is complete, or `error` says why not.
    virtual void peripheralDidDiscoverCharacteristicsFor(
        CBPeripheral& peripheral, const std::shared_ptr<CBService>& service, const MaybeError& error);
    /// The characteristic holds a new value: notified, or read.
    virtual void peripheralDidUpdateValueFor(
        CBPeripheral& peripheral, const std::shared_ptr<CBCharacteristic>& characteristic, const MaybeError& error);
    /// A write with response has been answered.
    virtual void peripheralDidWriteValueFor(
        CBPeripheral& peripheral, const std::shared_ptr<CBCharacteristic>& characteristic, const MaybeError& error);
    /// A subscription has been made or ended.
    virtual void peripheralDidUpdateNotificationStateFor(
        CBPeripheral& peripheral, const std::shared_ptr<CBCharacteristic>& characteristic, const MaybeError& error);
};

/// One remote device as the platform sees it. A call that needs a connection does nothing where there is none, and so
/// does one that names a service or characteristic of an earlier connection.
class CBPeripheral {
public:
    CBPeripheral() = default;
    CBPeripheral(const CBPeripheral&) = delete;
    CBPeripheral& operator=(const CBPeripheral&) = delete;
    virtual ~CBPeripheral() = default;

    /// The same for one device for as long as this process runs, and from run to run where the platform can.
    virtual const CBUUID& identifier() const = 0;

    /// The name that the device advertises or holds; none while unknown.
    virtual std::optional<std::string> name() const = 0;

    virtual CBPeripheralState state() const = 0;

    virtual void setDelegate(std::weak_ptr<CBPeripheralDelegate> delegate) = 0;

    /// What `discoverServices` found in this connection.
    virtual std::vector<std::shared_ptr<CBService>> services() const = 0;

    virtual void discoverServices() = 0;
    virtual void discoverCharacteristics(const std::shared_ptr<CBService>& service) = 0;
    virtual void setNotifyValue(bool enabled, const std::shared_ptr<CBCharacteristic>& characteristic) = 0;
    virtual void readValue(const std::shared_ptr<CBCharacteristic>& characteristic) = 0;

    /// Writes `value` whole, at most `maximumWriteValueLength(type)` bytes. Only a write with response is answered:
    /// once, and in the order of the writes to that characteristic, while the link lasts.
    virtual void writeValue(
        DataView value, const std::shared_ptr<CBCharacteristic>& characteristic, CBCharacteristicWriteType type)
        = 0;

    /// How many bytes one write can carry on this connection, 20 to 512.
    virtual std::size_t maximumWriteValueLength(CBCharacteristicWriteType type) const = 0;
};

/// What one advertisement (with its scan response) said.
struct CBAdvertisementData {
    std::optional<Data> manufacturerData = {}; ///< the company identifier's two bytes first, little-endian
    std::optional<std::string> localName = {};

    friend bool operator==(const CBAdvertisementData&, const CBAdvertisementData&) = default;
};

/// Hears what the radio finds and what becomes of connections.
class CBCentralManagerDelegate {
public:
    virtual ~CBCentralManagerDelegate() = default;

    /// Told once soon after the central was made, and at every change from then on.
    virtual void centralManagerDidUpdateState(CBCentralManager& central) = 0;
    /// One advertisement. `rssi` is in dBm; none where the platform does not know it.
    virtual void centralManagerDidDiscover(CBCentralManager& central, const std::shared_ptr<CBPeripheral>& peripheral,
        const CBAdvertisementData& advertisementData, std::optional<int> rssi)
        = 0;
    virtual void centralManagerDidConnect(CBCentralManager& central, const std::shared_ptr<CBPeripheral>& peripheral)
        = 0;
    /// The link has gone; no error where the host asked for it.
    virtual void centralManagerDidDisconnectPeripheral(
        CBCentralManager& central, const std::shared_ptr<CBPeripheral>& peripheral, const MaybeError& error)
        = 0;
    virtual void centralManagerDidFailToConnect(
        CBCentralManager& central, const std::shared_ptr<CBPeripheral>& peripheral, const MaybeError& error)
        = 0;
};

struct CBScanOptions {
    bool allowDuplicates = false; ///< report every advertisement, not just a device's first
};

/// The radio in the central role. Destroying it ends its scan and its connections, and nobody is told.
class CBCentralManager {
public:
    CBCentralManager() = default;
    CBCentralManager(const CBCentralManager&) = delete;
    CBCentralManager& operator=(const CBCentralManager&) = delete;
    virtual ~CBCentralManager() = default;

    virtual CBManagerState state() const = 0;

    /// Scans for every device, whatever its services, until `stopScan`. A scan outlasts the radio: while that is not
    /// powered on nothing is heard, and once it is again the scan goes on by itself.
    virtual void scanForPeripherals(const CBScanOptions& options) = 0;
    virtual void stopScan() = 0;

    /// Tries to connect until it succeeds, fails or is cancelled; fails where the radio is not powered on, and for a
    /// peripheral that another central found. Nothing for one that is connecting or connected; for one that is
    /// disconnecting it begins once the link has gone.
    virtual void connectPeripheral(const std::shared_ptr<CBPeripheral>& peripheral) = 0;

    /// Ends a connection, or an attempt at one; either is reported as a disconnection without error.
    virtual void cancelPeripheralConnection(const std::shared_ptr<CBPeripheral>& peripheral) = 0;
};

struct CBCentralManagerOptions {
    bool showPowerAlert = false; ///< the platform may ask the user to switch the radio on, or do it itself
};

/// Where centrals come from: what a host hands to AccessoryManager::create.
class BluetoothPlatform {
public:
    virtual ~BluetoothPlatform() = default;

    virtual std::shared_ptr<CBCentralManager> makeCentralManager(
        std::weak_ptr<CBCentralManagerDelegate> delegate, const CBCentralManagerOptions& options)
        = 0;
};

} // namespace aurisk
