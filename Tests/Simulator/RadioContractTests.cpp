#include "Tests/RadioContract/RadioContract.h"

#include "AuriskSDK/Platform/Manual/ManualDispatchQueue.h"
#include "Simulator/SimulatedAuriskAid.h"
#include "Simulator/Simulator.h"

namespace aurisk::tests {
namespace {

/// The simulated radio in virtual time.
class SimulatedRadioUnderTest final : public RadioUnderTest {
public:
    explicit SimulatedRadioUnderTest(PlacedAid placed)
    {
        placed.aid = std::make_shared<SimulatedAuriskAid>(contractAid(aidAddress()));
        SimulatedWorld world;
        world.aids = { std::move(placed) };
        _simulator = Simulator::create(std::move(world), _queue);
    }

    std::shared_ptr<BluetoothPlatform> platform() const override { return _simulator->platform(); }
    std::string aidAddress() const override { return "0A:1B:2C:3D:4E:5F"; }
    bool until(const std::function<bool()>& condition, Seconds limit) override
    {
        for (const auto end = _queue.now() + limit; !condition(); _queue.advance(1ms))
            if (_queue.now() >= end)
                return false;
        return true;
    }
    Seconds aWhile() const override { return 10s; }
    void setRadioOn(bool on) override
    {
        _simulator->radio().setState(on ? CBManagerState::poweredOn : CBManagerState::poweredOff);
    }
    void perform(const std::string& action) override
    {
        ASSERT_TRUE(_simulator->radio().perform("X1-L", *WearerAction::fromString(action)));
    }
    void setAidOnAir(bool on) override { perform(on ? "power 1" : "power 0"); }
    void endLink() override { _simulator->radio().dropLink("X1-L"); }

private:
    ManualDispatchQueue _queue;
    std::shared_ptr<Simulator> _simulator;
};

std::shared_ptr<RadioUnderTest> makeFast() { return std::make_shared<SimulatedRadioUnderTest>(PlacedAid{}); }

std::shared_ptr<RadioUnderTest> makeSlow()
{
    return std::make_shared<SimulatedRadioUnderTest>(
        PlacedAid{ .rssi = -127, .advertisingInterval = 2s, .mtu = 23, .faults = { .latency = 0.3s } });
}

INSTANTIATE_TEST_SUITE_P(Simulator, RadioContract,
    testing::Values(RadioImplementation{ "Fast", makeFast }, RadioImplementation{ "Slow", makeSlow }), named);

} // namespace
} // namespace aurisk::tests
