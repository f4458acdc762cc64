#pragma once

#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskDataLog.h"

#include <string>
#include <vector>

namespace aurisk::tool {

/// How a hearing aid was used: its totals, a row for each program with the shares of the levels of sound as a bar, and
/// the history of its run times as a histogram. `drawing`: with characters beyond ASCII.
std::vector<std::string> usagePicture(const AuriskSummaryDataLog& log, bool drawing);

} // namespace aurisk::tool
