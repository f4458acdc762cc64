#pragma once

#include "AuriskSDK/Platform/Dispatch.h"
#include "Tools/aurisk/Output.h"

#include <string>

namespace aurisk::tool {

/// `X1-L  ███████████░░░░░░░░░░░░░░░░░░░   37 %  21.3 kB/s, 0:03 gone, 0:05 left`, or with # and . in the bar: one row
/// of a terminal. `text` is what stands behind the percentage. A long name, and the bar, give way to it.
std::string progressBar(const std::string& name, int percent, const std::string& text, const Style& style);

/// `0:03`, `12:34` or `1:02:03`
std::string clockText(Seconds span);

} // namespace aurisk::tool
