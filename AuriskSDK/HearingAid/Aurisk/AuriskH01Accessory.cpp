#include "AuriskSDK/HearingAid/Aurisk/AuriskH01Accessory.h"

namespace aurisk {

std::shared_ptr<AuriskH01Accessory> AuriskH01Accessory::create(
    std::shared_ptr<CBPeripheral> peripheral, DataView mfgData, std::weak_ptr<AccessoryManager> manager)
{
    return std::make_shared<AuriskH01Accessory>(Key{}, std::move(peripheral), mfgData, std::move(manager));
}

} // namespace aurisk
