#include "AuriskSDK/Platform/BlueZ/GattServer.h"

#include "Tests/Bus/PlayedDaemon.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace aurisk::bluez {
namespace {

using testing::ElementsAre;

struct ServerRecorder final : GattServerDelegate {
    void gattServerDidStart(GattServer&) override { heard.push_back("started"); }
    void gattServerDidStop(GattServer&, const std::string& why) override { heard.push_back("stopped: " + why); }
    void gattServerDidStartAdvertising(GattServer&) override { heard.push_back("advertising"); }
    void gattServerDidConnect(GattServer&, const std::string& central) override
    {
        heard.push_back("connected " + central);
    }
    void gattServerDidDisconnect(GattServer&, const std::string&) override { }
    void gattServerDidSubscribe(GattServer&, const CBUUID&, bool) override { }
    void gattServerDidReceiveWrite(
        GattServer&, const std::string&, const CBUUID&, const Data&, CBCharacteristicWriteType, WriteAnswer) override
    {
    }
    void gattServerDidReceiveRead(GattServer&, const std::string&, const CBUUID&, ReadAnswer) override { }

    std::vector<std::string> heard;
};

class AServerOnAPlayedBus : public testing::Test {
protected:
    void begin() { server = servers->makeGattServer({ .adapter = "hci0", .name = "X1-L" }, recorder); }

    bool hears(const std::string& line)
    {
        const auto& heard = recorder->heard;
        return until([&] { return std::find(heard.begin(), heard.end(), line) != heard.end(); }, Seconds(15));
    }

    PrivateBus bus;
    PlayedDaemon daemon;
    std::shared_ptr<ServerRecorder> recorder = std::make_shared<ServerRecorder>();
    std::shared_ptr<GattServerPlatform> servers = makeGattServerPlatform();
    std::shared_ptr<GattServer> server;
};

/// The daemon keeps the services over that, and will not take them twice.
TEST_F(AServerOnAPlayedBus, StartsThoughTheRadioIsSwitchedWhileItRegisters)
{
    bool isRegistered = false;
    daemon.on["RegisterApplication"] = [&](const BusRequest& request) {
        if (std::exchange(isRegistered, true))
            return daemon.refuse(request, { "org.bluez.Error.AlreadyExists", "Already Exists" });
        daemon.setPower(false);
        daemon.setPower(true);
        daemon.answer(request);
    };
    begin();
    EXPECT_TRUE(hears("started")) << testing::PrintToString(daemon.calls);
}

/// As the real one does in some of its starts.
TEST_F(AServerOnAPlayedBus, StartsThoughTheAdapterIsAnnouncedPieceByPiece)
{
    const auto whole = std::exchange(daemon.objects[PlayedDaemon::hci0], {});
    begin();
    ASSERT_TRUE(daemon.isCalled("GetManagedObjects /"));
    for (const auto& [interface, properties] : whole) {
        daemon.catchUp();
        EXPECT_EQ(daemon.count("RegisterApplication /org/bluez/hci0"), 0);
        daemon.objects[PlayedDaemon::hci0] = { { interface, properties } };
        daemon.announce(PlayedDaemon::hci0);
    }
    EXPECT_TRUE(daemon.isCalled("RegisterApplication /org/bluez/hci0")) << testing::PrintToString(recorder->heard);
    daemon.catchUp();
    EXPECT_THAT(recorder->heard, ElementsAre("started")) << "what comes in a moment is no obstacle";
    EXPECT_EQ(daemon.count("RegisterApplication /org/bluez/hci0"), 1);
}

/// Its answer came too late, as where the process had been stopped.
TEST_F(AServerOnAPlayedBus, AdvertisesThoughTheDaemonHasItsAdvertisementAlready)
{
    begin();
    daemon.on["RegisterAdvertisement"] = [&](const BusRequest& request) {
        daemon.refuse(request, { "org.bluez.Error.AlreadyExists", "Already Exists" });
        daemon.on.clear();
    };
    server->advertise(CBAdvertisementData{ .localName = "X1-L" });
    EXPECT_TRUE(hears("advertising"));
    EXPECT_THAT(recorder->heard, ElementsAre("started", "advertising"));
    EXPECT_EQ(daemon.count("UnregisterAdvertisement /org/bluez/hci0"), 1);
}

TEST_F(AServerOnAPlayedBus, LeavesNothingWithTheDaemonWhenItIsStoppedWhileItRegisters)
{
    begin();
    daemon.on["RegisterApplication"] = [&](const BusRequest& request) { daemon.hold(request); };
    ASSERT_TRUE(daemon.isCalled("RegisterApplication /org/bluez/hci0"));
    server->stop([] {});
    server->advertise(CBAdvertisementData{ .localName = "X1-L" });
    EXPECT_TRUE(daemon.isCalled("UnregisterApplication /org/bluez/hci0"));
    daemon.answer(daemon.held.front());
    daemon.catchUp();
    EXPECT_EQ(daemon.count("RegisterAdvertisement /org/bluez/hci0"), 0);
}

/// The daemon tells of a new name a while after it has taken it: until then the adapter has that of a former server.
TEST_F(AServerOnAPlayedBus, CallsTheAdapterLikeTheAidAndGivesItsOwnNameBack)
{
    struct Case {
        const char* atFirst;
        const char* meanwhile; ///< told before the name that it takes
        std::vector<std::string> set;
    };
    for (const auto& one : {
             Case{ "computer", nullptr, { "X1-L", "" } },
             Case{ "workshop", nullptr, { "X1-L", "workshop" } },
             Case{ "X1-L", "computer", { "X1-L", "" } },
             Case{ "X2-R", "computer", { "X1-L", "" } },
             Case{ "computer", "bench", { "X1-L", "bench" } },
         }) {
        daemon.objects[PlayedDaemon::hci0][interface::adapter]["Name"] = "computer";
        daemon.objects[PlayedDaemon::hci0][interface::adapter]["Alias"] = one.atFirst;
        std::vector<std::string> aliases;
        daemon.on["Set"] = [&](const BusRequest& request) {
            aliases.push_back(*find<std::string>(request.arguments, 2));
            for (const auto* alias : { one.meanwhile, aliases.back().c_str() })
                if (alias && aliases.size() == 1)
                    daemon.change(PlayedDaemon::hci0, interface::adapter, { { "Alias", alias } });
            daemon.answer(request);
        };
        servers = makeGattServerPlatform(); // which does not know the daemon from before
        begin();
        ASSERT_TRUE(hears("started"));
        bool hasStopped = false;
        server->stop([&] { hasStopped = true; });
        EXPECT_TRUE(until([&] { return hasStopped; }, Seconds(10)));
        EXPECT_EQ(aliases, one.set) << one.atFirst;
        recorder->heard.clear();
    }
}

/// Or the daemon reads from whom it has just lost, and crashes.
TEST_F(AServerOnAPlayedBus, EndsItsLinksBeforeItsServices)
{
    const auto host = daemon.addAid("Host", 1);
    begin();
    server->advertise(CBAdvertisementData{ .localName = "X1-L" });
    ASSERT_TRUE(hears("advertising"));
    daemon.setLink(host, true);
    ASSERT_TRUE(hears("connected 00:AA:00:00:00:01"));
    daemon.on["Disconnect " + host] = [&](const BusRequest& request) { daemon.hold(request); };
    int stops = 0;
    for (int time = 0; time < 2; ++time)
        server->stop([&] { ++stops; });
    server.reset();
    ASSERT_TRUE(daemon.isCalled("Disconnect " + host));
    daemon.catchUp();
    EXPECT_EQ(daemon.count("UnregisterAdvertisement /org/bluez/hci0"), 1);
    EXPECT_EQ(daemon.count("UnregisterApplication /org/bluez/hci0"), 0);
    EXPECT_EQ(stops, 0);

    daemon.obey(daemon.held.front());
    EXPECT_TRUE(until([&] { return stops == 2; }, Seconds(10)));
    EXPECT_EQ(daemon.count("UnregisterApplication /org/bluez/hci0"), 1);
    EXPECT_EQ(daemon.count("Disconnect " + host), 1);
}

/// One adapter may play an aid, and have headphones.
TEST_F(AServerOnAPlayedBus, TakesOnlyThoseForCentralsThatMayHaveComeForIt)
{
    const auto headphones = daemon.addAid("Headphones", 1), host = daemon.addAid("Host", 2);
    daemon.objects[headphones][interface::device]["Class"] = std::uint32_t(0x240404);
    begin();
    server->advertise(CBAdvertisementData{ .localName = "X1-L" });
    ASSERT_TRUE(hears("advertising"));
    for (const auto& device : { headphones, host })
        daemon.setLink(device, true);
    daemon.catchUp();
    EXPECT_THAT(recorder->heard, ElementsAre("started", "advertising", "connected 00:AA:00:00:00:02"));
}

} // namespace
} // namespace aurisk::bluez
