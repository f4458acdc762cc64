#pragma once

#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskEnums.h"
#include "AuriskSDK/Shared/Utils/AuriskLog.h"
#include "AuriskSDK/Shared/Utils/BitCodec.h"

#include <algorithm>
#include <fmt/format.h>

/// What the program blocks of both chips have in common.

namespace aurisk::dsp {

/// The matrix gain is an attenuation of g = mantissa - 6 * exponent + 42 dB.
constexpr int matrixGain(int mantissa, int exponent) { return mantissa - 6 * exponent + 42; }

template <typename Dsp> void setMatrixGain(Dsp& dsp, int gain)
{
    precondition(gain >= 1 && gain <= 47, "Invalid matrix gain value: {}", gain);
    dsp.matrixGainExponent = (47 - gain) / 6;
    dsp.matrixGainMantissa = gain - 6 * (7 - dsp.matrixGainExponent);
}

inline std::string matrixGainText(int gain)
{
    const auto value = fromRawValue<AuriskA16DspEnum::MatrixGain>(gain);
    return value ? displayName(*value) : "Unknown";
}

/// The index of the band with that centre.
template <typename Dsp> std::optional<std::size_t> bandAt(int frequency)
{
    const auto& centres = Dsp::frequalizerArray;
    const auto found = std::find(centres.begin(), centres.end(), frequency);
    return found == centres.end() ? std::nullopt : std::optional(static_cast<std::size_t>(found - centres.begin()));
}

template <typename Dsp> void setEq(Dsp& dsp, int eq, int frequency)
{
    using Gain = typename Dsp::EqualizerGain;
    constexpr auto lowest = static_cast<Gain>(0);
    if (const auto band = bandAt<Dsp>(frequency))
        dsp.equalizerArray[*band] = fromRawValue<Gain>(eq).value_or(lowest);
}

template <typename Dsp> std::optional<int> getEq(const Dsp& dsp, int frequency)
{
    const auto band = bandAt<Dsp>(frequency);
    return band ? std::optional<int>(rawValue(dsp.equalizerArray[*band])) : std::nullopt;
}

template <typename Dsp> void testDataConsistency()
{
    for (std::size_t index = 0; index < bits::bitCount<Dsp>() / 8; ++index)
        for (int value = 0; value <= 0xFF; ++value) {
            Data bytes(bits::bitCount<Dsp>() / 8);
            bytes[index] = static_cast<std::uint8_t>(value);
            const int parsed = Dsp(bytes).toBytes()[index];
            if (parsed != value)
                printLine(fmt::format("different at index {}, original: {}, parsed: {}", index, value, parsed));
        }
}

} // namespace aurisk::dsp
