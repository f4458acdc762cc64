#include "AuriskSDK/Shared/Utils/Precondition.h"

#include "AuriskSDK/Platform/Manual/ManualDispatchQueue.h"
#include "AuriskSDK/Shared/Utils/AuriskLog.h"
#include "Tests/Support/Stops.h"

#include <gmock/gmock.h>

#include <csignal>
#include <cstdint>
#include <limits>
#include <thread>

namespace aurisk::tests {
namespace {

using testing::Eq;
using testing::HasSubstr;
using testing::KilledBySignal;
using testing::Optional;

void breakOne() { precondition(false, "program: {} is too large", 5); }

TEST(PreconditionDeathTest, StopsTheProcessWithOneLine)
{
    EXPECT_EXIT(breakOne(), KilledBySignal(SIGABRT), Eq("AuriskSDK: broken precondition: program: 5 is too large\n"));
}

TEST(PreconditionDeathTest, IsContainedOnlyInItsScopeAndOnItsThread)
{
    EXPECT_EXIT(
        {
            static_cast<void>(stopOf([] { return breakOne(), 0; }));
            breakOne();
        },
        KilledBySignal(SIGABRT), HasSubstr("too large"));
    EXPECT_EXIT(
        {
            const ScopedContainment containment;
            std::thread(breakOne).join();
        },
        KilledBySignal(SIGABRT), HasSubstr("too large"));
}

TEST(Precondition, ThrowsItsMessageWhereItIsContained)
{
    EXPECT_EQ(stopOf([] { return breakOne(), 0; }), "program: 5 is too large");
    EXPECT_EQ(stopOf([] { return precondition(true, "fine"), 0; }), std::nullopt);

    // An inner scope that has ended leaves the outer one in force.
    const ScopedContainment outer;
    static_cast<void>(stopOf([] { return breakOne(), 0; }));
    EXPECT_THROW(breakOne(), PreconditionStop);
}

TEST(Exactly, GivesTheNumberOrNamesWhatDoesNotFit)
{
    EXPECT_EQ(exactly<std::uint8_t>(255, "volume"), 255);
    EXPECT_EQ(exactly<std::uint8_t>(0LL, "volume"), 0);
    EXPECT_EQ(exactly<std::int16_t>(-32768L, "amp"), -32768);
    EXPECT_EQ(exactly<std::uint32_t>(std::numeric_limits<std::int32_t>::max(), "timestamp"), 0x7FFFFFFFU);

    EXPECT_EQ(stopOf([] { return exactly<std::uint8_t>(256, "volume"); }), "volume: 256 does not fit in 1 byte(s)");
    EXPECT_EQ(stopOf([] { return exactly<std::uint8_t>(-1, "volume"); }), "volume: -1 does not fit in 1 byte(s)");
    EXPECT_EQ(
        stopOf([] { return exactly<std::uint32_t>(-1, "timestamp"); }), "timestamp: -1 does not fit in 4 byte(s)");
    EXPECT_EQ(stopOf([] { return exactly<std::int32_t>(std::uint64_t{ 1 } << 32, "n"); }),
        "n: 4294967296 does not fit in 4 byte(s)");
}

/// What a device sent, taken apart; the number it holds, if it holds one.
std::optional<int> decode(int sent)
{
    return decodeFromDevice("notification", [&]() -> std::optional<int> {
        precondition(sent >= 0, "{} cannot be", sent);
        return sent;
    });
}

class DeviceBytes : public testing::Test {
protected:
    ~DeviceBytes() override { setPreconditionPolicy(PreconditionPolicy::stop); }
};

TEST_F(DeviceBytes, AreDroppedAndLoggedWhereThePolicyIsToContain)
{
    setPreconditionPolicy(PreconditionPolicy::contain);
    EXPECT_THAT(decode(7), Optional(7));

    AuriskLog::setEnable(true);
    testing::internal::CaptureStdout();
    EXPECT_EQ(decode(-1), std::nullopt);
    EXPECT_THAT(testing::internal::GetCapturedStdout(), HasSubstr("[\"notification dropped: -1 cannot be\"]"));
    AuriskLog::setEnable(false);
}

#ifndef NDEBUG
TEST(MainQueueObjects, KnowThatTheyAreCalledOnTheWrongThread)
{
    ManualDispatchQueue queue;
    const ScopedMainQueue main(queue);
    const auto check = [] { return stopOf([] { return expectMainQueue(), 0; }); };
    EXPECT_EQ(check(), std::nullopt);

    std::optional<std::string> elsewhere;
    std::thread([&] { elsewhere = check(); }).join();
    EXPECT_THAT(elsewhere, Optional(HasSubstr("main queue")));
}
#endif

} // namespace
} // namespace aurisk::tests
