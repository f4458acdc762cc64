#include "AuriskSDK/Platform/Asio/MainQueue.h"

#include "AuriskSDK/Platform/Dispatch.h"
#include "AuriskSDK/Shared/Utils/Precondition.h"

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>

#include <atomic>
#include <map>
#include <mutex>
#include <optional>
#include <thread>

namespace aurisk {

namespace {

/// All waiting work stands here in the order in which it becomes due, equal moments as they were added. The loop is
/// asked once for each piece to run what is first by then: at once for `async`, by the one timer for the rest.
class AsioDispatchQueue final : public DispatchQueue {
public:
    explicit AsioDispatchQueue(asio::io_context* hosts)
        : _own(hosts ? nullptr : std::make_unique<asio::io_context>())
        , _context(hosts ? *hosts : *_own)
        , _timer(_context)
    {
    }

    void async(Work work) override
    {
        {
            const std::lock_guard lock(_mutex);
            _waiting.emplace(Clock::now(), std::move(work));
        }
        postRunFirst();
    }

    void asyncAfter(Seconds delay, Work work) override
    {
        const auto due = Clock::now() + std::chrono::ceil<Clock::duration>(countable(delay));
        {
            const std::lock_guard lock(_mutex);
            _waiting.emplace(due, std::move(work));
        }
        if (!_armed || due < *_armed)
            arm(due);
    }

    Seconds now() const override { return Clock::now().time_since_epoch(); }
    bool isCurrent() const override
    {
        return std::this_thread::get_id() == _thread || _context.get_executor().running_in_this_thread();
    }

    asio::io_context& context() { return _context; }

    void runHere()
    {
        _thread = std::this_thread::get_id();
        const auto guard = asio::make_work_guard(_context);
        _context.restart();
        _isRunning = true;
        _context.run();
        _isRunning = false;
    }

    std::size_t pollHere()
    {
        _thread = std::this_thread::get_id();
        _context.restart();
        return _context.poll();
    }

    /// Where nobody runs the loop yet, the next one finds a handler that stops it.
    void stop()
    {
        if (_isRunning)
            _context.stop();
        else
            asio::post(_context, [this] { _context.stop(); });
    }

private:
    using Clock = std::chrono::steady_clock;
    using Waiting = std::multimap<Clock::time_point, Work>;

    void postRunFirst()
    {
        asio::post(_context, [this] { runFirst(); });
    }

    void runFirst()
    {
        _thread = std::this_thread::get_id();
        Waiting::node_type first;
        {
            const std::lock_guard lock(_mutex);
            if (_waiting.empty() || _waiting.begin()->first > Clock::now())
                return; // the timer asked for a piece that had been asked for already
            first = _waiting.extract(_waiting.begin());
        }
        first.mapped()();
    }

    void arm(Clock::time_point due)
    {
        _armed = due;
        _timer.expires_at(due);
        _timer.async_wait([this](const asio::error_code& cancelled) {
            if (!cancelled)
                askForDue();
        });
    }

    void askForDue()
    {
        _armed.reset();
        const std::lock_guard lock(_mutex);
        const auto later = _waiting.upper_bound(Clock::now());
        for (auto due = _waiting.begin(); due != later; ++due)
            postRunFirst();
        if (later != _waiting.end())
            arm(later->first);
    }

    std::unique_ptr<asio::io_context> _own;
    asio::io_context& _context;
    asio::steady_timer _timer;
    std::optional<Clock::time_point> _armed; ///< when the timer ends, while it runs
    std::mutex _mutex; ///< guards `_waiting`: `async` comes from any thread
    Waiting _waiting;
    std::atomic<bool> _isRunning = false;
    std::atomic<std::thread::id> _thread = std::this_thread::get_id();
};

/// What `DispatchQueue::main()` answers. Never destroyed, so that nothing that ends late finds it gone.
struct Main {
    explicit Main(asio::io_context* hosts)
        : asio(hosts)
        , current(&asio)
    {
    }
    AsioDispatchQueue asio;
    std::atomic<DispatchQueue*> current;
};

Main& mainQueue(asio::io_context* hosts = nullptr)
{
    static auto* const main = new Main(hosts);
    return *main;
}

} // namespace

DispatchQueue& DispatchQueue::main() { return *mainQueue().current; }

ScopedMainQueue::ScopedMainQueue(DispatchQueue& queue)
    : _previous(mainQueue().current.exchange(&queue))
{
}

ScopedMainQueue::~ScopedMainQueue() { mainQueue().current = _previous; }

void runMainQueue() { mainQueue().asio.runHere(); }

std::size_t pollMainQueue() { return mainQueue().asio.pollHere(); }

void stopMainQueue() { mainQueue().asio.stop(); }

void useMainQueue(asio::io_context& context)
{
    precondition(&mainQueue(&context).asio.context() == &context, "useMainQueue: the main queue is in use already");
}

asio::io_context& mainQueueContext() { return mainQueue().asio.context(); }

} // namespace aurisk
