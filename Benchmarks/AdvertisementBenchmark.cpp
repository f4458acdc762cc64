#include "AuriskSDK/Platform/Manual/ManualDispatchQueue.h"
#include "Benchmarks/Measure.h"
#include "Tests/Support/PlayedAid.h"

#include <unordered_map>

namespace aurisk::benchmarks {

namespace {

using tests::PlayedAid;
using tests::PlayedRadio;

constexpr std::size_t deviceCount = 10'000;
constexpr int batch = deviceCount;

class CountingDelegate final : public AccessoryManagerScanningDelegate {
public:
    void accessoryManagerIsScanning(const std::shared_ptr<AccessoryManager>&, bool) override { }
    void accessoryManagerDidDiscover(
        const std::shared_ptr<AccessoryManager>&, const std::shared_ptr<Accessory>&, std::optional<int>) override
    {
        ++discovered;
    }
    void accessoryManagerDidUpdate(
        const std::shared_ptr<AccessoryManager>&, const std::shared_ptr<Accessory>&, std::optional<int>) override
    {
        ++updated;
    }
    std::size_t discovered = 0, updated = 0;
};

/// Many devices, what they advertise, and a manager that has heard of none.
class Crowd {
public:
    /// `company` begins the manufacturer data: FE for hearing aids, anything else for strangers.
    explicit Crowd(std::uint8_t company)
    {
        for (std::size_t i = 0; i < deviceCount; ++i) {
            CBUUID::Bytes identifier{ 0x5A };
            identifier[14] = std::uint8_t(i >> 8);
            identifier[15] = std::uint8_t(i & 0xFF);
            peripherals.push_back(PlayedAid::create(CBUUID(identifier), "Crowd-L"));
        }
        advertisement.manufacturerData = Data{ company, company, 0x0A, 0x1B, 0x2C, 0x3D, 0x4E, 0x5F, 0x08, 0x06 };
        advertisement.localName = "Crowd-L";
        radio.manager->setScanningDelegate(delegate);
    }

    /// The next device, in an order that no cache likes.
    const std::shared_ptr<PlayedAid>& next()
    {
        _last = (_last + 7919) % deviceCount;
        return peripherals[_last];
    }

    std::vector<std::shared_ptr<PlayedAid>> peripherals;
    CBAdvertisementData advertisement;
    PlayedRadio radio;
    std::shared_ptr<CountingDelegate> delegate = std::make_shared<CountingDelegate>();

private:
    std::size_t _last = 0;
};

/// What any table of devices has to do: find the one with this identifier, and keep the bytes.
class PlainTable {
public:
    void take(const PlayedAid& peripheral, const Data& mfgData)
    {
        _bytes[peripheral.identifier().uuidString()] = mfgData;
    }

private:
    std::unordered_map<std::string, Data> _bytes;
};

constexpr auto label = "baseline: a hash map from the identifier's text to the bytes";

/// A crowd that has been heard before, in a table that holds it already.
void hearAgain(benchmark::State& state, Crowd& crowd)
{
    Crowd control(*crowd.advertisement.manufacturerData->begin());
    PlainTable table;
    const auto hear = [&] { crowd.radio.hear(crowd.next(), crowd.advertisement); };
    const auto take = [&] { table.take(*control.next(), *control.advertisement.manufacturerData); };
    timeOf(batch, hear);
    timeOf(batch, take);

    compare(state, batch, hear, take);
    state.SetItemsProcessed(state.iterations());
    state.counters["bytes_growth"] = heapGrowth(1'000'000, hear);
}

void knownDevice(benchmark::State& state)
{
    state.SetLabel(std::string(label) + "; target: 500,000 a second, and no growth in a million");
    ManualDispatchQueue queue;
    const ScopedMainQueue scope(queue);
    Crowd crowd(0xFE);
    hearAgain(state, crowd);
    if (crowd.delegate->discovered != deviceCount || crowd.delegate->updated == 0)
        state.SkipWithError("an advertisement was not reported");
}

void newDevice(benchmark::State& state)
{
    state.SetLabel(label);
    ManualDispatchQueue queue;
    const ScopedMainQueue scope(queue);
    Seconds own{ 0 }, reference{ 0 };
    while (state.KeepRunningBatch(batch)) {
        Crowd crowd(0xFE);
        PlainTable table;
        reference += timeOf(batch, [&] { table.take(*crowd.next(), *crowd.advertisement.manufacturerData); });
        const auto took = timeOf(batch, [&] { crowd.radio.hear(crowd.next(), crowd.advertisement); });
        state.SetIterationTime(took.count());
        own += took;
        if (crowd.delegate->discovered != deviceCount)
            state.SkipWithError("a device was not discovered");
    }
    state.SetItemsProcessed(state.iterations());
    state.counters["x_baseline"] = own / reference;
}

/// Neither a hearing aid nor anything else that the manager keeps: most of what a radio hears.
void stranger(benchmark::State& state)
{
    state.SetLabel(std::string(label) + "; target: no growth in a million");
    ManualDispatchQueue queue;
    const ScopedMainQueue scope(queue);
    Crowd crowd(0x4C);
    hearAgain(state, crowd);
    if (crowd.delegate->discovered != 0)
        state.SkipWithError("a stranger was taken for a hearing aid");
}

BENCHMARK(knownDevice)->Name("advertisement of a known device")->UseManualTime();
BENCHMARK(newDevice)->Name("advertisement of a new device")->UseManualTime();
BENCHMARK(stranger)->Name("advertisement of a stranger")->UseManualTime();

} // namespace

} // namespace aurisk::benchmarks
