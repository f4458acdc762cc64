#pragma once

#include "AuriskSDK/Shared/Accessory/Accessory.h"

#include <functional>
#include <memory>

namespace aurisk::tool {

/// Stands between a peripheral and its accessory: everything is passed on, and some of it is heard on the way. Put in
/// place once the accessory is connected; a further connection leaves it out.
class PeripheralTap final : public CBPeripheralDelegate {
public:
    explicit PeripheralTap(std::weak_ptr<Accessory> accessory)
        : _accessory(std::move(accessory))
    {
    }

    /// Called after the accessory has heard the same.
    std::function<void(const CBService&)> onCharacteristics;

    /// Called before the accessory hears the same.
    std::function<void(const CBCharacteristic&)> onValue;

    void peripheralDidDiscoverServices(CBPeripheral& peripheral, const MaybeError& error) override
    {
        if (const auto accessory = _accessory.lock())
            accessory->peripheralDidDiscoverServices(peripheral, error);
    }
    void peripheralDidDiscoverCharacteristicsFor(
        CBPeripheral& peripheral, const std::shared_ptr<CBService>& service, const MaybeError& error) override
    {
        if (const auto accessory = _accessory.lock())
            accessory->peripheralDidDiscoverCharacteristicsFor(peripheral, service, error);
        if (onCharacteristics && service)
            onCharacteristics(*service);
    }
    void peripheralDidUpdateValueFor(CBPeripheral& peripheral, const std::shared_ptr<CBCharacteristic>& characteristic,
        const MaybeError& error) override
    {
        if (onValue)
            onValue(*characteristic);
        if (const auto accessory = _accessory.lock())
            accessory->peripheralDidUpdateValueFor(peripheral, characteristic, error);
    }
    void peripheralDidWriteValueFor(CBPeripheral& peripheral, const std::shared_ptr<CBCharacteristic>& characteristic,
        const MaybeError& error) override
    {
        if (const auto accessory = _accessory.lock())
            accessory->peripheralDidWriteValueFor(peripheral, characteristic, error);
    }
    void peripheralDidUpdateNotificationStateFor(CBPeripheral& peripheral,
        const std::shared_ptr<CBCharacteristic>& characteristic, const MaybeError& error) override
    {
        if (const auto accessory = _accessory.lock())
            accessory->peripheralDidUpdateNotificationStateFor(peripheral, characteristic, error);
    }

private:
    std::weak_ptr<Accessory> _accessory;
};

} // namespace aurisk::tool
