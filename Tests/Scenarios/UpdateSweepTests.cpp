#include "AuriskSDK/Shared/Utils/PreconditionPolicy.h"
#include "Tests/Scenarios/UpdateScenario.h"
#include "Tests/Support/ForwardingDelegate.h"
#include "Tests/Support/UpdateOracle.h"

namespace aurisk::tests {
namespace {

constexpr std::size_t imageSize = 55, chunkSize = 10;

/// One update of a few packets that something goes wrong with, and then another one.
class UpdateSweep : public UpdateScenario, public ForwardingDelegate {
public:
    UpdateSweep()
    {
        setPreconditionPolicy(PreconditionPolicy::contain);
        givenAnMtu(23);
    }
    ~UpdateSweep() override { setPreconditionPolicy(PreconditionPolicy::stop); }
    void TestBody() override { }

    /// Returns how many messages the link carried.
    int play(const LinkFaults& withFaults, std::optional<Seconds> stopAfter = std::nullopt)
    {
        faults() = withFaults;
        watch();
        manager->startScan(1s);
        after(1.5s);
        accessory = std::dynamic_pointer_cast<AuriskAccessory>(manager->accessories().at(0));
        accessory->connect(app, 5s, "left");
        if (stopAfter) {
            after(*stopAfter);
            stop();
        }
        after(20s); // what was delayed has arrived
        const auto messages = simulator->radio().messageCount(aidName);
        if (!stopAfter)
            stop();
        after(1s);
        expectWhatArrived();
        expectTheNextUpdateToSucceed();
        return messages;
    }

private:
    /// Looks at what reaches the accessory, and starts the update as soon as the services are known.
    void watch()
    {
        app->onConnect = [this](const std::shared_ptr<Accessory>& connected) {
            setNext(connected);
            connected->peripheral()->setDelegate(
                std::shared_ptr<CBPeripheralDelegate>(tapHolder, static_cast<CBPeripheralDelegate*>(this)));
        };
        app->onServices = [this] {
            oracle.starts(imageSize, queue.now());
            start(first);
        };
        app->onDisconnect = [this] { oracle.linkGoes(queue.now()); };
    }

    void stop()
    {
        oracle.stops(queue.now());
        accessory->stopOTA();
    }

    void expectWhatArrived()
    {
        app->onServices = nullptr;
        app->onDisconnect = nullptr;
        EXPECT_EQ(updates->states, oracle.states);
        EXPECT_EQ(updates->errors, oracle.errors);
        const bool isCompleted = testing::Value(updates->states, testing::Contains(10));
        EXPECT_TRUE(!isCompleted || installed() == first);
        EXPECT_TRUE(installed().empty() || installed() == first);
    }

    void expectTheNextUpdateToSucceed()
    {
        auto state = aid();
        state.firmware = {};
        dynamic_cast<SimulatedAuriskAid&>(*simulator->aid(aidName)).setState(state);
        faults() = {};
        if (!accessory->firmwareUpdateService())
            accessory->disconnect(); // its services never came
        after(1s);
        if (accessory->state() != AccessoryState::connected) {
            ASSERT_TRUE(accessory->connect(app, 10s, "left"));
            after(5s);
        }
        ASSERT_EQ(accessory->state(), AccessoryState::connected);
        updates->states.clear();
        updates->errors.clear();
        start(second);
        after(10s);
        EXPECT_EQ(updates->milestones(), (std::vector{ 1, 2, 5, 6, 7, 10 }));
        EXPECT_THAT(updates->errors, IsEmpty());
        EXPECT_EQ(installed(), second);
    }

    void peripheralDidDiscoverCharacteristicsFor(
        CBPeripheral& peripheral, const std::shared_ptr<CBService>& service, const MaybeError& error) override
    {
        if (service->uuid() == CBUUID(0xAE3A))
            oracle.characteristicsArrive(error.has_value(), queue.now());
        ForwardingDelegate::peripheralDidDiscoverCharacteristicsFor(peripheral, service, error);
    }
    void peripheralDidUpdateNotificationStateFor(CBPeripheral& peripheral,
        const std::shared_ptr<CBCharacteristic>& characteristic, const MaybeError& error) override
    {
        if (characteristic->uuid() == CBUUID(0xAE3C))
            oracle.subscriptionArrives(error.has_value(), queue.now());
        ForwardingDelegate::peripheralDidUpdateNotificationStateFor(peripheral, characteristic, error);
    }
    void peripheralDidUpdateValueFor(CBPeripheral& peripheral, const std::shared_ptr<CBCharacteristic>& characteristic,
        const MaybeError& error) override
    {
        if (characteristic->uuid() == CBUUID(0xAE3C))
            oracle.valueArrives(characteristic->value().value_or(Data{}), queue.now());
        ForwardingDelegate::peripheralDidUpdateValueFor(peripheral, characteristic, error);
    }

    const Data first = image(imageSize), second = image(imageSize + 7, 2);
    UpdateOracle oracle{ chunkSize };
    std::shared_ptr<int> tapHolder = std::make_shared<int>();
};

class UpdateWithAFaultAtEveryMessage : public testing::TestWithParam<NamedFault> { };

TEST_P(UpdateWithAFaultAtEveryMessage, IsToldAsItHappensAndTheNextOneSucceeds)
{
    const auto& fault = GetParam();
    const auto messages = UpdateSweep().play({});
    ASSERT_GE(messages, 2 * (1 + 6 + 1) + 2); // start, packets, validation, each with an answer; two of them with two
    for (int message = 1; message <= messages; ++message) {
        SCOPED_TRACE("message " + std::to_string(message));
        UpdateSweep().play({ .faults = { { .kind = fault.kind, .message = message, .by = fault.by } } });
    }
    for (int message = 1; message < messages; message += 2) {
        SCOPED_TRACE("messages " + std::to_string(message) + " and " + std::to_string(message + 1));
        UpdateSweep().play({ .faults = { { .kind = fault.kind, .message = message, .by = fault.by },
                                 { .kind = fault.kind, .message = message + 1, .by = fault.by } } });
    }
}

const auto allFaults = everyFault({
    { "DelayALittle", Kind::delay, 0.05s },
    { "DelayBeyondTheBoot", Kind::delay, 0.35s },
    { "DelayForLong", Kind::delay, 4s },
});
INSTANTIATE_TEST_SUITE_P(Each, UpdateWithAFaultAtEveryMessage, testing::ValuesIn(allFaults),
    [](const auto& swept) { return swept.param.name; });

TEST(UpdateSweep, StoppedAtAnyTimeMakesWayForTheNext)
{
    for (auto at = 0us; at < 700ms; at += 2500us) { // between all messages, and with each
        SCOPED_TRACE("after " + std::to_string(at.count()) + " us");
        UpdateSweep().play({}, at);
    }
}

} // namespace
} // namespace aurisk::tests
