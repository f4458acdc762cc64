#pragma once

#include "AuriskSDK/Platform/Bluetooth.h"
#include "AuriskSDK/Platform/Dispatch.h"
#include "AuriskSDK/Shared/Accessory/Accessory.h"
#include "AuriskSDK/Shared/Accessory/AccessorySelectorDelegate.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace aurisk {

class AccessoryManager;

/// Hears whether Bluetooth can be used. Called on the main queue.
class AccessoryManagerStatusDelegate {
public:
    virtual ~AccessoryManagerStatusDelegate() = default;

    /// At every change of the radio's state, also where `isAvailable` stays what it was.
    virtual void accessoryManagerIsAvailable(const std::shared_ptr<AccessoryManager>& manager, bool isAvailable) = 0;
};

/// Hears what a scan finds. Called on the main queue. `rssi` is in dBm, none where unknown.
class AccessoryManagerScanningDelegate {
public:
    virtual ~AccessoryManagerScanningDelegate() = default;

    /// A scan has begun or ended.
    virtual void accessoryManagerIsScanning(const std::shared_ptr<AccessoryManager>& manager, bool isScanning) = 0;

    /// An accessory that the manager did not know: its first advertisement.
    virtual void accessoryManagerDidDiscover(const std::shared_ptr<AccessoryManager>& manager,
        const std::shared_ptr<Accessory>& accessory, std::optional<int> rssi)
        = 0;

    /// A further advertisement of an accessory that the manager knows.
    virtual void accessoryManagerDidUpdate(const std::shared_ptr<AccessoryManager>& manager,
        const std::shared_ptr<Accessory>& accessory, std::optional<int> rssi)
        = 0;
};

/// The one way into Bluetooth: knows whether the radio can be used, scans, turns advertisements into accessories and
/// keeps them. The application keeps it alive for as long as it uses any accessory. Everything here is called, and
/// calls back, on the main queue.
class AccessoryManager final : public CBCentralManagerDelegate, public std::enable_shared_from_this<AccessoryManager> {
    struct Key {
        explicit Key() = default;
    };

public:
    /// A manager on the radio of `platform`. Without one there is no radio: the state stays `unknown`, and scans wait.
    static std::shared_ptr<AccessoryManager> create(std::shared_ptr<BluetoothPlatform> platform = nullptr);

    AccessoryManager(Key, std::shared_ptr<BluetoothPlatform> platform);
    ~AccessoryManager() override;

    /// True when NOTHING has been discovered. The sense is inverted deliberately: callers rely on it as it stands.
    bool hasDiscoveredAccessories() const { return _accessoryDictionary.empty(); }

    /// All accessories, in the order of their discovery.
    std::vector<std::shared_ptr<Accessory>> accessories() const;

    bool isScanning() const { return _isScanning; }

    /// Whether the radio is powered on.
    bool isAvailable() const { return _isAvailable; }

    /// The time limit of the last scan that was asked for; zero means none.
    Seconds scanningDuration() const { return _scanningDuration; }

    std::shared_ptr<AccessoryManagerStatusDelegate> statusDelegate() const { return _statusDelegate.lock(); }
    void setStatusDelegate(std::weak_ptr<AccessoryManagerStatusDelegate> delegate)
    {
        _statusDelegate = std::move(delegate);
    }

    std::shared_ptr<AccessoryManagerScanningDelegate> scanningDelegate() const { return _scanningDelegate.lock(); }
    void setScanningDelegate(std::weak_ptr<AccessoryManagerScanningDelegate> delegate)
    {
        _scanningDelegate = std::move(delegate);
    }

    /// Decides what becomes an accessory; held strongly. None of it adopts nothing.
    const std::shared_ptr<AccessorySelectorDelegate>& accessorySelectorDelegate() const { return _selector; }
    void setAccessorySelectorDelegate(std::shared_ptr<AccessorySelectorDelegate> selector)
    {
        _selector = std::move(selector);
    }

    /// The radio's state; `unknown` without a radio.
    CBManagerState blueState() const;

    /// Asks the platform to switch the radio on; nothing where it is on. The radio is asked for anew: a scan goes on,
    /// every accessory that is not disconnected is told that it is, and a known accessory can be connected once it has
    /// been heard again.
    void openBluetooth();

    /// Scans until `stopScan`, or for `duration` where that is above zero. While the radio is unavailable the scan
    /// waits for it, with the duration asked for last. During a scan this changes nothing but `scanningDuration`.
    void startScan(Seconds duration = Seconds(0));
    void stopScan();

    /// Forgets the accessories for which `where(identifier, accessory)` holds. They are not disconnected.
    void clearAccessories(const std::function<bool(const std::string&, const std::shared_ptr<Accessory>&)>& where);

    /// Asks the radio for a connection; `Accessory::connect` is the way for applications.
    void connectToPeripheral(const std::shared_ptr<CBPeripheral>& peripheral);

    /// Asks the radio to end a connection or an attempt at one; `Accessory::disconnect` is the way for applications.
    /// (The spelling is part of the interface.)
    void disconnectFromPerpheral(const std::shared_ptr<CBPeripheral>& peripheral);

    void centralManagerDidUpdateState(CBCentralManager& central) override;
    void centralManagerDidDiscover(CBCentralManager& central, const std::shared_ptr<CBPeripheral>& peripheral,
        const CBAdvertisementData& advertisementData, std::optional<int> rssi) override;
    void centralManagerDidConnect(CBCentralManager& central, const std::shared_ptr<CBPeripheral>& peripheral) override;
    void centralManagerDidDisconnectPeripheral(
        CBCentralManager& central, const std::shared_ptr<CBPeripheral>& peripheral, const MaybeError& error) override;
    void centralManagerDidFailToConnect(
        CBCentralManager& central, const std::shared_ptr<CBPeripheral>& peripheral, const MaybeError& error) override;

private:
    void makeCentralManager(const CBCentralManagerOptions& options);
    bool isCurrent(const CBCentralManager& central) const;
    std::shared_ptr<Accessory> accessoryFor(const CBCentralManager& central, const CBPeripheral& peripheral) const;
    void tellIsScanning();

    std::shared_ptr<BluetoothPlatform> _platform;
    std::shared_ptr<CBCentralManager> _centralManager;
    using Entry = std::pair<std::string, std::shared_ptr<Accessory>>;
    std::unordered_map<std::string, std::shared_ptr<Accessory>> _accessoryDictionary; ///< by peripheral identifier
    std::vector<Entry> _inOrder; ///< the same entries, as they were discovered
    std::shared_ptr<DispatchTimer> _timer;
    bool _waitingToScan = false;
    bool _isScanning = false;
    bool _isAvailable = false;
    Seconds _scanningDuration{ 0 };
    std::weak_ptr<AccessoryManagerStatusDelegate> _statusDelegate;
    std::weak_ptr<AccessoryManagerScanningDelegate> _scanningDelegate;
    std::shared_ptr<AccessorySelectorDelegate> _selector = std::make_shared<DefaultAccesorySelector>();
};

} // namespace aurisk
