#pragma once

#include "Tools/aurisk/Options.h"

#include <string>
#include <variant>
#include <vector>

namespace aurisk::tool {

/// A text that was asked for instead of a command: help or version.
struct Information {
    std::string text;
};

/// Reads the arguments, without the program's name. Throws a UsageError where they cannot be used.
std::variant<Options, Information> parseArguments(const std::vector<std::string>& arguments);

/// Whether the arguments ask for JSON, however wrong they are otherwise.
bool wantsJson(const std::vector<std::string>& arguments);

} // namespace aurisk::tool
