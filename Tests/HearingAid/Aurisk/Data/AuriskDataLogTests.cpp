#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskDataLog.h"

#include <gmock/gmock.h>

namespace aurisk::tests {
namespace {

/// 57 words that say where they stand: 0, 1, 2 ... with a byte of their own in each place.
Data numberedWords()
{
    Data bytes;
    for (std::uint8_t word = 0; word < 57; ++word)
        bytes.insert(bytes.end(), { word, 0x10, 0x20, 0x30 });
    return bytes;
}

constexpr std::uint32_t word(std::uint32_t index) { return 0x30201000 + index; }

TEST(AuriskSummaryDataLog, HasEachWordInItsPlace)
{
    auto bytes = numberedWords();
    ASSERT_EQ(bytes.size(), 228U);
    const auto log = AuriskSummaryDataLog::decode(bytes);
    ASSERT_TRUE(log);
    EXPECT_EQ(log->totalRunTime, word(0));
    EXPECT_EQ(log->runTimeSincePowerUp, word(1));
    EXPECT_EQ(log->numberOfBatteryChanges, word(2));
    EXPECT_EQ(log->batteryChangeHours, word(3));
    EXPECT_EQ(log->lowBatteryFlag, word(4));
    for (std::uint32_t i = 0; i < 6; ++i) { // from byte 20, 28 bytes each
        const auto first = 5 + 7 * i;
        EXPECT_EQ(log->program[i],
            (AuriskProgramRunDataLog{ word(first), word(first + 1), word(first + 2), word(first + 3), word(first + 4),
                word(first + 5), word(first + 6) }));
    }
    EXPECT_EQ(log->runTimeHistory, // from byte 188
        (AuriskRunTimeHistory{ word(47), word(48), word(49), word(50), word(51), word(52), word(53), word(54) }));
    EXPECT_EQ(log->unUsedWord, word(55));
    EXPECT_EQ(log->CRC, word(56));

    bytes.push_back(0xFF);
    EXPECT_EQ(AuriskSummaryDataLog::decode(bytes), log);
}

TEST(AuriskSummaryDataLog, IsNoneWhereBytesAreMissing)
{
    testing::internal::CaptureStdout();
    EXPECT_EQ(AuriskSummaryDataLog::decode(Data(227)), std::nullopt);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
        "Failed to initialize AuriskSummaryDataLog because the data.count is less than 228\n");
}

} // namespace
} // namespace aurisk::tests
