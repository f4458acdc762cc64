#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskProfileReservedField.h"

#include "AuriskSDK/Shared/Utils/AuriskLog.h"
#include "AuriskSDK/Shared/Utils/BitCodec.h"
#include "AuriskSDK/Shared/Utils/JsonFields.h"

namespace aurisk {

AuriskModeConfig::AuriskModeConfig(DataView bytes)
{
    if (const auto decoded = bits::decodedIfAny<AuriskModeConfig>(bytes))
        *this = *decoded;
    else
        printLine("AuriskModeConfig init error");
}

Data AuriskModeConfig::toBytes() const { return bits::encode(bits::lowBits(*this)); }

AuriskModeConfig AuriskModeConfig::fromJson(const nlohmann::json& object)
{
    return json::readFields<AuriskModeConfig>(object);
}

nlohmann::ordered_json AuriskModeConfig::toJson() const { return json::writeFields(*this); }

AuriskAgeConfig AuriskAgeConfig::fromJson(const nlohmann::json& object)
{
    return json::readFields<AuriskAgeConfig>(object);
}

nlohmann::ordered_json AuriskAgeConfig::toJson() const { return json::writeFields(*this); }

std::optional<AuriskProfileReservedField> AuriskProfileReservedField::decode(DataView data)
{
    return bits::decodedIfAny<AuriskProfileReservedField>(data);
}

void AuriskProfileReservedField::setData(DataView data) { *this = decode(data).value_or(*this); }

Data AuriskProfileReservedField::toData() const { return bits::encode(bits::lowBits(*this)); }

AuriskProfileReservedField AuriskProfileReservedField::fromJson(const nlohmann::json& object)
{
    return json::readFields<AuriskProfileReservedField>(object);
}

nlohmann::ordered_json AuriskProfileReservedField::toJson() const { return json::writeFields(*this); }

} // namespace aurisk
