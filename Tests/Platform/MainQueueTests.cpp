#include "AuriskSDK/Platform/Asio/MainQueue.h"

#include "AuriskSDK/Platform/Dispatch.h"
#include "AuriskSDK/Platform/Manual/ManualDispatchQueue.h"
#include "Tests/Support/Stops.h"

#include <asio/io_context.hpp>
#include <gmock/gmock.h>

#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

namespace aurisk::tests {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

TEST(MainQueue, IsReplacedForAScope)
{
    auto& before = DispatchQueue::main();
    ManualDispatchQueue outer, inner;
    {
        const ScopedMainQueue first(outer);
        EXPECT_EQ(&DispatchQueue::main(), &outer);
        {
            const ScopedMainQueue second(inner);
            EXPECT_EQ(&DispatchQueue::main(), &inner);
        }
        EXPECT_EQ(&DispatchQueue::main(), &outer);
    }
    EXPECT_EQ(&DispatchQueue::main(), &before);
}

TEST(MainQueue, WaitsForWorkFromOtherThreadsAndKeepsTheOrderOfEach)
{
    constexpr int threadCount = 4, workCount = 200;
    std::vector<int> last(threadCount, -1);
    std::vector<std::thread> threads;
    int outOfOrder = 0, elsewhere = 0, done = 0;
    const auto runner = std::this_thread::get_id();
    for (int t = 0; t < threadCount; ++t)
        threads.emplace_back([&, t] {
            for (int n = 0; n < workCount; ++n)
                DispatchQueue::main().async([&, t, n] {
                    outOfOrder += last[static_cast<std::size_t>(t)] + 1 != n;
                    last[static_cast<std::size_t>(t)] = n;
                    elsewhere += std::this_thread::get_id() != runner;
                    if (++done == threadCount * workCount)
                        stopMainQueue();
                });
        });
    runMainQueue();
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(done, threadCount * workCount);
    EXPECT_EQ(outOfOrder, 0);
    EXPECT_EQ(elsewhere, 0);
}

TEST(MainQueue, StopsAfterTheWorkUnderWayAndGoesOnWhenRunAgain)
{
    std::vector<int> ran;
    auto& queue = DispatchQueue::main();
    queue.async([&] {
        stopMainQueue();
        ran.push_back(1);
    });
    queue.async([&] { ran.push_back(2); });
    queue.async(stopMainQueue);
    runMainQueue();
    EXPECT_THAT(ran, ElementsAre(1));
    runMainQueue();
    EXPECT_THAT(ran, ElementsAre(1, 2));
}

TEST(MainQueue, FindsAStopThatCameBeforeItWasRun)
{
    int ran = 0;
    DispatchQueue::main().async([&] { ++ran; });
    stopMainQueue();
    runMainQueue(); // returns at all
    EXPECT_EQ(ran, 1);
}

TEST(MainQueue, RunsOnWhicheverThreadRunsIt)
{
    auto& queue = DispatchQueue::main();
    bool current = false;
    std::thread([&] {
        queue.async([&] {
            current = queue.isCurrent();
            stopMainQueue();
        });
        runMainQueue();
    }).join();
    EXPECT_TRUE(current);
    EXPECT_FALSE(queue.isCurrent());

    pollMainQueue();
    EXPECT_TRUE(queue.isCurrent());
}

TEST(MainQueue, IsPumpedWithoutWaiting)
{
    auto& queue = DispatchQueue::main();
    std::vector<int> ran;
    EXPECT_EQ(pollMainQueue(), 0U);
    queue.async([&] {
        ran.push_back(1);
        queue.async([&] { ran.push_back(2); });
    });
    bool late = false;
    queue.asyncAfter(2ms, [&] { late = true; });
    EXPECT_GE(pollMainQueue(), 1U);
    while (!late)
        pollMainQueue();
    EXPECT_THAT(ran, ElementsAre(1, 2));
    EXPECT_EQ(pollMainQueue(), 0U);
}

TEST(MainQueue, RunsWhatBecameDueDuringWorkBeforeWhatThatWorkAdds)
{
    auto& queue = DispatchQueue::main();
    std::vector<std::string> heard;
    queue.asyncAfter(1ms, [&] { heard.push_back("due meanwhile"); });
    queue.async([&] {
        for (const auto start = queue.now(); queue.now() < start + Seconds(2ms);) { }
        queue.async([&] { heard.push_back("added"); });
        queue.async(stopMainQueue);
    });
    runMainQueue();
    EXPECT_THAT(heard, ElementsAre("due meanwhile", "added"));
}

TEST(MainQueue, TakesALoopOfTheHostOnlyBeforeItIsUsed)
{
    DispatchQueue::main();
    asio::io_context own;
    EXPECT_TRUE(stopOf([&] { return useMainQueue(own), 0; }));
}

/// In a process of its own: whether the main queue runs on a loop that the host brought along.
[[noreturn]] void runOnTheHostsLoop()
{
    asio::io_context loop;
    useMainQueue(loop);
    bool ran = false;
    DispatchQueue::main().async([&] { ran = true; });
    DispatchQueue::main().asyncAfter(1ms, [] {});
    loop.run();
    std::_Exit(ran && &mainQueueContext() == &loop ? 0 : 1);
}

TEST(MainQueueDeathTest, RunsOnALoopOfTheHost)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe"; // starts afresh, so that nothing has used the queue
    EXPECT_EXIT(runOnTheHostsLoop(), testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace aurisk::tests
