#include "Tests/Tool/CodecLines.h"

#include <nlohmann/json.hpp>

namespace aurisk::tests {
namespace {

using nlohmann::json;

json okOf(const std::string& line)
{
    const auto answer = json::parse(codec::answer(line));
    EXPECT_TRUE(answer.contains("ok")) << line << "\n" << answer;
    return answer.value("ok", json());
}

TEST(CodecDsp, EncodesDefaultsAndWhatIsGiven)
{
    expectAnswers({
        { R"({"op":"a4.encode","fields":{}})", R"({"ok":"0100ffffffffffff00000000"})" },
        { R"({"op":"a4.encode","fields":{"inputMode":0,"notCare":31,"equalizerArray":[0,1,2,3,4,5,6,7,8,9,10,11]}})",
            R"({"ok":"00001032547698ba000000f8"})" },
        { R"({"op":"a16global.encode","fields":{"autoSave":1,"empty":16383}})",
            R"({"ok":"00000000000000800000fcff"})" },
        { R"({"op":"a4global.encode","fields":{"programNbr":2,"nc3":15}})", R"({"ok":"0000800000000000f0"})" },
    });
    EXPECT_EQ(okOf(R"({"op":"a16.encode","fields":{}})"),
        // 20 in each five bits: six and two of nothing, six and two of nothing, four
        "0000000094524a2994524a2994520a"
            + std::string(40, '0')
            // 10 in each five bits: one and three of nothing, six and two, six and two, three; then 1 in each four
            + "0a4a29a5144a29a5144aa988081111111111110000");
}

TEST(CodecDsp, StopsForNumbersThatDoNotFitAndRefusesWhatIsNone)
{
    expectStops({
        { R"({"op":"a4.encode","fields":{"notCare":32}})", "notCare" },
        { R"({"op":"a4.encode","fields":{"matrixGainMantissa":-1}})", "matrixGainMantissa" },
        { R"({"op":"a4.encode","fields":{"equalizerArray":[1,2,3]}})", "equalizerArray" },
        { R"({"op":"a16.encode","fields":{"em9":2}})", "em9: 2" },
        { R"({"op":"a4global.encode","fields":{"nc3":16}})", "nc3: 16" },
        { R"({"op":"a16global.encode","fields":{"empty":16384}})", "empty: 16384" },
        { R"({"op":"a16global.encode","fields":{"swMode":4}})", "swMode" },
        { R"({"op":"a4.decode","bytes":"0100ffffffffffff000000"})", "12" },
        { R"({"op":"a16.decode","bytes":")" + std::string(110, '0') + R"("})", "56" },
        { R"({"op":"a16.decode","bytes":")" + std::string(108, '0') + R"(0400"})", "mpoAttackTime" },
        { R"({"op":"a4global.decode","bytes":"0102030405060708"})", "9" },
        { R"({"op":"log.frames","type":"feedback"})", "feedback" },
    });
    expectErrors({
        { R"({"op":"a4.encode","fields":{"inputMode":7}})", { "fields.inputMode", "7" } },
        { R"({"op":"a4.encode","fields":{"inputMode":-1}})", { "fields.inputMode", "-1" } },
        { R"({"op":"a4.encode","fields":{"em0":1}})", { "em0" } },
        { R"({"op":"a4.encode","fields":{"frequalizerArray":[]}})", { "frequalizerArray" } },
        { R"({"op":"a4.encode","fields":{"notCare":2147483648}})", { "2147483648" } },
        { R"({"op":"a4.encode","fields":{"notCare":1.0}})", { "1.0" } },
        { R"({"op":"a4.encode","fields":{"inputMode":"ai0TC"}})", { "ai0TC" } },
        { R"({"op":"a16.encode","fields":{"equalizerArray":[21]}})", { "equalizerArray", "21" } },
        { R"({"op":"a16.encode","fields":{"equalizerArray":20}})", { "equalizerArray", "20" } },
        { R"({"op":"a16.encode","fields":[]})", { "fields", "list" } },
        { R"({"op":"a16.encode"})", { "fields", "missing" } },
        // Unusable, whatever else it breaks.
        { R"({"op":"a16.encode","fields":{"em9":2,"em8":"x"}})", { "em8" } },
    });
}

TEST(CodecDsp, TellsFieldsAndWhatFollowsFromThem)
{
    const auto a4 = okOf(R"({"op":"a4.decode","bytes":"710094ffffffffff0700002a"})");
    EXPECT_EQ(a4["fields"].size(), 18U);
    EXPECT_EQ(a4["fields"]["equalizerArray"], json({ 4, 9, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15 }));
    EXPECT_EQ(a4["fields"]["compressionRatio1"], 0); // 7 names no case
    EXPECT_EQ(a4["fields"]["notCare"], 5);
    EXPECT_EQ(a4["direction"], "tv");
    EXPECT_EQ(a4["noise"], "weak");
    EXPECT_EQ(a4["matrixGain"], 42);
    EXPECT_EQ(a4["matrixGainDisplayValue"], "-42 dB");
    EXPECT_EQ(a4["minEQValue"], 0);
    EXPECT_EQ(a4["maxEQValue"], 16);
    EXPECT_EQ(a4["frequences"].back(), 7000);
    EXPECT_THAT(a4["description"].get<std::string>(), testing::StartsWith("AuriskA4Dsp:\n- Input Mode: AI1 (Mic1)\n"));

    const auto a16 = okOf(R"({"op":"a16.decode","bytes":")" + std::string(112, '0') + R"("})");
    EXPECT_EQ(a16["fields"].size(), 30U);
    EXPECT_EQ(a16["fields"]["compressionThresholdArray"], json(std::vector<int>(16, 0)));
    EXPECT_EQ(a16["direction"], "normal");
    EXPECT_EQ(a16["maxEQValue"], 21);
    EXPECT_EQ(okOf(R"({"op":"a4global.decode","bytes":"ffffffffffffffffff"})").size(), 33U);
    EXPECT_EQ(okOf(R"({"op":"a16global.decode","bytes":"000000a00000008000000000"})")["numberOfPrograms"], 5);
    EXPECT_EQ(okOf(R"({"op":"a16global.decode","bytes":"000000000000008000000000"})").size(), 38U);
}

TEST(CodecDsp, EditsInOrder)
{
    expectAnswers({
        { R"({"op":"a4.edit","bytes":"0100ffffffffffff00000000","set":[]})", R"({"ok":"0100ffffffffffff00000000"})" },
        { R"({"op":"a4.edit","bytes":"0100ffffffffffff00000000","set":[["direction","tv"],["noise","weak"],["eq",250,99],["matrixGain",41],["notCare",5]]})",
            R"({"ok":"711a90ffffffffff0000002a"})" },
        { R"({"op":"a4.edit","bytes":"0100ffffffffffff00000000","set":[["eq",260,3],["direction","unknown"]]})",
            R"({"ok":"0100ffffffffffff00000000"})" },
        { R"({"op":"a4.getEq","bytes":"0100f3ffffffffff00000000","frequency":250})", R"({"ok":3})" },
        { R"({"op":"a4.getEq","bytes":"0100f3ffffffffff00000000","frequency":260})", R"({"ok":null})" },
    });
    const auto zeros = std::string(112, '0');
    auto edited = zeros;
    edited.replace(6, 2, "03").replace(108, 4, "0002"); // noise max is 4, high 3; mix ratio from bit 439 on
    EXPECT_EQ(okOf(R"({"op":"a16.edit","bytes":")" + zeros + R"(","set":[["noise","medium"],["remoteMixRatio",4]]})"),
        edited);
    expectStops({
        { R"({"op":"a4.edit","bytes":"0100ffffffffffff00000000","set":[["matrixGain",0]]})",
            "Invalid matrix gain value: 0" },
        { R"({"op":"a4.edit","bytes":"01","set":[]})", "12" },
        { R"({"op":"a4.edit","bytes":"0100ffffffffffff00000000","set":[["equalizerArray",[1]]]})", "equalizerArray" },
    });
    expectErrors({
        { R"({"op":"a4.edit","bytes":"01","set":[["direction","up"]]})", { "direction", "up" } },
        { R"({"op":"a4.edit","bytes":"01","set":[["eq",250]]})", { "eq" } },
        { R"({"op":"a4.edit","bytes":"01","set":[["volume",1]]})", { "volume" } },
        { R"({"op":"a4.edit","bytes":"01","set":["noise"]})", { "set" } },
        { R"({"op":"a4.edit","bytes":"01"})", { "set", "missing" } },
    });
}

TEST(CodecTables, AreListedByTheirNames)
{
    EXPECT_EQ(okOf(R"({"op":"labels","name":"AuriskA16DspParameterLabels.windValues"})"), json({ "Off", "On" }));
    EXPECT_EQ(okOf(R"({"op":"labels","name":"AuriskA4DspParameterLabels.matrixGainValues"})").size(), 48U);
    EXPECT_EQ(okOf(R"({"op":"enum","name":"AuriskA4DspEnum.Expansion"})"),
        json::parse(R"([{"case":"off","rawValue":0},{"case":"on","rawValue":1}])"));
    EXPECT_EQ(okOf(R"({"op":"enum","name":"AuriskA16DspEnum.LowCutFilter"})")[0],
        json::parse(R"({"case":"off","rawValue":0,"displayName":"Off","frequency":null})"));
    EXPECT_EQ(okOf(R"({"op":"enum","name":"AuriskA16DspEnum.CompressionRatio"})")[1],
        json::parse(R"({"case":"ratio1_03","rawValue":1,"displayName":"1.03 : 1","ratioValue":1.03})"));
    EXPECT_EQ(okOf(R"({"op":"enum","name":"AuriskA16DspEnum.MPOReleaseTime"})")[3],
        json::parse(R"({"case":"ms350","rawValue":3,"displayName":"350 ms","timeInMS":350})"));
    EXPECT_EQ(okOf(R"({"op":"enum","name":"AuriskA16DspEnum.CompressionThreshold"})")[31]["thresholdInDB"], 82);
    EXPECT_FALSE(okOf(R"({"op":"enum","name":"AuriskA16DspEnum.InputMode"})")[0].contains("valueInDB"));
    expectErrors({ { R"({"op":"labels","name":"windValues"})", { "windValues" } },
        { R"({"op":"enum","name":"AuriskA4DspEnum.SwitchState"})", { "SwitchState" } } });
}

TEST(CodecLogs, AreFramesAndWords)
{
    expectAnswers({
        { R"({"op":"log.frames","type":"summary"})",
            R"({"ok":["fe68110200068116","fe68110201068216","fe68110202068316","fe68110203068416"]})" },
    });
    auto bytes = std::string(456, '0');
    bytes.replace(2 * 20, 8, "01020304").replace(2 * 188, 2, "07").replace(2 * 224, 2, "09");
    const auto summary = okOf(R"({"op":"summarylog.decode","bytes":")" + bytes + R"("})");
    EXPECT_EQ(summary["program"].size(), 6U);
    EXPECT_EQ(summary["program"][0]["totalRunTime"], 0x04030201);
    EXPECT_EQ(summary["runTimeHistory"]["lessHalfAnHour"], 7);
    EXPECT_EQ(summary["CRC"], 9);
    EXPECT_EQ(summary.size(), 9U);
}

} // namespace
} // namespace aurisk::tests
