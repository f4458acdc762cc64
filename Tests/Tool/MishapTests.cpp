#include "AuriskSDK/Shared/Utils/PreconditionPolicy.h"
#include "Tests/Tool/OddAid.h"
#include "Tests/Tool/ToolScenario.h"

namespace aurisk::tests {
namespace {

using Kind = Fault::Kind;

class ToolMishap : public ToolScenario { };

/// Answers every request with the same bytes.
class Parrot final : public OddAid {
public:
    explicit Parrot(Data answer)
        : OddAid({ { CBUUID(0xAE30),
            { { CBUUID(0xAE01), CBCharacteristicProperties::write },
                { CBUUID(0xAE02), CBCharacteristicProperties::notify } } } })
        , _answer(std::move(answer))
    {
    }
    void didReceive(const CBUUID&, DataView) override { send(CBUUID(0xAE02), _answer); }

private:
    Data _answer;
};

TEST_F(ToolMishap, WhoIsNotThereIsNotFound)
{
    EXPECT_EQ(aurisk("volume Y-L --json --timeout 0.5"), ExitCode::notFound);
    EXPECT_THAT(sink.output,
        ElementsAre(R"({"error":"no hearing aid called \"Y-L\" within 0.5 s; seen: X1-L, X1-R, Solo-L",)"
                    R"("seen":["X1-L","X1-R","Solo-L"]})"));
    EXPECT_EQ(aurisk("volume"), ExitCode::usage);
    EXPECT_THAT(sink.errors, ElementsAre("aurisk: 3 hearing aids found: X1-L, X1-R, Solo-L; name one of them"));
}

TEST_F(ToolMishap, WhatWasRefusedIsNotUndone)
{
    faults("X1-L").faults = { { .kind = Kind::refuse, .message = messagesToConnect + 1 } };
    EXPECT_EQ(aurisk("find X1-L"), ExitCode::failed);
    EXPECT_EQ(simulator->radio().messageCount("X1-L"), messagesToConnect + 2)
        << "that request and its refusal, and no end of finding";
}

TEST_F(ToolMishap, TheOnlyAidNeedsNoName)
{
    wearer("X1-L", "power 0");
    wearer("X1-R", "power 0");
    EXPECT_EQ(aurisk("volume set 3"), ExitCode::done);
    EXPECT_THAT(sink.output, ElementsAre("Solo-L  volume 3, program 0"));
    EXPECT_LT(queue.now(), Seconds(2));
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

TEST_F(ToolMishap, AnAidThatAnswersNonsenseHarmsNobody)
{
    setPreconditionPolicy(PreconditionPolicy::contain);
    struct {
        Data answer;
        std::string commandLine, sentence;
    } const cases[] = {
        // 68 + 91 + 03 + 00 + 04 + FF = 1FF: the current program is 255, which no request can carry.
        { { 0x00, 0xFE, 0x68, 0x91, 0x03, 0x00, 0x04, 0xFF, 0xFF, 0x16 }, "volume set 3",
            "Odd-L says that its program is 255, which cannot be" },
        // 68 + 9C + 02 + 01 + 14 = 11B: an acknowledgement where a value is due.
        { { 0x00, 0xFE, 0x68, 0x9C, 0x02, 0x01, 0x14, 0x1B, 0x16 }, "volume set 3",
            "Odd-L gave an answer that fits nothing when asked to tell its program and volume" },
        // 68 + 42 + 02 + 01 + 04 = B1: a command that nothing stands for.
        { { 0x00, 0xFE, 0x68, 0x42, 0x02, 0x01, 0x04, 0xB1, 0x16 }, "program set 3",
            "Odd-L gave an answer that fits nothing when asked to switch to program 3" },
        // Empty, and with a size byte that no frame can have: both are dropped.
        { {}, "program set 3", "Odd-L did not answer within 3 s when asked to switch to program 3" },
        { { 0x00, 0xFE, 0x68, 0x91, 0xFF, 0x00, 0x00, 0x16 }, "program set 3",
            "Odd-L did not answer within 3 s when asked to switch to program 3" },
        // 68 + 91 + 03 + 00 + 03 + 00 = FF, and the same of the shared block: one byte where 56 are due, or 12.
        { { 0x00, 0xFE, 0x68, 0x91, 0x03, 0x00, 0x03, 0x00, 0xFF, 0x16 }, "dsp show --program 0",
            "Odd-L holds settings of program 0 that make no sense" },
        { { 0x00, 0xFE, 0x68, 0x91, 0x03, 0x00, 0x03, 0x00, 0xFF, 0x16 }, "dsp show --program 1",
            "Odd-L gave an answer that fits nothing when asked to tell the settings of program 1" },
        { { 0x00, 0xFE, 0x68, 0x91, 0x03, 0x06, 0x03, 0x00, 0x05, 0x16 }, "global show",
            "Odd-L holds settings of all programs that make no sense" },
        // 68 + 91 + 03 + 06 + 08 + FF = 209: the series code, whatever was asked for.
        { { 0x00, 0xFE, 0x68, 0x91, 0x03, 0x06, 0x08, 0xFF, 0x09, 0x16 }, "profile show",
            "Odd-L gave an answer that fits nothing when asked to tell its pSeriesCode" },
        { { 0x00, 0xFE, 0x68, 0x91, 0x03, 0x06, 0x08, 0xFF, 0x09, 0x16 }, "logs",
            "Odd-L refused to tell the summary of its use, or not all of it came" },
        // 68 + 91 + 03 + 00 + 06 + 55 = 157: one byte of a log, four times.
        { { 0x00, 0xFE, 0x68, 0x91, 0x03, 0x00, 0x06, 0x55, 0x57, 0x16 }, "logs",
            "the summary of its use that Odd-L told is too short: 4 bytes" },
        { {}, "battery", "Odd-L has no battery service (180F)" },
    };
    for (const auto& [answer, commandLine, sentence] : cases) {
        SimulatedWorld world;
        world.aids = { { .aid = std::make_shared<Parrot>(answer) } };
        simulator = Simulator::create(world);
        EXPECT_EQ(aurisk(commandLine), ExitCode::failed) << sentence;
        EXPECT_THAT(sink.errors, ElementsAre("aurisk: " + sentence));
    }
    setPreconditionPolicy(PreconditionPolicy::stop);
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
        { CBManagerState::unsupported, "there is no Bluetooth radio (--backend sim works without one)", 0 },
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
             "tone X1-L 1000 --db 40", "monitor X1-L --duration 1", "raw X1-L 110104", "eq set X1-L 1000=-6",
             "global show X1-L", "tone base X1-L 500 --amp 1", "profile set X1-L age 3", "logs X1-L" }) {
        withEachFault(
            "X1-L", std::string(command) + " --json",
            { Kind::dropLinkBefore, Kind::dropLinkAfter, Kind::lose, Kind::duplicate, Kind::delay, Kind::corrupt,
                Kind::refuse },
            [&] { aid("X1-L").setState(pristine); },
            [&](ExitCode ended) {
                EXPECT_NE(ended, ExitCode::usage);
                objects();
                const auto& state = aid("X1-L").state();
                EXPECT_FALSE(ended == ExitCode::done && (state.finding || state.inHearingMode || state.tone));
            });
    }
}

} // namespace
} // namespace aurisk::tests
