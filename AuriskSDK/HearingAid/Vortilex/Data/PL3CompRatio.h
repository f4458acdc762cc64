#pragma once

#include "AuriskSDK/HearingAid/Vortilex/Data/PL3SettingsBlock.h"

#include <array>

namespace aurisk {

/// The compression ratio of each channel, as an index into `CX_RATIO`.
struct PL3CompRatio : PL3Channels {
    static constexpr auto CX_RATIO = std::to_array<std::string_view>(
        { "1 : 1", "1.03 : 1", "1.05 : 1", "1.08 : 1", "1.11 : 1", "1.14 : 1", "1.18 : 1", "1.21 : 1", "1.25 : 1",
            "1.29 : 1", "1.33 : 1", "1.38 : 1", "1.43 : 1", "1.48 : 1", "1.54 : 1", "1.60 : 1", "1.67 : 1", "1.74 : 1",
            "1.82 : 1", "1.9 : 1", "2 : 1", "2.11 : 1", "2.22 : 1", "2.35 : 1", "2.5 : 1", "2.67 : 1", "2.86 : 1",
            "3.08 : 1", "3.33 : 1", "3.64 : 1", "4 : 1", "4.44 : 1", "5 : 1", "5.71 : 1", "6.67 : 1", "8 : 1" });

    using PL3Channels::PL3Channels;

    /// What a fitter sees of a value. One beyond the table is a broken precondition.
    static std::string_view description(std::uint8_t value) { return pl3Description(CX_RATIO, value, "PL3CompRatio"); }

    friend bool operator==(const PL3CompRatio&, const PL3CompRatio&) = default;
};

} // namespace aurisk
