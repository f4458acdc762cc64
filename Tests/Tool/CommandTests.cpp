#include "Tests/Tool/ToolScenario.h"

namespace aurisk::tests {
namespace {

class Tool : public ToolScenario { };

constexpr auto leftIdentity = R"({"identifier":"5A1D0000-A1D5-4000-8000-0A1B2C3D4E5F","name":"X1-L",)";

TEST_F(Tool, ReadsAndAdjustsAHearingAid)
{
    expectToSay("X1-L", leftIdentity,
        {
            { "program X1-L", "program 0", R"("program":0})" },
            { "program set X1-L 2", "program 2", R"("program":2})" },
            { "program X1-L", "program 2", R"("program":2})" },
            { "volume X1-L", "volume 7, program 2", R"("volume":7,"program":2})" },
            { "volume set X1-L 15", "volume 15, program 2", R"("volume":15,"program":2})" },
            { "volume set X1-L 0 --program 1", "volume 0, program 1", R"("volume":0,"program":1})" },
            { "volume X1-L --program 1", "volume 0, program 1", R"("volume":0,"program":1})" },
            { "volume X1-L", "volume 15, program 2", R"("volume":15,"program":2})" },
            { "mute X1-L on", "mute on", R"("mute":true})" },
            { "transparency set X1-L 255", "transparency 255", R"("transLevel":255})" },
            { "transparency X1-L", "transparency 255", R"("transLevel":255})" },
            { "bredr X1-L", "BR/EDR off", R"("brEdr":false,"brEdrContinuousIfEnable":false})" },
            { "bredr X1-L on", "BR/EDR on", R"("brEdr":true,"brEdrContinuousIfEnable":false})" },
            { "bredr X1-L on --continuous", "BR/EDR on continuously",
                R"("brEdr":true,"brEdrContinuousIfEnable":true})" },
            { "bredr X1-L", "BR/EDR on continuously", R"("brEdr":true,"brEdrContinuousIfEnable":true})" },
            { "battery X1-L", "battery 84 %", R"("bat":84})" },
            { "orientation set X1-L right", "ear right", R"("orientation":"right"})" },
            { "orientation X1-L", "ear right", R"("orientation":"right"})" },
            { "find X1-L --seconds 2", "is audible for 2 s", R"("finding":true,"seconds":2.0})" },
            { "tone X1-L 1000 --db 40", "plays 1000 Hz at 40 dB for 1 s", R"("freq":1000,"dB":40,"seconds":1.0})" },
            { "tone X1-L 250 --amp 300 --seconds 0.5", "plays 250 Hz with an amplitude of 300 for 0.5 s",
                R"("freq":250,"amp":300,"seconds":0.5})" },
            { "tone supported X1-L", "hearing test yes", R"("hearingSupported":true})" },
            { "tone base X1-L 4000 --amp 1200", "measures 4000 Hz from amplitude 1200", R"("freq":4000,"amp":1200})" },
        });
    const auto& state = aid("X1-L").state();
    EXPECT_EQ(state.program, 2);
    EXPECT_THAT(state.volumes, ElementsAre(8, 0, 15));
    EXPECT_TRUE(state.muted && state.isRight && state.brEdrEnabled && state.brEdrContinuous);
    EXPECT_EQ(state.transparencyLevel, 255);
    EXPECT_EQ(state.baseAmplitude, (AuriskBaseAmplitude{ 4000, 1200 }));
    EXPECT_FALSE(state.inHearingMode);
}

TEST_F(Tool, TellsAllAboutAHearingAid)
{
    EXPECT_EQ(aurisk("info Solo-L --json"), ExitCode::done);
    EXPECT_THAT(sink.output,
        ElementsAre(R"({"identifier":"5A1D0000-A1D5-4000-8000-0A1B2C001122","name":"Solo-L",)"
                    R"("class":"AuriskA4Accessory","address":"0A:1B:2C:00:11:22","orientation":"left","hearChip":"a4",)"
                    R"("bleChip":"tiny600","transEnable":false,"program":0,"volume":8,"volumes":[8,5,7],"bat":84,)"
                    R"("transLevel":0,"brEdr":false,"brEdrContinuousIfEnable":false,"hearingSupported":true,)"
                    R"("profile":{"pSeriesCode":"Solo","skuCode":"Solo-A4","hwVersion":"1.2","swVersion":"2.3.1",)"
                    R"("bhwVersion":"1.0","bswVersion":"3.0.4"}})"));
    EXPECT_EQ(aurisk("info Solo-L"), ExitCode::done);
    EXPECT_EQ(sink.output.front(), "Solo-L");
    EXPECT_THAT(sink.output, testing::Contains("  hearing test        yes"));
    EXPECT_THAT(sink.output, testing::Contains("  product series      Solo"));

    // What it refuses to tell is left open.
    auto state = aid("Solo-L").state();
    state.hearingTestSupported = false;
    aid("Solo-L").setState(state);
    EXPECT_EQ(aurisk("info Solo-L --json"), ExitCode::done);
    EXPECT_EQ(objects().front()["hearingSupported"], false);
}

TEST_F(Tool, FindsAnAidAudibleAndSilentAgain)
{
    begin("find X1-L --seconds 5");
    after(2);
    EXPECT_TRUE(aid("X1-L").state().finding);
    after(2);
    EXPECT_TRUE(aid("X1-L").state().finding);
    EXPECT_EQ(end(), ExitCode::done);
    EXPECT_FALSE(aid("X1-L").state().finding);
}

TEST_F(Tool, PlaysAToneWithinTheHearingTestAlone)
{
    begin("tone X1-L 1000 --db 40 --timestamp 7");
    after(1);
    EXPECT_TRUE(aid("X1-L").state().inHearingMode);
    EXPECT_EQ(aid("X1-L").state().tone, (AuriskTone{ .frequency = 1000, .dB = 40, .timestamp = 7 }));
    EXPECT_EQ(end(), ExitCode::done);
    EXPECT_FALSE(aid("X1-L").state().inHearingMode);
    EXPECT_FALSE(aid("X1-L").state().tone);

    auto state = aid("X1-L").state();
    state.inHearingMode = true;
    state.tone = AuriskTone{ .frequency = 500 };
    aid("X1-L").setState(state);
    EXPECT_EQ(aurisk("tone stop X1-L"), ExitCode::done);
    EXPECT_FALSE(aid("X1-L").state().inHearingMode);
    EXPECT_FALSE(aid("X1-L").state().tone);

    state.hearingTestSupported = false;
    aid("X1-L").setState(state);
    EXPECT_EQ(aurisk("tone X1-L 1000 --db 40"), ExitCode::failed);
    EXPECT_THAT(sink.errors, ElementsAre("aurisk: X1-L has no hearing test, so it plays no tones"));
    EXPECT_EQ(aurisk("tone supported X1-L"), ExitCode::done);
    EXPECT_THAT(sink.output, ElementsAre("X1-L  hearing test no"));
}

TEST_F(Tool, SendsAFrameAndExplainsTheReply)
{
    EXPECT_EQ(aurisk("raw X1-L 11ff04"), ExitCode::done);
    EXPECT_THAT(sink.output,
        ElementsAre("X1-L", //
            "  sent     fe681102ff047e16", "  reply    00fe689106ff04010805071716", "  command  91, read done",
            "  di0 di1  ff 04", "  payload  01 08 05 07", "  meaning  didReadProgram(program: 0, volume: 8)"));

    EXPECT_EQ(aurisk("raw X1-L 1c0209 --json"), ExitCode::failed);
    EXPECT_THAT(sink.output,
        ElementsAre(leftIdentity
                + std::string(R"("sent":"fe681c0202099116","reply":"00fe68dc0202095116","cmd":220,"di0":2,"di1":9,)"
                              R"("data":"","result":{"error":{"controlError":{}}}})"),
            R"({"error":"X1-L did not do what the frame asks for: controlError","name":"X1-L"})"));

    // What a wearer does meanwhile is no reply, whenever it is.
    for (double when = 0.1; when < 0.3; when += 0.001) {
        begin("raw X1-L 110104");
        after(when);
        wearer("X1-L", "volume 9");
        EXPECT_EQ(end(), ExitCode::done) << when;
        EXPECT_THAT(sink.output, testing::Contains("  command  91, read done")) << when;
    }
}

TEST_F(Tool, AsksBothOfAPairAtTheSameTime)
{
    begin("volume set X1 3 --both");
    after(0.35);
    EXPECT_EQ(simulator->radio().linkCount(), 2);
    EXPECT_EQ(end(), ExitCode::done);
    EXPECT_THAT(sink.output, ElementsAre("X1-L  volume 3, program 0", "X1-R  volume 3, program 0"));
    EXPECT_EQ(aid("X1-L").state().volumes[0], 3);
    EXPECT_EQ(aid("X1-R").state().volumes[0], 3);
    EXPECT_EQ(aid("Solo-L").state().volumes[0], 8);

    // The worse of the two counts, whichever it is.
    for (const auto* name : { "X1-L", "X1-R" }) {
        simulator = Simulator::create(threeAids());
        auto state = aid(name).state();
        state.volumes = { 8 };
        aid(name).setState(state);
        EXPECT_EQ(aurisk("program set 2 --both --json"), ExitCode::failed);
        const auto told = objects();
        ASSERT_EQ(told.size(), 2U);
        const auto& failure = told[told[0].contains("error") ? 0 : 1];
        EXPECT_EQ(failure["name"], name);
        EXPECT_THAT(std::string(failure["error"]), HasSubstr("refused to switch to program 2"));
    }
}

TEST_F(Tool, ScansAndShowsEachDeviceOnce)
{
    EXPECT_EQ(aurisk("scan"), ExitCode::done);
    ASSERT_EQ(sink.output.size(), 4U);
    EXPECT_EQ(sink.output[0], "NAME          RSSI      EAR         CHIP        ADDRESS            IDENTIFIER");
    EXPECT_THAT(sink.output,
        testing::Contains("X1-L          -48 dBm   left        a16         0A:1B:2C:3D:4E:5F  "
                          "5A1D0000-A1D5-4000-8000-0A1B2C3D4E5F"));
    EXPECT_EQ(queue.now(), Seconds(5));

    EXPECT_EQ(aurisk("scan --json"), ExitCode::done);
    EXPECT_THAT(sink.output,
        testing::Contains(leftIdentity
            + std::string(R"("class":"AuriskA16Accessory","rssi":-48,"address":"0A:1B:2C:3D:4E:5F",)"
                          R"("orientation":"left","hearChip":"a16","bleChip":"tiny600","transEnable":false})")));
    EXPECT_EQ(objects().size(), 3U);

    EXPECT_EQ(aurisk("scan --json --updates --duration 1"), ExitCode::done);
    EXPECT_GT(objects().size(), 9U); // five advertisements a second from each
}

TEST_F(Tool, ANameOfControlCharactersReachesNoTerminal)
{
    auto world = threeAids();
    world.aids = { placed("X\033[2J\n-L", "0A:1B:2C:3D:4E:5F", 0x06) };
    simulator = Simulator::create(world);
    EXPECT_EQ(aurisk("volume"), ExitCode::done);
    EXPECT_THAT(sink.output, ElementsAre("X?[2J?-L  volume 8, program 0"));
    EXPECT_EQ(aurisk("volume Y"), ExitCode::notFound);
    EXPECT_THAT(sink.errors, ElementsAre("aurisk: no hearing aid called \"Y\" within 5 s; seen: X?[2J?-L"));
}

TEST_F(Tool, AWearerIsHeardWhileItMonitors)
{
    begin("monitor X1 --both --duration 10 --json");
    after(1);
    wearer("X1-L", "volume 9");
    after(1);
    wearer("X1-R", "program 2");
    after(1);
    wearer("X1-R", "battery 83");
    wearer("Solo-L", "volume 1");
    EXPECT_EQ(end(), ExitCode::done);

    Lines events;
    for (auto event : objects()) {
        const double time = event["time"];
        event.erase("time");
        event.erase("identifier");
        events.push_back(std::to_string(static_cast<int>(time)) + " " + event.dump());
    }
    EXPECT_THAT(events,
        ElementsAre( //
            R"(0 {"bat":84,"event":"connected","name":"X1-L","program":0,"volume":8})",
            R"(0 {"bat":84,"event":"connected","name":"X1-R","program":0,"volume":8})",
            R"(1 {"event":"volume","name":"X1-L","previous":8,"program":0,"volume":9})",
            R"(2 {"event":"program","name":"X1-R","previous":0,"program":2})",
            R"(3 {"bat":83,"event":"battery","name":"X1-R"})", //
            R"(10 {"event":"disconnected","name":"X1-L"})", R"(10 {"event":"disconnected","name":"X1-R"})"));
}

TEST_F(Tool, WhatAScriptPlaysIsMonitored)
{
    simulator = Simulator::create(SimulatedWorld::makeDefault());
    EXPECT_EQ(aurisk("monitor X1-L --duration 10"), ExitCode::done);
    ASSERT_EQ(sink.output.size(), 4U);
    EXPECT_THAT(sink.output[0], HasSubstr(" s  X1-L  connected, program 0, volume 8, battery 84 %"));
    EXPECT_THAT(sink.output[1], testing::MatchesRegex(" +4\\.0. s  X1-L  volume 9 \\(was 8\\), program 0"));
    EXPECT_THAT(sink.output[2], testing::MatchesRegex(" +9\\.0. s  X1-L  program 1 \\(was 0\\)"));
    EXPECT_THAT(sink.output[3], testing::EndsWith("X1-L  disconnected"));
}

} // namespace
} // namespace aurisk::tests
