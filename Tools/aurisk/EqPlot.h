#pragma once

#include "Tools/aurisk/SettingsBlock.h"

#include <string>
#include <vector>

namespace aurisk::tool {

/// The equaliser as lines of at most 80 columns: gains in dB on the left, frequencies in Hz below. `drawing`: with
/// characters beyond ASCII.
std::vector<std::string> eqPlot(const SettingsBlock& program, bool drawing);

} // namespace aurisk::tool
