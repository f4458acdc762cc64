#pragma once

#include "AuriskSDK/Platform/Bluetooth.h"

#include <memory>
#include <utility>

namespace aurisk::tests {

/// Stands in the place of a peripheral's delegate and passes everything on. Who derives from it looks at what it likes.
class ForwardingDelegate : public CBPeripheralDelegate {
public:
    explicit ForwardingDelegate(std::shared_ptr<CBPeripheralDelegate> next = {})
        : _next(std::move(next))
    {
    }
    void setNext(std::shared_ptr<CBPeripheralDelegate> next) { _next = std::move(next); }

    void peripheralDidDiscoverServices(CBPeripheral& peripheral, const MaybeError& error) override
    {
        _next->peripheralDidDiscoverServices(peripheral, error);
    }
    void peripheralDidDiscoverCharacteristicsFor(
        CBPeripheral& peripheral, const std::shared_ptr<CBService>& service, const MaybeError& error) override
    {
        _next->peripheralDidDiscoverCharacteristicsFor(peripheral, service, error);
    }
    void peripheralDidUpdateValueFor(CBPeripheral& peripheral, const std::shared_ptr<CBCharacteristic>& characteristic,
        const MaybeError& error) override
    {
        _next->peripheralDidUpdateValueFor(peripheral, characteristic, error);
    }
    void peripheralDidWriteValueFor(CBPeripheral& peripheral, const std::shared_ptr<CBCharacteristic>& characteristic,
        const MaybeError& error) override
    {
        _next->peripheralDidWriteValueFor(peripheral, characteristic, error);
    }
    void peripheralDidUpdateNotificationStateFor(CBPeripheral& peripheral,
        const std::shared_ptr<CBCharacteristic>& characteristic, const MaybeError& error) override
    {
        _next->peripheralDidUpdateNotificationStateFor(peripheral, characteristic, error);
    }

private:
    std::shared_ptr<CBPeripheralDelegate> _next;
};

} // namespace aurisk::tests
