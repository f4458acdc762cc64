#pragma once

#include "AuriskSDK/Platform/BlueZ/BlueZPeripheral.h"

#include <map>
#include <set>

namespace aurisk::bluez {

class BlueZRadio;

/// One central on the daemon's radio.
class BlueZCentral final : public CBCentralManager, public std::enable_shared_from_this<BlueZCentral> {
    class Key {
        friend class BlueZCentral;
        Key() = default;
    };

public:
    static std::shared_ptr<BlueZCentral> create(
        std::shared_ptr<BlueZRadio> radio, std::weak_ptr<CBCentralManagerDelegate> delegate);
    BlueZCentral(Key, std::shared_ptr<BlueZRadio> radio, std::weak_ptr<CBCentralManagerDelegate> delegate);
    ~BlueZCentral() override;

    CBManagerState state() const override { return _state; }
    void scanForPeripherals(const CBScanOptions& options) override;
    void stopScan() override;
    void connectPeripheral(const std::shared_ptr<CBPeripheral>& peripheral) override;
    void cancelPeripheralConnection(const std::shared_ptr<CBPeripheral>& peripheral) override;

    // What the radio tells

    bool isScanning() const { return _isScanning; }
    /// `lost`: what that makes of connections, unless it is powered on.
    void radioIs(CBManagerState state, const BluetoothError& lost);
    void didHear(const std::string& devicePath);
    /// Somebody may have connected to the device. Where that is not this central it is found so, for it is silent now.
    void didConnect(const std::string& devicePath);
    /// The device is not connected any more, or not even known.
    void linkDidGo(const std::string& devicePath);
    void valueDidChange(const std::string& devicePath, const std::string& path, const Data& value);
    void batteryDidChange(const std::string& devicePath);
    /// A service or characteristic of the device's.
    void objectDidVanish(const std::string& devicePath, const std::string& path);

    // What its peripherals need

    BlueZRadio& radio() const { return *_radio; }

    template <typename... Declared, typename... Given>
    void tell(void (CBCentralManagerDelegate::*event)(CBCentralManager&, Declared...), const Given&... given)
    {
        if (const auto delegate = _delegate.lock())
            (delegate.get()->*event)(*this, given...);
    }

private:
    void reportConnected();
    void report(const std::string& devicePath, std::optional<int> rssi);
    std::shared_ptr<BlueZPeripheral> peripheralAt(const std::string& devicePath);
    std::shared_ptr<BlueZPeripheral> knownAt(const std::string& devicePath) const;
    std::shared_ptr<BlueZPeripheral> mine(const std::shared_ptr<CBPeripheral>& peripheral) const;

    std::shared_ptr<BlueZRadio> _radio;
    std::weak_ptr<CBCentralManagerDelegate> _delegate;
    CBManagerState _state = CBManagerState::unknown; ///< what the delegate has been told
    bool _isScanning = false;
    bool _allowDuplicates = false;
    std::set<std::string> _reported; ///< in this scan, of the devices that the daemon knows
    std::map<std::string, std::weak_ptr<BlueZPeripheral>> _peripherals; ///< by the device's path
};

} // namespace aurisk::bluez
