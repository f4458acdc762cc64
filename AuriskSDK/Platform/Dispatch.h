#pragma once

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

/// The time port: serial queues, and what is built of nothing but them.

namespace aurisk {

/// A span of time or, counted from some fixed moment, a point in it.
using Seconds = std::chrono::duration<double>;

using Work = std::function<void()>;

/// A delay as queues count it: none where it is below zero, and some decades where it is too long for any clock.
inline Seconds countable(Seconds delay) { return delay > Seconds(0) ? std::min(delay, Seconds(1e9)) : Seconds(0); }

/// A serial queue: work runs one piece at a time, in the order in which it became due, and never inside the call that
/// scheduled it.
class DispatchQueue {
public:
    DispatchQueue() = default;
    DispatchQueue(const DispatchQueue&) = delete;
    DispatchQueue& operator=(const DispatchQueue&) = delete;
    virtual ~DispatchQueue() = default;

    /// Runs `work` as soon as everything that is due has run. May be called from any thread.
    virtual void async(Work work) = 0;

    /// Runs `work` once, no earlier than `delay` from now; a delay below zero is none. Scheduled work is never
    /// cancelled: work that may have lost its reason checks for itself when it runs. Called on the queue's own thread.
    virtual void asyncAfter(Seconds delay, Work work) = 0;

    /// The time since some fixed moment; it never goes back.
    virtual Seconds now() const = 0;

    /// Whether the calling thread is the one that runs this queue.
    virtual bool isCurrent() const = 0;

    /// The process's main queue, on which everything in this library happens. Unless a ScopedMainQueue says otherwise
    /// it is the one that `runMainQueue()` runs (Platform/Asio/MainQueue.h). It is never destroyed.
    static DispatchQueue& main();
};

/// Makes another queue the main queue for a scope. Everything that uses the main queue is to be created inside that
/// scope and gone before it ends. Scopes nest.
class [[nodiscard]] ScopedMainQueue {
public:
    explicit ScopedMainQueue(DispatchQueue& queue);
    ~ScopedMainQueue();
    ScopedMainQueue(const ScopedMainQueue&) = delete;
    ScopedMainQueue& operator=(const ScopedMainQueue&) = delete;

private:
    DispatchQueue* _previous;
};

/// Counts work that is under way and tells when none is left. Used on one thread; the closures that leave it share it.
class DispatchGroup {
public:
    void enter() { ++_underWay; }

    /// Ends one `enter()`.
    void leave();

    /// Runs `work` on `queue` once nothing is under way: at once (but never inside this call) where nothing is.
    void notify(DispatchQueue& queue, Work work);

private:
    int _underWay = 0;
    std::vector<std::pair<DispatchQueue*, Work>> _waiting;
};

/// A one-shot timer. Dropping it does not stop it; `invalidate()` does.
class DispatchTimer {
public:
    /// Runs `work` on `queue` after `interval`, unless the timer is invalidated before.
    static std::shared_ptr<DispatchTimer> scheduledTimer(DispatchQueue& queue, Seconds interval, Work work);

    /// The work will not run any more, and what it held is let go.
    void invalidate() { _work = nullptr; }

private:
    Work _work;
};

} // namespace aurisk
