#pragma once

#include "AuriskSDK/Shared/Utils/EnumTable.h"

#include <cstdint>

namespace aurisk {

/// The hearing-aid chip of a device. The order of declaration differs from the order of the numbers.
enum class AuriskChip : std::uint8_t { h01 = 0x01, a4 = 0x00, a16 = 0x06, unassigned = 0x07 };

template <>
inline constexpr auto enumCases<AuriskChip> = std::to_array<EnumCase<AuriskChip>>({
    { AuriskChip::h01, "h01" },
    { AuriskChip::a4, "a4" },
    { AuriskChip::a16, "a16" },
    { AuriskChip::unassigned, "unassigned" },
});

/// The radio chip of a device.
enum class AuriskBLEChip : std::uint8_t { u87 = 7, tiny600 = 8, unassigned = 9 };

template <>
inline constexpr auto enumCases<AuriskBLEChip> = std::to_array<EnumCase<AuriskBLEChip>>({
    { AuriskBLEChip::u87, "u87" },
    { AuriskBLEChip::tiny600, "tiny600" },
    { AuriskBLEChip::unassigned, "unassigned" },
});

} // namespace aurisk
