#include "Tests/Simulator/ARadio.h"

namespace aurisk::simulatortests {
namespace {

using Kind = Fault::Kind;
constexpr auto withResponse = CBCharacteristicWriteType::withResponse;

struct ALink : ARadio { };

TEST_F(ALink, NumbersItsMessagesInTheOrderOfTheirSending)
{
    givenASubscribedAid();
    left->setNotifyValue(true, battery);
    queue.advance(10ms);
    EXPECT_EQ(radio().messageCount("X1-L"), 6) << "a subscription";
    write(readVolume1);
    EXPECT_EQ(radio().messageCount("X1-L"), 7) << "a write";
    queue.advance(10ms);
    EXPECT_EQ(radio().messageCount("X1-L"), 8) << "its reply";
    write(readVolume1, withResponse);
    queue.advance(10ms);
    EXPECT_EQ(radio().messageCount("X1-L"), 11) << "a write, its confirmation and its reply";
    left->readValue(battery);
    EXPECT_EQ(radio().messageCount("X1-L"), 11) << "a question has no number";
    queue.advance(10ms);
    EXPECT_EQ(radio().messageCount("X1-L"), 12) << "its answer has";
    radio().perform("X1-L", { "battery", 70 });
    EXPECT_EQ(radio().messageCount("X1-L"), 13);
    central->cancelPeripheralConnection(left);
    queue.advance(10ms);
    connect();
    EXPECT_EQ(radio().messageCount("X1-L"), 14) << "a further connection counts on";
    EXPECT_EQ(radio().messageCount("X1-R"), 0);
}

/// Two requests at once on a subscribed aid: messages 6 and 7 are the writes, 8 and 9 the replies.
TEST_F(ALink, SpoilsExactlyTheMessageThatItIsTo)
{
    struct Row {
        const char* what;
        std::vector<Fault> faults;
        Lines heard;
    };
    const auto lost = "disconnected X1-L, simulated 1";
    const auto refused = "value AE02 00fe68d10202044116";
    const Row rows[] = {
        { "nothing", {}, { volume1Is10, volume2Is11 } },
        { "a write is lost", { { Kind::lose, 6 } }, { volume2Is11 } },
        { "a reply is lost", { { Kind::lose, 9 } }, { volume1Is10 } },
        { "a write comes twice", { { Kind::duplicate, 6 } }, { volume1Is10, volume1Is10, volume2Is11 } },
        { "a reply comes twice", { { Kind::duplicate, 9 } }, { volume1Is10, volume2Is11, volume2Is11 } },
        { "a write is late", { { Kind::delay, 6, 1s } }, { volume2Is11, volume1Is10 } },
        { "a reply is late", { { Kind::delay, 8, 1s } }, { volume2Is11, volume1Is10 } },
        { "a write is corrupt", { { Kind::corrupt, 6 } }, { volume2Is11 } }, // its checksum is wrong
        { "a reply is corrupt", { { Kind::corrupt, 8 } }, { "value AE02 00fe68910300040a0b16", volume2Is11 } },
        { "a write is refused", { { Kind::refuse, 7 } }, { volume1Is10, refused } },
        { "the link goes before a write", { { Kind::dropLinkBefore, 7 } }, { lost } },
        { "the link goes after a write", { { Kind::dropLinkAfter, 7 } }, { lost } },
        { "the link goes before a reply", { { Kind::dropLinkBefore, 9 } }, { volume1Is10, lost } },
        { "the link goes after a reply", { { Kind::dropLinkAfter, 8 } }, { volume1Is10, lost } },
        { "a reply comes late and twice", { { Kind::delay, 8, 1s }, { Kind::duplicate, 8 } },
            { volume2Is11, volume1Is10, volume1Is10 } },
        { "later messages", { { Kind::lose, 10 }, { Kind::refuse, 11 } }, { volume1Is10, volume2Is11 } },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        simulator = Simulator::create(world(), queue);
        central = makeCentral();
        givenASubscribedAid();
        faults().faults = row.faults;
        write(readVolume1);
        write(readVolume2);
        EXPECT_EQ(within(2s), row.heard);
    }
}

TEST_F(ALink, ConfirmsAWriteOnceAlthoughItComesTwice)
{
    givenASubscribedAid();
    faults().faults = { { Kind::duplicate, 6 } };
    write(readVolume1, withResponse);
    EXPECT_THAT(within(1s), ElementsAre("written AE01", volume1Is10, volume1Is10));
}

TEST_F(ALink, NotifiesNothingAfterASubscriptionThatWasRefused)
{
    givenDiscoveredCharacteristics();
    faults().faults = { { Kind::refuse, 5 } };
    left->setNotifyValue(true, reply);
    EXPECT_THAT(within(1s), ElementsAre("subscribed AE02, simulated 4"));
    write(readVolume1);
    EXPECT_THAT(within(1s), IsEmpty());
}

TEST_F(ALink, WaitsForAnAidThatLeavesTheAirDuringTheAttempt)
{
    givenFoundAids();
    central->connectPeripheral(left);
    radio().perform("X1-L", { "power", 0 });
    EXPECT_THAT(within(60s), IsEmpty());
    radio().perform("X1-L", { "power", 1 });
    EXPECT_THAT(within(1s), ElementsAre("connected X1-L"));
}

/// The connection is lost and made again a second later: cancelled at any moment around that, the attempt ends once.
TEST_F(ALink, CanBeCancelledWhileALostConnectionIsMadeAgain)
{
    for (int cancelledAt = 995; cancelledAt <= 1015; ++cancelledAt) {
        SCOPED_TRACE(cancelledAt);
        simulator = Simulator::create(world(), queue);
        central = makeCentral();
        givenFoundAids();
        faults().faults = { { Kind::lose, 1 } };
        central->connectPeripheral(left);
        queue.advance(Seconds(cancelledAt / 1000.0));
        central->cancelPeripheralConnection(left);
        const auto heard = within(60s);
        EXPECT_EQ(heard.size(), 1u);
        EXPECT_EQ(heard.back(), "disconnected X1-L");
        EXPECT_EQ(radio().linkCount(), 0);
    }
}

TEST_F(ALink, DeliversWhatCameBeforeItWentAndNothingAfter)
{
    givenASubscribedAid();
    faults().faults = { { Kind::dropLinkAfter, 6 } };
    write("fe681c0205008b16"); // mute
    write("fe681c0202028a16"); // program 2
    EXPECT_THAT(within(1s), ElementsAre("disconnected X1-L, simulated 1"));
    EXPECT_TRUE(aid().muted);
    EXPECT_EQ(aid().program, 0);
    EXPECT_EQ(radio().linkCount(), 0);
}

/// Every answer that is not a value, spoiled in each way. The messages: connection 1, services 2, characteristics 3,
/// subscription 4, write 5 with its confirmation 6.
TEST_F(ALink, SpoilsAnswersThatCarryNoValue)
{
    const Lines whole = { "connected X1-L", "services AE30 180F AE3A", "characteristics of AE30: AE01/12 AE02/16",
        "subscribed AE02", "written AE01" };
    const Lines refused = { "failed X1-L, simulated 3", "services, simulated 4",
        "characteristics of AE30:, simulated 4", "subscribed AE02, simulated 4", "written AE01, simulated 4" };
    const std::size_t messages[] = { 1, 2, 3, 4, 6 };

    for (std::size_t step = 0; step < std::size(messages); ++step)
        for (const auto kind : { Kind::refuse, Kind::lose, Kind::duplicate, Kind::corrupt, Kind::delay,
                 Kind::dropLinkBefore, Kind::dropLinkAfter }) {
            SCOPED_TRACE("message " + std::to_string(messages[step]) + ", kind " + std::to_string(int(kind)));
            simulator = Simulator::create(world(), queue);
            central = makeCentral();
            givenFoundAids();
            recorder->onLine = [this](const std::string& line) { // each step follows the one before it
                if (line == "connected X1-L")
                    left->discoverServices();
                else if (line == "services AE30 180F AE3A")
                    left->discoverCharacteristics(left->services().front());
                else if (line == "characteristics of AE30: AE01/12 AE02/16")
                    left->setNotifyValue(true, characteristic(0, 1));
                else if (line == "subscribed AE02")
                    left->writeValue({}, characteristic(0, 0), withResponse);
            };
            faults().faults = { { kind, int(messages[step]), 1s } };
            central->connectPeripheral(left);
            const auto heard = within(5s);
            recorder->onLine = {};

            auto expected = Lines(whole.begin(), whole.begin() + std::ptrdiff_t(step));
            if (kind == Kind::refuse)
                expected.push_back(refused[step]);
            else if (kind == Kind::dropLinkBefore && step == 0)
                expected.push_back("failed X1-L, simulated 1");
            else if (kind == Kind::dropLinkAfter)
                expected.insert(expected.end(), { whole[step], "disconnected X1-L, simulated 1" });
            else if (kind == Kind::dropLinkBefore)
                expected.push_back("disconnected X1-L, simulated 1");
            else if (kind != Kind::lose || step == 0) // a lost connection is made again
                expected = whole;
            EXPECT_EQ(heard, expected);
            const bool goes = kind == Kind::dropLinkBefore || kind == Kind::dropLinkAfter;
            EXPECT_EQ(radio().linkCount(), goes || (kind == Kind::refuse && step == 0) ? 0 : 1);
        }
}

TEST_F(ALink, HearsASilentAidConfirmButNeverAnswer)
{
    givenASubscribedAid();
    faults().isSilent = true;
    left->readValue(battery);
    write("fe681c0205008b16", withResponse);
    radio().perform("X1-L", { "volume", 3 });
    EXPECT_THAT(within(5s), ElementsAre("written AE01"));
    EXPECT_TRUE(aid().muted);
}

TEST_F(ALink, FailsOrNeverEndsWhereTheAidWillNotConnect)
{
    givenFoundAids();
    faults().refusesConnections = true;
    central->connectPeripheral(left);
    EXPECT_THAT(within(1s), ElementsAre("failed X1-L, simulated 3"));
    faults().refusesConnections = false;
    faults().ignoresConnections = true;
    central->connectPeripheral(left);
    EXPECT_THAT(within(3600s), IsEmpty());
    EXPECT_EQ(left->state(), CBPeripheralState::connecting);
    central->cancelPeripheralConnection(left);
    EXPECT_THAT(within(1s), ElementsAre("disconnected X1-L"));
    EXPECT_EQ(radio().messageCount("X1-L"), 0);
}

TEST_F(ALink, LosesTheAidThatIsPackedForShippingAfterItsReply)
{
    givenASubscribedAid();
    write("fe68cc02c3494216");
    EXPECT_THAT(within(1s), ElementsAre("value AE02 00fe684c02c349c216", "disconnected X1-L, simulated 1"));
    central->connectPeripheral(left);
    EXPECT_THAT(within(60s), IsEmpty());
    radio().perform("X1-L", { "power", 1 });
    EXPECT_THAT(within(1s), ElementsAre("connected X1-L"));
}

} // namespace
} // namespace aurisk::simulatortests
