#pragma once

#include "AuriskSDK/HearingAid/Vortilex/Data/PL3SettingsBlock.h"

#include <array>

namespace aurisk {

/// From which sound pressure on each channel compresses, as an index into `CX_THRESHOLD`.
struct PL3CompThreshold : PL3Channels {
    static constexpr auto CX_THRESHOLD = std::to_array<std::string_view>(
        { "20 dB SPL", "22 dB SPL", "24 dB SPL", "26 dB SPL", "28 dB SPL", "30 dB SPL", "32 dB SPL", "34 dB SPL",
            "36 dB SPL", "38 dB SPL", "40 dB SPL", "42 dB SPL", "44 dB SPL", "46 dB SPL", "48 dB SPL", "50 dB SPL",
            "52 dB SPL", "54 dB SPL", "56 dB SPL", "58 dB SPL", "60 dB SPL", "62 dB SPL", "64 dB SPL", "66 dB SPL",
            "68 dB SPL", "70 dB SPL", "72 dB SPL", "74 dB SPL", "76 dB SPL", "78 dB SPL", "80 dB SPL", "82 dB SPL" });

    using PL3Channels::PL3Channels;

    /// What a fitter sees of a value. One beyond the table is a broken precondition.
    static std::string_view description(std::uint8_t value)
    {
        return pl3Description(CX_THRESHOLD, value, "PL3CompThreshold");
    }

    friend bool operator==(const PL3CompThreshold&, const PL3CompThreshold&) = default;
};

} // namespace aurisk
