#pragma once

#include "AuriskSDK/HearingAid/Vortilex/Data/PL3SettingsBlock.h"

#include <array>

namespace aurisk {

/// The limit of the output in each channel, as an index into `CX_LIMITER`.
struct PL3MpoConfig : PL3Channels {
    static constexpr auto CX_LIMITER = std::to_array<std::string_view>({ "Off", "0 dB", "-2 dB", "-4 dB", "-6 dB",
        "-8 dB", "-10 dB", "-12 dB", "-14 dB", "-16 dB", "-18 dB", "-20 dB", "-22 dB", "-24 dB", "-26 dB", "-28 dB" });

    using PL3Channels::PL3Channels;

    /// What a fitter sees of a value. One beyond the table is a broken precondition.
    static std::string_view description(std::uint8_t value)
    {
        return pl3Description(CX_LIMITER, value, "PL3MpoConfig");
    }

    friend bool operator==(const PL3MpoConfig&, const PL3MpoConfig&) = default;
};

} // namespace aurisk
