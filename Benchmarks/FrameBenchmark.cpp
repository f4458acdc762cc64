#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskRawData.h"
#include "Benchmarks/Measure.h"

#include <numeric>

namespace aurisk::benchmarks {

namespace {

constexpr int batch = 1000;

AuriskRawData frameWith(benchmark::State& state)
{
    state.SetLabel("baseline: copying and summing the same bytes; target: 3 times it");
    return AuriskRawData::make(0x91, 0x01, 0x03, Data(static_cast<std::size_t>(state.range(0)), 0xA5));
}

void copyAndSum(DataView bytes)
{
    Data copy(bytes.begin(), bytes.end());
    benchmark::DoNotOptimize(copy.data());
    auto sum = std::accumulate(copy.begin(), copy.end(), 0U);
    benchmark::DoNotOptimize(sum);
}

void encodeFrame(benchmark::State& state)
{
    const auto frame = frameWith(state);
    const auto bytes = frame.toData();
    compare(
        state, batch, [&] { benchmark::DoNotOptimize(frame.toData()); }, [&] { copyAndSum(bytes); });
}

void parseFrame(benchmark::State& state)
{
    auto bytes = frameWith(state).toData();
    bytes.insert(bytes.begin(), 0x00); // what a device puts in front of each frame
    compare(
        state, batch, [&] { benchmark::DoNotOptimize(AuriskRawData::parse(bytes)); }, [&] { copyAndSum(bytes); });
}

// Payloads: none, a block of either chip, and the most that a frame can carry to a device and from it.
BENCHMARK(encodeFrame)->Name("encode a frame, payload")->Arg(0)->Arg(12)->Arg(56)->Arg(253)->UseManualTime();
BENCHMARK(parseFrame)->Name("parse a frame, payload")->Arg(0)->Arg(12)->Arg(56)->Arg(247)->UseManualTime();

} // namespace

} // namespace aurisk::benchmarks
