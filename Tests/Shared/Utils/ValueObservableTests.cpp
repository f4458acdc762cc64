#include "AuriskSDK/Shared/Utils/ValueObservable.h"

#include "AuriskSDK/Platform/Manual/ManualDispatchQueue.h"

#include <gmock/gmock.h>

#include <thread>

namespace aurisk::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// An observable volume, and what its observers heard.
class ValueObservable : public testing::Test {
protected:
    ManualDispatchQueue queue;
    ScopedMainQueue main{ queue };
    std::shared_ptr<AuriskValueObservable<int>> volume = AuriskValueObservable<int>::create(5);
    std::vector<std::string> heard;

    ValueObservable() { testing::internal::CaptureStdout(); }
    ~ValueObservable() override { testing::internal::GetCapturedStdout(); }

    std::function<void(int)> hearing(const std::string& who)
    {
        return [this, who](int value) { heard.push_back(who + " " + std::to_string(value)); };
    }

    /// What was heard since the last time, once the queue has nothing left to do.
    std::vector<std::string> heardSinceThen()
    {
        queue.runUntilIdle();
        return std::exchange(heard, {});
    }

    /// What was printed since the last time.
    static std::string printed()
    {
        auto text = testing::internal::GetCapturedStdout();
        testing::internal::CaptureStdout();
        return text;
    }
};

TEST_F(ValueObservable, TellsItsObserversInTheOrderOfTheirRegistrationAndOnTheMainQueueAlone)
{
    const auto first = volume->observe(hearing("first"));
    const auto second = volume->observe(hearing("second"));
    EXPECT_THAT(heardSinceThen(), IsEmpty()); // nothing for the value as it stands

    volume->setValue(6);
    EXPECT_EQ(volume->value(), 6);
    EXPECT_THAT(heard, IsEmpty());
    EXPECT_THAT(heardSinceThen(), ElementsAre("first 6", "second 6"));

    std::thread([&] { volume->setValue(7); }).join();
    EXPECT_THAT(heard, IsEmpty());
    EXPECT_THAT(heardSinceThen(), ElementsAre("first 7", "second 7"));

    first->dispose();
    second->dispose();
}

TEST_F(ValueObservable, TellsTheValueThatItHoldsByThen)
{
    const auto observer = volume->observe(hearing("app"));
    volume->setValue(1);
    volume->setValue(2);
    volume->set(3, false);
    EXPECT_THAT(heardSinceThen(), ElementsAre("app 3", "app 3"));
    observer->dispose();
}

TEST_F(ValueObservable, ChangesSilentlyWhereAskedTo)
{
    const auto observer = volume->observe(hearing("app"));
    volume->set(9, false);
    EXPECT_EQ(volume->value(), 9);
    EXPECT_THAT(heardSinceThen(), IsEmpty());
    EXPECT_EQ(printed(), "");

    volume->notifyAll();
    EXPECT_THAT(heardSinceThen(), ElementsAre("app 9"));
    observer->dispose();
}

TEST_F(ValueObservable, PrintsHowManyObserversItTells)
{
    volume->setValue(6);
    EXPECT_EQ(printed(), "Observers for value: 0\n");

    const auto first = volume->observe(hearing("first"));
    const auto second = volume->observe(hearing("second"));
    volume->setValue(7);
    EXPECT_EQ(printed(), "Observers for value: 2\n");

    first->dispose();
    second->dispose();
    volume->setValue(8);
    EXPECT_EQ(printed(), "Observers for value: 0\n");
}

TEST_F(ValueObservable, TellsAnObserverOnce)
{
    volume->observeOnce(hearing("once"));
    volume->setValue(6);
    EXPECT_THAT(heardSinceThen(), ElementsAre("once 6"));
    volume->setValue(7);
    EXPECT_THAT(heardSinceThen(), IsEmpty());

    // Deliberately: it goes when it has been told, so two settings before that tell it twice.
    volume->observeOnce(hearing("once"));
    volume->setValue(8);
    volume->setValue(9);
    EXPECT_THAT(heardSinceThen(), ElementsAre("once 9", "once 9"));
    volume->setValue(10);
    EXPECT_THAT(heardSinceThen(), IsEmpty());
}

TEST_F(ValueObservable, TellsNothingFurtherToAnObserverThatHasBeenDisposedOf)
{
    const auto first = volume->observe(hearing("first"));
    const auto second = volume->observe(hearing("second"));
    first->dispose();
    first->dispose();
    volume->setValue(6);
    EXPECT_THAT(heardSinceThen(), ElementsAre("second 6"));

    // What was under way before goes on.
    volume->setValue(7);
    second->dispose();
    EXPECT_THAT(heardSinceThen(), ElementsAre("second 7"));
    volume->setValue(8);
    EXPECT_THAT(heardSinceThen(), IsEmpty());
}

TEST_F(ValueObservable, MayBeSetAndObservedWhileItTells)
{
    std::shared_ptr<AuriskDisposable> observer;
    observer = volume->observe([&](int value) {
        heard.push_back("first " + std::to_string(value));
        observer->dispose();
        volume->observeOnce(hearing("second"));
        volume->setValue(value + 1);
    });
    volume->setValue(6);
    EXPECT_THAT(heardSinceThen(), ElementsAre("first 6", "second 7"));
}

TEST_F(ValueObservable, IsHeldByItsObserversUntilTheyAreDisposedOf)
{
    const std::weak_ptr<AuriskValueObservable<int>> alive = volume;
    auto observer = volume->observe(hearing("app"));
    volume.reset();
    observer->dispose();
    EXPECT_FALSE(alive.expired());
    observer.reset();
    EXPECT_TRUE(alive.expired());
}

} // namespace
} // namespace aurisk::tests
