#include "AuriskSDK/Platform/Manual/ManualDispatchQueue.h"

#include <algorithm>
#include <stdexcept>

namespace aurisk {

namespace {

/// More pieces of work than this at one instant are a loop, which is to fail rather than to hang.
constexpr int mostAtOneInstant = 100'000;

} // namespace

ManualClock::Ticks ManualClock::ticks(Seconds span) { return std::chrono::round<Ticks>(countable(span)); }

void ManualClock::add(Seconds delay, Work work) { _due.emplace(_now + ticks(delay), std::move(work)); }

void ManualClock::advance(Seconds span) { runUntil(_now + ticks(span)); }

void ManualClock::runToEnd(Seconds limit)
{
    const auto end = _now + ticks(limit);
    while (!_due.empty() && _due.begin()->first <= end)
        runUntil(_due.begin()->first);
}

void ManualClock::runUntil(Ticks end)
{
    int atThisInstant = 0;
    while (!_due.empty() && _due.begin()->first <= end) {
        auto next = _due.extract(_due.begin());
        if (std::exchange(_now, std::max(_now, next.key())) != _now)
            atThisInstant = 0;
        if (++atThisInstant > mostAtOneInstant)
            throw std::runtime_error("ManualClock: work at one instant keeps adding work for the same instant");
        next.mapped()();
    }
    _now = std::max(_now, end);
}

} // namespace aurisk
