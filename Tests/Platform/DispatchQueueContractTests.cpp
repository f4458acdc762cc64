#include "AuriskSDK/Platform/Asio/MainQueue.h"
#include "AuriskSDK/Platform/Dispatch.h"
#include "AuriskSDK/Platform/Manual/ManualDispatchQueue.h"

#include <gmock/gmock.h>

#include <limits>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace aurisk::tests {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

struct VirtualTime {
    static constexpr auto name = "VirtualTime";
    ManualDispatchQueue queue;

    /// Runs what becomes due within `span`.
    void pass(Seconds span) { queue.advance(span); }
};

struct RealTime {
    static constexpr auto name = "RealTime";
    DispatchQueue& queue = DispatchQueue::main();

    void pass(Seconds span)
    {
        queue.asyncAfter(span, stopMainQueue);
        runMainQueue();
    }
};

struct BackendNames {
    template <typename Backend> static std::string GetName(int) { return Backend::name; }
};

/// What every queue promises. Moments are milliseconds apart, so that real time need not pass for long.
template <typename Backend> class DispatchQueueContract : public testing::Test {
protected:
    Backend backend;
    DispatchQueue& queue = backend.queue;
    std::vector<std::string> heard;

    Work saying(const std::string& what)
    {
        return [this, what] { heard.push_back(what); };
    }

    void pass(Seconds span) { backend.pass(span); }

    /// Lets time pass until that much has been heard; a machine that stands still in between does no harm.
    void passUntilHeard(std::size_t count)
    {
        for (int i = 0; i < 1000 && heard.size() < count; ++i)
            pass(1ms);
    }
};

using Backends = testing::Types<VirtualTime, RealTime>;
TYPED_TEST_SUITE(DispatchQueueContract, Backends, BackendNames);

TYPED_TEST(DispatchQueueContract, NothingRunsInsideTheCallThatSchedulesIt)
{
    this->queue.async(this->saying("async"));
    this->queue.asyncAfter(0ms, this->saying("without delay"));
    this->queue.asyncAfter(-1s, this->saying("a delay below zero"));
    EXPECT_THAT(this->heard, IsEmpty());
    this->pass(0ms);
    EXPECT_THAT(this->heard, ElementsAre("async", "without delay", "a delay below zero"));
}

TYPED_TEST(DispatchQueueContract, WorkRunsInTheOrderInWhichItBecomesDue)
{
    this->queue.asyncAfter(3ms, this->saying("3 ms"));
    this->queue.asyncAfter(1ms, this->saying("1 ms"));
    this->queue.asyncAfter(2ms, this->saying("2 ms"));
    this->queue.async(this->saying("at once"));
    this->queue.asyncAfter(1ms, this->saying("1 ms, later"));
    this->pass(5ms);
    EXPECT_THAT(this->heard, ElementsAre("at once", "1 ms", "1 ms, later", "2 ms", "3 ms"));
}

TYPED_TEST(DispatchQueueContract, WorkThatIsDueRunsBeforeWorkThatIsAddedAfterwards)
{
    this->queue.asyncAfter(0ms, this->saying("due"));
    this->queue.async(this->saying("added"));
    this->pass(0ms);
    EXPECT_THAT(this->heard, ElementsAre("due", "added"));
}

TYPED_TEST(DispatchQueueContract, WorkThatWorkAddsRunsAfterAllThatIsDue)
{
    this->queue.async([this] {
        this->queue.async(this->saying("inner"));
        this->heard.push_back("outer");
    });
    this->queue.async(this->saying("next"));
    this->passUntilHeard(3);
    EXPECT_THAT(this->heard, ElementsAre("outer", "next", "inner"));
}

TYPED_TEST(DispatchQueueContract, WorkRunsOnceAndNoEarlierThanItsDelay)
{
    const auto before = this->queue.now();
    Seconds ran{ -1 };
    this->queue.asyncAfter(2ms, [&] {
        ran = this->queue.now();
        this->heard.push_back("ran");
    });
    this->passUntilHeard(1);
    this->pass(3ms);
    EXPECT_THAT(this->heard, ElementsAre("ran"));
    EXPECT_GE(ran - before, Seconds(2ms));
    EXPECT_GE(this->queue.now(), ran);
}

TYPED_TEST(DispatchQueueContract, ADelayOfForeverNeverEnds)
{
    for (const auto forever : { Seconds(1e10), Seconds(1e300), Seconds(std::numeric_limits<double>::infinity()) })
        this->queue.asyncAfter(forever, this->saying("forever"));
    this->queue.asyncAfter(1ms, this->saying("1 ms"));
    this->pass(2ms);
    EXPECT_THAT(this->heard, ElementsAre("1 ms"));
}

TYPED_TEST(DispatchQueueContract, WhatWorkHoldsIsLetGoOnceItHasRun)
{
    auto held = std::make_shared<int>();
    const std::weak_ptr<int> alive = held;
    this->queue.async([held] {});
    this->queue.asyncAfter(1ms, [held] {});
    held.reset();
    EXPECT_FALSE(alive.expired());
    for (int i = 0; i < 1000 && !alive.expired(); ++i)
        this->pass(1ms);
    EXPECT_TRUE(alive.expired());
}

TYPED_TEST(DispatchQueueContract, TheThreadThatRunsItIsTheCurrentOne)
{
    EXPECT_TRUE(this->queue.isCurrent());
    this->queue.async([this] { this->heard.push_back(this->queue.isCurrent() ? "current" : "not current"); });
    this->pass(0ms);
    EXPECT_THAT(this->heard, ElementsAre("current"));

    bool elsewhere = true;
    std::thread([&] { elsewhere = this->queue.isCurrent(); }).join();
    EXPECT_FALSE(elsewhere);
}

TYPED_TEST(DispatchQueueContract, ATimerRunsOnceUnlessItIsInvalidated)
{
    const auto timer = DispatchTimer::scheduledTimer(this->queue, 1ms, this->saying("kept"));
    DispatchTimer::scheduledTimer(this->queue, 1ms, this->saying("dropped"));
    const auto stopped = DispatchTimer::scheduledTimer(this->queue, 1ms, this->saying("stopped"));
    stopped->invalidate();
    this->passUntilHeard(2);
    timer->invalidate();
    this->pass(3ms);
    EXPECT_THAT(this->heard, ElementsAre("kept", "dropped"));
}

TYPED_TEST(DispatchQueueContract, ATimerMayBeInvalidatedAtTheMomentAtWhichItIsDueAndByItsOwnWork)
{
    std::shared_ptr<DispatchTimer> first, second;
    first = DispatchTimer::scheduledTimer(this->queue, 1ms, [&] {
        this->heard.push_back("first");
        first->invalidate();
        second->invalidate();
    });
    second = DispatchTimer::scheduledTimer(this->queue, 1ms, this->saying("second"));
    this->passUntilHeard(1);
    this->pass(3ms);
    EXPECT_THAT(this->heard, ElementsAre("first"));
}

TYPED_TEST(DispatchQueueContract, ATimerLetsGoOfItsWorkWhenItIsInvalidated)
{
    auto held = std::make_shared<int>();
    const std::weak_ptr<int> alive = held;
    const auto timer = DispatchTimer::scheduledTimer(this->queue, 1ms, [held = std::move(held)] {});
    EXPECT_FALSE(alive.expired());
    timer->invalidate();
    EXPECT_TRUE(alive.expired());
    this->pass(2ms);
}

TYPED_TEST(DispatchQueueContract, AGroupTellsWhenNothingIsUnderWay)
{
    DispatchGroup group;
    group.enter();
    group.enter();
    group.notify(this->queue, this->saying("first"));
    group.notify(this->queue, this->saying("second"));
    group.leave();
    this->pass(0ms);
    EXPECT_THAT(this->heard, IsEmpty());

    group.leave();
    EXPECT_THAT(this->heard, IsEmpty()); // never inside the call
    this->pass(0ms);
    EXPECT_THAT(std::exchange(this->heard, {}), ElementsAre("first", "second"));

    // Once more, for whoever asks again.
    group.enter();
    group.leave();
    this->pass(0ms);
    EXPECT_THAT(this->heard, IsEmpty());
    group.notify(this->queue, this->saying("at once"));
    EXPECT_THAT(this->heard, IsEmpty());
    this->pass(0ms);
    EXPECT_THAT(this->heard, ElementsAre("at once"));
}

} // namespace
} // namespace aurisk::tests
