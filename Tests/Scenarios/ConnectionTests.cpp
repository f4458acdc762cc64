#include "Tests/Simulator/ARadio.h"
#include "Tests/Support/AuriskScenario.h"

namespace aurisk::tests {
namespace {

class Connection : public AuriskScenario { };

TEST_F(Connection, IsAskedForOnceAndReportedInOrder)
{
    givenAFoundAid();
    EXPECT_EQ(accessory->tag(), "?");
    EXPECT_TRUE(accessory->connect(app, "left"));
    EXPECT_FALSE(accessory->connect(app, "again"));
    EXPECT_EQ(accessory->tag(), "left");
    EXPECT_EQ(accessory->state(), AccessoryState::connecting);
    after(1s);
    EXPECT_FALSE(accessory->connect(app, "again"));
    EXPECT_THAT(
        app->take(), ElementsAre("state connecting", "state connected", "did connect", "services 180F AE30 AE3A"));
    EXPECT_TRUE(accessory->disconnect());
    EXPECT_FALSE(accessory->disconnect());
    EXPECT_EQ(accessory->state(), AccessoryState::disconnecting);
    after(1s);
    EXPECT_FALSE(accessory->disconnect());
    EXPECT_THAT(app->take(), ElementsAre("state disconnecting", "state disconnected", "did disconnect"));
    EXPECT_TRUE(accessory->connect(app, std::nullopt));
    EXPECT_EQ(accessory->tag(), "");
}

TEST_F(Connection, ThatNeverComesEndsAtItsTimeLimit)
{
    faults().ignoresConnections = true;
    givenAFoundAid();
    EXPECT_TRUE(accessory->connect(app, 5s, "left"));
    after(4.999s);
    EXPECT_THAT(app->take(), ElementsAre("state connecting"));
    after(0.001s);
    EXPECT_THAT(app->take(), ElementsAre("state disconnected", "did fail to connect"));
    after(60s);
    EXPECT_THAT(app->take(), IsEmpty());
}

TEST_F(Connection, WithoutATimeLimitWaitsForEver)
{
    faults().ignoresConnections = true;
    givenAFoundAid();
    for (const auto duration : { Seconds(0), Seconds(-1) }) {
        EXPECT_TRUE(accessory->connect(app, duration, "left"));
        after(3600s);
        EXPECT_THAT(app->take(), ElementsAre("state connecting"));
        EXPECT_TRUE(accessory->disconnect());
        after(1s);
        EXPECT_THAT(app->take(), ElementsAre("state disconnecting", "state disconnected", "did disconnect"));
    }
}

TEST_F(Connection, ThatIsThereInTimeHearsNothingOfItsTimeLimit)
{
    givenAFoundAid();
    EXPECT_TRUE(accessory->connect(app, 5s, "left"));
    after(1s);
    app->take();
    after(10s);
    EXPECT_THAT(app->take(), IsEmpty());
    EXPECT_EQ(accessory->state(), AccessoryState::connected);
}

TEST_F(Connection, RefusedIsReportedWithItsError)
{
    faults().refusesConnections = true;
    givenAFoundAid();
    EXPECT_TRUE(accessory->connect(app, "left"));
    after(1s);
    EXPECT_THAT(
        app->take(), ElementsAre("state connecting", "state disconnected", "did fail to connect with an error"));
    faults().refusesConnections = false;
    EXPECT_TRUE(accessory->connect(app, "left"));
    after(1s);
    EXPECT_EQ(accessory->state(), AccessoryState::connected);
}

TEST_F(Connection, CanBeMadeAgainWhileItIsBeingEnded)
{
    givenAConnectedAid();
    EXPECT_TRUE(accessory->disconnect());
    EXPECT_TRUE(accessory->connect(app, "left")); // allowed from `disconnecting`
    after(1s);
    EXPECT_EQ(app->heard.front(), "state disconnecting");
    EXPECT_EQ(app->heard.at(1), "state connecting");
}

TEST_F(Connection, IsRefusedWithoutARadioAndEndedLocally)
{
    givenAConnectedAid();
    simulator->radio().setState(CBManagerState::poweredOff);
    after(1s);
    EXPECT_THAT(app->take(), ElementsAre("unavailable", "state disconnected", "did disconnect with an error"));
    EXPECT_FALSE(accessory->connect(app, "left"));
    EXPECT_TRUE(accessory->disconnect()); // deliberately: it is disconnected now
    EXPECT_THAT(app->take(), ElementsAre("state disconnected", "did disconnect"));
    simulator->radio().setState(CBManagerState::poweredOn);
    after(1s);
    EXPECT_TRUE(accessory->connect(app, "left"));
    after(1s);
    EXPECT_EQ(accessory->state(), AccessoryState::connected);
}

TEST_F(Connection, OutlivesItsManagerOnlyInName)
{
    givenAConnectedAid();
    manager.reset();
    EXPECT_EQ(accessory->manager(), nullptr);
    EXPECT_FALSE(accessory->connect(app, "left"));
    EXPECT_THAT(app->take(), IsEmpty());
    EXPECT_TRUE(accessory->disconnect());
    EXPECT_THAT(app->take(), ElementsAre("state disconnected", "did disconnect"));
    after(10s);
    EXPECT_THAT(app->take(), IsEmpty());
    EXPECT_FALSE(simulator->radio().isConnected(aidName));
}

TEST_F(Connection, LostByTheAidCanBeMadeAgainWithNewServices)
{
    givenAConnectedAid();
    const auto first = accessory->dataService();
    const auto firstServices = accessory->serviceDictionary();
    simulator->radio().dropLink(aidName);
    after(1s);
    EXPECT_THAT(app->take(), ElementsAre("state disconnected", "did disconnect with an error"));
    EXPECT_EQ(accessory->serviceDictionary(), firstServices); // they stay until a connection replaces them
    EXPECT_TRUE(accessory->connect(app, "left"));
    after(1s);
    EXPECT_NE(accessory->dataService(), first);
    EXPECT_NE(accessory->serviceDictionary(), firstServices);
    app->take();
    whenRequesting(AuriskRequest::readVolume{ .program = 1 });
    after(1s);
    EXPECT_THAT(
        results(), ElementsAre("readVolume(program: 1) => success(data: didReadProgram(program: 1, volume: 5))"));
}

TEST_F(Connection, WhoseServicesCannotBeFoundIsThereWithoutThem)
{
    faults().faults = { { .kind = Kind::refuse, .message = 2 } }; // 1 is the connection, 2 its services
    givenAFoundAid();
    EXPECT_TRUE(accessory->connect(app, "left"));
    after(10s);
    EXPECT_THAT(app->take(), ElementsAre("state connecting", "state connected", "did connect"));
    whenRequesting(AuriskRequest::readVolume{});
    after(10s);
    EXPECT_THAT(app->take(), IsEmpty()); // connected, but without a data service: lost, as documented
}

TEST_F(Connection, TellsItsOtherListenerWhatNoServiceTakes)
{
    manager->setAccessorySelectorDelegate(std::make_shared<PlainSelector>());
    manager->startScan(1s);
    after(2s);
    const auto plain = manager->accessories().at(0);
    const auto listener = std::make_shared<simulatortests::RadioRecorder>();
    plain->setAlphaDelegate(listener);
    plain->connect(app, "plain");
    after(1s);
    EXPECT_EQ(app->heard.back(), "services");
    EXPECT_THAT(listener->take(), ElementsAre("services AE30 180F AE3A"));
    auto& peripheral = *plain->peripheral();
    for (const auto& service : peripheral.services())
        peripheral.discoverCharacteristics(service);
    after(1s);
    EXPECT_EQ(listener->take().size(), 3U);
    const auto request = peripheral.services().at(0)->characteristics().at(0);
    const auto battery = peripheral.services().at(1)->characteristics().at(0);
    peripheral.writeValue(Data{ 1 }, request, CBCharacteristicWriteType::withResponse);
    peripheral.setNotifyValue(true, battery);
    peripheral.readValue(battery);
    after(1s);
    EXPECT_THAT(listener->take(), testing::UnorderedElementsAre("written AE01", "subscribed 2A19", "value 2A19 50"));

    // An adopted service keeps its callbacks to itself.
    plain->disconnect();
    manager->clearAccessories([](const auto&, const auto&) { return true; });
    manager->setAccessorySelectorDelegate(std::make_shared<DefaultAccesorySelector>());
    givenAFoundAid();
    accessory->setAlphaDelegate(listener);
    accessory->connect(app, "left");
    after(1s);
    EXPECT_THAT(listener->heard, ElementsAre("services AE30 180F AE3A"));
}

TEST_F(Connection, HoldsItsDelegateWeaklyAndCanChangeIt)
{
    givenAFoundAid();
    auto gone = std::make_shared<Application>();
    accessory->connect(gone, "left");
    gone.reset();
    after(1s);
    EXPECT_EQ(accessory->state(), AccessoryState::connected);
    accessory->setDelegate(app);
    simulator->radio().dropLink(aidName);
    after(1s);
    EXPECT_THAT(app->take(), ElementsAre("state disconnected", "did disconnect with an error"));
}

TEST_F(Connection, EndsOnceForEveryAccessoryWhenTheRadioIsAskedForAnew)
{
    struct Eager final : AccessoryManagerStatusDelegate {
        void accessoryManagerIsAvailable(const std::shared_ptr<AccessoryManager>& its, bool isAvailable) override
        {
            if (!isAvailable)
                its->openBluetooth(); // before the old radio has said what became of its links
        }
    };
    const auto eager = std::make_shared<Eager>();
    givenAConnectedAid();
    manager->setStatusDelegate(eager);
    simulator->radio().setState(CBManagerState::poweredOff);
    after(1s);
    EXPECT_THAT(app->take(), ElementsAre("state disconnected", "did disconnect"));
    EXPECT_TRUE(manager->isAvailable());

    EXPECT_TRUE(accessory->connect(app, "left")); // not heard since: the new radio does not know it
    after(1s);
    EXPECT_THAT(
        app->take(), ElementsAre("state connecting", "state disconnected", "did fail to connect with an error"));
    manager->startScan(1s);
    after(2s);
    EXPECT_TRUE(accessory->connect(app, "left"));
    after(1s);
    EXPECT_EQ(accessory->state(), AccessoryState::connected);
}

/// The application lets go of everything inside each callback in turn; the sanitizers see to the rest.
TEST_F(Connection, OutlivesAnApplicationThatLetsGoOfItInsideAnyCallback)
{
    for (int which = 1; which <= 8; ++which)
        for (const bool isManagerDropped : { false, true }) {
            simulator = Simulator::create(world());
            manager = AccessoryManager::create(simulator->platform());
            givenAFoundAid();
            int heard = 0;
            app->onLine = [&](const std::string&) {
                if (++heard != which)
                    return;
                manager->clearAccessories([](const auto&, const auto&) { return true; });
                if (isManagerDropped)
                    manager.reset();
                accessory.reset();
            };
            auto* const raw = accessory.get(); // whose reference may go inside the call
            raw->connect(app, 5s, "left");
            after(1s);
            if (accessory)
                accessory->disconnect();
            after(1s);
            if (accessory)
                raw->disconnect();
            app->onLine = {};
        }
}

TEST_F(Connection, MayBeEndedByTheApplicationInsideAnyOfItsCallbacks)
{
    givenAFoundAid();
    app->onConnect = [](const std::shared_ptr<Accessory>& connected) { connected->disconnect(); };
    accessory->connect(app, "left");
    after(10s);
    EXPECT_THAT(app->take(),
        ElementsAre("state connecting", "state connected", "did connect", "state disconnecting", "state disconnected",
            "did disconnect"));
}

} // namespace
} // namespace aurisk::tests
