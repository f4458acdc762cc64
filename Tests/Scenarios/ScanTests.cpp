#include "Tests/Support/AuriskScenario.h"
#include "Tests/Support/StubPeripheral.h"

namespace aurisk::tests {
namespace {

class Scan : public AuriskScenario {
protected:
    /// One advertisement with the aid's name, said to the manager as a radio would.
    void advertise(const std::shared_ptr<CBPeripheral>& peripheral, CBAdvertisementData data)
    {
        manager->centralManagerDidDiscover(*platform->central.lock(), peripheral, data, -60);
    }

    static inline const Data aidData{ 0xFE, 0xFE, 0x0A, 0x1B, 0x2C, 0x3D, 0x4E, 0x5F, 0x08, 0x06 };
};

TEST_F(Scan, AskedForWhileTheRadioIsOffBeginsOnceWithItsLimitWhenTheRadioComesOn)
{
    simulator->radio().setState(CBManagerState::poweredOff);
    after(1s);
    app->take();
    manager->startScan(1s);
    manager->startScan(5s);
    after(10s);
    EXPECT_THAT(app->take(), IsEmpty());
    simulator->radio().setState(CBManagerState::poweredOn);
    after(4.9s);
    EXPECT_THAT(app->take(), ElementsAre("available", "scanning", "discovered X1-L"));
    after(0.2s);
    EXPECT_THAT(app->take(), ElementsAre("not scanning"));

    simulator->radio().setState(CBManagerState::poweredOff);
    simulator->radio().setState(CBManagerState::poweredOn);
    after(10s);
    EXPECT_THAT(app->take(), ElementsAre("unavailable", "available")); // it was asked for once
}

TEST_F(Scan, OfADurationDuringAnUnlimitedOneOnlyChangesTheDuration)
{
    after(0.1s);
    manager->startScan();
    manager->startScan(5s);
    EXPECT_EQ(manager->scanningDuration(), Seconds(5));
    after(60s);
    EXPECT_TRUE(manager->isScanning());
    EXPECT_GE(app->updates, 200);
    manager->stopScan();
    manager->stopScan();
    EXPECT_THAT(app->take(), ElementsAre("available", "scanning", "discovered X1-L", "not scanning"));
    const auto updates = app->updates;
    after(10s);
    EXPECT_EQ(app->updates, updates);
}

TEST_F(Scan, StoppedByHandIsNotStoppedAgainByItsTimer)
{
    after(0.1s);
    manager->startScan(5s);
    after(3s);
    manager->stopScan();
    manager->startScan();
    after(10s);
    EXPECT_TRUE(manager->isScanning());
}

TEST_F(Scan, MayBeStoppedByTheApplicationAsSoonAsItIsTold)
{
    app->onLine = [this](const std::string& line) {
        if (line == "scanning")
            manager->stopScan();
    };
    manager->startScan(5s);
    after(10s);
    EXPECT_FALSE(manager->isScanning());
    EXPECT_THAT(app->take(), ElementsAre("available", "scanning", "not scanning"));
}

TEST_F(Scan, GoesOnWhenTheRadioComesBack)
{
    after(0.1s);
    manager->startScan();
    after(1s);
    app->take();
    for (const auto state : { CBManagerState::poweredOff, CBManagerState::resetting, CBManagerState::poweredOn }) {
        simulator->radio().setState(state);
        app->updates = 0;
        after(1s);
        EXPECT_EQ(manager->blueState(), state);
        EXPECT_EQ(manager->isAvailable(), state == CBManagerState::poweredOn);
        EXPECT_EQ(app->updates > 0, state == CBManagerState::poweredOn);
        EXPECT_TRUE(manager->isScanning());
    }
    EXPECT_THAT(app->take(), ElementsAre("unavailable", "unavailable", "available")); // each change is told
}

TEST_F(Scan, GoesOnWhenTheApplicationSwitchesTheRadioOn)
{
    after(0.1s);
    manager->openBluetooth(); // it is on: nothing
    manager->startScan();
    simulator->radio().setState(CBManagerState::poweredOff);
    after(1s);
    manager->openBluetooth();
    app->updates = 0;
    after(1s);
    EXPECT_THAT(app->take(), ElementsAre("available", "scanning", "unavailable", "available", "discovered X1-L"));
    EXPECT_GT(app->updates, 0);
}

TEST_F(Scan, KnowsADeviceByItsIdentifierAndUpdatesIt)
{
    const auto first = std::make_shared<StubPeripheral>(std::uint8_t(1), "X1-L");
    EXPECT_TRUE(manager->hasDiscoveredAccessories()); // inverted, and kept so
    advertise(first, { .manufacturerData = aidData, .localName = "X1-L" });
    EXPECT_FALSE(manager->hasDiscoveredAccessories());

    const auto again
        = std::make_shared<StubPeripheral>(std::uint8_t(1), "X1-R"); // the same device, renamed and re-flagged
    auto changed = aidData;
    changed[8] = 0x88;
    advertise(again, { .manufacturerData = changed, .localName = std::nullopt });
    ASSERT_EQ(manager->accessories().size(), 1U);
    const auto aurisk = std::dynamic_pointer_cast<AuriskAccessory>(manager->accessories().front());
    EXPECT_EQ(aurisk->peripheral(), again);
    EXPECT_EQ(aurisk->mfgData(), changed);
    EXPECT_EQ(aurisk->localName(), std::nullopt);
    EXPECT_EQ(aurisk->name(), "X1-R");
    EXPECT_EQ(aurisk->orientation(), AccessoryOrientation::right);
    EXPECT_TRUE(aurisk->transEnable());
    EXPECT_EQ(aurisk->bleChip(), AuriskBLEChip::u87);
    EXPECT_THAT(app->take(), ElementsAre("discovered X1-L"));
    EXPECT_EQ(app->updates, 1);

    changed[9] = 0x00; // another chip: the class was chosen, the chip stays
    again->named = "X1"; // and no suffix: the ear stays
    advertise(again, { .manufacturerData = changed, .localName = std::nullopt });
    EXPECT_EQ(aurisk->hearChip(), AuriskChip::a16);
    EXPECT_EQ(aurisk->orientation(), AccessoryOrientation::right);
}

TEST_F(Scan, IgnoresWhatIsNoHearingAidUntilItIsOne)
{
    const auto nameless = std::make_shared<StubPeripheral>(std::uint8_t(1), std::nullopt);
    const auto lower = std::make_shared<StubPeripheral>(std::uint8_t(2), "X1-l");
    const auto good = std::make_shared<StubPeripheral>(std::uint8_t(3), "X1-R");
    advertise(nameless, { .manufacturerData = aidData, .localName = "X1-L" });
    advertise(lower, { .manufacturerData = aidData, .localName = "X1-L" }); // the peripheral's name decides
    advertise(good, { .manufacturerData = std::nullopt, .localName = "X1-R" });
    EXPECT_TRUE(manager->accessories().empty());
    lower->named = "X1-L";
    advertise(lower, { .manufacturerData = aidData, .localName = std::nullopt });
    EXPECT_EQ(manager->accessories().size(), 1U);
}

TEST_F(Scan, ListsAccessoriesInTheOrderOfDiscoveryAndForgetsThoseItIsTold)
{
    for (const int number : { 9, 3, 7, 1 })
        advertise(std::make_shared<StubPeripheral>(std::uint8_t(number), "N" + std::to_string(number) + "-L"),
            { .manufacturerData = aidData });
    const auto names = [&] {
        Lines lines;
        for (const auto& known : manager->accessories())
            lines.push_back(known->name());
        return lines;
    };
    EXPECT_THAT(names(), ElementsAre("N9-L", "N3-L", "N7-L", "N1-L"));
    manager->clearAccessories([](const std::string& identifier, const std::shared_ptr<Accessory>& known) {
        return identifier == "01020304-0300-0000-0000-000000000000" || known->name() == "N1-L";
    });
    EXPECT_THAT(names(), ElementsAre("N9-L", "N7-L"));
    app->take();
    advertise(std::make_shared<StubPeripheral>(std::uint8_t(3), "N3-L"), { .manufacturerData = aidData });
    EXPECT_THAT(app->take(), ElementsAre("discovered N3-L"));
    EXPECT_THAT(names(), ElementsAre("N9-L", "N7-L", "N3-L"));
}

TEST_F(Scan, LetsTheApplicationChooseWhatBecomesAnAccessory)
{
    manager->setAccessorySelectorDelegate(nullptr);
    const auto thing = std::make_shared<StubPeripheral>(std::uint8_t(1), "a lamp");
    advertise(thing, { .manufacturerData = Data{} });
    EXPECT_TRUE(manager->accessories().empty());
    manager->setAccessorySelectorDelegate(std::make_shared<PlainSelector>());
    advertise(thing, { .manufacturerData = Data{} });
    ASSERT_EQ(manager->accessories().size(), 1U);
    EXPECT_EQ(manager->accessories().front()->className(), "Accessory");
    EXPECT_EQ(manager->accessories().front()->name(), "a lamp");
    advertise(std::make_shared<StubPeripheral>(std::uint8_t(2), std::nullopt), { .manufacturerData = Data{} });
    EXPECT_EQ(manager->accessories().size(), 1U); // what has no name is not even offered
}

TEST_F(Scan, AsksASelectorThatReplacesItself)
{
    auto selector = std::make_shared<PlainSelector>();
    selector->onSelect = [this] { manager->setAccessorySelectorDelegate(nullptr); };
    manager->setAccessorySelectorDelegate(std::move(selector)); // which nobody else holds
    advertise(std::make_shared<StubPeripheral>(std::uint8_t(1), "one"), { .manufacturerData = Data{} });
    advertise(std::make_shared<StubPeripheral>(std::uint8_t(2), "two"), { .manufacturerData = Data{} });
    EXPECT_EQ(manager->accessories().size(), 1U);
}

TEST_F(Scan, WithoutARadioWaits)
{
    const auto lonely = AccessoryManager::create();
    EXPECT_EQ(lonely->blueState(), CBManagerState::unknown);
    lonely->startScan();
    lonely->openBluetooth();
    after(10s);
    EXPECT_FALSE(lonely->isScanning());
    EXPECT_FALSE(lonely->isAvailable());
}

TEST_F(Scan, EndsWithItsManagerAndReachesNobodyAfterwards)
{
    after(0.1s);
    manager->startScan(5s);
    after(1s);
    app->take();
    const std::weak_ptr<AccessoryManager> weak = manager;
    manager.reset();
    EXPECT_TRUE(weak.expired());
    const auto updates = app->updates;
    after(10s);
    EXPECT_EQ(app->updates, updates);
    EXPECT_THAT(app->take(), IsEmpty());
}

TEST_F(Scan, ConnectionEventsOfDevicesThatItForgotAreIgnored)
{
    givenAConnectedAid();
    manager->clearAccessories([](const auto&, const auto&) { return true; });
    simulator->radio().dropLink(aidName);
    after(1s);
    EXPECT_THAT(app->take(), IsEmpty());
    EXPECT_EQ(accessory->state(), AccessoryState::connected); // nobody told it
}

} // namespace
} // namespace aurisk::tests
