#pragma once

#include "AuriskSDK/Platform/Dispatch.h"

#include <cstddef>
#include <map>
#include <memory>
#include <thread>

namespace aurisk {

/// Virtual time: a clock that stands still until somebody moves it, and the work that waits for it. Several queues may
/// share one. Not for use from several threads.
class ManualClock {
public:
    Seconds now() const { return std::chrono::duration_cast<Seconds>(_now); }

    /// Moves the clock by `span`, stopping at each piece of work on the way to run it.
    void advance(Seconds span);

    /// Runs everything that is due now, including what that work adds for now. The clock does not move.
    void runUntilIdle() { runUntil(_now); }

    /// Runs everything that waits, moving the clock as far as needed, but no further than `limit` from now.
    void runToEnd(Seconds limit);

    std::size_t pendingCount() const { return _due.size(); }

private:
    friend class ManualDispatchQueue;
    using Ticks = std::chrono::nanoseconds; ///< whole ones: 0.1 s ten times is exactly 1 s

    static Ticks ticks(Seconds span);
    void add(Seconds delay, Work work);
    void runUntil(Ticks end);

    Ticks _now{ 0 };
    std::multimap<Ticks, Work> _due; ///< equal keys keep their order of insertion
};

/// A queue in virtual time, for tests and for simulations that need not wait.
class ManualDispatchQueue final : public DispatchQueue {
public:
    ManualDispatchQueue()
        : ManualDispatchQueue(std::make_shared<ManualClock>())
    {
    }
    explicit ManualDispatchQueue(std::shared_ptr<ManualClock> clock)
        : _clock(std::move(clock))
    {
    }

    void async(Work work) override { _clock->add(Seconds(0), std::move(work)); }
    void asyncAfter(Seconds delay, Work work) override { _clock->add(delay, std::move(work)); }
    Seconds now() const override { return _clock->now(); }
    bool isCurrent() const override { return std::this_thread::get_id() == _thread; }

    const std::shared_ptr<ManualClock>& clock() const { return _clock; }
    void advance(Seconds span) { _clock->advance(span); }
    void runUntilIdle() { _clock->runUntilIdle(); }

private:
    std::shared_ptr<ManualClock> _clock;
    std::thread::id _thread = std::this_thread::get_id();
};

} // namespace aurisk
