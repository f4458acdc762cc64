#pragma once

#include "Tools/aurisk/Options.h"

#include <cstddef>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace aurisk::tool {

/// A device that was heard, by all that can name it.
struct Candidate {
    std::string name = {};
    std::string identifier = {};
    std::string address = {}; ///< empty where its advertisement holds none
};

/// How far the search is.
enum class Search {
    going, ///< only a certain answer counts: a better one may be heard yet
    settled, ///< all in range had the time to be heard
    over, ///< no more will be heard
};

/// The places of the chosen candidates, left before right where both are asked for; or why there is no choice.
using Choice = std::variant<std::vector<std::size_t>, Failure>;

/// Chooses what `options` ask for. None where the search had better go on.
///
/// A name is an identifier, an address (both in either case), or the name exactly, else the name in either case. With
/// `both` it is that of a pair without its suffix. Without a name the only device, or the only pair, is chosen.
std::optional<Choice> choose(const Options& options, const std::vector<Candidate>& candidates, Search search);

} // namespace aurisk::tool
