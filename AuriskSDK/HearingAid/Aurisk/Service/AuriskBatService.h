#pragma once

#include "AuriskSDK/Shared/Accessory/AccessoryService.h"

#include <memory>
#include <vector>

namespace aurisk {

/// Hears battery levels. Called on the main queue.
class AuriskBatServiceDelegate {
public:
    virtual ~AuriskBatServiceDelegate() = default;
    virtual void didUpdateBattery(int level) = 0; ///< 0 to 255, in percent by the standard
};

/// The standard Battery Service, 180F: subscribes to the Battery Level, 2A19, and reports every level that arrives.
class AuriskBatService final : public AccessoryService {
public:
    static std::shared_ptr<AuriskBatService> create(
        std::string tag, std::shared_ptr<CBPeripheral> peripheral, std::shared_ptr<CBService> service);
    using AccessoryService::AccessoryService;

    std::shared_ptr<AuriskBatServiceDelegate> delegate() const { return _delegate.lock(); }
    void setDelegate(std::weak_ptr<AuriskBatServiceDelegate> delegate) { _delegate = std::move(delegate); }

    /// The Battery Level; none until it has been discovered.
    const std::shared_ptr<CBCharacteristic>& readNotifyCharacteristic() const { return _readNotifyCharacteristic; }

    /// Subscribe, unsubscribe, and ask for the level once; nothing before the characteristic has been discovered.
    void enableNotification();
    void disableNotification();
    void read();

    void didDiscoverCharacteristics(
        const std::vector<std::shared_ptr<CBCharacteristic>>& characteristics, const MaybeError& error) override;
    void didUpdateValueForCharacteristic(const std::shared_ptr<CBCharacteristic>& characteristic,
        CBPeripheral& peripheral, const MaybeError& error) override;
    void didUpdateNotificationStateForCharacteristic(
        const std::shared_ptr<CBCharacteristic>& characteristic, const MaybeError& error) override;

private:
    void report(const CBCharacteristic& characteristic);
    void setNotification(bool enabled);

    std::shared_ptr<CBCharacteristic> _readNotifyCharacteristic;
    std::weak_ptr<AuriskBatServiceDelegate> _delegate;
};

} // namespace aurisk
