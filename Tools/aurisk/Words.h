#pragma once

#include "Tools/aurisk/Options.h"

#include <string>
#include <string_view>
#include <vector>

namespace aurisk::tool {

/// Takes the words of a command that are no options: `set X1-L 3`. Throws a UsageError where they do not fit it.
void takeWords(Options& options, std::vector<std::string> words);

/// How a command is written, for its help.
struct Manual {
    std::vector<std::string_view> forms; ///< `set [DEVICE] V`
    std::string_view notes = {}; ///< what its words stand for
};
const Manual& manualOf(Command command);

} // namespace aurisk::tool
