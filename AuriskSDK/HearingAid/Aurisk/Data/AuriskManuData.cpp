#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskManuData.h"

#include <fmt/format.h>

#include <algorithm>

namespace aurisk {

namespace {

constexpr std::size_t addressOffset = 2, addressSize = 6, radioOffset = 8, chipOffset = 9;
constexpr std::uint8_t transparencyFlag = 0x80;

} // namespace

AuriskManuData::AuriskManuData(DataView mfgData)
{
    if (mfgData.size() > addressOffset)
        address
            = manuDataToMac(mfgData.subspan(addressOffset, std::min(addressSize, mfgData.size() - addressOffset)), ":");
    if (mfgData.size() <= chipOffset)
        return;
    hearChip = fromRawValue<AuriskChip>(mfgData[chipOffset]).value_or(AuriskChip::a4);
    bleChip = fromRawValue<AuriskBLEChip>(mfgData[radioOffset]).value_or(AuriskBLEChip::u87);
    transEnable = (mfgData[radioOffset] & transparencyFlag) != 0;
}

std::string manuDataToMac(DataView data, std::string_view separator)
{
    return fmt::format("{:02X}", fmt::join(data, separator));
}

} // namespace aurisk
