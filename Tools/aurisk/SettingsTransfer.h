#pragma once

#include "Tools/aurisk/SettingsAccess.h"

#include <string>
#include <vector>

namespace aurisk::tool {

/// The fields of a block that belong to no band, as a table for people.
std::vector<std::string> fieldLines(const SettingsBlock& block);

/// The commands that keep blocks of that kind in a file, and write them from there to devices.
Plan planExport(const Options& options, BlockKind kind);
Plan planImport(const Options& options, BlockKind kind);

} // namespace aurisk::tool
