#include "Tests/Scenarios/UpdateScenario.h"

namespace aurisk::tests {
namespace {

const std::vector<int> allMilestones = { 1, 2, 5, 6, 7, 10 };

class Transfer : public UpdateScenario {
public:
    void TestBody() override { }

    void expectToArrive(std::size_t size, int mtu)
    {
        SCOPED_TRACE(std::to_string(size) + " bytes at an MTU of " + std::to_string(mtu));
        givenAnMtu(mtu);
        givenAConnectedAid();
        const auto bytes = image(size);
        start(bytes);
        after(3600s);
        EXPECT_EQ(updates->milestones(), allMilestones);
        EXPECT_THAT(updates->errors, IsEmpty());
        EXPECT_TRUE(installed() == bytes);
        expectHonestProgress(size);
    }

    /// Every report says what the clock says, and no percentage comes twice.
    void expectHonestProgress(std::size_t size) const
    {
        const auto& all = updates->progress;
        ASSERT_THAT(all.size(), testing::AllOf(testing::Ge(2U), testing::Le(101U)));
        EXPECT_EQ(all.front().percent, 0);
        EXPECT_EQ(all.back().percent, 100);
        for (std::size_t i = 1; i < all.size(); ++i) {
            EXPECT_GT(all[i].percent, all[i - 1].percent);
            const auto bytes = all[i].averageSpeed * (all[i].at - all[0].at).count();
            EXPECT_EQ(std::floor(100 * std::round(bytes) / double(size)), all[i].percent);
            const auto before = all[i - 1].averageSpeed * (all[i - 1].at - all[0].at).count();
            EXPECT_NEAR(all[i].currentSpeed * (all[i].at - all[i - 1].at).count(), bytes - before, 1e-3 * bytes);
        }
    }
};

TEST(UpdateTransfer, ArrivesIdenticalWhateverItsSizeAndWhateverAWriteCarries)
{
    for (const int packet : { 20, 185, 247, 512 }) {
        const auto chunk = std::size_t(std::min(packet, 261) - 10);
        for (const auto size : { std::size_t(1), chunk, chunk + 1, 3 * chunk, std::size_t(524288) })
            Transfer().expectToArrive(size, packet + 3);
    }
}

TEST(UpdateTransfer, OutlastsTheSixteenBitsOfTheSequenceNumber)
{
    for (const std::size_t packets : { 65536U, 65600U })
        Transfer().expectToArrive(10 * packets, 23);
}

class Update : public UpdateScenario { };

TEST_F(Update, ThatLosesItsLinkIsAnErrorAndAnotherOneCompletesInTheSameProcess)
{
    givenAConnectedAid();
    start(image(20000));
    after(0.5s);
    ASSERT_EQ(updates->milestones(), (std::vector{ 1, 2, 5 }));
    simulator->radio().dropLink(aidName);
    after(1s);
    EXPECT_THAT(updates->errors, ElementsAre("10 Receiving notification failed"));
    EXPECT_THAT(app->take(), ElementsAre("state disconnected", "did disconnect with an error"));

    start(image(300)); // neither while the failed one has not been stopped,
    accessory->stopOTA();
    start(image(300)); // nor without a link
    after(1s);
    EXPECT_THAT(updates->errors, ElementsAre(testing::_, "10 Receiving notification failed"));
    accessory->stopOTA();

    ASSERT_TRUE(accessory->connect(app, "left"));
    after(1s);
    updates->states.clear();
    const auto second = image(20000, 2);
    start(second);
    after(30s);
    EXPECT_EQ(updates->milestones(), allMilestones);
    EXPECT_EQ(installed(), second);
}

TEST_F(Update, ThatIsStoppedWhenItsLinkGoesHasFailedForNobody)
{
    givenAConnectedAid();
    start(image(20000));
    after(0.5s);
    app->onDisconnect = [this] { accessory->stopOTA(); };
    simulator->radio().dropLink(aidName);
    after(1s);
    EXPECT_THAT(updates->errors, IsEmpty());
}

TEST_F(Update, StartedTooEarlyInANewConnectionIsAnError)
{
    givenAConnectedAid();
    accessory->disconnect();
    after(1s);
    app->onConnect = [this](const auto&) { start(image(300)); }; // on the services of the last connection
    ASSERT_TRUE(accessory->connect(app, "left"));
    after(1s);
    EXPECT_THAT(updates->errors, ElementsAre("10 Receiving notification failed"));
    const auto bytes = image(300);
    start(bytes);
    after(1s);
    EXPECT_EQ(installed(), bytes);
}

TEST_F(Update, MayCostTheAccessoryItsLifeWhereverAnErrorIsTold)
{
    for (const bool isConnected : { false, true }) {
        isConnected ? givenAConnectedAid() : givenAFoundAid();
        if (!isConnected) {
            ASSERT_TRUE(accessory->connect(app, "left"));
            after(1s);
            accessory->disconnect();
            after(1s);
        }
        updates->onError = [this] {
            manager->clearAccessories([](const auto&, const auto&) { return true; });
            accessory.reset();
        };
        start(image(20000));
        after(0.5s);
        if (isConnected)
            simulator->radio().dropLink(aidName);
        after(1s);
        EXPECT_EQ(accessory, nullptr);
    }
    EXPECT_EQ(updates->errors.size(), 2U);
}

TEST_F(Update, GoesOnWhileTheDeviceAnswersRequests)
{
    givenAConnectedAid();
    const auto bytes = image(20000);
    start(bytes);
    for (int i = 0; i < 4; ++i) {
        whenRequesting(AuriskRequest::readVolume{ .program = i });
        wearer("volume " + std::to_string(i));
        after(0.2s);
    }
    after(5s);
    EXPECT_EQ(installed(), bytes);
    EXPECT_THAT(
        results(), testing::Contains("readVolume(program: 3) => success(data: didReadProgram(program: 3, volume: 2))"));
}

TEST_F(Update, TellsItsStatesAndProgressOnTheQueuesOfItsConfiguration)
{
    ManualDispatchQueue states, progress;
    givenAConnectedAid();
    auto configure
        = DFUConfigure::create(queue, states, progress)->with(DFUFirmware::create(image(300), DFUFirmwareType::type0));
    configure->delegate = updates;
    configure->progressDelegate = updates;
    accessory->startOTA(configure);
    after(5s);
    EXPECT_THAT(updates->states, IsEmpty());
    EXPECT_THAT(updates->progress, IsEmpty());
    progress.runUntilIdle();
    EXPECT_THAT(updates->progress, testing::SizeIs(3));
    states.runUntilIdle();
    EXPECT_EQ(updates->milestones(), allMilestones);
}

TEST_F(Update, KeepsNoDelegateAliveButThatOfProgress)
{
    givenAConnectedAid();
    const auto bytes = image(300);
    auto configure = DFUConfigure::create()->with(DFUFirmware::create(bytes, DFUFirmwareType::type0));
    configure->delegate = updates;
    accessory->startOTA(configure);
    std::weak_ptr<UpdateApplication> gone = updates;
    updates.reset();
    EXPECT_TRUE(gone.expired());
    configure.reset();
    after(5s);
    EXPECT_EQ(installed(), bytes);
}

} // namespace
} // namespace aurisk::tests
