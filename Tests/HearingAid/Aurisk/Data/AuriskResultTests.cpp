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

TEST(AuriskResponse, SaysWhatTheFrameOfADeviceTells)
{
    const struct {
        Data told;
        AuriskResponse expected;
    } cases[] = {
        // A program and its volume: the current program alone, one program's volume, or all volumes.
        { "91 00 04 FF 09"_bytes, P::didReadProgram{ .program = 255 } },
        { "91 01 04 06"_bytes, P::didReadProgram{ .program = 0, .volume = 6 } },
        { "91 FE 04 FF 01"_bytes, P::didReadProgram{ .program = 253, .volume = 255 } },
        { "91 FF 04 01 05 06"_bytes, P::didReadProgram{ .program = 0, .volume = 5 } },
        { "91 FF 04 00 07"_bytes, P::didReadProgram{ .program = -1, .volume = 0 } },

        // Settings blocks.
        { "91 00 03 0A 0B"_bytes, P::didReadDsp{ .program = 0, .data = "0A 0B"_bytes } },
        { "91 04 03 0A"_bytes, P::didReadDsp{ .program = 4, .data = "0A"_bytes } },
        { "91 04 03"_bytes, P::didReadDsp{ .program = 4, .data = {} } },
        { "91 05 03 0A"_bytes, P::didReadGlobal{ .data = "0A"_bytes } },

        // Fields of the profile, of a known type or not.
        { "91 22 08 06"_bytes, P::didReadProfile{ .data = "06"_bytes, .type = AuriskProfileType::hearingAidChip } },
        { "91 06 08"_bytes, P::didReadProfile{ .data = {}, .type = AuriskProfileType::productSeriesCode } },
        { "91 30 08 01"_bytes, P::didReadProfile{ .data = "01"_bytes, .type = AuriskProfileType::unknown } },
        { "91 80 08 01"_bytes, P::didReadProfile{ .data = "01"_bytes, .type = AuriskProfileType::unknown } },

        { "91 80 05 00"_bytes, P::didReadOrientation{ .orientation = AccessoryOrientation::left } },
        { "91 80 05 FF 00"_bytes, P::didReadOrientation{ .orientation = AccessoryOrientation::right } },

        // That there is a reply means that the device has the hearing test, whatever the payload.
        { "9D 39 05 00"_bytes, P::didReadHearingTest{ .supported = true } },
        { "9D BC 00 31 32"_bytes, P::didReadPairCode{ .code = "31 32"_bytes } },
        { "9D BC 77"_bytes, P::didReadPairCode{ .code = {} } },
        { "9D BE 00 00"_bytes, P::didReadTransparency{ .level = 0 } },
        { "9D BE 05 FF 01"_bytes, P::didReadTransparency{ .level = 255 } },
        { "9D BF 00 00"_bytes, P::didReadBrEdr{ .enable = false, .continuousIfEnable = false } },
        { "9D BF 00 01"_bytes, P::didReadBrEdr{ .enable = true, .continuousIfEnable = true } },
        { "9D BF 00 FF"_bytes, P::didReadBrEdr{ .enable = true, .continuousIfEnable = false } },

        // The second identifier of a notification is the first volume.
        { "9F 02 07 09"_bytes, P::didNotify{ .program = 1, .volume = 9 } },
        { "9F 01 07 09"_bytes, P::didNotify{ .program = 0, .volume = 7 } },
        { "9F 01 07"_bytes, P::didNotify{ .program = 0, .volume = 7 } },
        { "9F 04 01 02 03 FF"_bytes, P::didNotify{ .program = 3, .volume = 255 } },
    };
    for (const auto& [told, expected] : cases) {
        const auto description = testing::PrintToString(told);
        EXPECT_EQ(frame(told).toResponse(), expected) << description;
        EXPECT_EQ(frame(told).toResult(), AuriskResult::success(expected)) << description;
    }
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
    };
    for (const auto& [frame, expected] : cases)
        EXPECT_EQ(frame.toResponse(), expected(frame)) << description(frame);

    const AuriskRawData withoutPayload{ .cmd = 0x9D, .di0 = 0x39, .di1 = 0x05 };
    EXPECT_EQ(withoutPayload.toResponse(), AuriskResponse(P::didReadHearingTest{ .supported = true }));
    const AuriskRawData withoutFirstVolume{ .cmd = 0x9F, .di0 = 0x01, .data = Data{ 9 } };
    EXPECT_EQ(withoutFirstVolume.toResponse(), AuriskResponse(P::didNotify{ .program = 0, .volume = 9 }));
}

TEST(AuriskResponse, IsUnknownForACodeThatNoReplyHas)
{
    for (const int cmd : { 0x00, 0x11, 0x42, 0x90, 0x92, 0x93, 0x9B, 0x9E, 0xA0, 0xD1, 0xFF }) {
        const auto strange = AuriskRawData::make(static_cast<std::uint8_t>(cmd), 0x01, 0x04, Data{ 6 });
        EXPECT_EQ(strange.toResponse(), AuriskResponse(P::unknown{ .data = strange })) << cmd;
    }
}

} // namespace
} // namespace aurisk::tests
