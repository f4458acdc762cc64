#pragma once

#include "AuriskSDK/Platform/Data.h"

#include <optional>
#include <string>
#include <string_view>

namespace aurisk {

/// Reads hexadecimal text as a person writes it: each run of digits is cut into pairs from its left end, a digit left
/// over is a byte by itself, and everything else separates. "abc" gives AB 0C, "a b" gives 0A 0B. None where there is
/// no digit.
std::optional<Data> ask_hexadecimal(std::string_view text);

/// Two lower-case digits a byte, nothing between them.
std::string ask_hexadecimal(DataView bytes);

} // namespace aurisk
