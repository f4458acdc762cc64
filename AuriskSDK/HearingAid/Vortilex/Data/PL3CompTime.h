#pragma once

#include "AuriskSDK/HearingAid/Vortilex/Data/PL3SettingsBlock.h"

#include <array>

namespace aurisk {

/// The time constants of the compression in each channel, as an index into `CTRL_TIME_CONSTANTS`.
struct PL3CompTime : PL3Channels {
    static constexpr auto CTRL_TIME_CONSTANTS = std::to_array<std::string_view>({ "B:3,120", "B:3,300", "B:3,800",
        "B:50,300; F:3,50", "B:100,800; F:3,100", "B:100,2000; F:3,100", "B:400,15000; F:3,100; R:12 dB,600",
        "B:400,15000; F:3,100; R:18 dB,600", "B:400,15000; F:3,100; R:24 dB,600" });

    using PL3Channels::PL3Channels;

    /// What a fitter sees of a value. One beyond the table is a broken precondition.
    static std::string_view description(std::uint8_t value)
    {
        return pl3Description(CTRL_TIME_CONSTANTS, value, "PL3CompTime");
    }

    friend bool operator==(const PL3CompTime&, const PL3CompTime&) = default;
};

} // namespace aurisk
