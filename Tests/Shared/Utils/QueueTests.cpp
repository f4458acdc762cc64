#include "AuriskSDK/Shared/Utils/Queue.h"

#include <gmock/gmock.h>

#include <string>

namespace aurisk::tests {
namespace {

using testing::Optional;

TEST(Queue, GivesItsElementsInTheOrderInWhichItGotThem)
{
    Queue<std::string> queue;
    EXPECT_EQ(queue.front(), std::nullopt);
    EXPECT_EQ(queue.dequeue(), std::nullopt);

    queue.enqueue("first");
    queue.enqueue("second");
    EXPECT_THAT(queue.front(), Optional(std::string("first")));
    EXPECT_EQ(queue.count(), 2U);

    EXPECT_THAT(queue.dequeue(), Optional(std::string("first")));
    queue.enqueue("third");
    EXPECT_THAT(queue.dequeue(), Optional(std::string("second")));
    EXPECT_FALSE(queue.isEmpty());
    EXPECT_THAT(queue.dequeue(), Optional(std::string("third")));
    EXPECT_TRUE(queue.isEmpty());
    EXPECT_EQ(queue.dequeue(), std::nullopt);
}

} // namespace
} // namespace aurisk::tests
