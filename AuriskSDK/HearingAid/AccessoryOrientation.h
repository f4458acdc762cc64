#pragma once

#include "AuriskSDK/Shared/Utils/EnumTable.h"

#include <cstdint>

namespace aurisk {

/// The ear that a hearing aid sits on.
enum class AccessoryOrientation : std::uint8_t { left = 2, right = 3, unassigned = 4 };

template <>
inline constexpr auto enumCases<AccessoryOrientation> = std::to_array<EnumCase<AccessoryOrientation>>({
    { AccessoryOrientation::left, "left" },
    { AccessoryOrientation::right, "right" },
    { AccessoryOrientation::unassigned, "unassigned" },
});

} // namespace aurisk
