#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskProfile.h"
#include "Tests/Support/Bytes.h"
#include "Tests/Support/Refusal.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace aurisk::tests {
namespace {

using nlohmann::json;
using Type = AuriskProfileType;

AuriskModeConfig modes(std::initializer_list<std::uint8_t> values)
{
    AuriskModeConfig config;
    auto next = values.begin();
    for (auto member : { &AuriskModeConfig::experience, &AuriskModeConfig::mode1, &AuriskModeConfig::mode2,
             &AuriskModeConfig::mode3, &AuriskModeConfig::mode4, &AuriskModeConfig::mode5, &AuriskModeConfig::mode6 })
        config.*member = *next++;
    return config;
}

TEST(AuriskModeConfig, SharesItsFirstByteAmongExperienceAndTwoModes)
{
    const std::pair<Data, AuriskModeConfig> cases[] = {
        { "35 1F 00"_bytes, modes({ 1, 2, 3, 0x0F, 1, 0, 0 }) },
        { "10 32 54"_bytes, AuriskModeConfig() },
        { "01 00 00"_bytes, modes({ 1, 0, 0, 0, 0, 0, 0 }) },
        { "0E 00 00"_bytes, modes({ 0, 7, 0, 0, 0, 0, 0 }) },
        { "F0 F0 0F"_bytes, modes({ 0, 0, 15, 0, 15, 15, 0 }) },
        { "00 00 A0"_bytes, modes({ 0, 0, 0, 0, 0, 0, 10 }) },
    };
    for (const auto& [bytes, config] : cases) {
        EXPECT_EQ(AuriskModeConfig(bytes), config) << testing::PrintToString(bytes);
        EXPECT_EQ(config.toBytes(), bytes);
    }
    EXPECT_EQ(AuriskModeConfig("35 1F 00 FF"_bytes), modes({ 1, 2, 3, 0x0F, 1, 0, 0 }));
}

TEST(AuriskModeConfig, HasTheDefaultsAndSaysSoWhereBytesAreMissing)
{
    for (const auto& bytes : { Data(), "35"_bytes, "35 1F"_bytes }) {
        testing::internal::CaptureStdout();
        const AuriskModeConfig config(bytes);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "AuriskModeConfig init error\n");
        EXPECT_EQ(config, modes({ 0, 0, 1, 2, 3, 4, 5 }));
    }
}

AuriskProfileReservedField everyField()
{
    AuriskProfileReservedField field;
    field.hornCode = 0x1234;
    field.microphoneCode = 0x5678;
    field.headsetCode = 0x9ABC;
    field.acCode = 7;
    field.aidChipCode = 8;
    field.hornPowerCode = 9;
    field.formula = 10;
    field.ext1 = 11;
    field.ext2 = 12;
    field.ext3 = 13;
    field.ext4 = 14;
    field.ext5 = 15;
    field.ext6 = 16;
    field.modeConfig = modes({ 1, 2, 3, 0x0F, 1, 2, 4 });
    field.ageConfig = { .age = 30, .sex = 1 };
    return field;
}

TEST(AuriskProfile, KeepsEachTextInItsOwnField)
{
    using P = AuriskProfile;
    const std::pair<Type, std::string P::*> cases[] = {
        { Type::productSeries, &P::pSeriesCode },
        { Type::productPattern, &P::patternCode },
        { Type::productHard, &P::hwVersion },
        { Type::productSoft, &P::swVersion },
        { Type::productSku, &P::skuCode },
        { Type::productSeriesCode, &P::seriesCode },
        { Type::bluetoothHardPattern, &P::bhwPattern },
        { Type::bluetoothHard, &P::bhwVersion },
        { Type::bluetoothSoft, &P::bswVersion },
        { Type::advertisementName, &P::adName },
        { Type::hearingAidChip, &P::hearingAidChipVersion },
        { Type::ota, &P::otaVersion },
    };
    for (const auto& [type, text] : cases) {
        P profile, expected;
        profile.set(type, "58 C3 A9"_bytes);
        expected.*text = "X\xC3\xA9";
        EXPECT_EQ(profile, expected) << caseName(type);
        profile.set(type, "58 C3"_bytes); // no UTF-8
        EXPECT_EQ(profile, expected) << caseName(type);
        profile.set(type, {});
        EXPECT_EQ(profile, P()) << caseName(type);
    }
    P profile;
    profile.set(Type::unknown, "58"_bytes);
    EXPECT_EQ(profile, P());
}

const std::string everyKey
    = R"({"pSeriesCode":"a","skuCode":"b","patternCode":"c","hwVersion":"d","swVersion":"e","bhwPattern":"f",)"
      R"("bhwVersion":"g","bswVersion":"h","hearingAidChipVersion":"i","otaVersion":"j","seriesCode":"k",)"
      R"("adName":"l\u0000\u00e9","reservedField":{"hornCode":4660,"microphoneCode":22136,"headsetCode":39612,)"
      R"("acCode":7,"aidChipCode":8,"hornPowerCode":9,"formula":10,"ext1":11,"ext2":12,"ext3":13,"ext4":14,)"
      R"("ext5":15,"ext6":16,"modeConfig":{"experience":1,"mode1":2,"mode2":3,"mode3":15,"mode4":1,"mode5":2,)"
      R"("mode6":4},"ageConfig":{"age":30,"sex":1}},"repository":{"skuCode":"m","patternCode":"n",)"
      R"("hornPowerCode":2,"shape":"o","minVolume":-3,"maxVolume":12,"listenable":true,"dspData":"0a0b",)"
      R"("globalData":"0c","hollingData":"","colour":["red",{"x":1.5}]}})";

TEST(AuriskProfile, IsAnObjectOfItsFieldsInJson)
{
    AuriskProfile profile;
    char letter = 'a';
    for (auto text : { &AuriskProfile::pSeriesCode, &AuriskProfile::skuCode, &AuriskProfile::patternCode,
             &AuriskProfile::hwVersion, &AuriskProfile::swVersion, &AuriskProfile::bhwPattern,
             &AuriskProfile::bhwVersion, &AuriskProfile::bswVersion, &AuriskProfile::hearingAidChipVersion,
             &AuriskProfile::otaVersion, &AuriskProfile::seriesCode, &AuriskProfile::adName })
        profile.*text = letter++;
    profile.adName += std::string("\0\xC3\xA9", 3);
    profile.reservedField = everyField();
    profile.repository = { .skuCode = "m",
        .patternCode = "n",
        .hornPowerCode = 2,
        .shape = "o",
        .minVolume = -3,
        .maxVolume = 12,
        .listenable = true,
        .dspData = "0A 0B"_bytes,
        .globalData = "0C"_bytes,
        .hollingData = {},
        .others = { { "colour", R"(["red",{"x":1.5}])" } } };
    EXPECT_EQ(AuriskProfile::fromJson(json::parse(everyKey)), profile);
    EXPECT_EQ(profile.toJson(), nlohmann::ordered_json::parse(everyKey));
    EXPECT_EQ(AuriskProfile().toJson()["reservedField"], nullptr);
}

TEST(AuriskProfile, TakesDefaultsForKeysThatAreMissingAndPassesOverOthers)
{
    EXPECT_EQ(AuriskProfile::fromJson(json::object()), AuriskProfile());
    EXPECT_EQ(AuriskProfile::fromJson(json::parse(R"({"reservedField":null,"repository":null,"colour":1})")),
        AuriskProfile());
    AuriskProfile profile;
    profile.reservedField.emplace().ageConfig.sex = 1;
    profile.repository.hornPowerCode = 3;
    EXPECT_EQ(
        AuriskProfile::fromJson(json::parse(
            R"({"reservedField":{"ageConfig":{"sex":1,"x":{}},"modeConfig":{}},"repository":{"hornPowerCode":3}})")),
        profile);
}

TEST(AuriskProfile, NamesTheKeyOfAValueThatCannotBe)
{
    const std::pair<std::string, std::string> cases[] = {
        { "[]", "a list is no object" },
        { R"({"adName":5})", "adName: 5 is no text" },
        { R"({"adName":null})", "adName: null is no text" },
        { R"({"reservedField":[1]})", "reservedField: a list is no object" },
        { R"({"reservedField":{"hornCode":65536}})", "reservedField.hornCode: 65536 is outside 0 ... 65535" },
        { R"({"reservedField":{"hornCode":-1}})", "reservedField.hornCode: -1 is outside 0 ... 65535" },
        { R"({"reservedField":{"ext6":256}})", "reservedField.ext6: 256 is outside 0 ... 255" },
        { R"({"reservedField":{"ext6":1.0}})", "reservedField.ext6: 1.0 is no integer" },
        { R"({"reservedField":{"ext6":18446744073709551615}})",
            "reservedField.ext6: 18446744073709551615 is outside 0 ... 255" },
        { R"({"reservedField":{"modeConfig":{"mode1":"2"}}})", R"(reservedField.modeConfig.mode1: "2" is no integer)" },
        { R"({"reservedField":{"ageConfig":null}})", "reservedField.ageConfig: null is no object" },
        { R"({"repository":{"hornPowerCode":300}})", "repository.hornPowerCode: 300 is outside 0 ... 255" },
        { R"({"repository":{"listenable":1}})", "repository.listenable: 1 is neither true nor false" },
        { R"({"repository":{"dspData":"0g"}})", R"(repository.dspData: "0g" is not hexadecimal)" },
        { R"({"repository":{"dspData":"0a0"}})", "repository.dspData: 3 hexadecimal digits, an even number is needed" },
        { R"({"repository":{"deep":)" + std::string(5000, '[') + std::string(5000, ']') + "}}",
            "repository.deep: nested deeper than 100 levels" },
    };
    for (const auto& [text, fault] : cases)
        EXPECT_EQ(refusalOf([&, given = json::parse(text)] { AuriskProfile::fromJson(given); }), fault);
}

} // namespace
} // namespace aurisk::tests
