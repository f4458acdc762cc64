#include "Tests/RadioContract/RadioContract.h"

#include "Simulator/SimulatedAuriskAid.h"
#include "Tests/BlueZ/Guest.h"

namespace aurisk::tests {
namespace {

/// The daemon at both ends of the guest's air.
class DaemonUnderTest final : public RadioUnderTest {
public:
    ~DaemonUnderTest() override { tidyUp(); }

    std::shared_ptr<BluetoothPlatform> platform() const override { return _platform; }
    std::string aidAddress() const override { return "0A:1B:2C:3D:4E:5F"; }
    bool until(const std::function<bool()>& condition, Seconds limit) override
    {
        return tests::until(condition, limit);
    }
    Seconds aWhile() const override { return 3s; }
    void setRadioOn(bool on) override { setPower(hostAdapter, on); }
    void perform(const std::string& action) override
    {
        ASSERT_TRUE(_aid->simulator().radio().perform("X1-L", *WearerAction::fromString(action)));
    }
    void setAidOnAir(bool on) override
    {
        setInReach(on);
        perform(on ? "power 1" : "power 0");
    }
    void endLink() override { _aid->simulator().radio().dropLink("X1-L"); }

private:
    std::shared_ptr<ServedAid> _aid
        = ServedAid::create(std::make_shared<SimulatedAuriskAid>(contractAid(aidAddress())));
    std::shared_ptr<BluetoothPlatform> _platform = bluez::makePlatform({ .adapter = hostAdapter });
};

std::shared_ptr<RadioUnderTest> make() { return std::make_shared<DaemonUnderTest>(); }

INSTANTIATE_TEST_SUITE_P(BlueZ, RadioContract, testing::Values(RadioImplementation{ "Daemon", make }), named);

} // namespace
} // namespace aurisk::tests
