#pragma once

#include "AuriskSDK/Shared/Utils/EnumTable.h"

namespace aurisk {

/// The directional setting of a program. `unknown`: the block holds none of the settings.
enum class AuriskDirection { normal, tv, meeting, face, unknown };

template <>
inline constexpr auto enumCases<AuriskDirection> = countingUp<AuriskDirection::unknown>(
    { "normal", "tv", "meeting", "face", "unknown" });

} // namespace aurisk
