#pragma once

#include "AuriskSDK/Shared/Utils/PreconditionPolicy.h"

#include <fmt/core.h>

#include <stdexcept>
#include <string_view>
#include <utility>

namespace aurisk {

/// A broken precondition inside a ScopedContainment.
class PreconditionStop : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// While alive, a precondition that breaks on this thread throws a PreconditionStop instead of stopping the process.
/// Code that can reach a precondition changes its object only after the last check, so nothing is left half done.
class [[nodiscard]] ScopedContainment {
public:
    ScopedContainment();
    ~ScopedContainment();
    ScopedContainment(const ScopedContainment&) = delete;
    ScopedContainment& operator=(const ScopedContainment&) = delete;
};

/// Writes one line to standard error and stops the process; inside a ScopedContainment it throws.
[[noreturn]] void preconditionFailure(std::string_view message);

/// States what the caller has to see to. Where it does not hold: `precondition(n < 4, "program: {} is too large", n)`.
template <typename... Arguments>
void precondition(bool holds, fmt::format_string<Arguments...> message, Arguments&&... arguments)
{
    if (!holds) [[unlikely]]
        preconditionFailure(fmt::format(message, std::forward<Arguments>(arguments)...));
}

/// `value` as a Narrow. One outside its range is a broken precondition that names `what`.
template <typename Narrow, typename Wide> Narrow exactly(Wide value, std::string_view what)
{
    precondition(std::in_range<Narrow>(value), "{}: {} does not fit in {} byte(s)", what, value, sizeof(Narrow));
    return static_cast<Narrow>(value);
}

/// In debug builds, a broken precondition where this is not the thread that runs the main queue.
#ifdef NDEBUG
inline void expectMainQueue() { }
#else
void expectMainQueue();
#endif

/// Whether this thread is inside a ScopedContainment.
bool isContained();

/// Logs that bytes of a device broke a precondition and are dropped.
void logContained(std::string_view what, const PreconditionStop& stop);

/// The Bluetooth boundary: runs `decode`, which takes bytes of a device apart and does nothing else. Under
/// PreconditionPolicy::contain a precondition that breaks in it yields an empty result; under `stop` the process stops.
/// Inside a ScopedContainment that one hears of it, under either policy.
/// `decode` returns something whose default value means nothing was decoded.
template <typename Decode> auto decodeFromDevice(std::string_view what, Decode&& decode) -> decltype(decode())
{
    if (preconditionPolicy() == PreconditionPolicy::stop || isContained())
        return decode();
    try {
        const ScopedContainment containment;
        return decode();
    } catch (const PreconditionStop& stop) {
        logContained(what, stop);
        return {};
    }
}

} // namespace aurisk
