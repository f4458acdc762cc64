#include "Tests/Tool/ToolFileScenario.h"
#include "Tools/aurisk/UsagePicture.h"

#include <iterator>

namespace aurisk::tests {
namespace {

using testing::Contains;
using testing::Each;
using testing::SizeIs;
using Kind = Fault::Kind;

class ToolLogs : public ToolScenario {
protected:
    void TearDown() override
    {
        for (const auto* suffix : { "", "-L", "-R" })
            for (const auto* stem : { "events", "gains" })
                std::filesystem::remove(fileName(stem, suffix));
    }

    static std::string fileName(const std::string& stem, const std::string& suffix = {})
    {
        return temporaryPath(stem + suffix + ".bin");
    }
    static Data bytesOf(const std::string& path)
    {
        std::ifstream file(path, std::ios::binary);
        return { std::istreambuf_iterator<char>(file), {} };
    }

    std::string events = fileName("events"), gains = fileName("gains");
};

/// Of the 40 characters of a bar half the time has 20, a quarter 10.
TEST(UsagePicture, ABarIsAsLongAsItsShare)
{
    AuriskSummaryDataLog log{ .totalRunTime = 4294967295, .numberOfBatteryChanges = 3 };
    log.program[1] = { .totalRunTime = 80, .vcIndex = 7, .lessThan50 = 40, .between50And60 = 20, .greaterThan80 = 20 };
    log.program[2] = { .lessThan50 = 4294967295, .between70And80 = 1 }; // a trace shows
    log.runTimeHistory = { .lessHalfAnHour = 8, .between4And8 = 4, .greaterThan20 = 1 };
    EXPECT_THAT(tool::usagePicture(log, false),
        ElementsAre("  run time                 4294967295", "  run time since power-up           0",
            "  battery changes                   3", "  hours of the battery              0",
            "  low-battery flag                  0", "", "  PROGRAM  RUN TIME  VOLUME INDEX  LEVELS OF SOUND",
            "        0         0             0",
            "        1        80             7  ....................----------##########",
            "        2         0             0  ........................................%",
            "        3         0             0", "        4         0             0",
            "        5         0             0", "  . below 50  - 50 to 60  = 60 to 70  % 70 to 80  # above 80", "",
            "  RUN TIME     TIMES", "  under 0.5 h      8  ########################################",
            "  0.5 to 2 h       0", "  2 to 4 h         0", "  4 to 8 h         4  ####################",
            "  8 to 12 h        0", "  12 to 16 h       0", "  16 to 20 h       0", "  over 20 h        1  #####"));
    EXPECT_THAT(tool::usagePicture(log, true),
        Contains("        1        80             7  ····················░░░░░░░░░░██████████"));
}

TEST_F(ToolLogs, TellTheUseOfTheAid)
{
    wearer("X1-L", "program 2");
    after(3 * 3600);
    wearer("X1-L", "power 0");
    wearer("X1-L", "power 1");
    EXPECT_EQ(aurisk("logs X1-L --json"), ExitCode::done);
    const auto summary = objects().at(0)["summary"];
    EXPECT_NEAR(summary["program"][2]["totalRunTime"], 3 * 3600, 5);
    EXPECT_EQ(summary["program"][2]["greaterThan80"], 2 * 180); // of each minute 2 s
    EXPECT_EQ(summary["runTimeHistory"]["between2And4"], 1);

    EXPECT_EQ(aurisk("logs X1-L"), ExitCode::done);
    EXPECT_THAT(sink.output, Contains("  2 to 4 h         1  ########################################"));
    EXPECT_THAT(sink.output, Each(SizeIs(testing::Le(80U))));
}

TEST_F(ToolLogs, AreKeptInFilesAsTheyAre)
{
    after(1800);
    wearer("X1-L", "volume 9");
    EXPECT_EQ(aurisk("logs X1-L --events " + events + " --loop-gain " + gains), ExitCode::done);
    EXPECT_THAT(
        sink.output, ElementsAre("X1-L  userEvent: 2280 bytes to " + events, "X1-L  loopGain: 1140 bytes to " + gains));
    const auto kept = bytesOf(events);
    ASSERT_EQ(kept.size(), 40U * 57);
    // After 0x708 s a volume (2) of 9 in program 0, at a battery of 84 - 2 percent.
    EXPECT_EQ(Data(kept.begin(), kept.begin() + 9), (Data{ 0x08, 0x07, 0, 0, 2, 9, 0, 82, 0xFF }));
    EXPECT_EQ(bytesOf(gains).size(), 20U * 57);

    wearer("X1-R", "mute 1");
    EXPECT_EQ(aurisk("logs X1 --both --json --events " + events), ExitCode::done);
    EXPECT_EQ(objects().size(), 2U);
    EXPECT_EQ(bytesOf(fileName("events", "-L")), kept);
    EXPECT_EQ(bytesOf(fileName("events", "-R"))[4], 4); // muted
    EXPECT_FALSE(std::filesystem::exists(gains + "-L"));
}

TEST_F(ToolLogs, WhatCannotBeIsRefusedBeforeAnybodyIsConnected)
{
    EXPECT_EQ(aurisk("logs Solo-L"), ExitCode::failed);
    EXPECT_THAT(sink.errors, ElementsAre("aurisk: Solo-L keeps no logs, as its chip is no a16"));
    EXPECT_EQ(aurisk("logs X1-L --events /nowhere/e"), ExitCode::usage);
    EXPECT_THAT(sink.errors, ElementsAre("aurisk: /nowhere/e cannot be written: No such file or directory"));
    std::filesystem::create_directory(fileName("gains", "-R"));
    EXPECT_EQ(aurisk("logs X1 --both --loop-gain " + gains), ExitCode::usage);
    EXPECT_THAT(sink.errors, ElementsAre("aurisk: " + fileName("gains", "-R") + " cannot be written: Is a directory"));
    for (const auto* name : { "X1-L", "X1-R", "Solo-L" })
        EXPECT_EQ(simulator->radio().messageCount(name), 0);
}

TEST_F(ToolLogs, AFetchThatCannotEndWellEndsSoon)
{
    struct {
        Fault fault; ///< counted from the first request: each part is two messages
        bool isSilent;
        double within;
        std::string sentence;
    } const cases[] = {
        { { .kind = Kind::dropLinkBefore, .message = 15 }, false, 1.5,
            "the link to X1-L was lost while it was asked to tell its log of user events" },
        { { .kind = Kind::refuse, .message = 15 }, false, 6,
            "X1-L refused to tell its log of user events, or not all of it came" },
        { { .kind = Kind::lose, .message = 16 }, false, 9,
            "X1-L refused to tell its log of user events, or not all of it came" },
        { { .kind = Kind::lose, .message = 15 }, true, 7,
            "X1-L did not answer within 5 s when asked to tell its log of user events" },
    };
    for (const auto& [fault, isSilent, within, sentence] : cases) {
        auto& link = faults("X1-L");
        link.faults = { fault };
        link.faults[0].message += simulator->radio().messageCount("X1-L") + messagesToConnect;
        link.isSilent = isSilent;
        const auto began = queue.now();
        EXPECT_EQ(aurisk("logs X1-L --events " + events), ExitCode::failed) << sentence;
        EXPECT_THAT(sink.errors, ElementsAre("aurisk: " + sentence));
        EXPECT_LT((queue.now() - began).count(), within) << sentence;
        EXPECT_FALSE(std::filesystem::exists(events));
        link.isSilent = false;
    }
}

/// Parts come one after another, each in time: all of them may take longer than the limit of one.
TEST_F(ToolLogs, ALongLogHasTimeAsLongAsItKeepsComing)
{
    faults("X1-L").latency = Seconds(0.15);
    const auto began = queue.now();
    EXPECT_EQ(aurisk("logs X1-L --timeout 2 --events " + events), ExitCode::done);
    EXPECT_GT((queue.now() - began).count(), 12);
}

TEST_F(ToolLogs, AnInterruptionEndsAFetch)
{
    for (double when = 0; when < 3; when += 0.1) {
        begin("logs X1 --both --events " + events);
        after(when);
        run->interrupt();
        EXPECT_EQ(end(), ExitCode::interrupted) << when;
        EXPECT_FALSE(std::filesystem::exists(fileName("events", "-L"))) << when;
    }
}

} // namespace
} // namespace aurisk::tests
