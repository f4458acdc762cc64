#include "AuriskSDK/Shared/Utils/HexToData.h"
#include "Tests/Tool/ToolScenario.h"

namespace aurisk::tests {
namespace {

using testing::Contains;
using testing::Each;
using testing::EndsWith;

class ToolSettings : public ToolScenario {
protected:
    void SetUp() override { simulator = Simulator::create(fourAids()); }

    Data block(const std::string& name, int program) { return aid(name).state().programBlocks[std::size_t(program)]; }
};

/// In each block the bytes that hold the value, and no others, become what they have to be. Small blocks begin with
/// 71 D0 61 98 and end with 12, the large one begins with 80.
TEST_F(ToolSettings, AChangeChangesItsBitsAlone)
{
    struct {
        Lines words;
        std::string name;
        int program;
        std::map<std::size_t, std::uint8_t> changed;
    } const cases[] = {
        { { "dsp", "set", "Solo-L", "inputMode", "ai0TC" }, "Solo-L", 0, { { 0, 0x70 } } },
        { { "dsp", "set", "Solo-L", "inputMode", "AI1+AI2(Mic1+DAI)" }, "Solo-L", 0, { { 0, 0x75 } } },
        { { "dsp", "set", "Solo-L", "inputMode", "2" }, "Solo-L", 0, { { 0, 0x72 } } },
        { { "dsp", "set", "Solo-L", "notCare", "31" }, "Solo-L", 0, { { 11, 0xFA } } },
        // 20 dB = 2 - 6 * 4 + 42: mantissa 2 from bit 1 on, exponent 4 from bit 4 on.
        { { "dsp", "set", "Solo-L", "matrixGain", "20" }, "Solo-L", 0, { { 1, 0xC4 } } },
        { { "dsp", "set", "Solo-L", "matrixGain", "-20 dB" }, "Solo-L", 0, { { 1, 0xC4 } } },
        { { "eq", "set", "Solo-L", "1000=-6", "250=-30" }, "Solo-L", 0, { { 2, 0x60 }, { 3, 0x9C } } },
        { { "dsp", "set", "Solo-L", "equalizerArray@1000", "-6 dB" }, "Solo-L", 0, { { 3, 0x9C } } },
        { { "dsp", "set", "Solo-L", "equalizerArray", "0,1,dbMinus26,3,4,5,6,7,8,9,10,0 dB" }, "Solo-L", 0,
            { { 2, 0x10 }, { 3, 0x32 }, { 4, 0x54 }, { 5, 0x76 }, { 6, 0x98 }, { 7, 0xFA } } },
        { { "noise", "set", "Solo-L", "strong" }, "Solo-L", 0, { { 11, 0x16 } } },
        { { "direction", "set", "Solo-L", "tv" }, "Solo-L", 0, { { 2, 0x94 } } },
        { { "noise", "set", "Uno-R", "off" }, "Uno-R", 0, { { 11, 0x10 } } },
        { { "dsp", "set", "X1-L", "inputMode", "ai0tc", "analogPreGainP0", "9" }, "X1-L", 0, {} },
        { { "dsp", "set", "X1-L", "inputMode", "ai0 (tc)", "analogPreGainP0", "9" }, "X1-L", 0, { { 0, 0x92 } } },
        // 5 becomes 35 in the six bits from bit 116 on.
        { { "dsp", "set", "X1-L", "compressionRatioArray@250", "8.00 : 1" }, "X1-L", 0,
            { { 14, 0x39 }, { 15, 0x16 } } },
        { { "direction", "set", "X1-L", "normal", "--program", "1" }, "X1-L", 1, { { 0, 0x80 } } },
        { { "noise", "set", "X1-L", "medium" }, "X1-L", 0, { { 3, 0x4B } } },
    };
    for (const auto& [words, name, program, changed] : cases) {
        SetUp();
        auto expected = aid(name).state();
        for (const auto& [index, byte] : changed)
            expected.programBlocks[std::size_t(program)][index] = byte;
        EXPECT_EQ(auriskWords(words), changed.empty() ? ExitCode::usage : ExitCode::done) << words[3];
        EXPECT_EQ(aid(name).state(), expected) << words[1] << ' ' << words[3];
    }
}

TEST_F(ToolSettings, WhatChangedIsTold)
{
    EXPECT_EQ(auriskWords({ "dsp", "set", "Solo-L", "direction", "tv", "matrixGain", "20" }), ExitCode::done);
    EXPECT_THAT(sink.output,
        ElementsAre("Solo-L", "  program             0", "  direction           normal -> tv",
            "  matrixGain          -12 dB -> -20 dB", "  matrixGainMantissa  0 -> 2", "  matrixGainExponent  5 -> 4",
            "  equalizerArray@250  -28 dB -> -22 dB", "  equalizerArray@500  -18 dB -> -12 dB"));
    EXPECT_EQ(aurisk("eq set X1-L 1000=-6 --json"), ExitCode::done);
    EXPECT_THAT(sink.output,
        ElementsAre(EndsWith(R"("program":0,"changes":[{"field":"equalizerArray","frequency":1000,"from":"dbMinus24",)"
                             R"("to":"dbMinus6"}]})")));
    const int messages = simulator->radio().messageCount("X1-L");
    EXPECT_EQ(aurisk("eq set X1-L 1000=-6 --json"), ExitCode::done);
    EXPECT_THAT(sink.output, ElementsAre(EndsWith(R"("program":0,"changes":[]})")));
    EXPECT_EQ(
        simulator->radio().messageCount("X1-L") - messages, messagesToConnect + 2 * 2); // two questions, and no write
}

TEST_F(ToolSettings, EveryFieldIsShownWithItsLabelAndItsRawValue)
{
    EXPECT_EQ(aurisk("dsp show Solo-L"), ExitCode::done);
    EXPECT_EQ(sink.output.front(), "Solo-L  program 0, chip a4");
    for (const auto* line : { "  noise                 weak", "  matrixGain            -12 dB",
             "  inputMode             AI1 (Mic1)    1", "  notCare                             2",
             "  HZ    equalizerArray", "   250  -28 dB   1", "  7000  0 dB    15" })
        EXPECT_THAT(sink.output, Contains(line));

    EXPECT_EQ(aurisk("dsp show X1-L --program all"), ExitCode::done);
    for (const auto* program : { "0", "1", "2" })
        EXPECT_THAT(sink.output, Contains(std::string("X1-L  program ") + program + ", chip a16"));
    EXPECT_THAT(
        sink.output, Contains("  7500  -4 dB   18      1.67 : 1  16           100 ms / 800 ms; 3 ms / 100 ms  4"));
    EXPECT_THAT(sink.output, Each(testing::SizeIs(testing::Le(80U))));

    EXPECT_EQ(aurisk("dsp show X1 --both --json --program 1"), ExitCode::done);
    for (const auto& told : objects()) {
        EXPECT_EQ(told["program"], 1);
        EXPECT_EQ(told["chip"], "a16");
        EXPECT_EQ(told["direction"], "tv");
        EXPECT_EQ(told["noise"], "off");
        EXPECT_EQ(told["matrixGain"], 12);
        EXPECT_EQ(told["fields"].size(), 30U);
        EXPECT_EQ(told["fields"]["maximumPowerOutputArray"][15], "dbMinus6");
    }
    EXPECT_EQ(objects().size(), 2U);

    EXPECT_EQ(aurisk("noise Solo-L --program 2"), ExitCode::done);
    EXPECT_THAT(sink.output, ElementsAre("Solo-L  noise medium, program 2"));
    EXPECT_EQ(aurisk("direction Uno-R --json"), ExitCode::done);
    EXPECT_THAT(sink.output, ElementsAre(EndsWith(R"("direction":"normal","program":0})")));
}

TEST_F(ToolSettings, TheEqualiserIsDrawn)
{
    EXPECT_EQ(aurisk("eq Solo-L"), ExitCode::done);
    EXPECT_THAT(sink.output,
        ElementsAre("Solo-L  equaliser of program 0", //
            "   0 dB +                                                        ####",
            "        |                                              #### #### ::::",
            "  -4 dB +                                         #### :::: :::: ::::",
            "        |                               #### #### :::: :::: :::: ::::",
            "  -8 dB +                          #### :::: :::: :::: :::: :::: ::::",
            "        |                     #### :::: :::: :::: :::: :::: :::: ::::",
            " -12 dB +                #### :::: :::: :::: :::: :::: :::: :::: ::::",
            "        |           #### :::: :::: :::: :::: :::: :::: :::: :::: ::::",
            " -16 dB +           :::: :::: :::: :::: :::: :::: :::: :::: :::: ::::",
            "        |      #### :::: :::: :::: :::: :::: :::: :::: :::: :::: ::::",
            " -20 dB +      :::: :::: :::: :::: :::: :::: :::: :::: :::: :::: ::::",
            "        |      :::: :::: :::: :::: :::: :::: :::: :::: :::: :::: ::::",
            " -24 dB +      :::: :::: :::: :::: :::: :::: :::: :::: :::: :::: ::::",
            "        |      :::: :::: :::: :::: :::: :::: :::: :::: :::: :::: ::::",
            " -28 dB + #### :::: :::: :::: :::: :::: :::: :::: :::: :::: :::: ::::",
            "        | :::: :::: :::: :::: :::: :::: :::: :::: :::: :::: :::: ::::",
            "        +------------------------------------------------------------",
            "          250  500  1000 1500 2000 2500 3000 3500 4000 5000 6000 7000 Hz"));
    EXPECT_EQ(aurisk("eq X1-L"), ExitCode::done);
    EXPECT_EQ(sink.output.size(), 1U + 21 + 3);
    EXPECT_THAT(sink.output, Each(testing::SizeIs(testing::Le(80U))));
    EXPECT_EQ(aurisk("eq Solo-L --json"), ExitCode::done);
    EXPECT_EQ(objects()[0]["frequences"],
        (std::vector<int>{ 250, 500, 1000, 1500, 2000, 2500, 3000, 3500, 4000, 5000, 6000, 7000 }));
    EXPECT_EQ(objects()[0]["raw"], (std::vector<int>{ 1, 6, 8, 9, 10, 11, 12, 12, 13, 14, 14, 15 }));
    EXPECT_EQ(objects()[0]["dB"], (std::vector<int>{ -28, -18, -14, -12, -10, -8, -6, -6, -4, -2, -2, 0 }));
}

TEST_F(ToolSettings, TheSharedBlockGoesByNumbers)
{
    EXPECT_EQ(ask_hexadecimal(aid("Solo-L").state().globalBlock), "8045d9000c2520200b");
    EXPECT_EQ(aurisk("global set Solo-L numberOfPrograms 2 toneLevel 1"), ExitCode::done);
    EXPECT_THAT(sink.output, ElementsAre("Solo-L", "  toneLevel   2 -> 1", "  programNbr  3 -> 2"));
    EXPECT_EQ(ask_hexadecimal(aid("Solo-L").state().globalBlock), "804595000c2520200b");
    EXPECT_EQ(aurisk("global set X1 numberOfPrograms 7 empty 16383 --both"), ExitCode::done);
    for (const auto* name : { "X1-L", "X1-R" })
        EXPECT_EQ(ask_hexadecimal(aid(name).state().globalBlock), "358540e91342499b6ad6ffff");
    EXPECT_EQ(aurisk("global show X1-L --json"), ExitCode::done);
    EXPECT_EQ(objects()[0]["numberOfPrograms"], 7);
    EXPECT_EQ(objects()[0]["fields"]["empty"], 16383);
    EXPECT_EQ(aurisk("global show Solo-L"), ExitCode::done);
    EXPECT_THAT(sink.output, Contains("  programNbr       2"));
}

TEST_F(ToolSettings, WhatFitsNoChipIsRefusedBeforeAnyDeviceIsLookedForAndWhatFitsAnotherBeforeItIsConnected)
{
    const std::string smallModes = "ai0TC, ai1Mic1, ai2DAIAUX, ai3Mic2, fixedHyperCardioid, ai1Ai2, ai0Ai3";
    struct {
        std::string commandLine, sentence;
        bool isLookedFor = false;
    } const cases[] = {
        { "dsp set inputMod 1", "\"inputMod\" is the name of no field (aurisk dsp show lists them)" },
        { "dsp set X1-L inputMode", "inputMode: its value is missing (aurisk dsp --help)" },
        { "dsp set noiseReduction loud",
            "noiseReduction: \"loud\" will not do; on an a4 or h01 it may be off, low, medium, high, on an a16 it may "
            "be "
            "off, low, medium, high, max" },
        { "dsp set expansion maybe", "expansion: \"maybe\" will not do; it may be off, on" },
        { "dsp set notCare 32", "notCare: \"32\" will not do; a number from 0 to 31 is needed" },
        { "dsp set notCare -1", "notCare: \"-1\" will not do; a number from 0 to 31 is needed" },
        { "dsp set matrixGain 0", "matrixGain: 0 is outside 1 to 47" },
        { "dsp set direction unknown", "direction: \"unknown\" will not do; it may be normal, tv, meeting, face" },
        { "dsp set equalizerArray 1,2",
            "equalizerArray: 2 value(s) will not do; on an a4 or h01 12 are needed, with commas between (or one as "
            "equalizerArray@HZ), on an a16 16 are needed, with commas between (or one as equalizerArray@HZ)" },
        { "dsp set inputMode@250 1", "inputMode@250: inputMode is no list of bands" },
        { "dsp set maximumPowerOutputArray@5100 off",
            "maximumPowerOutputArray@5100: \"5100\" is the frequency of no band; there are 250, 500, 1000, 1500, 2000, "
            "2500, 3000, 3500, 4000, 4500, 5000, 5500, 6000, 6500, 7000, 7500 Hz" },
        { "eq set 250=-41",
            "250=-41: no such gain; on an a4 or h01 it may be -30, -28, -26, -24, -22, -20, -18, -16, -14, -12, -10, "
            "-8, "
            "-6, -4, -2, 0 dB, on an a16 it may be -40, -38, -36, -34, -32, -30, -28, -26, -24, -22, -20, -18, -16, "
            "-14, "
            "-12, -10, -8, -6, -4, -2, 0 dB" },
        { "noise set quiet", "noise: \"quiet\" will not do; it may be off, weak, medium, strong" },
        { "global set direction tv", "\"direction\" is the name of no field (aurisk global show lists them)" },
        { "global set numberOfPrograms 8",
            "numberOfPrograms: \"8\" will not do; on an a4 or h01 a number from 0 to 3 is needed, on an a16 a number "
            "from "
            "0 to 7 is needed" },
        { "dsp export X1-L /nowhere/fit.json", "/nowhere/fit.json cannot be written: No such file or directory" },
        { "dsp export X1-L /", "/ cannot be written: Is a directory" },
        { "dsp import X1-L /nowhere/fit.json", "/nowhere/fit.json cannot be read: No such file or directory" },
        { "dsp import X1-L /", "/ cannot be read: Is a directory" },

        { "dsp set Solo-L inputMode noiseGenerator",
            "inputMode: \"noiseGenerator\" will not do; it may be " + smallModes, true },
        { "dsp set X1-L notCare 1", "\"notCare\" is the name of no field (aurisk dsp show lists them)", true },
        { "eq set Uno-R 4500=0",
            "4500=0: \"4500\" is the frequency of no band; there are 250, 500, 1000, 1500, 2000, 2500, 3000, 3500, "
            "4000, "
            "5000, 6000, 7000 Hz",
            true },
        { "global set Solo-L numberOfPrograms 4", "numberOfPrograms: \"4\" will not do; a number from 0 to 3 is needed",
            true },
    };
    for (const auto& [commandLine, sentence, isLookedFor] : cases) {
        simulator->radio().setState(isLookedFor ? CBManagerState::poweredOn : CBManagerState::poweredOff);
        EXPECT_EQ(aurisk(commandLine), ExitCode::usage) << commandLine;
        EXPECT_THAT(sink.errors, ElementsAre("aurisk: " + sentence));
        for (const auto* name : { "X1-L", "Solo-L", "Uno-R" })
            EXPECT_EQ(simulator->radio().messageCount(name), 0) << commandLine;
    }
}

TEST_F(ToolSettings, AnAidThatDoesNotTellItsChipIsNotConnected)
{
    SimulatedWorld world;
    world.aids = { placed("Odd-L", "0A:1B:2C:3D:4E:5F", 0x07) };
    simulator = Simulator::create(world);
    for (const auto* command : { "dsp show", "dsp set noise weak", "eq", "direction", "global show", "dsp export -" }) {
        EXPECT_EQ(aurisk(command), ExitCode::failed) << command;
        EXPECT_THAT(sink.errors, ElementsAre("aurisk: the chip of Odd-L is not known, so its settings cannot be read"));
    }
    EXPECT_EQ(simulator->radio().messageCount("Odd-L"), 0);
}

} // namespace
} // namespace aurisk::tests
