#include "AuriskSDK/Platform/Manual/ManualDispatchQueue.h"
#include "Benchmarks/Measure.h"
#include "Tests/Support/PlayedAid.h"

namespace aurisk::benchmarks {

namespace {

/// What a connected hearing aid costs with its services and its message handler, the platform's own objects apart.
void memoryOfAConnectedAccessory(benchmark::State& state)
{
    state.SetLabel("target: 8192 bytes for each");
    constexpr std::size_t count = 1000;
    ManualDispatchQueue queue;
    const ScopedMainQueue scope(queue);
    double perAccessory = 0;
    for (auto _ : state) {
        std::vector<std::shared_ptr<tests::PlayedAid>> peripherals;
        for (std::size_t i = 0; i < count; ++i)
            peripherals.push_back(tests::PlayedAid::create(CBUUID(static_cast<std::uint16_t>(i)), "X1-L"));
        CBAdvertisementData advertisement;
        advertisement.manufacturerData = Data{ 0xFE, 0xFE, 0x0A, 0x1B, 0x2C, 0x3D, 0x4E, 0x5F, 0x08, 0x06 };

        const auto before = heapInUse();
        tests::PlayedRadio radio;
        for (std::size_t i = 0; i < count; ++i) {
            radio.hear(peripherals[i], advertisement);
            radio.connect(peripherals[i], *radio.manager->accessories().at(i));
        }
        queue.runUntilIdle();
        perAccessory = (heapInUse() - before) / count;
    }
    state.counters["bytes_each"] = perAccessory;
}

BENCHMARK(memoryOfAConnectedAccessory)->Name("a thousand accessories")->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace

} // namespace aurisk::benchmarks
