#include "AuriskSDK/Shared/Accessory/AccessoryMessageHandler.h"

#include "AuriskSDK/Platform/Manual/ManualDispatchQueue.h"

#include <gmock/gmock.h>

#include <chrono>

namespace aurisk::tests {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

/// A handler whose requests and results are numbers; what happens is written down with its time in milliseconds.
class MessageHandler : public testing::Test {
protected:
    using Handler = AccessoryMessageHandler<int, int>;

    void hear(const std::string& what)
    {
        heard.push_back(std::to_string(std::lround((queue.now() - begin).count() * 1000)) + " " + what);
    }
    std::vector<std::string> take() { return std::exchange(heard, {}); }

    void excute(int value, std::optional<Seconds> timeOut = 3s)
    {
        handler->excute(value, timeOut, [this, value](const std::optional<int>& result) {
            hear("result of " + std::to_string(value) + ": " + description(result));
            if (onResult)
                std::exchange(onResult, nullptr)();
        });
    }
    void after(Seconds span) { queue.advance(span); }

    ManualDispatchQueue queue;
    Seconds begin = queue.now();
    std::vector<std::string> heard;
    std::function<void()> onResult;
    std::shared_ptr<Handler> handler
        = Handler::create(queue, [this](const int& value) { hear("sent " + std::to_string(value)); });
};

TEST_F(MessageHandler, SendsNothingBeforeItIsLaunchedAndThenOneAfterAnother)
{
    excute(1);
    excute(2);
    after(5s);
    EXPECT_THAT(take(), IsEmpty());
    EXPECT_FALSE(handler->isExcuting());
    EXPECT_EQ(handler->currentValue(), std::nullopt);

    handler->launch();
    EXPECT_TRUE(handler->isExcuting());
    EXPECT_EQ(handler->currentValue(), 1);
    after(0.5s);
    EXPECT_THAT(take(), ElementsAre("5100 sent 1"));
    handler->excuted(10);
    EXPECT_THAT(take(), IsEmpty()); // never inside the call that brings it
    after(0.2s);
    EXPECT_THAT(take(), ElementsAre("5500 result of 1: 10", "5600 sent 2"));
    handler->excuted(20);
    queue.runUntilIdle();
    EXPECT_THAT(take(), ElementsAre("5700 result of 2: 20"));
    EXPECT_FALSE(handler->isExcuting());
}

TEST_F(MessageHandler, WaitsForEverWhereARequestHasNoTimeOut)
{
    handler->launch();
    excute(1, std::nullopt);
    excute(2);
    after(1000s);
    EXPECT_THAT(take(), ElementsAre("100 sent 1"));
}

TEST_F(MessageHandler, TellsAReplyBeforeTheSendingFromOneAfterItEvenAtOneInstant)
{
    handler->launch();
    queue.asyncAfter(0.1s, [this] { handler->excuted(6); });
    excute(1);
    after(4s);
    EXPECT_THAT(take(), ElementsAre("100 sent 1", "3100 result of 1: nil"));

    excute(2);
    queue.asyncAfter(0.1s, [this] { handler->excuted(7); });
    after(4s);
    EXPECT_THAT(take(), ElementsAre("4100 sent 2", "4100 result of 2: 7"));
}

TEST_F(MessageHandler, LetsTheRequestOnTheAirEndWhileItPauses)
{
    handler->launch();
    excute(1);
    excute(2);
    after(0.2s);
    handler->pause();
    handler->excuted(10);
    after(10s);
    EXPECT_THAT(take(), ElementsAre("100 sent 1", "200 result of 1: 10"));
    handler->launch();
    after(0.1s);
    EXPECT_THAT(take(), ElementsAre("10300 sent 2"));
}

TEST_F(MessageHandler, AbortsEverythingInOrderAndBeginsAnew)
{
    handler->launch();
    excute(1);
    excute(2);
    after(0.2s);
    handler->abort();
    EXPECT_THAT(take(), ElementsAre("100 sent 1"));
    EXPECT_FALSE(handler->isExcuting());
    excute(3);
    handler->excuted(10); // the reply to 1: nothing of it is on the air any more
    after(0.2s);
    EXPECT_THAT(take(), ElementsAre("200 result of 1: nil", "200 result of 2: nil", "300 sent 3"));
    handler->excuted(30);
    after(10s);
    EXPECT_THAT(take(), ElementsAre("400 result of 3: 30"));
}

TEST_F(MessageHandler, DoesNotSendWhatWasAbortedInItsPause)
{
    handler->launch();
    excute(1);
    after(0.05s);
    handler->abort();
    excute(2);
    after(10s);
    EXPECT_THAT(take(), ElementsAre("50 result of 1: nil", "150 sent 2", "3150 result of 2: nil"));
}

TEST_F(MessageHandler, MayBeAbortedAndUsedInsideACompletion)
{
    handler->launch();
    excute(1);
    excute(2);
    onResult = [this] {
        handler->abort();
        excute(3);
    };
    after(0.2s);
    handler->excuted(10);
    after(0.2s);
    handler->excuted(30);
    after(10s);
    EXPECT_THAT(take(),
        ElementsAre("100 sent 1", "200 result of 1: 10", "200 result of 2: nil", "300 sent 3", "400 result of 3: 30"));
}

TEST_F(MessageHandler, KeepsTheNextRequestWhenACompletionRunsTheQueueWithADuplicateWaiting)
{
    handler->launch();
    excute(1);
    excute(2);
    after(0.2s);
    onResult = [this] { queue.runUntilIdle(); };
    handler->excuted(10);
    handler->excuted(11);
    after(10s);
    EXPECT_THAT(take(), ElementsAre("100 sent 1", "200 result of 1: 10", "300 sent 2", "3300 result of 2: nil"));
}

TEST_F(MessageHandler, KeepsItsScheduledStepsAliveWhenItsOwnerHasGone)
{
    handler->launch();
    excute(1);
    excute(2);
    const std::weak_ptr<Handler> weak = handler;
    handler.reset();
    after(10s);
    EXPECT_THAT(take(), ElementsAre("100 sent 1", "3100 result of 1: nil", "3200 sent 2", "6200 result of 2: nil"));
    EXPECT_TRUE(weak.expired()); // and it is gone once nothing is scheduled any more
}

TEST_F(MessageHandler, LetsGoOfACompletionOnceItHasRun)
{
    handler->launch();
    const auto held = std::make_shared<int>();
    handler->excute(1, 3s, [held](const std::optional<int>&) {});
    after(0.2s);
    handler->excuted(10);
    queue.runUntilIdle();
    EXPECT_EQ(held.use_count(), 1); // although its time-out is still scheduled
}

} // namespace
} // namespace aurisk::tests
