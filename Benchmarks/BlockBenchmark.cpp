#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskA16Dsp.h"
#include "Benchmarks/Measure.h"

#include <cstring>

namespace aurisk::benchmarks {

namespace {

constexpr int batch = 1000;

/// The block of the A16 chip as somebody would write it who has nothing but this one block in mind: every field at its
/// place by hand, no value checked.
struct HandShiftedBlock {
    unsigned scalars[12];
    unsigned equalizer[16], ratio[16], constant[16], threshold[16], output[16];
    unsigned em1, em2, em3, em4, em5, em6, em7, em8, attack, release, em9, mix, lowCut;

    static std::uint64_t load(const std::uint8_t* bytes)
    {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes, sizeof word); // the machine is little-endian, as the block is
        return word;
    }

    void decode(const std::uint8_t* b)
    {
        const auto head = load(b);
        constexpr unsigned begins[] = { 0, 4, 8, 12, 14, 16, 19, 22, 24, 27, 28, 29, 32 };
        for (int i = 0; i < 12; ++i)
            scalars[i] = unsigned(head >> begins[i]) & ((1U << (begins[i + 1] - begins[i])) - 1);
        const auto low = load(b + 4), high = load(b + 12);
        for (int i = 0; i < 6; ++i) {
            equalizer[i] = unsigned(low >> 5 * i) & 31;
            equalizer[6 + i] = unsigned(low >> (32 + 5 * i)) & 31;
        }
        em1 = unsigned(low >> 30) & 3;
        em2 = unsigned(low >> 62) & 3;
        for (int i = 0; i < 4; ++i)
            equalizer[12 + i] = unsigned(high >> 5 * i) & 31;
        const auto ratios = load(b + 14); // bits 112 to 175
        for (int i = 0; i < 7; ++i)
            ratio[i] = unsigned(ratios >> (4 + 6 * i)) & 63;
        em3 = unsigned(ratios >> 46) & 3;
        const auto more = load(b + 20); // bits 160 to 223
        for (int i = 0; i < 5; ++i)
            ratio[7 + i] = unsigned(more >> 6 * i) & 63;
        em4 = unsigned(more >> 30) & 3;
        for (int i = 0; i < 4; ++i)
            ratio[12 + i] = unsigned(more >> (32 + 6 * i)) & 63;
        const auto constants = load(b + 27);
        for (int i = 0; i < 16; ++i)
            constant[i] = unsigned(constants >> 4 * i) & 15;
        threshold[0] = b[35] & 31;
        em5 = b[35] >> 5;
        const auto thresholds = load(b + 36), rest = load(b + 44); // bits 288 to 351, 352 to 415
        for (int i = 0; i < 6; ++i) {
            threshold[1 + i] = unsigned(thresholds >> 5 * i) & 31;
            threshold[7 + i] = unsigned(thresholds >> (32 + 5 * i)) & 31;
        }
        em6 = unsigned(thresholds >> 30) & 3;
        em7 = unsigned(thresholds >> 62) & 3;
        for (int i = 0; i < 3; ++i)
            threshold[13 + i] = unsigned(rest >> 5 * i) & 31;
        for (int i = 0; i < 4; ++i)
            output[i] = unsigned(rest >> (15 + 4 * i)) & 15;
        em8 = unsigned(rest >> 31) & 1;
        const auto tail = load(b + 48);
        for (int i = 0; i < 12; ++i)
            output[4 + i] = unsigned(tail >> 4 * i) & 15;
        attack = unsigned(tail >> 48) & 7;
        release = unsigned(tail >> 51) & 7;
        em9 = unsigned(tail >> 54) & 1;
        mix = unsigned(tail >> 55) & 31;
        lowCut = unsigned(tail >> 60) & 15;
    }

    Data encode() const
    {
        Data bytes(56);
        const auto orInto = [&](unsigned bit, unsigned value) {
            auto word = std::uint64_t{ value } << bit % 8;
            for (auto byte = bit / 8; word != 0; ++byte, word >>= 8)
                bytes[byte] = std::uint8_t(bytes[byte] | word);
        };
        constexpr unsigned begins[] = { 0, 4, 8, 12, 14, 16, 19, 22, 24, 27, 28, 29 };
        for (int i = 0; i < 12; ++i)
            orInto(begins[i], scalars[i]);
        for (unsigned i = 0; i < 16; ++i) {
            orInto(i < 6 ? 32 + 5 * i : i < 12 ? 64 + 5 * (i - 6) : 96 + 5 * (i - 12), equalizer[i]);
            orInto(i < 7 ? 116 + 6 * i : i < 12 ? 160 + 6 * (i - 7) : 192 + 6 * (i - 12), ratio[i]);
            orInto(216 + 4 * i, constant[i]);
            orInto(i < 1     ? 280
                    : i < 7  ? 288 + 5 * (i - 1)
                    : i < 13 ? 320 + 5 * (i - 7)
                             : 352 + 5 * (i - 13),
                threshold[i]);
            orInto(i < 4 ? 367 + 4 * i : 384 + 4 * (i - 4), output[i]);
        }
        orInto(62, em1);
        orInto(94, em2);
        orInto(158, em3);
        orInto(190, em4);
        orInto(285, em5);
        orInto(318, em6);
        orInto(350, em7);
        orInto(383, em8);
        orInto(432, attack);
        orInto(435, release);
        orInto(438, em9);
        orInto(439, mix);
        orInto(444, lowCut);
        return bytes;
    }
};

void codeBlock(benchmark::State& state)
{
    state.SetLabel("baseline: the same block shifted by hand, unchecked; target: below 1 us");
    AuriskA16Dsp block;
    for (std::size_t i = 0; i < 16; ++i) {
        block.equalizerArray[i] = static_cast<AuriskA16DspEnum::EqualizerGain>(20 - i);
        block.compressionRatioArray[i] = static_cast<AuriskA16DspEnum::CompressionRatio>(2 * i + 5);
        block.maximumPowerOutputArray[i] = static_cast<AuriskA16DspEnum::MaximumPowerOutput>(i);
    }
    block.em6 = 2;
    auto bytes = block.toBytes();
    HandShiftedBlock byHand{};
    byHand.decode(bytes.data());
    if (byHand.encode() != bytes) {
        state.SkipWithError("the two do not agree on the bytes");
        return;
    }
    compare(
        state, batch,
        [&] {
            benchmark::DoNotOptimize(bytes.data());
            const AuriskA16Dsp decoded(bytes);
            benchmark::DoNotOptimize(decoded.toBytes());
        },
        [&] {
            benchmark::DoNotOptimize(bytes.data());
            HandShiftedBlock decoded; // every member is decoded
            decoded.decode(bytes.data());
            benchmark::DoNotOptimize(decoded.encode());
        });
}

BENCHMARK(codeBlock)->Name("decode and encode an A16 block")->UseManualTime();

} // namespace

} // namespace aurisk::benchmarks
