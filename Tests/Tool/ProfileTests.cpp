#include "Tests/Tool/ToolFileScenario.h"
#include "Tools/aurisk/ProfileFields.h"
#include "Tools/aurisk/Values.h"

namespace aurisk::tests {
namespace {

using testing::EndsWith;
using Kind = Fault::Kind;

constexpr std::uint8_t series = 0x00, reserved = 0x05, seriesCode = 0x06, adName = 0x13;

class ToolProfile : public ToolFileScenario {
protected:
    Data field(const std::string& name, std::uint8_t number) { return aid(name).state().profile.at(number); }
    std::string text(const std::string& name, std::uint8_t number)
    {
        const auto value = field(name, number);
        return { value.begin(), value.end() };
    }
    void put(const std::string& name, std::uint8_t number, const Data& value)
    {
        auto state = aid(name).state();
        state.profile[number] = value;
        aid(name).setState(state);
    }
    int messages(const std::string& name) const { return simulator->radio().messageCount(name); }

    /// hornCode 0x0201, microphoneCode 0x0403, headsetCode 0x0605, codes 7 to 16; 0x35: experience 1, mode1 2, mode2 3;
    /// 0x1F: mode3 15, mode4 1; 0x54: mode5 4, mode6 5; 0x9E: age 30, sex 1.
    const Data worn = { 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 0x35, 0x1F, 0x54, 0x9E };
};

TEST_F(ToolProfile, EveryFieldIsShownUnderItsName)
{
    put("X1-L", reserved, worn);
    put("X1-L", seriesCode, {});
    EXPECT_EQ(aurisk("profile show X1-L"), ExitCode::done);
    Lines shown;
    for (const auto& line : sink.output) {
        std::string words;
        for (const auto& word : wordsOf(line))
            words += (words.empty() ? "" : " ") + word;
        shown.push_back(words);
    }
    EXPECT_THAT(shown,
        ElementsAre("X1-L", "pSeriesCode product series X1", "skuCode SKU X1-A16", "patternCode pattern RIC",
            "hwVersion hardware version 1.2", "swVersion software version 2.3.1", "bhwPattern radio pattern B1",
            "bhwVersion radio hardware 1.0", "bswVersion radio software 3.0.4",
            "hearingAidChipVersion hearing-aid chip A16", "otaVersion update version 1.1",
            "seriesCode series code (empty)", "adName advertised name X1-L", "hornCode 513", "microphoneCode 1027",
            "headsetCode 1541", "acCode 7", "aidChipCode 8", "hornPowerCode 9", "formula 10", "ext1 11", "ext2 12",
            "ext3 13", "ext4 14", "ext5 15", "ext6 16", "modeConfig.experience 1", "modeConfig.mode1 2",
            "modeConfig.mode2 3", "modeConfig.mode3 15", "modeConfig.mode4 1", "modeConfig.mode5 4",
            "modeConfig.mode6 5", "ageConfig.age 30", "ageConfig.sex 1",
            "scenes of the programs outdoor, outdoor, outdoor, outdoor"));

    EXPECT_EQ(aurisk("profile show X1-L --json"), ExitCode::done);
    const auto told = objects().at(0);
    EXPECT_EQ(told["name"], "X1-L"); // though its series code has been read by now
    EXPECT_EQ(told["profile"]["skuCode"], "X1-A16");
    EXPECT_EQ(told["profile"]["seriesCode"], "");
    EXPECT_EQ(told["profile"]["reservedField"]["modeConfig"]["mode3"], 15);
    EXPECT_EQ(told["profile"]["reservedField"]["ageConfig"], (nlohmann::json{ { "age", 30 }, { "sex", 1 } }));
    EXPECT_EQ(told["profile"].size(), 13U);
    EXPECT_EQ(told["scenesOfProgram"], (nlohmann::json{ "outdoor", "outdoor", "outdoor", "outdoor" }));
}

TEST_F(ToolProfile, WhatIsRefusedIsLeftOpen)
{
    const int first = messages("Solo-L") + messagesToConnect + 1; // then a request and its reply each
    faults("Solo-L").faults = { { .kind = Kind::refuse, .message = first + 2 } };
    EXPECT_EQ(aurisk("profile show Solo-L --json"), ExitCode::done);
    EXPECT_EQ(objects().at(0)["profile"]["skuCode"], nullptr);
    EXPECT_EQ(objects().at(0)["profile"]["patternCode"], "RIC");

    faults("Solo-L").faults.clear();
    for (int i = 0; i < 13; ++i)
        faults("Solo-L").faults.push_back(
            { .kind = Kind::refuse, .message = messages("Solo-L") + messagesToConnect + 1 + 2 * i });
    EXPECT_EQ(aurisk("profile show Solo-L"), ExitCode::failed);
    EXPECT_THAT(sink.errors, ElementsAre("aurisk: Solo-L refused to tell any field of its profile"));
}

TEST_F(ToolProfile, AChangeChangesItsBitsAlone)
{
    struct {
        Lines changes;
        std::map<std::size_t, std::uint8_t> changed; ///< of the reserved field
        std::string told;
    } const cases[] = {
        { { "hornCode", "4660" }, { { 0, 0x34 }, { 1, 0x12 } }, "hornCode  513 -> 4660" },
        { { "mode1", "7" }, { { 16, 0x3F } }, "modeConfig.mode1  2 -> 7" },
        { { "modeConfig.mode4", "0" }, { { 17, 0x0F } }, "modeConfig.mode4  1 -> 0" },
        { { "experience", "0" }, { { 16, 0x34 } }, "modeConfig.experience  1 -> 0" },
        { { "age", "127", "ageConfig.sex", "0" }, { { 19, 0x7F } }, "ageConfig.sex  1 -> 0" },
        { { "ext6", "255", "ext6", "17" }, { { 15, 17 } }, "ext6  16 -> 17" },
    };
    for (const auto& [changes, changed, told] : cases) {
        put("X1-L", reserved, worn);
        auto expected = aid("X1-L").state();
        for (const auto& [index, byte] : changed)
            expected.profile[reserved][index] = byte;
        Lines words = { "profile", "set", "X1-L" };
        words.insert(words.end(), changes.begin(), changes.end());
        const int before = messages("X1-L");
        EXPECT_EQ(auriskWords(words), ExitCode::done) << told;
        EXPECT_EQ(aid("X1-L").state().profile, expected.profile) << told;
        EXPECT_THAT(sink.output.back(), EndsWith(told));
        EXPECT_EQ(messages("X1-L") - before, messagesToConnect + 2 * 2) << told; // one question and one write
        EXPECT_EQ(auriskWords(words), ExitCode::done);
        EXPECT_EQ(sink.output.back(), "  unchanged  it is set so already");
        EXPECT_EQ(messages("X1-L") - before, 2 * messagesToConnect + 2 * 2 + 2) << told; // and one more question
    }
}

TEST_F(ToolProfile, TextsAreWrittenAsTheyAreTyped)
{
    EXPECT_EQ(auriskWords({ "profile", "set", "X1-L", "pSeriesCode", "Größe 2", "adName", "" }), ExitCode::done);
    EXPECT_THAT(sink.output, ElementsAre("X1-L", "  pSeriesCode  X1 -> Größe 2", "  adName       X1-L -> (empty)"));
    EXPECT_EQ(field("X1-L", series), (Data{ 'G', 'r', 0xC3, 0xB6, 0xC3, 0x9F, 'e', ' ', '2' }));
    EXPECT_EQ(text("X1-L", adName), "");

    EXPECT_EQ(aurisk("profile set X1 skuCode K9 age 67 --both --json"), ExitCode::done);
    ASSERT_EQ(objects().size(), 2U);
    for (const auto& told : objects()) {
        EXPECT_EQ(told["changes"][0], (nlohmann::json{ { "field", "skuCode" }, { "from", "X1-A16" }, { "to", "K9" } }));
        EXPECT_EQ(told["changes"][1]["field"], "ageConfig.age");
        EXPECT_EQ(told["changes"][1]["to"], 67);
    }
}

TEST_F(ToolProfile, AMistakeIsToldBeforeAnybodyIsConnected)
{
    struct {
        Lines words;
        std::string sentence;
    } const cases[] = {
        { { "sku", "1" }, "\"sku\" is the name of no field (aurisk profile show lists them)" },
        { { "X1-L", "age" }, "age: its value is missing (aurisk profile --help)" },
        { { "age" }, "profile set: FIELD VALUE is missing" },
        { { "repository", "x" }, "\"repository\" is the name of no field (aurisk profile show lists them)" },
        { { "reservedField", "00" }, "reservedField: name one of its members (aurisk profile show lists them)" },
        { { "age", "128" }, "age: 128 is outside 0 to 127" },
        { { "sex", "2" }, "sex: 2 is outside 0 to 1" },
        { { "mode1", "8" }, "mode1: 8 is outside 0 to 7" },
        { { "modeConfig.mode2", "16" }, "modeConfig.mode2: 16 is outside 0 to 15" },
        { { "hornCode", "65536" }, "hornCode: 65536 is outside 0 to 65535" },
        { { "formula", "-1" }, "formula: -1 is outside 0 to 255" },
        { { "acCode", "0x10" }, "acCode: \"0x10\" is no whole number" },
        { { "skuCode", std::string(248, 'x') }, "skuCode: the text has 248 bytes, at most 247 fit" },
        { { "skuCode", "\xFF" }, "skuCode: the text is no UTF-8" },
    };
    simulator->radio().setState(CBManagerState::poweredOff);
    for (const auto& [changes, sentence] : cases) {
        Lines words = { "profile", "set" };
        words.insert(words.end(), changes.begin(), changes.end());
        try {
            EXPECT_EQ(auriskWords(words), ExitCode::usage) << sentence;
            EXPECT_THAT(sink.errors, ElementsAre("aurisk: " + sentence));
        } catch (const tool::UsageError& error) { // the words alone are wrong
            EXPECT_EQ(error.what(), sentence);
        }
    }
}

TEST_F(ToolProfile, AFieldThatIsRefusedStopsAChangeOfOthers)
{
    faults("X1-L").faults = { { .kind = Kind::refuse, .message = messages("X1-L") + messagesToConnect + 3 } };
    EXPECT_EQ(aurisk("profile set X1 pSeriesCode A seriesCode B --both"), ExitCode::failed);
    EXPECT_THAT(sink.errors,
        ElementsAre("aurisk: X1-L refused to tell seriesCode, so nothing was written",
            "aurisk: X1-R was left as it is, since the other one cannot go on"));
    EXPECT_EQ(text("X1-L", series), "X1");
    EXPECT_EQ(text("X1-R", series), "X1");
}

/// Each step is a run of its own; between them the world is in its file.
TEST_F(ToolProfile, WhatWasExportedIsImportedAsItWasEdited)
{
    for (const std::string device : { "Solo-L", "Uno-R", "X1 --both" }) {
        inWorld("profile export " + device + " " + path);
        auto file = content();
        EXPECT_EQ(file["aurisk"], (nlohmann::json{ { "format", "profile" }, { "version", 1 } }));
        const auto pristine = file;
        Lines expected;
        for (auto& part : file["devices"]) {
            EXPECT_FALSE(part["profile"].contains("repository"));
            part["profile"]["skuCode"] = "edited";
            part["profile"].erase("hwVersion");
            part["profile"]["reservedField"] = { { "modeConfig", { { "mode6", 14 } } }, { "hornCode", 999 } };
            const std::string name = part["name"];
            for (const auto* what : { "skuCode written", "reservedField written", "imported and read back" })
                expected.push_back(name + "  " + what);
        }
        write(file);
        inWorld("profile import " + device + " " + path);
        EXPECT_THAT(sink.output, testing::UnorderedElementsAreArray(expected));
        inWorld("profile show --json " + device);
        const auto told = objects();
        ASSERT_EQ(told.size(), file["devices"].size()) << device;
        for (std::size_t i = 0; i < told.size(); ++i) {
            auto profile = pristine["devices"][i]["profile"];
            profile["skuCode"] = "edited";
            profile["reservedField"]["modeConfig"]["mode6"] = 14;
            profile["reservedField"]["hornCode"] = 999;
            EXPECT_EQ(told[i]["profile"], profile) << device;
            EXPECT_EQ(told[i]["name"], file["devices"][i]["name"]);
        }
        inWorld("profile import " + device + " " + path);
        EXPECT_THAT(sink.output, testing::Each(EndsWith("  holds all of it already")));
    }
}

TEST_F(ToolProfile, AFileThatDoesNotFitChangesNobody)
{
    const auto good = exported("profile export X1-L");
    struct {
        std::string pointer;
        nlohmann::json value;
        std::string sentence;
    } const cases[] = {
        { "/devices/0/profile", 1, "member \"devices[0].profile\": 1 is no object" },
        { "/devices/0/profile/sku", "A", "member \"devices[0].profile.sku\": \"sku\" is the name of no field" },
        { "/devices/0/profile/skuCode", 7, "member \"devices[0].profile.skuCode\": 7 is no text" },
        { "/devices/0/profile/skuCode", std::string(248, 'x'),
            "member \"devices[0].profile.skuCode\": the text has 248 bytes, at most 247 fit" },
        { "/devices/0/profile/reservedField/mode1", 1,
            "member \"devices[0].profile.reservedField.mode1\": \"mode1\" is the name of no field" },
        { "/devices/0/profile/reservedField/ageConfig", 60,
            "member \"devices[0].profile.reservedField.ageConfig\": 60 is no object" },
        { "/devices/0/profile/reservedField/ageConfig/age", 1.5,
            "member \"devices[0].profile.reservedField.ageConfig.age\": 1.5 is no integer" },
    };
    SetUp();
    for (const auto& [pointer, value, sentence] : cases) {
        auto file = good;
        file[nlohmann::json::json_pointer(pointer)] = value;
        write(file);
        EXPECT_EQ(aurisk("profile import X1 --both " + path), ExitCode::usage) << sentence;
        EXPECT_THAT(sink.errors, ElementsAre(EndsWith(": " + sentence)));
        EXPECT_EQ(messages("X1-L") + messages("X1-R"), 0) << sentence;
    }
}

TEST_F(ToolProfile, WhatCannotBeKeptInAFileIsSaid)
{
    faults("X1-L").faults = { { .kind = Kind::refuse, .message = messages("X1-L") + messagesToConnect + 3 } };
    const auto file = exported("profile export X1-L");
    EXPECT_FALSE(file["devices"][0]["profile"].contains("skuCode"));
    EXPECT_THAT(
        sink.errors, ElementsAre("aurisk: X1-L does not tell a skuCode that makes sense, so it is not exported"));
}

TEST_F(ToolProfile, BytesThatAreNoTextAreShownAsTheyAre)
{
    const tool::ProfileValues values
        = { { AuriskProfileType::productSoft, { 0xFF, 0xFE } }, { AuriskProfileType::productReserved, Data(19) } };
    EXPECT_EQ(tool::profileInWords(values, AuriskProfileType::productSoft)[0].text, "fffe (no text)");
    EXPECT_EQ(tool::profileInWords(values, AuriskProfileType::productReserved)[0].text, "19 bytes that make no sense");
    EXPECT_EQ(tool::profileToJson(values, tool::allProfileTypes())["reservedField"], nullptr);
    EXPECT_EQ(tool::profileToJson(values, tool::allProfileTypes())["swVersion"], nullptr);
    // Too few bytes for a reserved field: it begins with its defaults, modes 0 1 2 3 4 5.
    auto edits = tool::profileEdits({ { "age", "3" } });
    Data begun(20);
    begun[16] = 0x10, begun[17] = 0x32, begun[18] = 0x54, begun[19] = 3;
    EXPECT_EQ(edits.at(AuriskProfileType::productReserved)(Data(19)), begun);
}

TEST_F(ToolProfile, ATextThatTheLinkDoesNotCarryIsNotWritten)
{
    const std::string text(236, 'x'); // a value has 244 bytes, nine of which stand around it
    EXPECT_EQ(aurisk("profile set X1 adName A seriesCode " + text + " --both"), ExitCode::usage);
    EXPECT_EQ(sink.errors.front(),
        "aurisk: seriesCode: the text has 236 bytes, and the link to X1-L carries at most 235; nothing was written");
    auto file = exported("profile export X1-L");
    file["devices"][0]["profile"]["adName"] = "A";
    file["devices"][0]["profile"]["seriesCode"] = text;
    write(file);
    EXPECT_EQ(aurisk("profile import X1-L " + path), ExitCode::usage);
    EXPECT_THAT(sink.errors, ElementsAre(testing::HasSubstr("at most 235; nothing was written")));
    EXPECT_EQ(this->text("X1-L", adName), "X1-L");

    simulator->world().placed("X1-L").mtu = 517;
    const std::string longest(247, 'x');
    EXPECT_EQ(aurisk("profile set X1-L seriesCode " + longest), ExitCode::done);
    EXPECT_EQ(aurisk("profile show X1-L --json"), ExitCode::done);
    EXPECT_EQ(objects().at(0)["profile"]["seriesCode"], longest); // the longest that a reply can carry
}

/// An import to a pair, with each kind of fault at each message of the left one.
TEST_F(ToolProfile, WhateverGoesWrongNoneOfAPairIsWrittenToBeforeBothAreReady)
{
    auto file = exported("profile export X1 --both");
    for (auto& device : file["devices"]) {
        device["profile"]["seriesCode"] = "S9";
        device["profile"]["reservedField"] = { { "ageConfig", { { "age", 99 } } } };
    }
    write(file);
    const auto pristine = std::pair(aid("X1-L").state(), aid("X1-R").state());
    const auto old = pristine.first.profile.at(reserved);
    auto fresh = old;
    fresh[19] = std::uint8_t((fresh[19] & 0x80) | 99);
    const auto isFresh
        = [&](const std::string& name) { return text(name, seriesCode) == "S9" && field(name, reserved) == fresh; };
    const auto isOld
        = [&](const std::string& name) { return text(name, seriesCode) == "S1" && field(name, reserved) == old; };
    const auto restore = [&] {
        aid("X1-L").setState(pristine.first);
        aid("X1-R").setState(pristine.second);
    };
    withEachFault("X1-L", "profile import X1 --both " + path,
        { Kind::dropLinkBefore, Kind::dropLinkAfter, Kind::lose, Kind::duplicate, Kind::corrupt, Kind::refuse },
        restore, [&](ExitCode ended) {
            EXPECT_TRUE(isFresh("X1-R") || (isOld("X1-R") && isOld("X1-L")));
            EXPECT_TRUE(ended != ExitCode::done || isFresh("X1-L"));
        });
}

TEST_F(ToolProfile, WhatAnAidDidNotKeepIsFound)
{
    auto file = exported("profile export X1-L");
    file["devices"][0]["profile"]["seriesCode"] = "S9";
    write(file);
    begin("profile import X1-L " + path);
    while (text("X1-L", seriesCode) != "S9")
        after(0.001);
    put("X1-L", seriesCode, { 'S' });
    EXPECT_EQ(end(), ExitCode::failed);
    EXPECT_THAT(sink.errors, ElementsAre("aurisk: X1-L did not keep what was written for seriesCode"));
}

} // namespace
} // namespace aurisk::tests
