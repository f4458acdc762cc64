#include "AuriskSDK/HearingAid/Aurisk/Service/AuriskBatService.h"

namespace aurisk {

std::shared_ptr<AuriskBatService> AuriskBatService::create(
    std::string tag, std::shared_ptr<CBPeripheral> peripheral, std::shared_ptr<CBService> service)
{
    return std::make_shared<AuriskBatService>(Key{}, std::move(tag), std::move(peripheral), std::move(service));
}

void AuriskBatService::setNotification(bool enabled)
{
    if (_readNotifyCharacteristic)
        peripheral()->setNotifyValue(enabled, _readNotifyCharacteristic);
}

void AuriskBatService::enableNotification() { setNotification(true); }

void AuriskBatService::disableNotification() { setNotification(false); }

void AuriskBatService::read()
{
    if (_readNotifyCharacteristic)
        peripheral()->readValue(_readNotifyCharacteristic);
}

void AuriskBatService::didDiscoverCharacteristics(
    const std::vector<std::shared_ptr<CBCharacteristic>>& characteristics, const MaybeError&)
{
    static const CBUUID batteryLevel(0x2A19);
    for (const auto& characteristic : characteristics)
        if (characteristic->uuid() == batteryLevel) {
            _readNotifyCharacteristic = characteristic;
            enableNotification();
        }
}

void AuriskBatService::didUpdateValueForCharacteristic(
    const std::shared_ptr<CBCharacteristic>& characteristic, CBPeripheral&, const MaybeError&)
{
    report(*characteristic);
}

/// A subscription whose characteristic already holds a value reports that value.
void AuriskBatService::didUpdateNotificationStateForCharacteristic(
    const std::shared_ptr<CBCharacteristic>& characteristic, const MaybeError&)
{
    report(*characteristic);
}

/// Whatever characteristic of this service it is: the first byte is the level.
void AuriskBatService::report(const CBCharacteristic& characteristic)
{
    if (!characteristic.value() || characteristic.value()->empty())
        return;
    if (const auto delegate = _delegate.lock())
        delegate->didUpdateBattery(characteristic.value()->front());
}

} // namespace aurisk
