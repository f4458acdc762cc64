#pragma once

#include "AuriskSDK/Platform/Data.h"

#include <optional>
#include <string>

namespace aurisk {

/// The text that `bytes` hold. None where they are no well-formed UTF-8.
std::optional<std::string> utf8Text(DataView bytes);

} // namespace aurisk
