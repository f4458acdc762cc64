#include "Tests/Tool/CodecLines.h"

namespace aurisk::tests {
namespace {

TEST(CodecReserved, IsTwentyBytesOrNothing)
{
    expectAnswers({
        { R"({"op":"reserved.decode","bytes":"34127856bc9a0708090a0b0c0d0e0f10351f429e"})",
            R"({"ok":{"hornCode":4660,"microphoneCode":22136,"headsetCode":39612,"acCode":7,"aidChipCode":8,)"
            R"("hornPowerCode":9,"formula":10,"ext1":11,"ext2":12,"ext3":13,"ext4":14,"ext5":15,"ext6":16,)"
            R"("modeConfig":{"experience":1,"mode1":2,"mode2":3,"mode3":15,"mode4":1,"mode5":2,"mode6":4},)"
            R"("ageConfig":{"age":30,"sex":1}}})" },
        { R"({"op":"reserved.decode","bytes":"34127856bc9a0708090a0b0c0d0e0f10351f42"})", R"({"ok":null})" },
        { R"({"op":"reserved.encode","fields":{}})", R"({"ok":"0000000000000000000000000000000010325400"})" },
        { R"({"op":"reserved.encode","fields":{"ext6":255,"headsetCode":65535,"ageConfig":{"sex":1}}})",
            R"({"ok":"00000000ffff000000000000000000ff10325480"})" },
        // Numbers beyond a field's bits, within its type.
        { R"({"op":"reserved.encode","fields":{"modeConfig":{"experience":254,"mode1":15,"mode2":240},)"
          R"("ageConfig":{"age":255,"sex":2}}})",
            R"({"ok":"000000000000000000000000000000000e32547f"})" },
    });
    expectErrors({
        { R"({"op":"reserved.encode","fields":{"ext6":300}})", { "\"fields.ext6\"", "300" } },
        { R"({"op":"reserved.encode","fields":{"hornCode":-1}})", { "\"fields.hornCode\"", "-1" } },
        { R"({"op":"reserved.encode","fields":{"modeConfig":{"mode1":256}}})", { "\"fields.modeConfig.mode1\"" } },
        { R"({"op":"reserved.encode","fields":{"modeConfig":{"mode7":1}}})", { "\"fields.modeConfig\"", "mode7" } },
        { R"({"op":"reserved.encode","fields":{"ageConfig":null}})", { "\"fields.ageConfig\"", "null" } },
        { R"({"op":"reserved.encode","fields":{"age":30}})", { "\"fields\"", "\"age\"" } },
        { R"({"op":"reserved.encode","fields":{"formula":1.0}})", { "\"fields.formula\"", "1.0" } },
        { R"({"op":"reserved.encode","fields":[]})", { "\"fields\"", "list" } },
        { R"({"op":"reserved.encode"})", { "\"fields\"", "missing" } },
    });
}

/// A profile with nothing in it but a series code, a reserved field and the repository's further members.
std::string profile(std::string_view series, std::string_view reserved, std::string_view more = "")
{
    return R"({"pSeriesCode":")" + std::string(series)
        + R"(","skuCode":"","patternCode":"","hwVersion":"","swVersion":"","bhwPattern":"","bhwVersion":"",)"
          R"("bswVersion":"","hearingAidChipVersion":"","otaVersion":"","seriesCode":"","adName":"","reservedField":)"
        + std::string(reserved)
        + R"(,"repository":{"skuCode":"","patternCode":"","hornPowerCode":null,"shape":"","minVolume":0,)"
          R"("maxVolume":0,"listenable":false,"dspData":"","globalData":"","hollingData":"")"
        + std::string(more) + "}}";
}

std::string apply(const std::string& to, std::string_view type, std::string_view data)
{
    return codec::answer(R"({"op":"profile.apply","profile":)" + to + R"(,"type":")" + std::string(type)
        + R"(","data":")" + std::string(data) + "\"}");
}

TEST(CodecProfile, TakesFieldsOverOneAfterAnother)
{
    const auto ok = [](const std::string& value) { return R"({"ok":)" + value + "}"; };
    const std::string zeros
        = R"({"hornCode":0,"microphoneCode":0,"headsetCode":0,"acCode":0,"aidChipCode":0,"hornPowerCode":0,)"
          R"("formula":0,"ext1":0,"ext2":0,"ext3":0,"ext4":0,"ext5":0,"ext6":0,"modeConfig":{"experience":0,"mode1":0,)"
          R"("mode2":0,"mode3":0,"mode4":0,"mode5":0,"mode6":0},"ageConfig":{"age":0,"sex":0}})";
    EXPECT_EQ(apply("null", "productSeries", "5831"), ok(profile("X1", "null")));
    EXPECT_EQ(apply("{}", "productSeries", "58ff"), ok(profile("", "null")));
    EXPECT_EQ(apply(profile("X1", "null"), "unknown", "5832"), ok(profile("X1", "null")));
    EXPECT_EQ(apply(profile("X1", "null"), "productReserved", std::string(40, '0')), ok(profile("X1", zeros)));
    EXPECT_EQ(apply(profile("X1", zeros), "productReserved", std::string(38, 'f')), ok(profile("X1", zeros)));
    const auto more = R"(,"colour":["red",{"x":1.5}])";
    EXPECT_EQ(apply(profile("X1", zeros, more), "productSeries", ""), ok(profile("", zeros, more)));
}

TEST(CodecProfile, ListsTheScenesOfItsPrograms)
{
    expectAnswers({
        { R"({"op":"profile.programs","profile":{}})", R"({"ok":["normal","restaurant","outdoor","music"]})" },
        { R"({"op":"profile.programs","profile":{"reservedField":{"modeConfig":{"mode1":1}}}})",
            R"({"ok":["restaurant","restaurant","restaurant","restaurant"]})" },
        { R"({"op":"profile.programs","profile":{"reservedField":{"modeConfig":{"mode1":3}}}})",
            R"({"ok":["music","music","music","music"]})" },
        { R"({"op":"profile.programs","profile":{"reservedField":{"modeConfig":{"mode1":4}}}})",
            R"({"ok":["normal","restaurant","outdoor","music"]})" },
        { R"({"op":"profile.programs","profile":{"reservedField":{"modeConfig":{"mode1":7}}}})",
            R"({"ok":["normal","restaurant","outdoor","music"]})" },
    });
}

TEST(CodecProfile, IsUnusableWithAValueThatCannotBe)
{
    expectErrors({
        { R"({"op":"profile.apply","profile":{"reservedField":{"modeConfig":{"mode1":256}}},"type":"ota","data":""})",
            { "\"profile.reservedField.modeConfig.mode1\"", "256" } },
        { R"({"op":"profile.apply","profile":{"adName":1},"type":"ota","data":""})", { "\"profile.adName\"", "1" } },
        { R"({"op":"profile.apply","profile":null,"type":"name","data":""})", { "\"type\"", "\"name\"" } },
        { R"({"op":"profile.apply","type":"ota","data":""})", { "\"profile\"", "missing" } },
        { R"({"op":"profile.programs","profile":"X1"})", { "\"profile\"", "\"X1\"", "no object" } },
        { R"({"op":"profile.programs","profile":{"repository":{"x":)" + std::string(90000, '[')
                + std::string(90000, ']') + "}}}",
            { "\"profile.repository.x\"", "deeper" } },
    });
}

} // namespace
} // namespace aurisk::tests
