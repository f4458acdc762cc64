#pragma once

#include "AuriskSDK/Shared/Utils/EnumTable.h"

#include <cstdint>

namespace aurisk {

/// The bytes of the answer to PL3Command::deviceSettings, by their places.
enum class PL3DeviceSettings : std::uint8_t {
    numberOfPrograms,
    numberOfVCSteps,
    VCStepSize,
    VCEnabled,
    MDA8LowerByte,
    MDA8UpperByte,
    MDA9LowerByte,
    MDA9UpperByte,
    algorithmVersionBuild,
    algorithmVersionMinor,
    algorithmVersionMajor,
    unknown,
};

template <>
inline constexpr auto enumCases<PL3DeviceSettings> = countingUp<PL3DeviceSettings::unknown>({
    "numberOfPrograms",
    "numberOfVCSteps",
    "VCStepSize",
    "VCEnabled",
    "MDA8LowerByte",
    "MDA8UpperByte",
    "MDA9LowerByte",
    "MDA9UpperByte",
    "algorithmVersionBuild",
    "algorithmVersionMinor",
    "algorithmVersionMajor",
    "unknown",
});

} // namespace aurisk
