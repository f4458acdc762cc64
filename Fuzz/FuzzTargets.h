#pragma once

#include "AuriskSDK/Platform/Data.h"
#include "AuriskSDK/Shared/Utils/Precondition.h"

#include <optional>
#include <stdexcept>

/// Each target takes any bytes whatever, hands them to one part of the library as a device, a file or a person would,
/// and throws a Failure where the library does with them what it must not. A precondition that breaks where none may
/// stops the process, as everywhere.

namespace aurisk::fuzz {

using Target = void (*)(DataView input);

void frame(DataView input); ///< a received value as it stands
void payload(DataView input); ///< command, identifiers and payload, put into a frame that is valid
void advertisement(DataView input); ///< a sequence of advertisements of one device
void hexadecimal(DataView input); ///< text that a person has written
void accessory(DataView input); ///< a sequence of requests, notifications and mishaps of a connected hearing aid
void block(DataView input); ///< a settings block or a log as it stands
void profile(DataView input); ///< a profile in JSON, and a profile field
void update(DataView input); ///< a sequence of what happens in firmware updates
void pl3(DataView input); ///< a sequence of requests, notifications, confirmations and waiting
void world(DataView input); ///< a file that describes a simulated world

class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Throws a Failure where `holds` is false; `rule` says what does not hold.
inline void require(bool holds, const char* rule)
{
    if (!holds)
        throw Failure(rule);
}

/// What `action` yields; none where it breaks a precondition.
template <typename Action> auto contained(Action&& action) -> std::optional<decltype(action())>
{
    try {
        const ScopedContainment containment;
        return action();
    } catch (const PreconditionStop&) {
        return std::nullopt;
    }
}

/// Lets preconditions that a device's bytes break be contained for a scope, as applications in the field do.
class [[nodiscard]] ScopedContainPolicy {
public:
    ScopedContainPolicy() { setPreconditionPolicy(PreconditionPolicy::contain); }
    ~ScopedContainPolicy() { setPreconditionPolicy(PreconditionPolicy::stop); }
    ScopedContainPolicy(const ScopedContainPolicy&) = delete;
    ScopedContainPolicy& operator=(const ScopedContainPolicy&) = delete;
};

} // namespace aurisk::fuzz
