#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskRawData.h"

#include "Tests/Support/Bytes.h"
#include "Tests/Support/Stops.h"

#include <gmock/gmock.h>

#include <numeric>

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

/// A received value of `length` bytes after the first, with that size byte and a checksum that fits it.
Data received(std::size_t length, std::uint8_t size)
{
    Data bytes{ 0x00, 0xFE, 0x68, 0x91, size };
    bytes.resize(length + 1, 0x5A);
    bytes[length - 1] = static_cast<std::uint8_t>(std::accumulate(&bytes[2], &bytes[length - 1], 0));
    bytes[length] = 0x16;
    return bytes;
}

TEST(AuriskRawData, IsOneOnlyWhereTheSizeSaysHowLongItIs)
{
    for (std::size_t length = 6; length < 265; ++length)
        for (unsigned size = 0; size < 256; ++size) {
            const auto bytes = received(length, static_cast<std::uint8_t>(size));
            std::optional<AuriskRawData> frame;
            const auto stop = stopOf([&] { return frame = AuriskRawData::parse(bytes); });
            ASSERT_EQ(stop.has_value(), size >= 250) << length << " bytes, size " << size;
            ASSERT_EQ(frame.has_value(), size < 250 && length == size + 6) << length << " bytes, size " << size;
            if (frame && size >= 2) {
                ASSERT_EQ(frame->toData(), Data(bytes.begin() + 1, bytes.end())) << "size " << size;
            }
        }
}

TEST(AuriskRawData, IsNoneWithAnyByteChanged)
{
    // The sum of the first: 68 + 91 + 08 + FF + 04 + 02 + 05 + 06 + FF + 00 + 80 = 390.
    for (const auto& good :
        { "00 FE 68 91 08 FF 04 02 05 06 FF 00 80 90 16"_bytes, "00 FE 68 94 02 02 03 03 16"_bytes }) {
        ASSERT_TRUE(AuriskRawData::parse(good));
        for (std::size_t i = 1; i < good.size(); ++i)
            for (unsigned change = 1; change < 256; ++change) {
                auto bad = good;
                bad[i] = static_cast<std::uint8_t>(bad[i] ^ change);
                std::optional<AuriskRawData> frame;
                static_cast<void>(stopOf([&] { return frame = AuriskRawData::parse(bad); }));
                ASSERT_EQ(frame, std::nullopt) << "byte " << i << " changed by " << change;
            }
    }
}

} // namespace
} // namespace aurisk::tests
