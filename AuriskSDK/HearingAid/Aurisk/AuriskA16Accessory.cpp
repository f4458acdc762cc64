#include "AuriskSDK/HearingAid/Aurisk/AuriskA16Accessory.h"

namespace aurisk {

std::shared_ptr<AuriskA16Accessory> AuriskA16Accessory::create(
    std::shared_ptr<CBPeripheral> peripheral, DataView mfgData, std::weak_ptr<AccessoryManager> manager)
{
    return std::make_shared<AuriskA16Accessory>(Key{}, std::move(peripheral), mfgData, std::move(manager));
}

} // namespace aurisk
