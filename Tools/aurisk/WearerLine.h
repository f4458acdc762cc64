#pragma once

#include "Simulator/LinkFaults.h"
#include "Simulator/Simulator.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace aurisk::tool {

/// One line that is typed while hearing aids are served: what a wearer does, or what goes wrong with a link.
struct WearerLine {
    struct Help {
        friend bool operator==(const Help&, const Help&) = default;
    };
    struct Drop { ///< the link goes now
        friend bool operator==(const Drop&, const Drop&) = default;
    };
    struct Switch { ///< a lasting fault of the link begins or ends
        bool LinkFaults::*fault = nullptr;
        bool on = false;
        friend bool operator==(const Switch&, const Switch&) = default;
    };
    using Deed = std::variant<Help, WearerAction, Drop, Switch, Fault>;

    std::string name = {}; ///< whose it is; empty: of every hearing aid that is served
    Deed deed = {}; ///< the message of a Fault counts from now on: 1 is the next

    /// None for a blank line. Throws a UsageError for one that says nothing that it knows.
    static std::optional<WearerLine> parse(std::string_view text);

    /// All that there is to type.
    static std::string_view help();

    /// Does it to the aid of that name, or to all of `served`. Throws a UsageError where one of them cannot do it; then
    /// none has. Help does nothing.
    void apply(Simulator& simulator, const std::vector<std::string>& served) const;

    friend bool operator==(const WearerLine&, const WearerLine&) = default;
};

} // namespace aurisk::tool
