#include "Tests/Bus/AHostOnAPlayedBus.h"

namespace aurisk::bluez {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

TEST_F(AHostOnAPlayedBus, ConnectsTwoAidsOneAfterTheOther)
{
    addAid("L"), addAid("R");
    begin();
    connect("L"), connect("R");
    EXPECT_TRUE(hears("connected R"));
    EXPECT_THAT(recorder->heard, ElementsAre("connected L", "connected R"));
}

TEST_F(AHostOnAPlayedBus, ConnectsAnAidThoughAnotherCannotBeHeard)
{
    const auto left = addAid("L");
    addAid("R");
    begin();
    daemon.remove(left);
    connect("L");
    ASSERT_TRUE(daemon.isCalled("StartDiscovery /org/bluez/hci0")) << "it is not searched for";
    connect("R");
    EXPECT_TRUE(hears("connected R", 20s)) << testing::PrintToString(daemon.calls);
}

TEST_F(AHostOnAPlayedBus, ConnectsAnAidThoughAnotherIsRefusedAgainAndAgain)
{
    const auto left = addAid("L");
    addAid("R");
    begin();
    daemon.on["Connect " + left]
        = [&](const BusRequest& request) { daemon.fail(request, "Operation already in progress"); };
    connect("L"), connect("R");
    EXPECT_TRUE(hears("connected R")) << testing::PrintToString(daemon.calls);
}

TEST_F(AHostOnAPlayedBus, TriesNoConnectionBeforeItsScanHasPaused)
{
    addAid("L");
    const auto right = addAid("R");
    begin();
    central->scanForPeripherals({});
    ASSERT_TRUE(daemon.isCalled("StartDiscovery /org/bluez/hci0"));
    daemon.catchUp();
    daemon.on["StopDiscovery"] = [&](const BusRequest& request) { daemon.hold(request); };
    connect("L"), connect("R");
    ASSERT_TRUE(daemon.isCalled("StopDiscovery /org/bluez/hci0"));
    cancel("L");
    ASSERT_TRUE(hears("disconnected L"));
    daemon.catchUp();
    EXPECT_EQ(daemon.count("Connect " + right), 0);
    ASSERT_EQ(daemon.held.size(), 1u);
    daemon.answer(daemon.held.front());
    EXPECT_TRUE(hears("connected R"));
}

TEST_F(AHostOnAPlayedBus, SearchesForAnAidThatIsRemovedWhileItIsBeingConnected)
{
    const auto left = addAid("L");
    begin();
    const auto object = daemon.objects.at(left);
    daemon.on["Connect " + left] = [&](const BusRequest& request) { daemon.hold(request); }; // and never answers
    connect("L");
    ASSERT_TRUE(daemon.isCalled("Connect " + left));
    daemon.remove(left);
    ASSERT_TRUE(daemon.isCalled("StartDiscovery /org/bluez/hci0"));
    daemon.on.clear();
    daemon.objects[left] = object;
    daemon.announce(left);
    EXPECT_TRUE(hears("connected L"));
}

TEST_F(AHostOnAPlayedBus, MakesNoAidForgottenWhoseDaemonIsAtOddsOnlyNowAndThen)
{
    const auto left = addAid("L");
    begin();
    std::deque<const char*> errors = { "Input/output error", "le-connection-abort-by-local", "Input/output error" };
    daemon.on["Connect"] = [&](const BusRequest& request) {
        if (errors.empty())
            return daemon.obey(request);
        daemon.fail(request, errors.front());
        errors.pop_front();
    };
    connect("L");
    EXPECT_TRUE(hears("connected L"));
    EXPECT_EQ(daemon.count("Connect " + left), 4);
    EXPECT_EQ(daemon.count("RemoveDevice /org/bluez/hci0"), 0);
}

/// A link that is there before may be nobody's, and gets less time than one of the host's own.
TEST_F(AHostOnAPlayedBus, WaitsForTheServicesOfItsOwnLinkThoughAnotherWasThereBefore)
{
    const auto left = addAid("L");
    daemon.objects[left][interface::device]["Connected"] = true;
    begin();
    daemon.on["Connect " + left] = [&](const BusRequest& request) {
        daemon.setLink(left, false);
        daemon.change(left, interface::device, { { "Connected", true } });
        daemon.answer(request);
    };
    connect("L");
    ASSERT_TRUE(daemon.isCalled("Connect " + left));
    pass(3.5s); // no more than 3 s where the link is nobody's
    EXPECT_EQ(daemon.count("Disconnect " + left), 0);
    daemon.setLink(left, true);
    EXPECT_TRUE(hears("connected L"));
}

TEST_F(AHostOnAPlayedBus, LeavesALinkAloneThatAnotherProgramIsMaking)
{
    const auto left = addAid("L");
    begin();
    daemon.on["Connect " + left] = [&](const BusRequest& request) {
        daemon.fail(request, "Operation already in progress");
        daemon.change(left, interface::device, { { "Connected", true } });
        daemon.on.clear();
    };
    daemon.on["Disconnect " + left] = [&](const BusRequest& request) { daemon.answer(request); };
    connect("L");
    ASSERT_TRUE(daemon.isCalled("Connect " + left));
    ASSERT_TRUE(hears("connected L"));
    EXPECT_EQ(daemon.count("Connect " + left), 2);
    EXPECT_EQ(daemon.count("Disconnect " + left), 0);
}

/// It does that where it remembers another table of the aid's, as after an update.
TEST_F(AHostOnAPlayedBus, FindsTheServicesThatTheDaemonTakesForSecondary)
{
    const auto left = addAid("L");
    daemon.objects[left + "/service0"][interface::service]["Primary"] = false;
    givenAConnectedAid();
    discoverServices();
}

TEST_F(AHostOnAPlayedBus, EndsAConnectionWhoseServicesHaveChanged)
{
    const auto left = addAid("L");
    givenAConnectedAid();
    discoverServices();
    recorder->take();
    daemon.remove(left + "/service0/char0"); // which nobody has asked for
    daemon.catchUp();
    EXPECT_THAT(recorder->heard, IsEmpty());
    daemon.remove(left + "/service0");
    EXPECT_TRUE(hears("disconnected L with error"));
    EXPECT_TRUE(daemon.isCalled("Disconnect " + left));
}

TEST_F(AHostOnAPlayedBus, DoesNotEndAnAttemptForAnotherThatIsGivenUp)
{
    const auto left = addAid("L");
    begin();
    daemon.on["Connect " + left]
        = [&](const BusRequest& request) { daemon.fail(request, "Operation already in progress"); };
    connect("L");
    ASSERT_TRUE(daemon.isCalled("Connect " + left));
    daemon.catchUp(); // it waits for the next try
    recorder->onLine = [&](const std::string& line) {
        if (line == "found L")
            cancel("L");
        if (line == "disconnected L") {
            daemon.on.clear();
            connect("L");
        }
    };
    central->scanForPeripherals({});
    daemon.hear(left);
    daemon.change(left, interface::device, { { "Connected", false } });
    EXPECT_TRUE(hears("connected L"));
    EXPECT_THAT(recorder->heard, ElementsAre("found L", "disconnected L", "connected L"));
}

TEST_F(AHostOnAPlayedBus, TakesAConnectionBackThatItAskedForWhileOneEnded)
{
    const auto left = addAid("L");
    addAid("R");
    givenAConnectedAid();
    recorder->onLine = [&](const std::string& line) {
        if (line == "disconnected L")
            cancel("L");
    };
    cancel("L"), connect("L");
    ASSERT_TRUE(hears("disconnected L"));
    connect("R"); // after any other
    EXPECT_TRUE(hears("connected R"));
    EXPECT_THAT(recorder->heard, Not(Contains("connected L")));
    EXPECT_EQ(daemon.count("Connect " + left), 0);
}

TEST_F(AHostOnAPlayedBus, MakesNoConnectionForACentralThatIsDroppedWhenItHearsOfAnEnd)
{
    const auto left = addAid("L");
    addAid("R");
    for (const bool answersFirst : { false, true }) {
        SCOPED_TRACE(answersFirst ? "the daemon answers, and tells" : "the daemon tells, and answers");
        daemon.on["Disconnect " + left] = [&](const BusRequest& request) {
            if (!answersFirst)
                return daemon.obey(request);
            daemon.answer(request);
            daemon.setLink(left, false);
        };
        givenAConnectedAid();
        const auto others = std::make_shared<Recorder>();
        const auto other = platform->makeCentralManager(others, {});
        ASSERT_TRUE(others->hears("state 5"));
        find(*other, *others);
        daemon.calls.clear();
        recorder->onLine = [&](const std::string& line) {
            if (line == "disconnected L")
                central.reset();
        };
        cancel("L"), connect("L");
        ASSERT_TRUE(hears("disconnected L"));
        other->connectPeripheral(others->found["R"]); // after any other
        EXPECT_TRUE(others->hears("connected R"));
        EXPECT_EQ(daemon.count("Connect " + left), 0);
        EXPECT_EQ(peripheral("L")->state(), CBPeripheralState::disconnected);
    }
}

TEST_F(AHostOnAPlayedBus, HearsValuesOfASubscriptionThatSucceededAtTheSecondTry)
{
    const auto left = addAid("L");
    givenAConnectedAid();
    const auto aid = peripheral("L");
    discoverServices();
    aid->discoverCharacteristics(aid->services().front());
    ASSERT_TRUE(hears("characteristics of AE30: AE02/18"));
    recorder->take();
    daemon.on["StartNotify"] = [&](const BusRequest& request) {
        daemon.on.clear();
        daemon.refuse(request, { "org.bluez.Error.InProgress", "In Progress" });
    };
    const auto characteristic = aid->services().front()->characteristics().front();
    for (int i = 0; i < 2; ++i)
        aid->setNotifyValue(true, characteristic);
    EXPECT_TRUE(hears("subscribed AE02"));
    EXPECT_THAT(recorder->take(), ElementsAre("subscribed AE02 with error", "subscribed AE02"));
    daemon.change(left + "/service0/char0", interface::characteristic, { { "Value", Data{ 7 } } });
    EXPECT_TRUE(hears("value AE02 07"));
}

TEST_F(AHostOnAPlayedBus, WaitsForTheAnswersToThoseWritesAloneThatAskForOne)
{
    using enum CBCharacteristicWriteType;
    const auto left = addAid("L"), path = left + "/service0/char0";
    daemon.objects[path][interface::characteristic]["Flags"]
        = std::vector<std::string>{ "write", "write-without-response" };
    givenAConnectedAid();
    const auto aid = peripheral("L");
    discoverServices();
    aid->discoverCharacteristics(aid->services().front());
    ASSERT_TRUE(hears("characteristics of AE30: AE02/12"));
    recorder->take();
    Data arrived;
    daemon.on["WriteValue"] = [&](const BusRequest& request) {
        arrived.push_back(bluez::find<Data>(request.arguments, 0)->front());
        daemon.hold(request);
    };
    const auto characteristic = aid->services().front()->characteristics().front();
    for (const auto byte : Data{ 1, 2, 3, 4 })
        aid->writeValue(Data{ byte }, characteristic, byte == 3 ? withResponse : withoutResponse);
    ASSERT_TRUE(until([&] { return arrived.size() == 3; }, 10s));
    daemon.catchUp();
    EXPECT_THAT(arrived, ElementsAre(1, 2, 3));
    EXPECT_THAT(recorder->heard, IsEmpty());
    daemon.answer(daemon.held.back());
    EXPECT_TRUE(hears("written AE02"));
    EXPECT_TRUE(until([&] { return arrived.size() == 4; }, 10s));
}

TEST_F(AHostOnAPlayedBus, LeavesALinkAsItIsWhenAnotherCentralGivesItsAttemptUp)
{
    const auto left = addAid("L");
    givenAConnectedAid();
    const auto others = std::make_shared<Recorder>();
    const auto other = platform->makeCentralManager(others, {});
    ASSERT_TRUE(others->hears("state 5"));
    find(*other, *others);
    daemon.on["Connect " + left] = [&](const BusRequest& request) { daemon.hold(request); };
    daemon.on["Disconnect " + left] = [&](const BusRequest& request) { daemon.answer(request); };
    other->connectPeripheral(others->found["L"]);
    ASSERT_TRUE(daemon.isCalled("Connect " + left));
    other->cancelPeripheralConnection(others->found["L"]);
    ASSERT_TRUE(others->hears("disconnected L"));
    daemon.catchUp();
    EXPECT_THAT(recorder->heard, IsEmpty());
    EXPECT_EQ(peripheral("L")->state(), CBPeripheralState::connected);
    EXPECT_EQ(daemon.count("UnregisterAgent /org/bluez"), 0) << "the first one may still have to pair with it";
}

} // namespace
} // namespace aurisk::bluez
