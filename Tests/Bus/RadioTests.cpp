#include "Tests/Bus/AHostOnAPlayedBus.h"

#include <filesystem>
#include <string>

#include <fcntl.h>

namespace aurisk::bluez {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

TEST_F(AHostOnAPlayedBus, GoesOnWithAnotherAdapterWhereItsOwnIsPulledOut)
{
    daemon.addAdapter(PlayedDaemon::hci1);
    const auto left = addAid("L");
    givenAConnectedAid();
    central->scanForPeripherals({});
    ASSERT_TRUE(daemon.isCalled("StartDiscovery /org/bluez/hci0"));
    daemon.remove(PlayedDaemon::hci0);
    daemon.remove(left);
    EXPECT_TRUE(hears("disconnected L with error"));
    EXPECT_TRUE(daemon.isCalled("StartDiscovery /org/bluez/hci1"));
}

/// As a daemon does that has just begun.
TEST_F(AHostOnAPlayedBus, WaitsAMomentForAnAdapterThatIsAnnouncedLate)
{
    const auto adapter = daemon.objects.extract(PlayedDaemon::hci0).mapped();
    recorder = std::make_shared<Recorder>();
    platform = makePlatform();
    central = platform->makeCentralManager(recorder, {});
    ASSERT_TRUE(daemon.isCalled("GetManagedObjects /"));
    daemon.catchUp();
    daemon.objects[PlayedDaemon::hci0] = adapter;
    daemon.announce(PlayedDaemon::hci0);
    EXPECT_TRUE(hears("state 5"));
    EXPECT_THAT(recorder->heard, ElementsAre("state 5"));
}

TEST_F(AHostOnAPlayedBus, EndsAndFindsLinksThatAKilledDaemonHasLeftThoughTheyAreToldLate)
{
    const auto left = addAid("L"), right = addAid("R");
    givenAConnectedAid();
    auto objects = daemon.objects;
    daemon.setPresent(false);
    ASSERT_TRUE(hears("disconnected L with error"));
    for (const auto& device : { left, right })
        daemon.objects.erase(device);
    daemon.setPresent(true);
    ASSERT_TRUE(hears("state 5"));
    central->scanForPeripherals({});
    daemon.catchUp();
    recorder->take();
    for (const auto& device : { left, right }) {
        daemon.objects[device][interface::device] = objects.at(device).at(interface::device);
        daemon.objects[device][interface::device].erase("RSSI");
        daemon.objects[device][interface::device]["Connected"] = true;
        daemon.announce(device);
    }
    EXPECT_TRUE(daemon.isCalled("Disconnect " + left));
    EXPECT_TRUE(hears("found R"));
    EXPECT_EQ(daemon.count("Disconnect " + right), 0) << "that one is none of ours";
}

/// It may never have been heard, and is silent from now on. Some links the daemon does not tell of before it knows the
/// services.
TEST_F(AHostOnAPlayedBus, FindsAnAidThatAnotherProgramConnectsToWhileItScans)
{
    for (const auto* told : { "Connected", "ServicesResolved" }) {
        begin();
        central->scanForPeripherals({ .allowDuplicates = true });
        ASSERT_TRUE(daemon.isCalled("StartDiscovery /org/bluez/hci0"));
        const auto left = addAid("L");
        daemon.objects[left][interface::device].erase("RSSI");
        daemon.announce(left);
        daemon.catchUp();
        ASSERT_FALSE(recorder->has("found L")) << "what the daemon merely remembers is not in reach";
        daemon.change(left, interface::device, { { told, true } });
        ASSERT_TRUE(hears("found L")) << told;

        daemon.setLink(left, false);
        daemon.catchUp();
        recorder->take();
        connect("L");
        ASSERT_TRUE(hears("connected L"));
        daemon.catchUp();
        EXPECT_FALSE(recorder->has("found L")) << "the link is its own";
        aids.clear();
        daemon.remove(left);
    }
}

TEST_F(AHostOnAPlayedBus, TellsNothingMoreToACentralThatIsDroppedWhenItHearsThatTheRadioIsOff)
{
    addAid("L");
    givenAConnectedAid();
    const auto others = std::make_shared<Recorder>();
    const auto other = platform->makeCentralManager(others, {});
    ASSERT_TRUE(others->hears("state 5"));
    recorder->onLine = [&](const std::string&) { central.reset(); };
    daemon.setPower(false);
    ASSERT_TRUE(others->hears("state 4"));
    daemon.catchUp();
    EXPECT_THAT(recorder->heard, ElementsAre("state 4")) << "a disconnection would be the next";
}

TEST_F(AHostOnAPlayedBus, TellsNothingMoreToACentralThatAnotherOnesDelegateDrops)
{
    begin();
    const auto others = std::make_shared<Recorder>();
    auto other = platform->makeCentralManager(others, {});
    ASSERT_TRUE(others->hears("state 5"));
    recorder->onLine = [&](const std::string&) { other.reset(); };
    daemon.setPower(false);
    ASSERT_TRUE(hears("state 4"));
    daemon.catchUp();
    EXPECT_THAT(others->heard, ElementsAre("state 5"));
}

TEST_F(AHostOnAPlayedBus, HasOneAgentInALifeOfTheDaemon)
{
    addAid("L");
    begin();
    connect("L");
    ASSERT_TRUE(hears("connected L"));
    EXPECT_EQ(daemon.count("RegisterAgent /org/bluez"), 1);
    cancel("L");
    ASSERT_TRUE(hears("disconnected L"));
    EXPECT_TRUE(daemon.isCalled("UnregisterAgent /org/bluez"));

    daemon.setPresent(false);
    ASSERT_TRUE(hears("state 1"));
    daemon.calls.clear();
    recorder->take();
    recorder->onLine = [&](const std::string& line) {
        if (line == "state 5")
            connect("L");
    };
    daemon.setPresent(true);
    EXPECT_TRUE(hears("connected L"));
    EXPECT_EQ(daemon.count("RegisterAgent /org/bluez"), 1) << "an application that connects at once makes no other";
}

/// It would keep it, and with it all that the daemon does for us.
TEST_F(AHostOnAPlayedBus, GivesNoConnectionToAProgramThatTheApplicationStarts)
{
    begin();
    int sockets = 0;
    for (const auto& one : std::filesystem::directory_iterator("/proc/self/fd")) {
        if (!std::filesystem::is_socket(one.status()))
            continue;
        ++sockets;
        EXPECT_TRUE(fcntl(std::stoi(one.path().filename()), F_GETFD) & FD_CLOEXEC) << one.path();
    }
    EXPECT_GE(sockets, 2) << "there is no connection to look at";
}

} // namespace
} // namespace aurisk::bluez
