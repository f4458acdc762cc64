#include "Tests/Tool/ToolScenario.h"

namespace aurisk::tests {
namespace {

using Kind = Fault::Kind;

class ToolMishap : public ToolScenario { };

TEST_F(ToolMishap, WhoIsNotThereIsNotFound)
{
    EXPECT_EQ(aurisk("volume Y-L"), ExitCode::notFound);
    EXPECT_THAT(sink.errors, ElementsAre("aurisk: no hearing aid called \"Y-L\" within 5 s; seen: X1-L, X1-R, Solo-L"));
    EXPECT_THAT(sink.output, IsEmpty());
    EXPECT_EQ(aurisk("volume Y-L --json --timeout 0.5"), ExitCode::notFound);
    EXPECT_THAT(sink.output,
        ElementsAre(R"({"error":"no hearing aid called \"Y-L\" within 0.5 s; seen: X1-L, X1-R, Solo-L",)"
                    R"("seen":["X1-L","X1-R","Solo-L"]})"));
    EXPECT_EQ(aurisk("volume"), ExitCode::usage);
    EXPECT_THAT(sink.errors, ElementsAre("aurisk: 3 hearing aids found: X1-L, X1-R, Solo-L; name one of them"));
}

TEST_F(ToolMishap, TheOnlyAidNeedsNoName)
{
    wearer("X1-L", "power 0");
    wearer("X1-R", "power 0");
    EXPECT_EQ(aurisk("volume set 3"), ExitCode::done);
    EXPECT_THAT(sink.output, ElementsAre("Solo-L  volume 3, program 0"));
    wearer("Solo-L", "power 0");
    EXPECT_EQ(aurisk("volume set 3"), ExitCode::notFound);
    EXPECT_THAT(sink.errors, ElementsAre("aurisk: no hearing aid was heard within 5 s"));
    EXPECT_EQ(aurisk("scan"), ExitCode::done);
    EXPECT_THAT(sink.errors, ElementsAre("aurisk: no hearing aid was heard"));
}

TEST_F(ToolMishap, ANamedAidIsNotWaitedForLongerThanItTakesToBeHeard)
{
    EXPECT_EQ(aurisk("volume set X1-L 3"), ExitCode::done);
    EXPECT_LT(queue.now(), Seconds(1));
}

TEST_F(ToolMishap, WhatAnAidRefusesIsNamed)
{
    EXPECT_EQ(aurisk("program set X1-L 9"), ExitCode::failed);
    EXPECT_THAT(sink.errors,
        ElementsAre("aurisk: X1-L refused to switch to program 9 (aurisk info tells which programs it has)"));
    auto state = aid("X1-L").state();
    state.hearingTestSupported = false;
    aid("X1-L").setState(state);
    EXPECT_EQ(aurisk("tone stop X1-L"), ExitCode::failed);
}

TEST_F(ToolMishap, EveryWaitForASilentAidEnds)
{
    faults("X1-L").isSilent = true;
    EXPECT_EQ(aurisk("volume set X1-L 3 --program 1"), ExitCode::failed);
    EXPECT_THAT(sink.errors,
        ElementsAre("aurisk: X1-L did not answer within 3 s when asked to set the volume of program 1 to 3"));
    EXPECT_EQ(aurisk("volume X1-L --timeout 0.7"), ExitCode::failed);
    EXPECT_THAT(
        sink.errors, ElementsAre("aurisk: X1-L did not answer within 0.7 s when asked to tell its program and volume"));
    EXPECT_EQ(aurisk("battery X1-L --json"), ExitCode::failed);
    EXPECT_THAT(sink.output,
        ElementsAre(
            R"({"error":"X1-L did not answer within 5 s when asked to tell its battery level","name":"X1-L"})"));
}

TEST_F(ToolMishap, EveryWaitForAConnectionEnds)
{
    faults("X1-L").ignoresConnections = true;
    EXPECT_EQ(aurisk("volume X1-L --timeout 2"), ExitCode::failed);
    EXPECT_THAT(sink.errors, ElementsAre("aurisk: X1-L did not answer within 2 s when asked to connect"));
    faults("X1-L").ignoresConnections = false;
    faults("X1-L").refusesConnections = true;
    EXPECT_EQ(aurisk("volume X1-L"), ExitCode::failed);
    EXPECT_THAT(sink.errors, ElementsAre(testing::StartsWith("aurisk: X1-L cannot be connected: ")));
}

TEST_F(ToolMishap, ARadioThatIsNotOnIsSaid)
{
    struct {
        CBManagerState state;
        std::string sentence;
        double seconds;
    } const cases[] = {
        { CBManagerState::poweredOff, "Bluetooth is switched off", 0 },
        { CBManagerState::unsupported, "there is no Bluetooth radio", 0 },
        { CBManagerState::unauthorized, "Bluetooth may not be used from here", 0 },
        { CBManagerState::resetting, "Bluetooth did not become ready within 5 s", 5 },
    };
    for (const auto& [state, sentence, seconds] : cases) {
        simulator->radio().setState(state);
        const auto began = queue.now();
        EXPECT_EQ(aurisk("volume X1-L"), ExitCode::bluetoothUnavailable);
        EXPECT_THAT(sink.errors, ElementsAre("aurisk: " + sentence));
        EXPECT_NEAR((queue.now() - began).count(), seconds, 0.02);
    }
    begin("volume X1-L"); // still resetting
    after(2);
    simulator->radio().setState(CBManagerState::poweredOn);
    EXPECT_EQ(end(), ExitCode::done);
}

TEST_F(ToolMishap, ARadioThatGoesOffEndsTheRun)
{
    struct {
        std::string commandLine;
        double when;
        std::string sentence;
    } const cases[] = {
        { "scan", 1, "Bluetooth is switched off" },
        { "volume Y", 1, "Bluetooth is switched off" },
        { "monitor X1-L", 2, "Bluetooth was switched off while X1-L was connected" },
        { "find X1-L --seconds 30", 2, "Bluetooth was switched off while X1-L was connected" },
    };
    for (const auto& [commandLine, when, sentence] : cases) {
        simulator->radio().setState(CBManagerState::poweredOn);
        begin(commandLine);
        after(when);
        simulator->radio().setState(CBManagerState::poweredOff);
        EXPECT_EQ(end(), ExitCode::bluetoothUnavailable) << commandLine;
        EXPECT_THAT(sink.errors, ElementsAre("aurisk: " + sentence));
    }
}

TEST_F(ToolMishap, ALostLinkEndsMonitoringAndIsShown)
{
    begin("monitor X1-L");
    after(2);
    simulator->radio().dropLink("X1-L");
    EXPECT_EQ(end(), ExitCode::failed);
    EXPECT_THAT(sink.output.back(), testing::EndsWith("X1-L  disconnected"));
    EXPECT_THAT(sink.errors, ElementsAre("aurisk: the link to X1-L was lost"));
}

TEST_F(ToolMishap, AnInterruptionEndsCleanlyWhereverTheRunIs)
{
    struct {
        std::string commandLine;
        double when;
        ExitCode expected;
    } const cases[] = {
        { "scan", 1, ExitCode::done },
        { "monitor X1-L", 0, ExitCode::done },
        { "monitor X1-L", 3, ExitCode::done },
        { "monitor --both", 3, ExitCode::done },
        { "find X1-L", 3, ExitCode::done },
        { "tone X1-L 1000 --db 1 --seconds 60", 3, ExitCode::done },
        { "volume Y", 1, ExitCode::interrupted },
        { "find X1-L", 0, ExitCode::interrupted },
    };
    for (const auto& [commandLine, when, expected] : cases) {
        begin(commandLine);
        after(when);
        EXPECT_FALSE(code) << commandLine;
        run->interrupt();
        run->interrupt(); // once more changes nothing
        after(1);
        EXPECT_EQ(end(), expected) << commandLine;
        EXPECT_THAT(sink.errors, IsEmpty()) << commandLine;
        EXPECT_FALSE(aid("X1-L").state().finding || aid("X1-L").state().inHearingMode) << commandLine;
    }
    // At any moment of a whole run.
    for (double when = 0; when < 1; when += 0.01) {
        begin("volume set X1 3 --both");
        after(when);
        run->interrupt();
        EXPECT_THAT(end(), testing::AnyOf(ExitCode::done, ExitCode::interrupted)) << when;
    }
}

/// The same command with each kind of fault at each message of its link.
TEST_F(ToolMishap, WhateverGoesWrongOnTheLinkTheRunEndsAndSaysSo)
{
    const auto pristine = aid("X1-L").state();
    for (const auto* command : { "info X1-L", "volume set X1-L 3", "battery X1-L", "find X1-L --seconds 1",
             "tone X1-L 1000 --db 40", "monitor X1-L --duration 1", "raw X1-L 110104" }) {
        const int first = simulator->radio().messageCount("X1-L");
        ASSERT_EQ(aurisk(command), ExitCode::done);
        const int messages = simulator->radio().messageCount("X1-L") - first;
        ASSERT_GT(messages, 5);
        for (const auto kind : { Kind::dropLinkBefore, Kind::dropLinkAfter, Kind::lose, Kind::duplicate, Kind::delay,
                 Kind::corrupt, Kind::refuse })
            for (int n = 1; n <= messages; ++n) {
                const auto what = std::string(command) + ", fault " + std::to_string(static_cast<int>(kind))
                    + " at message " + std::to_string(n);
                aid("X1-L").setState(pristine);
                const int message = simulator->radio().messageCount("X1-L") + n;
                faults("X1-L").faults = { { .kind = kind, .message = message, .by = Seconds(1) } };
                const auto ended = aurisk(std::string(command) + " --json");
                EXPECT_THAT(ended, testing::AnyOf(ExitCode::done, ExitCode::failed)) << what;
                EXPECT_EQ(ended == ExitCode::failed, !sink.errors.empty()) << what;
                objects();
                const auto& state = aid("X1-L").state();
                if (ended == ExitCode::done) {
                    EXPECT_FALSE(state.finding || state.inHearingMode || state.tone) << what;
                }
            }
        faults("X1-L").faults.clear();
    }
}

} // namespace
} // namespace aurisk::tests
