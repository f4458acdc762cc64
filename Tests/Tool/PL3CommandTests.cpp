#include "Simulator/SimulatedPL3Aid.h"
#include "Tests/Tool/ToolScenario.h"

#include <fmt/format.h>

namespace aurisk::tests {
namespace {

/// Commands on a pair of PL3 hearing aids beside those of the other family.
class PL3Commands : public ToolScenario {
protected:
    PL3Commands()
    {
        auto world = threeAids();
        int last = 0x66;
        for (const std::string name : { "P3-L", "P3-R" }) {
            PL3AidState state{ .name = name,
                .address = fmt::format("0A:1B:2C:00:55:{:02X}", last++),
                .isRight = isRightByName(name),
                .volume = 6,
                .battery = 80 };
            state.programs.resize(3);
            world.aids.push_back({ .aid = std::make_shared<SimulatedPL3Aid>(std::move(state)) });
        }
        simulator = Simulator::create(std::move(world));
    }

    SimulatedPL3Aid& pl3(const std::string& name) { return dynamic_cast<SimulatedPL3Aid&>(*simulator->aid(name)); }
};

constexpr auto identity = R"({"identifier":"5A1D0000-A1D5-4000-8000-0A1B2C005566","name":"P3-L",)";

TEST_F(PL3Commands, ReadAndAdjustAHearingAid)
{
    expectToSay("P3-L", identity,
        {
            { "program P3-L", "program 0", R"("program":0})" },
            { "program set P3-L 2", "program 2", R"("program":2})" },
            { "program P3-L", "program 2", R"("program":2})" },
            { "volume P3-L", "volume 6", R"("volume":6})" },
            { "volume set P3-L 15", "volume 15", R"("volume":15})" },
            { "volume P3-L", "volume 15", R"("volume":15})" },
            { "mute P3-L on", "mute on", R"("mute":true})" },
            { "battery P3-L", "battery 80 %", R"("bat":80})" },
        });
    EXPECT_EQ(pl3("P3-L").state().volume, 15);
    EXPECT_TRUE(pl3("P3-L").state().muted);

    EXPECT_EQ(aurisk("volume set P3 3 --both"), ExitCode::done);
    EXPECT_THAT(sink.output, ElementsAre("P3-L  volume 3", "P3-R  volume 3"));
}

TEST_F(PL3Commands, ListThemBesideTheOtherFamily)
{
    EXPECT_EQ(aurisk("scan --duration 1"), ExitCode::done);
    ASSERT_EQ(sink.output.size(), 6U);
    EXPECT_THAT(wordsOf(sink.output[0]), ElementsAre("NAME", "RSSI", "EAR", "CHIP", "ADDRESS", "IDENTIFIER"));
    EXPECT_THAT(sink.output,
        testing::Contains("P3-R          -60 dBm   right       PL3         -                  "
                          "5A1D0000-A1D5-4000-8000-0A1B2C005567"));
    EXPECT_EQ(aurisk("scan --duration 1 --json"), ExitCode::done);
    EXPECT_THAT(sink.output,
        testing::Contains(identity
            + std::string(R"("class":"PL3Accessory","rssi":-60,"orientation":"left","modelName":"1203",)"
                          R"("manufacturerId":258})")));
}

TEST_F(PL3Commands, TellAllAboutAHearingAid)
{
    const std::string advertised = identity
        + std::string(R"("class":"PL3Accessory","orientation":"left","modelName":"1203","manufacturerId":258,)");
    EXPECT_EQ(aurisk("info P3-L --json"), ExitCode::done);
    EXPECT_THAT(sink.output,
        ElementsAre(advertised
            + R"("program":0,"volume":6,"bat":80,"mute":false,"deviceSettings":{"numberOfPrograms":3,)"
              R"("numberOfVCSteps":16,"VCStepSize":1,"VCEnabled":1,"MDA8LowerByte":0,"MDA8UpperByte":0,)"
              R"("MDA9LowerByte":0,"MDA9UpperByte":0,"algorithmVersionBuild":19,"algorithmVersionMinor":4,)"
              R"("algorithmVersionMajor":2}})"));
    EXPECT_EQ(aurisk("info P3-L"), ExitCode::done);
    EXPECT_THAT(sink.output, testing::IsSupersetOf({ "  algorithm     2.4.19", "  chip          PL3" }));

    // What it does not tell is left open: the answers to the third and the last question are lost.
    const int connecting = simulator->radio().messageCount("P3-L") / 2 - 5 * 3;
    const int now = simulator->radio().messageCount("P3-L") + connecting;
    faults("P3-L").faults = { { .message = now + 9 }, { .message = now + 15 } };
    EXPECT_EQ(aurisk("info P3-L --json"), ExitCode::done);
    EXPECT_THAT(sink.output,
        ElementsAre(advertised + R"("program":0,"volume":6,"bat":null,"mute":false,"deviceSettings":null})"));
    EXPECT_THAT(sink.errors,
        ElementsAre("aurisk: P3-L did not tell its battery level", "aurisk: P3-L did not tell its device settings"));

    // What the wearer changes meanwhile is told as it is in the end.
    faults("P3-L").faults.clear();
    begin("info P3-L --json");
    after(0.5);
    wearer("P3-L", "program 2");
    EXPECT_EQ(end(), ExitCode::done);
    EXPECT_EQ(objects().front()["program"], 2);
}

TEST_F(PL3Commands, ShowTheSettingsOfTheRunningProgram)
{
    auto state = pl3("P3-L").state();
    state.program = 1;
    state.programs[1].bandEQs = { 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 125 };
    state.programs[1].compRatios = Data(16, 35);
    state.programs[1].compThreshold = Data(16, 31);
    state.programs[1].compTimes = Data(16, 0);
    state.programs[1].mpoConfig = Data(16, 16); // beyond the table
    state.programs[1].inputSettings = Data(16, 7);
    pl3("P3-L").setState(state);
    EXPECT_EQ(aurisk("dsp show P3-L"), ExitCode::done);
    EXPECT_EQ(sink.output.front(), "P3-L  program 1");
    EXPECT_THAT(sink.output,
        testing::IsSupersetOf({ "  CHANNEL  RATIO  THRESHOLD  LIMIT         TIME CONSTANTS",
            "       16  8 : 1  82 dB SPL  unknown (16)  B:3,120", "  eq7500     125  mpoRelease              7" }));
    EXPECT_EQ(aurisk("dsp show P3-L --json --program 1"), ExitCode::done);
    const auto object = objects().front();
    EXPECT_EQ(object["program"], 1);
    EXPECT_EQ(object["bandEQ"]["eq7500"], 125);
    EXPECT_EQ(object["compThreshold"]["ch16"], 31);
    EXPECT_EQ(object["inputSetting"].size(), 16U);

    EXPECT_EQ(aurisk("dsp show P3-L --program 2"), ExitCode::failed);
    EXPECT_THAT(sink.errors,
        ElementsAre("aurisk: P3-L tells the settings of the program that is running alone, and that is 1 "
                    "(aurisk program set P3-L 2 switches)"));

    // Whenever the wearer switches, and back again, all that is shown is of one program.
    for (const double span : { 0.1, 0.2, 0.35, 5.0 })
        for (double when = 0.05; when < 1.5; when += 0.01) {
            pl3("P3-L").setState(state);
            begin("dsp show P3-L --json");
            after(when);
            wearer("P3-L", "program 0");
            after(span);
            wearer("P3-L", "program 1");
            EXPECT_EQ(end(), ExitCode::done) << when;
            const auto shown = objects().front();
            const bool isFirst = shown["program"] == 0;
            EXPECT_EQ(shown["bandEQ"]["eq7500"] != 125, isFirst) << when;
            EXPECT_EQ(shown["compRatio"]["ch1"] != 35, isFirst) << when;
            EXPECT_EQ(shown["compTime"]["ch1"] != 0, isFirst) << when;
            EXPECT_EQ(shown["compThreshold"]["ch1"] != 31, isFirst) << when;
            EXPECT_EQ(shown["mpoConfig"]["ch1"] != 16, isFirst) << when;
            EXPECT_EQ(shown["inputSetting"]["mpoRelease"] != 7, isFirst) << when;
        }
}

TEST_F(PL3Commands, GiveSettingsUpThatCannotBeReadWhole)
{
    const auto switched = "aurisk: P3-L was switched to program 1 while its settings were read";
    begin("dsp show P3-L --program 0");
    after(0.6);
    wearer("P3-L", "program 1");
    EXPECT_EQ(end(), ExitCode::failed);
    EXPECT_THAT(sink.errors, ElementsAre(switched));

    wearer("P3-L", "program 0");
    begin("dsp show P3-L");
    for (int i = 1; i <= 3; ++i) { // in each attempt
        after(0.6);
        wearer("P3-L", "program " + std::to_string(i % 2));
    }
    EXPECT_EQ(end(), ExitCode::failed);
    EXPECT_THAT(sink.errors, ElementsAre(switched));

    auto state = pl3("P3-L").state();
    state.programs[1].bandEQs = Data(16, 0x7D);
    pl3("P3-L").setState(state);
    simulator->world().placed("P3-L").mtu = 23; // too short for a frame with so many escapes
    EXPECT_EQ(aurisk("dsp show P3-L"), ExitCode::failed);
    EXPECT_THAT(sink.errors, ElementsAre("aurisk: P3-L told 8 of the 16 bytes of its bandEQs"));
}

TEST_F(PL3Commands, WaitForTheirAnswerWhateverTheWearerDoesMeanwhile)
{
    for (double when = 0.05; when < 0.6; when += 0.003) {
        begin("battery P3-L");
        after(when);
        wearer("P3-L", "volume 9");
        EXPECT_EQ(end(), ExitCode::done) << when;
        EXPECT_THAT(sink.output, ElementsAre("P3-L  battery 80 %")) << when;
    }
}

TEST_F(PL3Commands, ShowWhatWearersDo)
{
    begin("monitor P3-L --duration 5");
    after(2);
    wearer("P3-L", "volume 9");
    wearer("P3-L", "program 2");
    wearer("P3-L", "battery 79");
    wearer("P3-L", "mute 1");
    after(1);
    wearer("P3-L", "volume 9");
    simulator->radio().dropLink("P3-L");
    EXPECT_EQ(end(), ExitCode::failed);
    Lines events;
    for (const auto& line : sink.output)
        events.push_back(line.substr(line.find("P3-L")));
    EXPECT_THAT(events,
        ElementsAre("P3-L  connected, program 0, volume 6, battery 80 %", "P3-L  volume 9 (was 6)",
            "P3-L  program 2 (was 0)", "P3-L  battery 79 %", "P3-L  mute on", "P3-L  disconnected"));
}

TEST_F(PL3Commands, MissNothingThatAWearerDoesWhileTheStateIsRead)
{
    for (const std::string name : { "P3-L", "X1-L" })
        for (double when = 0.05; when < 0.8; when += 0.005) {
            wearer(name, "volume 6");
            begin("monitor " + name + " --duration 3 --json");
            after(when);
            wearer(name, "volume 9");
            after(1);
            wearer(name, "volume 7");
            EXPECT_EQ(end(), ExitCode::done) << when;
            std::vector<int> told;
            for (const auto& object : objects())
                if (object.contains("volume")) {
                    told.push_back(object["volume"]);
                    const bool isFirst = told.size() == 1;
                    EXPECT_TRUE(isFirst || object["previous"] == told[told.size() - 2]) << sink.output.back();
                }
            EXPECT_THAT(told, testing::AnyOf(ElementsAre(6, 9, 7), ElementsAre(9, 7))) << name << ' ' << when;
        }
}

TEST_F(PL3Commands, SendAFrameAndExplainTheAnswer)
{
    EXPECT_EQ(aurisk("raw P3-L 7e000183"), ExitCode::done);
    EXPECT_THAT(
        sink.output, ElementsAre("P3-L", "  sent     7e000183", "  command  03, batteryLevel", "  payload  50"));
    EXPECT_EQ(aurisk("raw P3-L 7e00020005 --json"), ExitCode::done);
    EXPECT_THAT(sink.output, ElementsAre(identity + std::string(R"("sent":"7e00020005","pieces":1})")));
    EXPECT_EQ(pl3("P3-L").state().volume, 5);

    EXPECT_EQ(aurisk("raw P3-L 7e001106" + std::string(32, '1').replace(30, 2, "7d5d")), ExitCode::done);
    EXPECT_EQ(sink.output.back(), "  reply  the first of 2 pieces is confirmed, the others are not waited for");

    // The next notification is the answer, and where it cannot be, that is said.
    int mistaken = 0;
    for (double when = 0.1; when < 0.6; when += 0.002) {
        begin("raw P3-L 7e000183");
        after(when);
        wearer("P3-L", "volume 9");
        EXPECT_EQ(end(), ExitCode::done) << when;
        const bool isMistaken = sink.output.at(2) == "  command  00, volumeLevel";
        EXPECT_EQ(isMistaken, !sink.errors.empty()) << when;
        mistaken += isMistaken;
    }
    EXPECT_GT(mistaken, 0);
}

TEST_F(PL3Commands, SayInOneSentenceWhatCannotBeDone)
{
    struct {
        std::string commandLine, sentence;
        ExitCode expected = ExitCode::failed;
    } const cases[] = {
        { "transparency P3-L", "aurisk transparency does not work with P3-L, which is a PL3 hearing aid" },
        { "dsp export P3 fit.json --both", "aurisk dsp export does not work with P3-L, which is a PL3 hearing aid" },
        { "global set P3-R numberOfPrograms 2",
            "aurisk global set does not work with P3-R, which is a PL3 hearing aid" },
        { "logs P3-L", "aurisk logs does not work with P3-L, which is a PL3 hearing aid" },
        { "volume P3-L --program 1", "P3-L has one volume for all programs: leave --program out", ExitCode::usage },
        { "dsp show P3-L --program all",
            "P3-L tells the settings of the program that is running alone: leave --program out", ExitCode::usage },
        { "raw P3-L 110104",
            "frame: PL3 hearing aids take 7E, the length in two bytes, the command and at most 254 bytes of payload",
            ExitCode::usage },
        { "program set P3-L 3", "P3-L refused to set its program to 3 (aurisk info tells which programs it has)" },
        { "raw P3-L 7e000185", "P3-L did not answer within 3 s when asked to tell its burnLiveSettings" },
        { "raw P3-L 7e00028300", "P3-L did not answer within 3 s when asked to tell its battery level" },
        { "raw X1-L 7e000183", "frame: it is one for PL3 hearing aids, and X1-L is none", ExitCode::usage },
    };
    for (const auto& [commandLine, sentence, expected] : cases) {
        EXPECT_EQ(aurisk(commandLine), expected) << commandLine;
        EXPECT_THAT(sink.errors, ElementsAre("aurisk: " + sentence));
    }
    // Nothing was said to any of them.
    EXPECT_EQ(pl3("P3-L").state().volume, 6);
}

TEST_F(PL3Commands, EndInTimeWhateverTheLinkDoes)
{
    for (const std::string command : { "program P3-L", "dsp show P3-L", "volume set P3-L 9", "battery P3-L" })
        withEachFault(
            "P3-L", command,
            { Fault::Kind::dropLinkBefore, Fault::Kind::lose, Fault::Kind::refuse, Fault::Kind::delay },
            [&] {
                auto state = pl3("P3-L").state();
                state.volume = 6;
                pl3("P3-L").setState(state);
            },
            [&](ExitCode ended) {
                const bool isSet = ended == ExitCode::done && command.starts_with("volume");
                EXPECT_TRUE(!isSet || pl3("P3-L").state().volume == 9);
            });
}

} // namespace
} // namespace aurisk::tests
