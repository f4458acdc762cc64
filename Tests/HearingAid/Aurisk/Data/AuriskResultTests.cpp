#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskResult.h"

#include "Tests/Support/Bytes.h"

#include <gmock/gmock.h>

namespace aurisk::tests {
namespace {

using P = AuriskResponse;

/// A frame of a device: command, both identifiers, payload.
AuriskRawData frame(const Data& bytes)
{
    return AuriskRawData::make(bytes.at(0), bytes.at(1), bytes.at(2), Data(bytes.begin() + 3, bytes.end()));
}

TEST(AuriskResponse, AcknowledgesWhereNothingFurtherIsKnown)
{
    for (const auto& told : { "91 07 03 0A"_bytes, "91 80 03 0A"_bytes, "91 81 05 00"_bytes, "91 01 07 00"_bytes,
             "94 02 03"_bytes, "94 FF 04 02 05 06"_bytes, "9C 01 25"_bytes, "9C BE 00 07"_bytes, "9D 81 01"_bytes,
             "9D 39 04 00"_bytes, "9D AE 00 07"_bytes })
        EXPECT_EQ(frame(told).toResult(), AuriskResult::success(P::didRequest{ .data = frame(told) }))
            << testing::PrintToString(told);
}

TEST(AuriskResponse, OfAFrameWithPartsMissing)
{
    const auto unknown = [](const AuriskRawData& frame) { return AuriskResponse(P::unknown{ .data = frame }); };
    const auto acknowledged = [](const AuriskRawData& frame) { return AuriskResponse(P::didRequest{ .data = frame }); };
    const struct {
        AuriskRawData frame;
        std::function<AuriskResponse(const AuriskRawData&)> expected;
    } cases[] = {
        { { .cmd = 0x91 }, unknown },
        { { .cmd = 0x91, .di0 = 0x01, .data = Data{ 6 } }, unknown },
        { { .cmd = 0x91, .di1 = 0x04, .data = Data{ 6 } }, unknown },
        { { .cmd = 0x91, .di0 = 0x01, .di1 = 0x03 }, acknowledged },
        { { .cmd = 0x91, .di0 = 0x05, .di1 = 0x03 }, acknowledged },
        { { .cmd = 0x91, .di0 = 0x01, .di1 = 0x04 }, acknowledged },
        { { .cmd = 0x91, .di0 = 0x80, .di1 = 0x05 }, acknowledged },
        { { .cmd = 0x91, .di0 = 0x13, .di1 = 0x08 }, acknowledged },
        { { .cmd = 0x94 }, acknowledged },
        { { .cmd = 0x9C }, acknowledged },
        { { .cmd = 0x9D }, acknowledged },
        { { .cmd = 0x9D, .di0 = 0x39, .data = Data{ 1 } }, acknowledged },
        { { .cmd = 0x9D, .di0 = 0xBC, .di1 = 0x00 }, acknowledged },
        { { .cmd = 0x9D, .di0 = 0xBE, .di1 = 0x00 }, acknowledged },
        { { .cmd = 0x9D, .di0 = 0xBF, .di1 = 0x00 }, acknowledged },
        { { .cmd = 0x9F }, unknown },
        { { .cmd = 0x9F, .di0 = 0x01, .di1 = 0x07 }, unknown },
        { AuriskRawData::make(0x42, 0x01, 0x04, Data{ 6 }), unknown }, // whole, and no reply of any kind
        { AuriskRawData::make(0xD1, 0x01, 0x04, Data{ 6 }), unknown },
    };
    for (const auto& [frame, expected] : cases)
        EXPECT_EQ(frame.toResponse(), expected(frame)) << description(frame);

    const AuriskRawData withoutPayload{ .cmd = 0x9D, .di0 = 0x39, .di1 = 0x05 };
    EXPECT_EQ(withoutPayload.toResponse(), AuriskResponse(P::didReadHearingTest{ .supported = true }));
    const AuriskRawData withoutFirstVolume{ .cmd = 0x9F, .di0 = 0x01, .data = Data{ 9 } };
    EXPECT_EQ(withoutFirstVolume.toResponse(), AuriskResponse(P::didNotify{ .program = 0, .volume = 9 }));
}

} // namespace
} // namespace aurisk::tests
