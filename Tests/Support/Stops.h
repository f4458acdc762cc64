#pragma once

#include "AuriskSDK/Shared/Utils/Precondition.h"

#include <optional>
#include <string>

namespace aurisk::tests {

/// What the precondition says that `work` breaks; none where it breaks none.
template <typename Work> std::optional<std::string> stopOf(Work&& work)
{
    const ScopedContainment containment;
    try {
        static_cast<void>(work());
    } catch (const PreconditionStop& stop) {
        return stop.what();
    }
    return std::nullopt;
}

} // namespace aurisk::tests
