#include "Tests/BlueZ/AHost.h"

namespace aurisk::tests {
namespace {

/// As a program that was killed leaves it, or one that still runs.
TEST_F(AHost, TakesOverALinkThatAnotherProgramHas)
{
    ASSERT_TRUE(perform({ "sh", "-c",
        "bluetoothctl --timeout 3 scan le >/dev/null; bluetoothctl connect 00:AA:01:01:00:01 >/dev/null" }));
    ASSERT_TRUE(until([this] { return served->isConnected(); }, 10s));
    givenADiscoveredAid(); // though it does not advertise
    EXPECT_EQ(app->lastRssi, std::nullopt);
    givenAConnectedAid();
    accessory->disconnect();
    expect("did disconnect");
}

TEST_F(AHost, SaysWhatItWaitedForInVain)
{
    manager.reset();
    platform = bluez::makePlatform({ .adapter = hostAdapter, .connectionLimit = 2s });
    manager = AccessoryManager::create(platform);
    manager->setStatusDelegate(app);
    manager->setScanningDelegate(app);
    givenADiscoveredAid();
    setInReach(false);
    manager->stopScan();

    ASSERT_TRUE(accessory->connect(app, std::nullopt));
    expect("did fail to connect with an error");
    ASSERT_TRUE(app->lastError);
    EXPECT_EQ(app->lastError->localizedDescription, "X1-L did not answer within 2 s.");
    EXPECT_EQ(app->lastError->code, int(bluez::ErrorCode::timedOut));

    setInReach(true);
    givenAConnectedAid();
}

TEST_F(AHost, SaysWhyThereIsNoRadio)
{
    const auto nowhere = bluez::makePlatform({ .adapter = "hci7" });
    const auto expectWhy = [](const bluez::Platform& one, const std::string& why) {
        EXPECT_TRUE(until([&] { return one.whyNot() == why; }, 5s)) << one.whyNot() << " instead of " << why;
    };
    expectWhy(*nowhere, "the Bluetooth daemon has no adapter hci7; it has hci0, hci1");
    setPower(hostAdapter, false);
    expectWhy(*platform, "hci0 is powered off");
    ASSERT_TRUE(perform({ "vmctl", "stop" }));
    expectWhy(*platform, "bluetoothd is not running");
    EXPECT_TRUE(until([this] { return manager->blueState() == CBManagerState::unsupported; }, 10s));
    ASSERT_TRUE(perform({ "vmctl", "start" }));
    EXPECT_TRUE(until([this] { return manager->blueState() == CBManagerState::poweredOn; }, 10s));
    expectWhy(*platform, "");
}

TEST_F(AHost, IsSwitchedOnByAnApplicationThatAsksForIt)
{
    setPower(hostAdapter, false);
    ASSERT_TRUE(until([this] { return manager->blueState() == CBManagerState::poweredOff; }, 10s));
    manager->openBluetooth();
    EXPECT_TRUE(until([this] { return manager->blueState() == CBManagerState::poweredOn; }, 10s));
    givenADiscoveredAid();
}

/// A hearing aid may want to be paired with by whoever is connected, and gets what it wants only from us.
TEST_F(AHost, AgreesToBePairedWithByAnAidThatItIsConnectedTo)
{
    constexpr auto host = "/org/bluez/hci1/dev_00_AA_01_00_00_00", aid = "/org/bluez/hci0/dev_00_AA_01_01_00_01";
    const auto aidAsks = [&] {
        return perform({ "dbus-send", "--system", "--print-reply", "--reply-timeout=15000", "--dest=org.bluez", host,
            "org.bluez.Device1.Pair" });
    };
    const auto isPaired = [&] {
        return perform({ "sh", "-c",
            std::string("dbus-send --system --print-reply --dest=org.bluez ") + aid
                + " org.freedesktop.DBus.Properties.Get string:org.bluez.Device1 string:Paired | grep -q true" });
    };
    const auto forget = [&](const char* adapter, const char* device) {
        perform({ "dbus-send", "--system", "--print-reply", "--dest=org.bluez", adapter,
            "org.bluez.Adapter1.RemoveDevice", std::string("objpath:") + device });
    };

    givenADiscoveredAid();
    givenAConnectedAid();
    EXPECT_FALSE(isPaired());
    EXPECT_TRUE(aidAsks());
    EXPECT_TRUE(isPaired());
    app->request(*accessory, readVolume);
    expect(volumeIs10);

    accessory->disconnect();
    expect("did disconnect");
    served.reset(); // bluetoothd 5.66 ends now and then where a server goes whose subscriber it has just forgotten
    forget("/org/bluez/hci0", aid);
    forget("/org/bluez/hci1", host);
}

/// Daemons may keep the battery service of a device for themselves.
TEST_F(AHost, HearsTheBatteryFromTheDaemonWhereThatKeepsItsService)
{
    ASSERT_TRUE(perform({ "sh", "-c",
        "{ cat /etc/bluetooth/main.conf; printf '\\n[GATT]\\nExportClaimedServices = off\\n'; } >/tmp/main.conf && "
        "mount --bind /tmp/main.conf /etc/bluetooth/main.conf && vmctl restart" }));
    givenADiscoveredAid();
    givenAConnectedAid();
    accessory->readBattery();
    expect("battery 80");
    served->simulator().radio().perform("X1-L", { "battery", 65 });
    expect("battery 65");
    ASSERT_TRUE(perform({ "sh", "-c", "umount /etc/bluetooth/main.conf && vmctl restart" }));
}

} // namespace
} // namespace aurisk::tests
