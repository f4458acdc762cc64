#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskRawData.h"

#include "Tests/Support/Bytes.h"
#include "Tests/Support/Stops.h"

#include <gmock/gmock.h>

namespace aurisk::tests {
namespace {

using testing::HasSubstr;
using testing::Optional;

TEST(AuriskRawData, IsSentWithItsSizeAndItsChecksum)
{
    const struct {
        AuriskRawData frame;
        Data expected;
    } cases[] = {
        { AuriskRawData::make(0x11, 0x01, 0x04), "FE 68 11 02 01 04 80 16"_bytes },
        { AuriskRawData::make(0x11, 0x01, 0x04, Data{}), "FE 68 11 02 01 04 80 16"_bytes },
        // 68 + 14 + 06 + 00 + 03 + 4 x FF = 481
        { AuriskRawData::make(0x14, 0x00, 0x03, "FF FF FF FF"_bytes), "FE 68 14 06 00 03 FF FF FF FF 81 16"_bytes },
        // Absent parts are left out, and the size is written as it stands.
        { { .cmd = 0x42 }, "FE 68 42 02 AC 16"_bytes },
        { { .cmd = 0x42, .dataSize = 9, .di0 = 0x01 }, "FE 68 42 09 01 B4 16"_bytes },
        { { .cmd = 0x42, .dataSize = 0, .di1 = 0x01, .data = "07"_bytes }, "FE 68 42 00 01 07 B2 16"_bytes },
    };
    for (const auto& [frame, expected] : cases)
        EXPECT_EQ(frame.toData(), expected) << description(frame);
}

TEST(AuriskRawData, CarriesAtMost253Bytes)
{
    const auto longest = AuriskRawData::make(0x14, 0x00, 0x03, Data(253, 0x01));
    EXPECT_EQ(longest.dataSize, 255);
    EXPECT_EQ(longest.toData().size(), 261U);
    EXPECT_EQ(longest.toData()[259], (0x68 + 0x14 + 0xFF + 0x00 + 0x03 + 253) % 256);

    EXPECT_THAT(
        stopOf([] { return AuriskRawData::make(0x14, 0x00, 0x03, Data(254, 0x01)); }), Optional(HasSubstr("254")));
}

TEST(AuriskRawData, IsReceivedAfterOneByteThatIsNotPartOfIt)
{
    const AuriskRawData bare{ .cmd = 0x42 };
    const struct {
        Data received;
        std::optional<AuriskRawData> expected;
    } cases[] = {
        { "00 FE 68 91 03 01 04 06 07 16"_bytes,
            AuriskRawData{ .cmd = 0x91, .dataSize = 3, .di0 = 0x01, .di1 = 0x04, .data = "06"_bytes } },
        { "FE FE 68 91 03 01 04 06 07 16"_bytes,
            AuriskRawData{ .cmd = 0x91, .dataSize = 3, .di0 = 0x01, .di1 = 0x04, .data = "06"_bytes } },
        // A size of 2: a payload that is there, and empty.
        { "00 FE 68 94 02 02 03 03 16"_bytes,
            AuriskRawData{ .cmd = 0x94, .dataSize = 2, .di0 = 0x02, .di1 = 0x03, .data = Data{} } },
        // Sizes of 0 and 1: neither identifiers nor payload, and the size counts as 2. The lone byte is not looked at.
        { "00 FE 68 42 00 AA 16"_bytes, bare },
        { "00 FE 68 42 01 7F 2A 16"_bytes, bare },
        // The sum wraps: 68 + 91 + 06 + 00 + 03 + 4 x FF = 4FE.
        { "00 FE 68 91 06 00 03 FF FF FF FF FE 16"_bytes,
            AuriskRawData{ .cmd = 0x91, .dataSize = 6, .di0 = 0x00, .di1 = 0x03, .data = "FF FF FF FF"_bytes } },

        { "FE 68 91 03 01 04 06 07 16"_bytes, {} }, // without the byte in front
        { "00 FD 68 91 03 01 04 06 07 16"_bytes, {} },
        { "00 FE 69 91 03 01 04 06 08 16"_bytes, {} },
        { "00 FE 68 91 03 01 04 06 07 17"_bytes, {} },
        { "00 FE 68 91 03 01 04 06 08 16"_bytes, {} }, // the sum is one too large
        { "00 FE 68 91 02 01 04 06 06 16"_bytes, {} }, // the size is one too small, the sum fits it
        { "00 FE 68 91 04 01 04 06 08 16"_bytes, {} },
        { "00 FE 68 42 AA 16"_bytes, {} }, // five bytes
        { "00"_bytes, {} },
        { "FE"_bytes, {} },
    };
    for (const auto& [received, expected] : cases)
        EXPECT_EQ(AuriskRawData::parse(received), expected) << testing::PrintToString(received);
}

TEST(AuriskRawData, StopsAtAnEmptyValueAndAtASizeThatNoFrameCanHave)
{
    EXPECT_TRUE(stopOf([] { return AuriskRawData::parse({}); }));
    // What does not begin and end as a frame does is just none, whatever stands where the size would be.
    EXPECT_EQ(AuriskRawData::parse("00 FE 68 91 FA 01 04 06 07 17"_bytes), std::nullopt);
    EXPECT_THAT(
        stopOf([] { return AuriskRawData::parse("00 FE 68 91 FA 01 04 06 07 16"_bytes); }), Optional(HasSubstr("250")));
    EXPECT_EQ(AuriskRawData::parse("00 FE 68 91 F9 01 04 06 07 16"_bytes), std::nullopt);
}

} // namespace
} // namespace aurisk::tests
