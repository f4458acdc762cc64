#include "AuriskSDK/Platform/Manual/ManualDispatchQueue.h"

#include <gmock/gmock.h>

#include <functional>
#include <stdexcept>
#include <vector>

namespace aurisk::tests {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

TEST(ManualDispatchQueue, StandsStillUntilItIsMoved)
{
    ManualDispatchQueue queue;
    std::vector<double> ran;
    const auto note = [&] { ran.push_back(queue.now().count()); };
    queue.asyncAfter(1s, note);
    queue.asyncAfter(2500ms, note);
    queue.asyncAfter(0s, note);
    queue.runUntilIdle();
    EXPECT_THAT(ran, ElementsAre(0));
    queue.advance(999ms);
    EXPECT_THAT(ran, ElementsAre(0));
    EXPECT_EQ(queue.now(), Seconds(0.999));

    // Work on the way sees the moment for which it was meant.
    queue.advance(2s);
    EXPECT_THAT(ran, ElementsAre(0, 1, 2.5));
    EXPECT_EQ(queue.now(), Seconds(2.999));
    queue.advance(-1s);
    EXPECT_EQ(queue.now(), Seconds(2.999));
}

TEST(ManualDispatchQueue, CountsTimeWithoutRoundingErrors)
{
    ManualDispatchQueue queue;
    for (int i = 0; i < 10; ++i)
        queue.advance(Seconds(0.1));
    EXPECT_EQ(queue.now(), 1s);
}

TEST(ManualDispatchQueue, FailsRatherThanLoopsForever)
{
    ManualDispatchQueue queue;
    std::function<void()> again = [&] { queue.async(again); };
    queue.async(again);
    EXPECT_THROW(queue.runUntilIdle(), std::runtime_error);

    // Much work at different moments is no loop.
    ManualDispatchQueue busy;
    int count = 0;
    std::function<void()> tick = [&] {
        if (++count < 200'000)
            busy.asyncAfter(1ms, tick);
    };
    busy.async(tick);
    busy.advance(1h);
    EXPECT_EQ(count, 200'000);
}

TEST(ManualClock, IsSharedByQueuesWhoseWorkRunsInTheOrderOfItsMoments)
{
    const auto clock = std::make_shared<ManualClock>();
    ManualDispatchQueue one(clock), other(clock);
    std::vector<int> ran;
    one.asyncAfter(2s, [&] { ran.push_back(2); });
    other.asyncAfter(1s, [&] { ran.push_back(1); });
    other.asyncAfter(2s, [&] { ran.push_back(3); });
    one.advance(2s);
    EXPECT_THAT(ran, ElementsAre(1, 2, 3));
    EXPECT_EQ(other.now(), 2s);
}

TEST(ManualClock, RunsToTheEndOfItsWorkButNotBeyondALimit)
{
    ManualClock clock;
    const auto shared = std::shared_ptr<ManualClock>(&clock, [](auto*) {});
    ManualDispatchQueue queue(shared);
    int count = 0;
    std::function<void()> again = [&] {
        if (++count < 5)
            queue.asyncAfter(1s, again);
    };
    queue.async(again);
    clock.runToEnd(3s);
    EXPECT_EQ(count, 4); // at 0, 1, 2 and 3 s
    clock.runToEnd(100s);
    EXPECT_EQ(count, 5);
    EXPECT_EQ(clock.now(), 4s); // not further than the last work
    EXPECT_EQ(clock.pendingCount(), 0U);
}

} // namespace
} // namespace aurisk::tests
