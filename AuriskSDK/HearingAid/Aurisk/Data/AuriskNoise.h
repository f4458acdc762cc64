#pragma once

#include "AuriskSDK/Shared/Utils/EnumTable.h"

namespace aurisk {

/// The strength of a program's noise reduction.
enum class AuriskNoise { off, weak, medium, strong };

template <>
inline constexpr auto enumCases<AuriskNoise> = countingUp<AuriskNoise::strong>({ "off", "weak", "medium", "strong" });

} // namespace aurisk
