#include "AuriskSDK/HearingAid/Vortilex/Data/HDLC.h"
#include "Benchmarks/Measure.h"

namespace aurisk::benchmarks {

namespace {

constexpr int batch = 1000;

/// A frame of the longest payload is made, and parsed as a device would send it.
void buildAndParse(benchmark::State& state)
{
    constexpr std::uint8_t command = 0x06;
    const Data payload(CHDLC::longestPayload, static_cast<std::uint8_t>(state.range(0)));
    CHDLC device;
    device.create(command, payload, false);
    auto received = device.getHDLCAll();
    --received[2]; // a device does not count the command

    state.SetLabel("baseline: copying the payload; target: 6 times it where no byte is escaped");
    compare(
        state, batch,
        [&] {
            CHDLC sent, taken;
            sent.create(command, payload, false);
            taken.parse(received);
            benchmark::DoNotOptimize(sent.sentPayload().data());
            benchmark::DoNotOptimize(taken.rcvdPayload().data());
            benchmark::ClobberMemory();
        },
        [&] {
            auto copy = payload;
            benchmark::DoNotOptimize(copy.data());
            benchmark::ClobberMemory();
        });
}

// Bytes that travel as they are, and such as travel as two.
BENCHMARK(buildAndParse)->Name("build and parse a PL3 frame, 254 bytes")->Arg(0x5A)->Arg(0x7E)->UseManualTime();

} // namespace

} // namespace aurisk::benchmarks
