#include "Tests/Tool/OddAid.h"
#include "Tests/Tool/ToolUpdate.h"

#include <set>

namespace aurisk::tests {
namespace {

using testing::IsSupersetOf;
using testing::MatchesRegex;
using Kind = Fault::Kind;

/// Says the same to every frame of an update, whatever it holds, and does nothing.
class StubbornAid final : public OddAid {
public:
    /// The status to start, packet and validation, as many as it says to each.
    using Answers = std::map<std::uint8_t, Data>;

    StubbornAid(std::vector<SimulatedService> services, Answers answers)
        : OddAid(std::move(services))
        , _answers(std::move(answers))
    {
    }
    void didReceive(const CBUUID&, DataView value) override
    {
        const std::uint8_t opcode = value[5];
        for (const auto status : _answers[opcode]) {
            const auto sum = std::uint8_t(0x68 + 0x9D + 0x03 + 0x91 + opcode + status);
            send(CBUUID(0xAE3C), { 0x00, 0xFE, 0x68, 0x9D, 0x03, 0x91, opcode, status, sum, 0x16 });
        }
    }

private:
    Answers _answers;
};

TEST_F(ToolUpdate, EachFailureOfAnAidHasASentence)
{
    const std::string file = "\"" + path + "\"";
    const struct {
        AuriskFirmware firmware;
        std::string sentence;
    } cases[] = {
        { { .fails = FirmwareFailure::init },
            "refused to begin an update; charge it, switch it off and on, and try again" },
        { { .diskSize = 2339 },
            "has no room for the 2340 bytes of the image; is " + file
                + " the right file for it, and --type 0 the right one?" },
        { { .fails = FirmwareFailure::space },
            "has no room for the 2340 bytes of the image; is " + file
                + " the right file for it, and --type 0 the right one?" },
        { { .fails = FirmwareFailure::sequence, .failsAt = 4 },
            "missed a packet after 30 % of the image; move closer and start the update again" },
        { { .fails = FirmwareFailure::crc },
            "did not receive the image as it was sent; move closer and start the update again" },
        { { .fails = FirmwareFailure::boot },
            "received the image and could not start it; is " + file
                + " the right file for it? aurisk profile show X1-L tells which versions it has" },
        { { .fails = FirmwareFailure::bootError },
            "received the image and could not start it; is " + file
                + " the right file for it? aurisk profile show X1-L tells which versions it has" },
    };
    for (const auto& [firmware, sentence] : cases) {
        setFirmware("X1-L", firmware);
        EXPECT_EQ(aurisk(update("X1-L")), ExitCode::failed);
        EXPECT_THAT(sink.errors, ElementsAre("aurisk: X1-L " + sentence));
        EXPECT_THAT(aid("X1-L").firmwareImage(), IsEmpty());
    }
    setFirmware("X1-L", {});
    const int first = simulator->radio().messageCount("X1-L");
    faults("X1-L").faults // of AE3A: the discovery that comes with the link, and the second one, by the update
        = { { .kind = Kind::refuse, .message = first + 5 }, { .kind = Kind::refuse, .message = first + 14 } };
    EXPECT_EQ(aurisk(update("X1-L")), ExitCode::failed);
    EXPECT_THAT(sink.errors,
        ElementsAre("aurisk: X1-L did not tell what its service for firmware updates holds; switch it off and on, and "
                    "start the update again"));
    EXPECT_EQ(aurisk(update("X1-L")), ExitCode::done);
}

TEST_F(ToolUpdate, AnAidThatIsNotAsItShouldBeHasASentenceToo)
{
    using Properties = CBCharacteristicProperties;
    const SimulatedService whole{ CBUUID(0xAE3A),
        { { CBUUID(0xAE3B), Properties::writeWithoutResponse }, { CBUUID(0xAE3C), Properties::notify } } };
    const SimulatedService deaf{ CBUUID(0xAE3A), { { CBUUID(0xAE3C), Properties::notify } } };
    const struct {
        std::vector<SimulatedService> services;
        StubbornAid::Answers answers;
        std::string sentence;
    } cases[] = {
        { {}, {}, "Odd-L has no service for firmware updates (AE3A)" },
        { { deaf }, {},
            "Odd-L cannot be updated: its service for firmware updates lacks AE3B to write to, or AE3C to answer; "
            "nothing was sent to it" },
        // 68 + 9D + 03 + 91 + 01 + 42 = 1DC
        { { whole }, { { 1, { 0x42 } } },
            "Odd-L gave an answer that stands for nothing (0x00fe689d03910142dc16); move closer and start the update "
            "again" },
        // 68 + 9D + 03 + 91 + 03 + 42 = 1DE, and nobody knows what the device makes of the image that it has
        { { whole }, { { 1, { 0x13 } }, { 2, { 0x15 } }, { 3, { 0x17, 0x42 } } },
            "Odd-L gave an answer that stands for nothing (0x00fe689d03910342de16); aurisk profile show Odd-L tells "
            "which versions it has" },
        { { whole }, { { 1, { 0x11, 0x13 } }, { 2, { 0x15 } }, { 3, { 0x17 } } },
            "Odd-L fell silent when it was about to start the image (nothing for 30 s); aurisk profile show Odd-L "
            "tells "
            "which "
            "versions it has" },
    };
    for (const auto& [services, answers, sentence] : cases) {
        SimulatedWorld world;
        world.aids = { { .aid = std::make_shared<StubbornAid>(services, answers) } };
        simulator = Simulator::create(world);
        EXPECT_EQ(aurisk(update("Odd-L")), ExitCode::failed);
        EXPECT_THAT(sink.errors, ElementsAre("aurisk: " + sentence));
    }

    // One that starts the image and does not leave is disconnected, and found as it was.
    SimulatedWorld world;
    world.aids = { { .aid = std::make_shared<StubbornAid>(std::vector{ whole },
                         StubbornAid::Answers{ { 1, { 0x11, 0x13 } }, { 2, { 0x15 } }, { 3, { 0x17, 0x19 } } }) } };
    simulator = Simulator::create(world);
    EXPECT_EQ(aurisk(update("Odd-L")), ExitCode::done);
    EXPECT_THAT(sink.output.back(), MatchesRegex("Odd-L  updated in 5.. s, tells no versions"));
}

TEST_F(ToolUpdate, AnAidThatFallsSilentIsNotWaitedForForever)
{
    begin(update("X1-L"));
    untilTold("30 %");
    faults("X1-L").isSilent = true;
    const auto began = queue.now();
    EXPECT_EQ(end(), ExitCode::failed);
    EXPECT_NEAR((queue.now() - began).count(), 5, 0.05);
    EXPECT_THAT(sink.errors,
        ElementsAre("aurisk: X1-L fell silent after 30 % of the image (nothing for 5 s); switch it off and on, and "
                    "start the update again"));

    faults("X1-L").isSilent = false;
    begin(update("X1-L") + " --timeout 0.5");
    untilTold("70 %");
    faults("X1-L").latency = Seconds(0.2); // three packets take 1.2 s, and each less than 0.5 s
    untilTold("100 %");
    faults("X1-L").latency = Seconds(0.005);
    EXPECT_EQ(end(), ExitCode::done);
    EXPECT_THAT(sink.errors, IsEmpty());
}

TEST_F(ToolUpdate, ALinkThatIsLostIsSaidOnce)
{
    begin(update("X1") + " --both");
    untilTold("X1-R  50 %");
    simulator->radio().dropLink("X1-L");
    EXPECT_EQ(end(), ExitCode::failed);
    EXPECT_THAT(sink.errors,
        ElementsAre("aurisk: the link to X1-L was lost after 50 % of the image; move closer and start the update again",
            "aurisk: X1-R was updated and X1-L was not: their firmware may differ now"));
    EXPECT_EQ(sink.output.back(), "X1-R  updated in 1.4 s, firmware 2.3.1 -> 2.4.0");

    begin(update("X1-L"));
    untilTold("50 %");
    simulator->radio().setState(CBManagerState::poweredOff);
    EXPECT_EQ(end(), ExitCode::bluetoothUnavailable);
    EXPECT_THAT(sink.errors,
        ElementsAre("aurisk: Bluetooth was switched off while X1-L was connected",
            "aurisk: the update of X1-L was broken off after 50 % of the image; the next one begins anew"));
}

TEST_F(ToolUpdate, AnAidThatDoesNotComeBackIsSaid)
{
    begin(update("X1-L"));
    untilTold("100 %");
    faults("X1-L").ignoresConnections = true;
    EXPECT_EQ(end(), ExitCode::failed);
    EXPECT_THAT(sink.errors,
        ElementsAre("aurisk: X1-L took the whole image, and has not been heard since (30 s); switch it off and on, and "
                    "aurisk profile show X1-L tells which versions it has"));

    // It comes back, and says nothing.
    faults("X1-L").ignoresConnections = false;
    begin(update("X1-L"));
    untilTold("100 %");
    after(0.5);
    faults("X1-L").isSilent = true;
    EXPECT_EQ(end(), ExitCode::failed);
    EXPECT_THAT(sink.errors,
        ElementsAre("aurisk: X1-L did not answer within 3 s when asked to tell its swVersion",
            "aurisk: X1-L took the whole image, and has not told its versions since; aurisk profile show X1-L tells "
            "which versions it has"));
}

/// Each kind of fault at each message of the link, with an image of three packets.
TEST_F(ToolUpdate, WhateverGoesWrongOnTheLinkTheUpdateEndsAndIsSaidToBeDoneOnlyWhereItIs)
{
    write("version 2.4.0\n", 600);
    std::set<std::string> sentences;
    withEachFault(
        "X1-L", update("X1-L") + " --json",
        { Kind::dropLinkBefore, Kind::dropLinkAfter, Kind::lose, Kind::duplicate, Kind::delay, Kind::corrupt,
            Kind::refuse },
        [&] {
            after(5); // whatever it was, the aid is back
            setFirmware("X1-L", {});
        },
        [&](ExitCode ended) {
            EXPECT_NE(ended, ExitCode::usage);
            objects();
            EXPECT_TRUE(ended != ExitCode::done || aid("X1-L").firmwareImage() == image);
            for (const auto& error : sink.errors)
                sentences.insert(error.substr(0, error.find(';')));
        });
    EXPECT_THAT(sentences,
        IsSupersetOf({ std::string("aurisk: X1-L did not agree to answer an update (AE3C)"),
            std::string("aurisk: the link to X1-L was lost after 0 % of the image"),
            std::string("aurisk: the link to X1-L was lost while it checked the image"),
            std::string("aurisk: X1-L fell silent while it checked the image (nothing for 30 s)") }));
}

} // namespace
} // namespace aurisk::tests
