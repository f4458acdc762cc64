#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskProfile.h"

#include "AuriskSDK/Shared/Utils/JsonFields.h"
#include "AuriskSDK/Shared/Utils/Utf8.h"

namespace aurisk {

namespace {

using Type = AuriskProfileType;

constexpr struct {
    Type type;
    std::string AuriskProfile::*text;
} texts[] = {
    { Type::productSeries, &AuriskProfile::pSeriesCode },
    { Type::productPattern, &AuriskProfile::patternCode },
    { Type::productHard, &AuriskProfile::hwVersion },
    { Type::productSoft, &AuriskProfile::swVersion },
    { Type::productSku, &AuriskProfile::skuCode },
    { Type::productSeriesCode, &AuriskProfile::seriesCode },
    { Type::bluetoothHardPattern, &AuriskProfile::bhwPattern },
    { Type::bluetoothHard, &AuriskProfile::bhwVersion },
    { Type::bluetoothSoft, &AuriskProfile::bswVersion },
    { Type::advertisementName, &AuriskProfile::adName },
    { Type::hearingAidChip, &AuriskProfile::hearingAidChipVersion },
    { Type::ota, &AuriskProfile::otaVersion },
};

} // namespace

std::string AuriskProfile::*AuriskProfile::textOf(AuriskProfileType type)
{
    for (const auto& row : texts)
        if (row.type == type)
            return row.text;
    return nullptr;
}

void AuriskProfile::set(AuriskProfileType type, DataView data)
{
    if (type == Type::productReserved) {
        if (const auto decoded = AuriskProfileReservedField::decode(data))
            reservedField = decoded;
    } else if (const auto text = textOf(type))
        this->*text = utf8Text(data).value_or(this->*text);
}

std::array<AuriskProgram, 4> AuriskProfile::programs() const
{
    // Only the first mode counts, for all programs, deliberately.
    if (reservedField)
        if (const auto scene = fromRawValue<AuriskProgram>(reservedField->modeConfig.mode1))
            return { *scene, *scene, *scene, *scene };
    return { AuriskProgram::normal, AuriskProgram::restaurant, AuriskProgram::outdoor, AuriskProgram::music };
}

AuriskProfile AuriskProfile::fromJson(const nlohmann::json& object) { return json::readFields<AuriskProfile>(object); }

nlohmann::ordered_json AuriskProfile::toJson() const { return json::writeFields(*this); }

} // namespace aurisk
