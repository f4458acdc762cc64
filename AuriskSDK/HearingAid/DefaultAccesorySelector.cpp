#include "AuriskSDK/HearingAid/Aurisk/AuriskA16Accessory.h"
#include "AuriskSDK/HearingAid/Aurisk/AuriskA4Accessory.h"
#include "AuriskSDK/HearingAid/Aurisk/AuriskH01Accessory.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskManuData.h"
#include "AuriskSDK/HearingAid/Vortilex/PL3Accessory.h"
#include "AuriskSDK/Shared/Accessory/AccessorySelectorDelegate.h"
#include "AuriskSDK/Shared/Utils/Precondition.h"

namespace aurisk {

namespace {

constexpr std::uint16_t VORTILEX_MANUFACTURER_ID = 966;

bool isAuriskDevice(DataView mfgData, const CBPeripheral& peripheral)
{
    if (mfgData.size() < 8 || mfgData[0] != 0xFE || mfgData[1] != 0xFE)
        return false;
    const auto name = peripheral.name().value_or("");
    return name.ends_with("-L") || name.ends_with("-R");
}

/// The accessory of the class that the data asks for, or none.
std::shared_ptr<Accessory> accessoryFor(
    const std::shared_ptr<CBPeripheral>& peripheral, DataView mfgData, const std::shared_ptr<AccessoryManager>& manager)
{
    precondition(mfgData.size() >= 2, "manufacturer data of {} byte(s) has no company identifier", mfgData.size());
    const unsigned company = mfgData[0] | unsigned{ mfgData[1] } << 8;
    if (company == VORTILEX_MANUFACTURER_ID)
        return PL3Accessory::create(peripheral, mfgData, manager);
    if (!isAuriskDevice(mfgData, *peripheral))
        return nullptr;

    switch (AuriskManuData(mfgData).hearChip) {
    case AuriskChip::h01: return AuriskH01Accessory::create(peripheral, mfgData, manager);
    case AuriskChip::a4: return AuriskA4Accessory::create(peripheral, mfgData, manager);
    case AuriskChip::a16: return AuriskA16Accessory::create(peripheral, mfgData, manager);
    case AuriskChip::unassigned: return AuriskAccessory::create(peripheral, mfgData, manager);
    }
    return nullptr;
}

} // namespace

std::shared_ptr<Accessory> DefaultAccesorySelector::select(
    const std::shared_ptr<CBPeripheral>& peripheral, DataView mfgData, const std::shared_ptr<AccessoryManager>& manager)
{
    return decodeFromDevice("advertisement", [&] { return accessoryFor(peripheral, mfgData, manager); });
}

} // namespace aurisk
