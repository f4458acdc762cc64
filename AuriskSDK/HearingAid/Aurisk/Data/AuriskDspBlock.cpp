#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskDspBlock.h"

#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskA16Dsp.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskA4Dsp.h"
#include "AuriskSDK/Shared/Utils/AuriskLog.h"
#include "AuriskSDK/Shared/Utils/BitCodec.h"

#include <algorithm>

namespace aurisk {

namespace {

/// The index of the band with that centre.
template <typename Dsp> std::optional<std::size_t> bandAt(int frequency)
{
    const auto& centres = Dsp::frequalizerArray;
    const auto found = std::find(centres.begin(), centres.end(), frequency);
    return found == centres.end() ? std::nullopt : std::optional(static_cast<std::size_t>(found - centres.begin()));
}

} // namespace

template <typename Dsp> std::optional<Dsp> AuriskDspBlock<Dsp>::decode(DataView bytes)
{
    return bits::decodedIfAny<Dsp>(bytes);
}

template <typename Dsp> Data AuriskDspBlock<Dsp>::toBytes() const { return bits::encode(dsp()); }

template <typename Dsp> void AuriskDspBlock<Dsp>::setMatrixGain(int gain)
{
    precondition(gain >= 1 && gain <= 47, "Invalid matrix gain value: {}", gain);
    dsp().matrixGainExponent = (47 - gain) / 6;
    dsp().matrixGainMantissa = gain - 6 * (7 - dsp().matrixGainExponent);
}

template <typename Dsp> int AuriskDspBlock<Dsp>::getMatrixGain() const
{
    return static_cast<int>(
        std::int64_t{ dsp().matrixGainMantissa } - 6 * std::int64_t{ dsp().matrixGainExponent } + 42);
}

template <typename Dsp> std::string AuriskDspBlock<Dsp>::matrixGainDisplayValue() const
{
    const auto gain = fromRawValue<AuriskA16DspEnum::MatrixGain>(getMatrixGain());
    return gain ? displayName(*gain) : "Unknown";
}

template <typename Dsp> std::vector<int> AuriskDspBlock<Dsp>::frequences()
{
    return { Dsp::frequalizerArray.begin(), Dsp::frequalizerArray.end() };
}

template <typename Dsp> void AuriskDspBlock<Dsp>::setEq(int eq, int frequency)
{
    using Gain = typename Dsp::EqualizerGain;
    constexpr auto lowest = static_cast<Gain>(0);
    if (const auto band = bandAt<Dsp>(frequency))
        dsp().equalizerArray[*band] = fromRawValue<Gain>(eq).value_or(lowest);
}

template <typename Dsp> std::optional<int> AuriskDspBlock<Dsp>::getEq(int frequency) const
{
    const auto band = bandAt<Dsp>(frequency);
    return band ? std::optional<int>(rawValue(dsp().equalizerArray[*band])) : std::nullopt;
}

template <typename Dsp> void AuriskDspBlock<Dsp>::testDataConsistency()
{
    constexpr auto size = bits::bitCount<Dsp>() / 8;
    for (std::size_t index = 0; index < size; ++index)
        for (int value = 0; value <= 0xFF; ++value) {
            Data bytes(size);
            bytes[index] = static_cast<std::uint8_t>(value);
            const int parsed = Dsp(bytes).toBytes()[index];
            if (parsed != value)
                printLine(fmt::format("different at index {}, original: {}, parsed: {}", index, value, parsed));
        }
}

template struct AuriskDspBlock<AuriskA4Dsp>;
template struct AuriskDspBlock<AuriskA16Dsp>;

} // namespace aurisk
