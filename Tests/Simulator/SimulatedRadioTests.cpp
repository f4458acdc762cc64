#include "Tests/Simulator/ARadio.h"

#include <nlohmann/json.hpp>

namespace aurisk::simulatortests {
namespace {

constexpr auto withResponse = CBCharacteristicWriteType::withResponse;
constexpr auto withoutResponse = CBCharacteristicWriteType::withoutResponse;

TEST_F(ARadio, HearsEachAidAtAMomentOfItsOwnAndHasNoTimerWhereNobodyScans)
{
    EXPECT_THAT(within(10s), ElementsAre("state 5"));
    EXPECT_EQ(queue.clock()->pendingCount(), 0u);
    central->scanForPeripherals({});
    EXPECT_THAT(within(0.1s), ElementsAre("found X1-L -50"));
    EXPECT_THAT(within(10s), ElementsAre("found X1-R -60"));
    central->stopScan();
    EXPECT_THAT(within(10s), IsEmpty());
    EXPECT_EQ(queue.clock()->pendingCount(), 0u);
}

TEST_F(ARadio, HearsEveryAdvertisementWhereDuplicatesAreWanted)
{
    simulator->world().placed("X1-R").advertisingInterval = 0.5s;
    queue.runUntilIdle();
    central->scanForPeripherals({ .allowDuplicates = true });
    const auto heard = within(10s);
    EXPECT_EQ(std::count(heard.begin(), heard.end(), "found X1-L -50"), 50);
    EXPECT_EQ(std::count(heard.begin(), heard.end(), "found X1-R -60"), 20);
}

TEST_F(ARadio, DoesNotHearAnAidThatIsConnectedOrOffTheAir)
{
    givenFoundAids();
    connect();
    radio().perform("X1-R", { "power", 0 });
    central->scanForPeripherals({ .allowDuplicates = true });
    EXPECT_THAT(within(1s), IsEmpty());
    radio().perform("X1-R", { "power", 1 });
    EXPECT_THAT(within(0.2s), ElementsAre("found X1-R -60"));
    central->cancelPeripheralConnection(left);
    EXPECT_THAT(within(0.1s), testing::Contains("disconnected X1-L"));
    EXPECT_THAT(within(0.2s), testing::Contains("found X1-L -50"));
}

TEST_F(ARadio, NotifiesNothingBeforeTheAidHasHeardOfASubscription)
{
    givenDiscoveredCharacteristics();
    left->setNotifyValue(true, battery);
    radio().perform("X1-L", { "battery", 66 });
    EXPECT_THAT(within(1s), ElementsAre("subscribed 2A19"));
    radio().perform("X1-L", { "battery", 65 });
    EXPECT_THAT(within(1s), ElementsAre("value 2A19 41"));
}

TEST_F(ARadio, DeliversWhatWasWrittenBeforeACancelButNoAnswer)
{
    givenASubscribedAid();
    write("fe681c0205008b16"); // mute
    radio().perform("X1-L", { "volume", 3 });
    central->cancelPeripheralConnection(left);
    write("fe681c0202028a16"); // program 2, too late
    EXPECT_THAT(within(1s), ElementsAre("disconnected X1-L"));
    EXPECT_TRUE(aid().muted);
    EXPECT_EQ(aid().program, 0);
}

TEST_F(ARadio, ReportsNoErrorForALinkThatIsLostWhileItDisconnects)
{
    givenFoundAids();
    connect();
    central->cancelPeripheralConnection(left);
    radio().dropLink("X1-L");
    EXPECT_THAT(within(1s), ElementsAre("disconnected X1-L"));
}

TEST_F(ARadio, ForgetsTheSubscriptionsAndMessagesOfAConnectionThatHasGone)
{
    givenASubscribedAid();
    faults().faults = { { Fault::Kind::delay, 7, 1s } };
    write(readVolume1);
    queue.advance(20ms); // message 7, the reply, is under way
    radio().dropLink("X1-L");
    EXPECT_EQ(left->state(), CBPeripheralState::connected) << "nobody has been told";
    EXPECT_THAT(within(20ms), ElementsAre("disconnected X1-L, simulated 1"));
    connect();
    left->discoverServices();
    queue.advance(20ms);
    left->discoverCharacteristics(left->services().front());
    EXPECT_THAT(within(5s), ElementsAre("characteristics of AE30: AE01/12 AE02/16"));
    radio().perform("X1-L", { "volume", 3 });
    EXPECT_THAT(within(5s), IsEmpty());
    radio().dropLink("X1-R");
    EXPECT_THAT(within(1s), IsEmpty());
}

TEST_F(ARadio, CarriesOnlyWhatItsMtuHoldsAndSaysWhatIsWrong)
{
    simulator->world().placed("X1-L").mtu = 23;
    givenASubscribedAid();
    EXPECT_EQ(left->maximumWriteValueLength(withResponse), 20u);
    left->writeValue(Data(21, 0x00), request, withResponse);
    EXPECT_THAT(within(1s), ElementsAre("written AE01, simulated 6"));
    left->readValue(reply);
    EXPECT_THAT(within(1s), ElementsAre("value AE02, simulated 5"));

    auto state = aid();
    state.volumes.assign(15, 1);
    dynamic_cast<SimulatedAuriskAid&>(*simulator->aid("X1-L")).setState(state);
    write("fe681102ff047e16"); // its reply would be 25 bytes long
    EXPECT_THAT(within(1s), ElementsAre("value AE02 00fe689112ff0401010101010101010101010101"));
    simulator->world().placed("X1-L").mtu = 517;
    EXPECT_EQ(left->maximumWriteValueLength(withoutResponse), 512u);
}

TEST_F(ARadio, EndsItsLinksButNotItsScanWhenItGoesOff)
{
    for (const auto state : { CBManagerState::poweredOff, CBManagerState::resetting }) {
        SCOPED_TRACE(int(state));
        givenFoundAids();
        connect();
        central->scanForPeripherals({ .allowDuplicates = true });
        central->connectPeripheral(recorder->found.at("X1-R"));
        recorder->take();
        radio().setState(state);
        radio().setState(state);
        EXPECT_THAT(recorder->take(), IsEmpty());
        const auto told = "state " + std::to_string(int(state));
        EXPECT_THAT(within(10s), ElementsAre(told, "disconnected X1-L, simulated 2", "failed X1-R, simulated 2"));
        EXPECT_EQ(radio().linkCount(), 0);
        EXPECT_EQ(queue.clock()->pendingCount(), 0u);
        central->connectPeripheral(left);
        EXPECT_EQ(left->state(), CBPeripheralState::connecting);
        EXPECT_THAT(within(10s), ElementsAre("failed X1-L, simulated 2"));

        radio().setState(CBManagerState::poweredOn);
        EXPECT_THAT(within(0.2s), ElementsAre("state 5", "found X1-L -50", "found X1-R -60"));
        central->stopScan();
        connect();
        EXPECT_EQ(left->state(), CBPeripheralState::connected);
        central->cancelPeripheralConnection(left);
        queue.advance(1s);
    }
}

TEST_F(ARadio, ReportsBothChangesOfARadioThatWasOffForNoTime)
{
    givenFoundAids();
    connect();
    recorder->take();
    radio().setState(CBManagerState::poweredOff);
    radio().setState(CBManagerState::poweredOn);
    EXPECT_THAT(within(1s), ElementsAre("state 4", "disconnected X1-L, simulated 2", "state 5"));
}

TEST_F(ARadio, IsSwitchedOnByACentralThatMayAskForIt)
{
    radio().setState(CBManagerState::poweredOff);
    queue.advance(1s);
    makeCentral();
    EXPECT_EQ(radio().state(), CBManagerState::poweredOff);
    const auto powerful = makeCentral({ .showPowerAlert = true });
    EXPECT_EQ(radio().state(), CBManagerState::poweredOn);
    EXPECT_THAT(within(1s), ElementsAre("state 5", "state 5")) << "the old central and the new one";
    radio().setState(CBManagerState::unauthorized);
    makeCentral({ .showPowerAlert = true });
    EXPECT_EQ(radio().state(), CBManagerState::unauthorized);
}

TEST_F(ARadio, HasNothingToDoForACentralThatIsGone)
{
    givenASubscribedAid();
    central->connectPeripheral(recorder->found.at("X1-R"));
    central->scanForPeripherals({});
    write(readVolume1);
    central.reset();
    EXPECT_THAT(within(10s), IsEmpty());
    EXPECT_EQ(radio().linkCount(), 0);
    EXPECT_EQ(queue.clock()->pendingCount(), 0u);
}

TEST_F(ARadio, ConnectsASecondCentralOnceTheFirstHasLetGo)
{
    givenFoundAids();
    connect();
    recorder->take();
    const auto second = makeCentral();
    central->cancelPeripheralConnection(left); // the second hears the aid when it advertises again
    queue.advance(1s);
    second->scanForPeripherals({});
    queue.advance(1s);
    second->stopScan();
    const auto again = recorder->found.at("X1-L");
    connect();
    recorder->take();
    second->connectPeripheral(again);
    EXPECT_THAT(within(10s), IsEmpty());
    radio().dropLink("X1-L");
    EXPECT_THAT(within(1s), ElementsAre("disconnected X1-L, simulated 1", "connected X1-L"));
    EXPECT_EQ(again->state(), CBPeripheralState::connected);
    EXPECT_EQ(left->state(), CBPeripheralState::disconnected);
}

/// X1-L has taken an image, all but the last frame of its update; nobody hears X1-R. An aid says that it boots 10 ms
/// after that frame was written, loses its link 300 ms later, and is off the air until 1305 ms after the frame.
struct AnUpdate : ARadio {
    void givenATakenImage()
    {
        givenASubscribedAid();
        radio().perform("X1-R", { "power", 0 });
        left->discoverCharacteristics(left->services().at(2));
        queue.advance(10ms);
        left->setNotifyValue(true, characteristic(2, 1));
        queue.advance(10ms);
        recorder->take();
        writeUpdate("fe681d0c910109000000c331000009002916"); // message 8
        writeUpdate("fe681d0d910201003132333435363738390316"); // message 9
        EXPECT_THAT(within(1s),
            ElementsAre("value AE3C 00fe689d03910111ab16", "value AE3C 00fe689d03910113ad16",
                "value AE3C 00fe689d03910215b016"));
    }

    void writeUpdate(const char* frame)
    {
        left->writeValue(*ask_hexadecimal(frame), characteristic(2, 0), withoutResponse);
    }

    void givenAnAidThatBoots()
    {
        givenATakenImage();
        writeUpdate(validate);
        EXPECT_THAT(within(10ms), ElementsAre(crcIsRight, boots));
    }

    std::string productSoft()
    {
        const auto version = aid().profile.at(0x03);
        return { version.begin(), version.end() };
    }

    static constexpr auto validate = "fe681d0291031b16";
    static constexpr auto crcIsRight = "value AE3C 00fe689d03910317b316", boots = "value AE3C 00fe689d03910319b516";
    static constexpr auto lost = "disconnected X1-L, simulated 1";
};

TEST_F(AnUpdate, EndsTheLinkAndHasTheAidBackASecondLater)
{
    givenAnAidThatBoots();
    central->scanForPeripherals({ .allowDuplicates = true });
    write(readVolume1); // to an aid that does not hear
    EXPECT_THAT(within(299ms), IsEmpty());
    EXPECT_THAT(within(2ms), ElementsAre(lost));
    EXPECT_EQ(productSoft(), "0.49.195");
    EXPECT_THAT(within(990ms), IsEmpty());
    EXPECT_THAT(within(210ms), ElementsAre("found X1-L -50"));
    central->stopScan();
    connect();
    EXPECT_THAT(within(10s), IsEmpty());
    EXPECT_EQ(left->state(), CBPeripheralState::connected);
    EXPECT_EQ(queue.clock()->pendingCount(), 0u);
}

TEST_F(AnUpdate, LetsAnAttemptWaitUntilTheAidIsBack)
{
    for (const auto linkGoesAfter : { 50ms, 310ms, 1000ms }) { // by itself; 310 is when the restart ends it
        SCOPED_TRACE(linkGoesAfter.count());
        simulator = Simulator::create(world(), queue);
        central = makeCentral();
        givenAnAidThatBoots();
        queue.advance(linkGoesAfter - 10ms);
        radio().dropLink("X1-L");
        queue.advance(1ms);
        EXPECT_THAT(recorder->take(), ElementsAre(lost)) << "once, whatever ended it";
        central->connectPeripheral(left);
        EXPECT_THAT(within(1313ms - linkGoesAfter), IsEmpty());
        EXPECT_THAT(within(2ms), ElementsAre("connected X1-L"));
        EXPECT_EQ(productSoft(), "0.49.195");

        left->discoverServices();
        queue.advance(10ms);
        left->discoverCharacteristics(left->services().front());
        queue.advance(10ms);
        request = characteristic(0, 0);
        left->setNotifyValue(true, characteristic(0, 1));
        queue.advance(10ms);
        recorder->take();
        write(readVolume1);
        EXPECT_THAT(within(10s), ElementsAre(volume1Is10)) << "it hears again";
    }
}

TEST_F(AnUpdate, DoesNotBringBackAnAidThatIsSwitchedOff)
{
    givenAnAidThatBoots();
    radio().perform("X1-L", { "power", 0 });
    EXPECT_THAT(within(10ms), ElementsAre(lost));
    central->connectPeripheral(left);
    EXPECT_THAT(within(5s), IsEmpty());
    EXPECT_EQ(queue.clock()->pendingCount(), 0u);
    radio().perform("X1-L", { "power", 1 });
    EXPECT_THAT(within(10ms), ElementsAre("connected X1-L"));
}

TEST_F(AnUpdate, IsNoUpdateOfTheNextRun)
{
    givenAnAidThatBoots();
    queue.advance(500ms);
    const auto saved = SimulatedWorld::fromJson(simulator->world().toJson());
    central.reset();
    simulator = Simulator::create(saved, queue);
    EXPECT_EQ(productSoft(), "0.49.195");
    central = makeCentral();
    left.reset();
    recorder->found.clear();
    givenFoundAids();
    connect();
    EXPECT_EQ(left->state(), CBPeripheralState::connected);
    EXPECT_THAT(within(10s), IsEmpty());
}

TEST_F(ARadio, NamesTheAidThatTheWorldDoesNotHave)
{
    EXPECT_THROW(radio().dropLink("X9"), std::out_of_range);
    EXPECT_THROW(radio().messageCount("X9"), std::out_of_range);
    EXPECT_THROW(radio().perform("X9", { "volume", 1 }), std::out_of_range);
    EXPECT_EQ(simulator->aid("X9"), nullptr);
}

} // namespace
} // namespace aurisk::simulatortests
