#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskDataLog.h"

#include "Tests/Support/Bytes.h"
#include "Tests/Support/Stops.h"

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

TEST(DataLogs, AreReadByOneFrameABlock)
{
    const struct {
        AuriskDataLogType type;
        std::size_t count;
        Data first, last;
    } cases[] = {
        { AuriskDataLogType::summary, 4, "FE 68 11 02 00 06 81 16"_bytes, "FE 68 11 02 03 06 84 16"_bytes },
        { AuriskDataLogType::userEvent, 40, "FE 68 11 02 10 06 91 16"_bytes, "FE 68 11 02 37 06 B8 16"_bytes },
        { AuriskDataLogType::loopGain, 20, "FE 68 11 02 60 06 E1 16"_bytes, "FE 68 11 02 73 06 F4 16"_bytes },
    };
    for (const auto& [type, count, first, last] : cases) {
        const auto frames = rawDataArray(type);
        ASSERT_EQ(frames.size(), count);
        EXPECT_EQ(frames.front().toData(), first);
        EXPECT_EQ(frames.back().toData(), last);
        for (std::size_t i = 1; i < count; ++i)
            EXPECT_EQ(*frames[i].di0, *frames[i - 1].di0 + 1);
    }
    EXPECT_NE(stopOf([] { return rawDataArray(AuriskDataLogType::feedback); }), std::nullopt);
}

} // namespace
} // namespace aurisk::tests
