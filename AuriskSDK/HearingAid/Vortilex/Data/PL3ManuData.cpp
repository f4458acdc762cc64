#include "AuriskSDK/HearingAid/Vortilex/Data/PL3ManuData.h"

#include "AuriskSDK/Shared/Utils/Precondition.h"

namespace aurisk {

namespace {

constexpr std::size_t orientationOffset = 2, manufacturerOffset = 3, modelOffset = 5, size = 7;

std::uint16_t wordAt(DataView data, std::size_t offset)
{
    return static_cast<std::uint16_t>(data[offset] | data[offset + 1] << 8);
}

} // namespace

PL3ManuData::PL3ManuData(DataView mfgData)
{
    precondition(mfgData.size() >= size, "the manufacturer data of a PL3 device has at least {} bytes, not {}", size,
        mfgData.size());
    orientation
        = fromRawValue<AccessoryOrientation>(mfgData[orientationOffset]).value_or(AccessoryOrientation::unassigned);
    manufacturerId = wordAt(mfgData, manufacturerOffset);
    modelName = std::to_string(wordAt(mfgData, modelOffset));
}

} // namespace aurisk
