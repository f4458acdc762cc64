#include "AuriskSDK/Platform/Asio/MainQueue.h"

#include "AuriskSDK/Platform/Dispatch.h"
#include "AuriskSDK/Shared/Utils/Precondition.h"

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>

#include <algorithm>
#include <atomic>
#include <map>
#include <thread>

namespace aurisk {

namespace {

/// One timer of the loop serves all waiting work, which stays in order here: equal moments run as they were added.
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
        asio::post(_context, [this, work = std::move(work)] { run(work); });
    }

    void asyncAfter(Seconds delay, Work work) override
    {
        const auto due = Clock::now() + std::chrono::ceil<Clock::duration>(std::max(delay, Seconds(0)));
        const bool isFirst = _due.empty() || due < _due.begin()->first;
        _due.emplace(due, std::move(work));
        if (isFirst)
            arm();
    }

    Seconds now() const override { return Clock::now().time_since_epoch(); }
    bool isCurrent() const override { return std::this_thread::get_id() == _thread; }

    asio::io_context& context() { return _context; }

    void runHere()
    {
        _thread = std::this_thread::get_id();
        const auto guard = asio::make_work_guard(_context);
        _context.restart();
        _context.run();
    }

    std::size_t pollHere()
    {
        _thread = std::this_thread::get_id();
        _context.restart();
        return _context.poll();
    }

private:
    using Clock = std::chrono::steady_clock;

    void run(const Work& work)
    {
        _thread = std::this_thread::get_id();
        work();
    }

    void arm()
    {
        _timer.expires_at(_due.begin()->first);
        _timer.async_wait([this](const asio::error_code& cancelled) {
            if (!cancelled)
                runDue();
        });
    }

    void runDue()
    {
        const auto now = Clock::now();
        std::multimap<Clock::time_point, Work> ready;
        while (!_due.empty() && _due.begin()->first <= now)
            ready.insert(ready.end(), _due.extract(_due.begin()));
        for (auto& [due, work] : ready)
            asio::post(_context, [this, work = std::move(work)] { run(work); });
        if (!_due.empty())
            arm();
    }

    std::unique_ptr<asio::io_context> _own;
    asio::io_context& _context;
    asio::steady_timer _timer;
    std::multimap<Clock::time_point, Work> _due;
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

void stopMainQueue() { mainQueue().asio.context().stop(); }

void useMainQueue(asio::io_context& context)
{
    precondition(&mainQueue(&context).asio.context() == &context, "useMainQueue: the main queue is in use already");
}

asio::io_context& mainQueueContext() { return mainQueue().asio.context(); }

} // namespace aurisk
