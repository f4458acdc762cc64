#include "AuriskSDK/Platform/BlueZ/GattServer.h"

#include "AuriskSDK/Platform/BlueZ/BlueZObjects.h"
#include "AuriskSDK/Shared/Utils/HexToData.h"
#include "Tests/BlueZ/Guest.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace aurisk::bluez {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using Lines = std::vector<std::string>;
using Properties = CBCharacteristicProperties;

constexpr auto serverAdapter = "/org/bluez/hci1", clientAdapter = "/org/bluez/hci0";
const CBUUID request(0xAE01), reply(0xAE02), battery(0x2A19), confirmed(0xAE10);

using tests::perform;

bool waitUntil(const std::function<bool()>& condition, Seconds limit = Seconds(15))
{
    return tests::until(condition, limit);
}

/// Writes down what a server tells, and answers as the test says.
class Recorder final : public GattServerDelegate {
public:
    void gattServerDidStart(GattServer&) override { lines.push_back("started"); }
    void gattServerDidStop(GattServer&, const std::string& why) override { lines.push_back("stopped: " + why); }
    void gattServerDidStartAdvertising(GattServer&) override { lines.push_back("advertising"); }
    void gattServerDidConnect(GattServer&, const std::string& central) override
    {
        lines.push_back("connected " + central);
    }
    void gattServerDidDisconnect(GattServer&, const std::string& central) override
    {
        lines.push_back("disconnected " + central);
    }
    void gattServerDidSubscribe(GattServer&, const CBUUID& one, bool isSubscribed) override
    {
        lines.push_back((isSubscribed ? "subscribed " : "unsubscribed ") + one.uuidString());
    }
    void gattServerDidReceiveWrite(GattServer&, const std::string&, const CBUUID& one, const Data& value,
        CBCharacteristicWriteType type, WriteAnswer answer) override
    {
        const auto* kind = type == CBCharacteristicWriteType::withResponse ? "request " : "command ";
        lines.push_back(kind + one.uuidString() + " " + ask_hexadecimal(value));
        if (onWrite)
            onWrite(value, answer);
    }
    void gattServerDidReceiveRead(GattServer&, const std::string&, const CBUUID& one, ReadAnswer answer) override
    {
        lines.push_back("read " + one.uuidString());
        answer({ 0x54 });
    }

    bool has(const std::string& line) const { return std::find(lines.begin(), lines.end(), line) != lines.end(); }
    bool waitFor(const std::string& line)
    {
        return waitUntil([&] { return has(line); });
    }
    Lines take() { return std::exchange(lines, {}); }

    Lines lines;
    std::function<void(const Data&, const WriteAnswer&)> onWrite = {};
};

/// What a program hears that connects by plain calls of the daemon, on the other adapter.
class Client final : public BlueZObjects::Listener {
public:
    void didChange(const std::string& path, const std::string& interface, const BusDictionary& changed) override
    {
        const auto* value = find<Data>(changed, "Value");
        if (value && interface == interface::characteristic && path.starts_with(clientAdapter))
            values.push_back(ask_hexadecimal(*value));
    }

    /// The name of the error; empty where there is none.
    std::string call(const std::string& path, const char* interface, const char* member, BusValues arguments = {})
    {
        std::optional<BusReply> answer;
        objects->call(
            path, interface, member, std::move(arguments), Seconds(60), [&](const BusReply& given) { answer = given; });
        waitUntil([&] { return answer.has_value(); }, Seconds(65));
        last = answer.value_or(BusReply());
        return last.error ? last.error->name : "";
    }

    std::string pathOf(const CBUUID& uuid)
    {
        auto text = uuid.uuidString();
        std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return char(std::tolower(c)); });
        for (const auto& path : objects->below(device, interface::characteristic))
            if (*objects->property<std::string>(path, interface::characteristic, "UUID")
                == "0000" + text + "-0000-1000-8000-00805f9b34fb")
                return path;
        return "";
    }

    std::string write(const CBUUID& uuid, const char* value, const char* type = "request")
    {
        return call(pathOf(uuid), interface::characteristic, "WriteValue",
            { *ask_hexadecimal(value), BusDictionary{ { "type", type } } });
    }

    bool hears()
    {
        call(clientAdapter, interface::adapter, "SetDiscoveryFilter",
            { BusDictionary{ { "Transport", "le" }, { "DuplicateData", true } } });
        call(clientAdapter, interface::adapter, "StartDiscovery");
        const bool heard
            = waitUntil([&] { return objects->property<std::int16_t>(device, interface::device, "RSSI"); });
        call(clientAdapter, interface::adapter, "StopDiscovery");
        return heard;
    }

    bool isConnected() const { return objects->isTrue(device, interface::device, "Connected"); }

    /// A link of an earlier life of the daemon may have outlived it.
    bool disconnects()
    {
        call(device, interface::device, "Disconnect");
        return waitUntil([&] { return !isConnected(); });
    }

    bool connects()
    {
        return disconnects() && hears() && call(device, interface::device, "Connect").empty() && waitUntil([&] {
            return objects->isTrue(device, interface::device, "ServicesResolved") && !pathOf(confirmed).empty();
        });
    }

    std::shared_ptr<BlueZObjects> objects = BlueZObjects::create();
    std::string device;
    BusReply last;
    Lines values; ///< notified or read, in hexadecimal
};

/// A server on hci1, which advertises, and a client on hci0.
class AGattServer : public testing::Test {
protected:
    AGattServer()
    {
        client->objects->add(client);
        waitUntil([&] { return client->objects->daemon() == DaemonState::present; });
        previousAlias = alias();
        auto address = *client->objects->property<std::string>(serverAdapter, interface::adapter, "Address");
        std::replace(address.begin(), address.end(), ':', '_');
        client->device = std::string(clientAdapter) + "/dev_" + address;
        central = *client->objects->property<std::string>(clientAdapter, interface::adapter, "Address");
        server = platform->makeGattServer(options, recorder);
        server->advertise(advertisement);
    }

    ~AGattServer() override
    {
        bool isStopped = false;
        server->stop([&] { isStopped = true; });
        EXPECT_TRUE(waitUntil([&] { return isStopped; }));
        EXPECT_TRUE(waitUntil([&] { return alias() == previousAlias; })) << alias();
        EXPECT_TRUE(client->disconnects());
    }

    std::string alias()
    {
        const auto* name = client->objects->property<std::string>(serverAdapter, interface::adapter, "Alias");
        return name ? *name : "";
    }

    bool subscribe() { return client->call(client->pathOf(reply), interface::characteristic, "StartNotify").empty(); }

    const GattServerOptions options{ .adapter = "hci1",
        .name = "Test-L",
        .services = { { CBUUID(0xAE30),
                          { { request, Properties::writeWithoutResponse }, { reply, Properties::notify },
                              { confirmed, Properties::write } } },
            { CBUUID(0x180F), { { battery, Properties::read } } } } };
    const CBAdvertisementData advertisement{ Data{ 0xFE, 0xFE, 0x01, 0x02 }, "Test-L" };
    std::shared_ptr<Recorder> recorder = std::make_shared<Recorder>();
    std::shared_ptr<Client> client = std::make_shared<Client>();
    std::shared_ptr<GattServerPlatform> platform = makeGattServerPlatform();
    std::shared_ptr<GattServer> server;
    std::string previousAlias, central;
};

TEST_F(AGattServer, IsHeardReadWrittenAndNotifies)
{
    ASSERT_TRUE(recorder->waitFor("advertising"));
    EXPECT_THAT(recorder->take(), ElementsAre("started", "advertising"));
    EXPECT_EQ(server->address(), *client->objects->property<std::string>(serverAdapter, interface::adapter, "Address"));
    ASSERT_TRUE(client->hears());
    const auto* data = client->objects->property<CompanyData>(client->device, interface::device, "ManufacturerData");
    ASSERT_TRUE(data);
    EXPECT_EQ(*data, (CompanyData{ { 0xFEFE, { 0x01, 0x02 } } }));
    EXPECT_EQ(*client->objects->property<std::string>(client->device, interface::device, "Name"), "Test-L");

    ASSERT_TRUE(client->connects());
    ASSERT_TRUE(subscribe());
    ASSERT_TRUE(recorder->waitFor("subscribed AE02"));
    EXPECT_THAT(recorder->lines, AllOf(Contains("connected " + central), Contains("subscribed AE02")));
    recorder->take();
    EXPECT_EQ(client->write(request, "fe68", "command"), "");
    recorder->onWrite = [](const Data&, const WriteAnswer& answer) { answer(std::nullopt); };
    EXPECT_EQ(client->write(confirmed, "01"), "");
    EXPECT_EQ(client->call(client->pathOf(battery), interface::characteristic, "ReadValue", { BusDictionary() }), "");
    EXPECT_EQ(*find<Data>(client->last.values, 0), Data({ 0x54 }));
    EXPECT_THAT(recorder->take(), ElementsAre("command AE01 fe68", "request AE10 01", "read 2A19"));

    client->values.clear();
    for (const auto byte : Data{ 0x01, 0x02, 0x03 })
        server->notify(reply, Data{ byte });
    EXPECT_TRUE(waitUntil([&] { return client->values.size() >= 3; }));
    EXPECT_THAT(client->values, ElementsAre("01", "02", "03"));

    server->disconnectCentral(central);
    EXPECT_TRUE(recorder->waitFor("disconnected " + central));
    EXPECT_TRUE(recorder->waitFor("unsubscribed AE02"));
}

TEST_F(AGattServer, TellsACentralWhyItsWriteFailed)
{
    ASSERT_TRUE(client->connects());
    recorder->onWrite = [](const Data& value, const WriteAnswer& answer) {
        if (value.front() < 4)
            answer(GattError(value.front())); // and otherwise the answer is dropped
    };
    EXPECT_EQ(client->write(confirmed, "00"), "org.bluez.Error.Failed");
    EXPECT_EQ(client->write(confirmed, "01"), "org.bluez.Error.NotPermitted");
    EXPECT_EQ(client->write(confirmed, "02"), "org.bluez.Error.InvalidArguments") << "as that length is called there";
    EXPECT_EQ(client->write(confirmed, "03"), "org.bluez.Error.NotSupported");
    EXPECT_EQ(client->write(confirmed, "04"), "org.bluez.Error.Failed");
}

TEST_F(AGattServer, IsThereAgainAfterItsAdapterWasOffWhateverWasAskedForMeanwhile)
{
    ASSERT_TRUE(client->connects());
    recorder->take();
    tests::setPower(tests::aidAdapter, false);
    ASSERT_TRUE(recorder->waitFor("stopped: hci1 is switched off"));
    EXPECT_TRUE(recorder->has("disconnected " + central));
    for (const auto byte : Data{ 0x03, 0x04 })
        server->advertise(CBAdvertisementData{ Data{ 0xFE, 0xFE, byte }, "Test-L" });
    server->advertise(std::nullopt);
    server->advertise(CBAdvertisementData{ Data{ 0xFE, 0xFE, 0x05 }, "Test-L" });
    client->call(clientAdapter, interface::adapter, "RemoveDevice", { ObjectPath{ client->device } });
    recorder->take();
    tests::setPower(tests::aidAdapter, true);
    ASSERT_TRUE(recorder->waitFor("advertising"));
    EXPECT_THAT(recorder->take(), ElementsAre("started", "advertising"));
    ASSERT_TRUE(client->connects()) << "the daemon is still alive, too";
    EXPECT_EQ(*client->objects->property<CompanyData>(client->device, interface::device, "ManufacturerData"),
        (CompanyData{ { 0xFEFE, { 0x05 } } }));
}

TEST_F(AGattServer, IsThereAgainAfterTheDaemonEndedInWhicheverWay)
{
    for (const auto* end : { "kill", "stop" }) {
        ASSERT_TRUE(client->connects()) << end;
        ASSERT_TRUE(subscribe());
        ASSERT_TRUE(recorder->waitFor("subscribed AE02"));
        recorder->take();
        ASSERT_TRUE(perform({ "vmctl", end }));
        ASSERT_TRUE(recorder->waitFor("stopped: bluetoothd is not running"));
        EXPECT_TRUE(recorder->has("disconnected " + central));
        EXPECT_TRUE(recorder->has("unsubscribed AE02"));
        recorder->take();
        ASSERT_TRUE(perform({ "vmctl", "start" }));
        ASSERT_TRUE(recorder->waitFor("advertising"));
    }
    EXPECT_TRUE(client->connects());
}

TEST_F(AGattServer, SwitchesAnAdapterOnOnceAndSaysWhereThereIsNone)
{
    ASSERT_TRUE(recorder->waitFor("advertising"));
    const auto other = std::make_shared<Recorder>();
    const auto nowhere = platform->makeGattServer({ .adapter = "hci7", .name = "Other" }, other);
    EXPECT_TRUE(other->waitFor("stopped: there is no Bluetooth adapter hci7"));
    tests::setPower(tests::aidAdapter, false);
    ASSERT_TRUE(recorder->waitFor("stopped: hci1 is switched off"));
    const auto third = std::make_shared<Recorder>();
    const auto anew = platform->makeGattServer(options, third);
    EXPECT_TRUE(third->waitFor("started")) << testing::PrintToString(third->lines);
    EXPECT_TRUE(recorder->waitFor("started"));
}

} // namespace
} // namespace aurisk::bluez
