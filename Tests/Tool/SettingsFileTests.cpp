#include "Tests/Tool/ToolFileScenario.h"

#include <set>
#include <sstream>

namespace aurisk::tests {
namespace {

using testing::AnyOf;
using testing::Contains;
using testing::EndsWith;
using testing::StartsWith;
using Blocks = std::vector<Data>;
using Kind = Fault::Kind;

class ToolSettingsFile : public ToolFileScenario {
protected:
    Blocks blocks(const std::string& name) { return aid(name).state().programBlocks; }
};

TEST_F(ToolSettingsFile, WhatWasExportedIsImportedAsItWasEdited)
{
    for (const std::string name : { "Solo-L", "X1-L", "Uno-R" }) {
        const auto pristine = blocks(name);
        auto file = exported("dsp export " + name);
        EXPECT_EQ(file["aurisk"], (nlohmann::json{ { "format", "dsp" }, { "version", 1 } }));
        EXPECT_EQ(file["devices"][0]["name"], name);
        auto& programs = file["devices"][0]["programs"];
        EXPECT_EQ(programs.size(), 3U);
        EXPECT_EQ(programs[2]["program"], 2);

        EXPECT_EQ(aurisk("noise set " + name + " strong --program 1"), ExitCode::done);
        EXPECT_EQ(aurisk("direction set " + name + " face --program 0"), ExitCode::done);
        EXPECT_EQ(aurisk("program set " + name + " 1"), ExitCode::done);
        EXPECT_EQ(aurisk("dsp import " + name + " " + path), ExitCode::done);
        EXPECT_THAT(sink.output,
            ElementsAre(name + "  program 0 written", name + "  program 1 written", name + "  program 2 written",
                name + "  imported and read back"));
        EXPECT_EQ(blocks(name), pristine);
        EXPECT_EQ(aid(name).state().program, 1); // an H01 was elsewhere meanwhile

        // One program, and of that one field by its raw value: all else stays.
        file["devices"][0]["programs"] = { { { "program", 1 }, { "fields", { { "inputMode", 3 } } } } };
        write(file);
        EXPECT_EQ(aurisk("dsp import " + name + " " + path), ExitCode::done);
        auto edited = pristine;
        const bool isLarge = name == "X1-L";
        edited[1][0] = std::uint8_t((edited[1][0] & (isLarge ? 0xF0 : 0xF8)) | 3);
        EXPECT_EQ(blocks(name), edited);
    }
}

TEST_F(ToolSettingsFile, APairIsKeptInOneFileAndEachTakesItsPart)
{
    auto file = exported("dsp export X1 --both");
    EXPECT_THAT(sink.output, ElementsAre("X1-L  exported to " + path, "X1-R  exported to " + path));
    EXPECT_EQ(file["devices"][0]["orientation"], "left");
    EXPECT_EQ(file["devices"][1]["orientation"], "right");
    file["devices"][0]["programs"][0]["fields"]["inputMode"] = "ai0TC"; // 2
    file["devices"][1]["programs"][0]["fields"]["inputMode"] = "ai3Mic2"; // 3
    std::swap(file["devices"][0], file["devices"][1]);
    write(file);
    EXPECT_EQ(aurisk("dsp import X1 --both " + path), ExitCode::done);
    EXPECT_EQ(blocks("X1-L")[0][0], 0x82);
    EXPECT_EQ(blocks("X1-R")[0][0], 0x83);

    EXPECT_EQ(aurisk("direction set X1 tv --both"), ExitCode::done);
    EXPECT_EQ(aurisk("dsp import X1-R " + path), ExitCode::done); // one of them alone
    EXPECT_EQ(blocks("X1-L")[0][0], 0x84);
    EXPECT_EQ(blocks("X1-R")[0][0], 0x83);

    exported("dsp export X1-R"); // and one part for both
    EXPECT_EQ(aurisk("dsp import X1 --both " + path), ExitCode::done);
    EXPECT_EQ(blocks("X1-L")[0][0], 0x83);
}

TEST_F(ToolSettingsFile, WhatAllProgramsShareIsKeptInTheSameManner)
{
    for (const std::string name : { "Solo-L", "Uno-R", "X1-L" }) {
        const auto pristine = aid(name).state().globalBlock;
        auto file = exported("global export " + name);
        EXPECT_EQ(aurisk("global set " + name + " numberOfPrograms 1 toneLevel 0"), ExitCode::done);
        EXPECT_EQ(aurisk("global import " + name + " " + path), ExitCode::done);
        EXPECT_EQ(aid(name).state().globalBlock, pristine);
    }
}

TEST_F(ToolSettingsFile, StandardOutputTakesAFileWithNothingAroundIt)
{
    const auto file = exported("dsp export X1-L --program 1");
    EXPECT_EQ(aurisk("dsp export X1-L --program 1 -"), ExitCode::done);
    ASSERT_EQ(sink.output.size(), 1U);
    EXPECT_EQ(nlohmann::json::parse(sink.output[0]), file);
    std::istringstream lines(sink.output[0]);
    for (std::string line; std::getline(lines, line);)
        EXPECT_LE(line.size(), 100U);
    EXPECT_EQ(aurisk("dsp export X1-L --program 1 - --json"), ExitCode::done);
    EXPECT_EQ(objects(), std::vector{ file });
}

TEST_F(ToolSettingsFile, AFileThatDoesNotFitChangesNobody)
{
    const auto good = exported("dsp export X1-L");
    const auto with = [&](const std::string& pointer, const nlohmann::json& value) {
        auto file = good;
        file[nlohmann::json::json_pointer(pointer)] = value;
        return file.dump();
    };
    const std::string program = "/devices/0/programs/1", inProgram = "member \"devices[0].programs[1]";
    auto aboutA4 = good, aboutPair = good;
    aboutPair["devices"].push_back(good["devices"][0]);
    struct {
        std::string text, sentence;
    } const cases[] = {
        { "", "is no JSON (line 1)" },
        { "{\n\"aurisk\": 1,\n]", "is no JSON (line 3)" },
        { "{ \"aurisk\": 1e999 }", " holds a number that is too large" },
        { "[]", ": a list is no object" },
        { "{}", "member \"aurisk\": missing" },
        { with("/aurisk/format", "global"), "member \"aurisk.format\": \"global\" is not \"dsp\"" },
        { with("/aurisk/version", 2), "member \"aurisk.version\": 2 is not 1" },
        { with("/devices", nlohmann::json::array()), "member \"devices\": a list of one device or two is needed" },
        { aboutPair.dump(), "member \"devices\": of two devices one has to be left and one right" },
        { with("/devices/0/chip", "a5"), "member \"devices[0].chip\": \"a5\" is none of h01, a4, a16, unassigned" },
        { with("/devices/0/programs", nlohmann::json::array()),
            "member \"devices[0].programs\": a list of programs is needed" },
        { with(program + "/program", 5), inProgram + ".program\": 5 is outside 0 ... 4" },
        { with(program + "/program", 0), inProgram + ".program\": 0 is there twice" },
        { with(program + "/fields/em11", 0), inProgram + ".fields.em11\": \"em11\" is the name of no field" },
        { with(program + "/fields/feedbackCanceler", "on"),
            inProgram + ".fields.feedbackCanceler\": \"on\" is none of off, normal, aggressive" },
        { with(program + "/fields/feedbackCanceler", 3),
            inProgram + ".fields.feedbackCanceler\": 3 is the raw value of no case" },
        { with(program + "/fields/feedbackCanceler", 1.5),
            inProgram + ".fields.feedbackCanceler\": 1.5 is no integer" },
        { with(program + "/fields/em0", 8), inProgram + ".fields\": em0: 8 does not fit in 3 bits" },
        { with(program + "/fields/equalizerArray", { 1, 2 }),
            inProgram + ".fields\": equalizerArray: 2 values where 16 are needed" },
    };
    const auto left = blocks("X1-L"), right = blocks("X1-R");
    simulator = Simulator::create(threeAids());
    for (const auto& [text, sentence] : cases) {
        write(text);
        EXPECT_EQ(aurisk("dsp import X1 --both " + path), ExitCode::usage) << sentence;
        ASSERT_EQ(sink.errors.size(), 1U) << sentence;
        EXPECT_THAT(sink.errors[0], StartsWith("aurisk: " + path));
        EXPECT_THAT(sink.errors[0], EndsWith(sentence));
        EXPECT_EQ(simulator->radio().messageCount("X1-L") + simulator->radio().messageCount("X1-R"), 0) << sentence;
    }
    write(good);
    EXPECT_EQ(aurisk("dsp import Solo-L " + path), ExitCode::usage);
    EXPECT_THAT(sink.errors, ElementsAre("aurisk: " + path + " is for the chip a16, and Solo-L has the chip a4"));
    EXPECT_EQ(simulator->radio().messageCount("Solo-L"), 0);
    EXPECT_EQ(blocks("X1-L"), left);
    EXPECT_EQ(blocks("X1-R"), right);
}

TEST_F(ToolSettingsFile, WhereOneOfAPairLacksAProgramNeitherIsWrittenTo)
{
    for (const std::string lacking : { "X1-L", "X1-R" }) {
        SetUp();
        auto file = exported("dsp export X1 --both");
        for (auto& device : file["devices"])
            for (auto& program : device["programs"])
                program["fields"]["noiseReduction"] = "max";
        write(file);
        auto state = aid(lacking).state();
        state.volumes = { 8, 5 };
        state.programBlocks.resize(2);
        aid(lacking).setState(state);
        const auto left = blocks("X1-L"), right = blocks("X1-R");
        EXPECT_EQ(aurisk("dsp import X1 --both " + path), ExitCode::usage);
        const std::string other = lacking == "X1-L" ? "X1-R" : "X1-L";
        EXPECT_THAT(sink.errors,
            ElementsAre(
                "aurisk: " + path + " is for program 2, which " + lacking + " does not have; nothing was written",
                "aurisk: " + other + " was left as it is, since the other one cannot go on"));
        EXPECT_EQ(blocks("X1-L"), left);
        EXPECT_EQ(blocks("X1-R"), right);
    }
}

TEST_F(ToolSettingsFile, WhatAnAidDidNotKeepIsFound)
{
    auto file = exported("dsp export X1-L");
    file["devices"][0]["programs"][0]["fields"]["equalizerArray"][2] = "db0";
    write(file);
    const auto old = blocks("X1-L")[0];
    begin("dsp import X1-L " + path);
    while (blocks("X1-L")[0] == old)
        after(0.001);
    auto state = aid("X1-L").state();
    state.programBlocks[0] = old;
    aid("X1-L").setState(state);
    EXPECT_EQ(end(), ExitCode::failed);
    EXPECT_THAT(sink.errors,
        ElementsAre(
            "aurisk: X1-L did not keep what was written for program 0: equalizerArray@1000 is -24 dB, not 0 dB"));
}

/// An import to a pair, with each kind of fault at each message of the left one.
TEST_F(ToolSettingsFile, WhateverGoesWrongNoneOfAPairIsWrittenToBeforeBothAreReady)
{
    auto file = exported("dsp export X1 --both");
    for (auto& device : file["devices"])
        for (auto& program : device["programs"])
            program["fields"]["em0"] = 5;
    write(file);
    const auto old = blocks("X1-L");
    auto fresh = old;
    for (auto& block : fresh)
        block[3] = std::uint8_t((block[3] & 0x1F) | 5 << 5);

    const auto pristine = std::pair(aid("X1-L").state(), aid("X1-R").state());
    const auto restore = [&] {
        aid("X1-L").setState(pristine.first);
        aid("X1-R").setState(pristine.second);
    };
    withEachFault("X1-L", "dsp import X1 --both " + path,
        { Kind::dropLinkBefore, Kind::dropLinkAfter, Kind::lose, Kind::duplicate, Kind::corrupt, Kind::refuse },
        restore, [&](ExitCode ended) {
            EXPECT_THAT(blocks("X1-R"), AnyOf(old, fresh));
            EXPECT_TRUE(blocks("X1-R") == fresh || blocks("X1-L") == old);
            EXPECT_TRUE(ended != ExitCode::done || blocks("X1-L") == fresh);
        });
}

TEST_F(ToolSettingsFile, AnImportThatIsCutShortTellsHowFarItCame)
{
    exported("dsp export X1-L");
    const auto pristine = aid("X1-L").state();
    const std::string tail = " of 3 part(s) of the import";
    std::set<std::string> told;
    for (double when = 0; when < 3; when += 0.05) {
        aid("X1-L").setState(pristine);
        begin("dsp import X1-L " + path);
        after(when);
        run->interrupt();
        if (end() == ExitCode::interrupted && !sink.errors.empty())
            told.insert(sink.errors.back());
    }
    EXPECT_THAT(told,
        testing::UnorderedElementsAre("aurisk: X1-L has taken 0" + tail + ", and perhaps one more",
            "aurisk: X1-L has taken 1" + tail + ", and perhaps one more",
            "aurisk: X1-L has taken 2" + tail + ", and perhaps one more",
            "aurisk: X1-L has taken the whole import, which was not read back"));
}

TEST_F(ToolSettingsFile, NoneOfAPairIsChangedWhereTheOtherCannotBe)
{
    faults("X1-R").refusesConnections = true;
    const auto left = blocks("X1-L");
    for (const auto* command : { "dsp set X1 em0 7 --both", "eq set X1 1000=0 --both", "noise set X1 strong --both" }) {
        EXPECT_EQ(aurisk(command), ExitCode::failed) << command;
        EXPECT_THAT(sink.errors, testing::Contains(HasSubstr("X1-L was left as it is"))) << command;
        EXPECT_EQ(blocks("X1-L"), left) << command;
    }
}

/// Each write to an H01 switches it to the program that was written.
TEST_F(ToolSettingsFile, AnH01GoesBackToItsProgramWhateverComesInBetween)
{
    exported("dsp export Uno-R");
    const auto pristine = aid("Uno-R").state();
    for (const auto& command : { std::string("noise set Uno-R strong --program 2"), "dsp import Uno-R " + path }) {
        const auto restore = [&] { aid("Uno-R").setState(pristine); };
        const auto began = queue.now();
        ASSERT_EQ(aurisk(command), ExitCode::done);
        const double span = (queue.now() - began).count();
        for (double when = 0; when < span; when += 0.005) {
            restore();
            begin(command);
            after(when);
            run->interrupt();
            EXPECT_THAT(end(), AnyOf(ExitCode::done, ExitCode::interrupted)) << when;
            EXPECT_EQ(aid("Uno-R").state().program, 0) << command << " interrupted after " << when;
        }
        restore();
        withEachFault("Uno-R", command, { Kind::lose, Kind::duplicate, Kind::delay, Kind::corrupt, Kind::refuse },
            restore, [&](ExitCode) {
                const bool isSaid
                    = !sink.errors.empty() && sink.errors.back().find("switch to program 0") != std::string::npos;
                EXPECT_TRUE(aid("Uno-R").state().program == 0 || isSaid);
            });

        // Whoever waits for less than an answer takes goes back all the same.
        restore();
        faults("Uno-R").latency = Seconds(0.2);
        EXPECT_EQ(aurisk(command + " --timeout 0.3"), ExitCode::failed);
        EXPECT_EQ(aid("Uno-R").state().program, 0);
        faults("Uno-R").latency = Seconds(0.005);
    }
}

} // namespace
} // namespace aurisk::tests
