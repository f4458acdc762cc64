#include "AuriskSDK/HearingAid/Aurisk/AuriskA4Accessory.h"

namespace aurisk {

std::shared_ptr<AuriskA4Accessory> AuriskA4Accessory::create(
    std::shared_ptr<CBPeripheral> peripheral, DataView mfgData, std::weak_ptr<AccessoryManager> manager)
{
    return std::make_shared<AuriskA4Accessory>(Key{}, std::move(peripheral), mfgData, std::move(manager));
}

} // namespace aurisk
