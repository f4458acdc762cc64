#pragma once

#include "AuriskSDK/Shared/Utils/EnumTable.h"

namespace aurisk {

/// The scene that a program is meant for.
enum class AuriskProgram : int { normal = 0, restaurant = 1, outdoor = 2, music = 3 };

template <>
inline constexpr auto enumCases<AuriskProgram> = std::to_array<EnumCase<AuriskProgram>>({
    { AuriskProgram::normal, "normal" },
    { AuriskProgram::restaurant, "restaurant" },
    { AuriskProgram::outdoor, "outdoor" },
    { AuriskProgram::music, "music" },
});

} // namespace aurisk
