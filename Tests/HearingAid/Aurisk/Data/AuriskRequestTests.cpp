#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskRequest.h"

#include "Tests/Support/Bytes.h"
#include "Tests/Support/Stops.h"

#include <gmock/gmock.h>

#include <limits>

namespace aurisk::tests {
namespace {

using R = AuriskRequest;
using testing::HasSubstr;
using testing::Optional;

constexpr int largest = std::numeric_limits<int>::max(), least = std::numeric_limits<int>::min();

/// A block of the chip A16 whose first field is 4 and whose last is 9.
Data a16Block()
{
    Data bytes(56);
    bytes.front() = 0x04;
    bytes.back() = 0x90;
    return bytes;
}

TEST(AuriskRequest, AsksWithTheBytesOfTheProtocol)
{
    const AuriskA4Dsp a4("01 02 03 04 05 06 07 08 09 0A 0B 0C"_bytes);
    const AuriskA16Dsp a16(a16Block());
    const AuriskA4GlobalDsp globalA4("11 12 13 14 15 16 17 18 19"_bytes);
    const AuriskA16GlobalDsp globalA16("21 22 23 24 25 26 27 28 29 2A 2B 2C"_bytes);

    const struct {
        AuriskRequest request;
        Data expected;
    } cases[] = {
        { R::readVolume{ .program = 0 }, "FE 68 11 02 01 04 80 16"_bytes },
        { R::readVolume{ .program = -1 }, "FE 68 11 02 00 04 7F 16"_bytes },
        { R::readVolume{ .program = 254 }, "FE 68 11 02 FF 04 7E 16"_bytes },
        { R::readDsp{ .program = 0 }, "FE 68 11 02 00 03 7E 16"_bytes },
        { R::readDsp{ .program = 255 }, "FE 68 11 02 FF 03 7D 16"_bytes },
        { R::readGlobalDsp{ .chip = AuriskChip::a16 }, "FE 68 11 02 06 03 84 16"_bytes },
        { R::readGlobalDsp{ .chip = AuriskChip::a4 }, "FE 68 11 02 05 03 83 16"_bytes },
        { R::readGlobalDsp{ .chip = AuriskChip::h01 }, "FE 68 11 02 05 03 83 16"_bytes },
        { R::readGlobalDsp{ .chip = AuriskChip::unassigned }, "FE 68 11 02 05 03 83 16"_bytes },
        { R::readProfile{ .type = AuriskProfileType::advertisementName }, "FE 68 11 02 13 08 96 16"_bytes },
        { R::readProfile{ .type = AuriskProfileType::hearingAidChip }, "FE 68 11 02 22 08 A5 16"_bytes },
        { R::writeDsp{ .dsp = a4, .program = 2, .withResponse = false },
            "FE 68 14 0E 82 03 01 02 03 04 05 06 07 08 09 0A 0B 0C 5D 16"_bytes },
        { R::writeDsp{ .dsp = a4, .program = 2, .withResponse = true },
            "FE 68 14 0E 02 03 01 02 03 04 05 06 07 08 09 0A 0B 0C DD 16"_bytes },
        { R::writeDsp{ .dsp = a16, .program = 0, .withResponse = true },
            "FE 68 14 3A 00 03 "
            "04 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
            "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
            "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
            "00 00 00 00 00 00 00 90 "
            "4D 16"_bytes },
        { R::writeDspData{ .data = "07 08"_bytes, .program = 3, .withResponse = true },
            "FE 68 14 04 03 03 07 08 95 16"_bytes },
        { R::writeDspData{ .data = "07 08"_bytes, .program = 127, .withResponse = false },
            "FE 68 14 04 FF 03 07 08 91 16"_bytes },
        { R::writeDspData{ .data = "07 08"_bytes, .program = -128, .withResponse = false },
            "FE 68 14 04 00 03 07 08 92 16"_bytes },
        { R::writeDspData{ .data = {}, .program = 255, .withResponse = true }, "FE 68 14 02 FF 03 80 16"_bytes },
        { R::writeGlobalDsp{ .global = globalA4, .chip = AuriskChip::a4, .withResponse = true },
            "FE 68 14 0B 05 03 11 12 13 14 15 16 17 18 19 4C 16"_bytes },
        { R::writeGlobalDsp{ .global = globalA16, .chip = AuriskChip::a16, .withResponse = false },
            "FE 68 14 0E 86 03 21 22 23 24 25 26 27 28 29 2A 2B 2C E1 16"_bytes },
        { R::writeGlobalDsp{ .global = globalA4, .chip = AuriskChip::a16, .withResponse = true },
            "FE 68 14 0B 06 03 11 12 13 14 15 16 17 18 19 4D 16"_bytes },
        { R::writeGlobalDspData{ .data = "07"_bytes, .chip = AuriskChip::h01, .withResponse = false },
            "FE 68 14 03 85 03 07 0E 16"_bytes },
        { R::writeGlobalDspData{ .data = "07"_bytes, .chip = AuriskChip::a16, .withResponse = true },
            "FE 68 14 03 06 03 07 8F 16"_bytes },
        { R::writeProfile{ .data = "58 31"_bytes, .type = AuriskProfileType::productSku },
            "FE 68 14 04 04 08 58 31 15 16"_bytes },
        { R::writeOrientation{ .orientation = AccessoryOrientation::left }, "FE 68 14 03 80 05 00 04 16"_bytes },
        { R::writeOrientation{ .orientation = AccessoryOrientation::right }, "FE 68 14 03 80 05 01 05 16"_bytes },
        { R::writeOrientation{ .orientation = AccessoryOrientation::unassigned }, "FE 68 14 03 80 05 01 05 16"_bytes },
        { R::controlVolume{ .volume = 5, .program = 1 }, "FE 68 1C 02 01 25 AC 16"_bytes },
        { R::controlVolume{ .volume = 0x1F, .program = 0 }, "FE 68 1C 02 01 1F A6 16"_bytes },
        { R::controlVolume{ .volume = 0x82, .program = 3 }, "FE 68 1C 02 01 C2 49 16"_bytes },
        { R::controlVolume{ .volume = 3, .program = 15 }, "FE 68 1C 02 01 03 8A 16"_bytes },
        { R::controlVolume{ .volume = 255, .program = 254 }, "FE 68 1C 02 01 FF 86 16"_bytes },
        { R::controlVolume{ .volume = 9, .program = -1 }, "FE 68 1C 02 01 09 90 16"_bytes },
        { R::controlProgram{ .program = 2 }, "FE 68 1C 02 02 03 8B 16"_bytes },
        { R::controlProgram{ .program = 254 }, "FE 68 1C 02 02 FF 87 16"_bytes },
        { R::controlMute{ .mute = true }, "FE 68 1C 02 05 00 8B 16"_bytes },
        { R::controlMute{ .mute = false }, "FE 68 1C 02 04 00 8A 16"_bytes },
        { R::controlBeep{ .value = 255 }, "FE 68 1C 02 06 FF 8B 16"_bytes },
        { R::setTransparency{ .level = 0 }, "FE 68 1D 03 AE 00 00 36 16"_bytes },
        { R::setTransparency{ .level = 255 }, "FE 68 1D 03 AE 00 FF 35 16"_bytes },
        { R::setBrEdr{ .enable = false, .continuousIfEnable = true }, "FE 68 1D 03 AF 00 00 37 16"_bytes },
        { R::setBrEdr{ .enable = false, .continuousIfEnable = false }, "FE 68 1D 03 AF 00 00 37 16"_bytes },
        { R::setBrEdr{ .enable = true, .continuousIfEnable = true }, "FE 68 1D 03 AF 00 01 38 16"_bytes },
        { R::setBrEdr{ .enable = true, .continuousIfEnable = false }, "FE 68 1D 03 AF 00 02 39 16"_bytes },
        { R::enterHearingMode{ .enter = true }, "FE 68 1D 03 39 04 00 C5 16"_bytes },
        { R::enterHearingMode{ .enter = false }, "FE 68 1D 03 39 04 01 C6 16"_bytes },
        { R::setBaseAmplitude{ .freq = 1000, .amp = 300 }, "FE 68 1D 08 39 02 E8 03 2C 01 00 00 E0 16"_bytes },
        { R::setBaseAmplitude{ .freq = 65535, .amp = 32767 }, "FE 68 1D 08 39 02 FF FF FF 7F 00 00 44 16"_bytes },
        { R::playSine{ .freq = 1000, .dB = 60, .timestamp = 0x01020304 },
            "FE 68 1D 09 39 01 E8 03 3C 04 03 02 01 F9 16"_bytes },
        { R::playSine{ .freq = 0, .dB = 255, .timestamp = 0x7FFFFFFF },
            "FE 68 1D 09 39 01 00 00 FF FF FF FF 7F 43 16"_bytes },
        { R::playSineAmplitude{ .freq = 500, .amp = 300, .timestamp = 0x01020304 },
            "FE 68 1D 0C 39 03 F4 01 2C 01 00 00 04 03 02 01 F9 16"_bytes },
        { R::readProgramVolume{}, "FE 68 11 02 FF 04 7E 16"_bytes },
        { R::readOrientation{}, "FE 68 11 02 80 05 00 16"_bytes },
        { R::controlLockChip{}, "FE 68 1C 02 03 00 89 16"_bytes },
        { R::controlShip{}, "FE 68 CC 02 C3 49 42 16"_bytes },
        { R::enterDUT{}, "FE 68 1D 02 83 00 0A 16"_bytes },
        { R::readBrEdr{}, "FE 68 1D 02 BF 00 46 16"_bytes },
        { R::getTransparencyLevel{}, "FE 68 1D 02 BE 00 45 16"_bytes },
        { R::beginFind{}, "FE 68 1D 02 81 01 09 16"_bytes },
        { R::endFind{}, "FE 68 1D 02 81 00 08 16"_bytes },
        { R::resetFactory{}, "FE 68 1D 02 82 00 09 16"_bytes },
        { R::hearingSupported{}, "FE 68 1D 02 39 05 C5 16"_bytes },
        { R::stopPlaySine{}, "FE 68 1D 02 39 00 C0 16"_bytes },
    };
    for (const auto& [request, expected] : cases)
        EXPECT_EQ(request.requestRawData().toData(), expected) << description(request);
}

TEST(AuriskRequest, PassesAFrameOfTheApplicationThroughAsItIs)
{
    const AuriskRawData frames[] = {
        AuriskRawData::make(0x5A, 0x01, 0x02, "03 04"_bytes),
        { .cmd = 0x5A },
        { .cmd = 0x5A, .dataSize = 77, .di0 = 0x01, .data = "FF"_bytes },
    };
    for (const auto& frame : frames)
        EXPECT_EQ(AuriskRequest(R::writeProtocolData{ .data = frame }).requestRawData(), frame);
}

TEST(AuriskRequest, StopsWhereANumberDoesNotFitItsByteInTheFrame)
{
    const struct {
        AuriskRequest request;
        const char* named; ///< what the message says
    } cases[] = {
        { R::readVolume{ .program = 255 }, ": 256 " },
        { R::readVolume{ .program = -2 }, "-1" },
        { R::readVolume{ .program = largest }, ": 2147483648 " },
        { R::readDsp{ .program = 256 }, "256" },
        { R::readDsp{ .program = -1 }, "-1" },
        { R::writeDspData{ .data = {}, .program = 256, .withResponse = true }, "256" },
        { R::writeDspData{ .data = {}, .program = -1, .withResponse = true }, "-1" },
        { R::writeDspData{ .data = {}, .program = 128, .withResponse = false }, "256" },
        { R::writeDspData{ .data = {}, .program = -129, .withResponse = false }, "-1" },
        { R::writeDspData{ .data = {}, .program = largest, .withResponse = false }, ": 2147483775 " },
        { R::writeDsp{ .program = 128, .withResponse = false }, "256" },
        { R::writeDsp{ .program = least, .withResponse = true }, "-2147483648" },
        { R::controlVolume{ .volume = 256, .program = 0 }, "volume: 256" },
        { R::controlVolume{ .volume = -1, .program = 0 }, "volume: -1" },
        { R::controlVolume{ .volume = 0, .program = 255 }, "256" },
        { R::controlVolume{ .volume = 0, .program = -2 }, "-1" },
        { R::controlVolume{ .volume = 0, .program = largest }, ": 2147483648 " },
        { R::controlProgram{ .program = 255 }, "256" },
        { R::controlProgram{ .program = -2 }, "-1" },
        { R::controlBeep{ .value = 256 }, "value: 256" },
        { R::controlBeep{ .value = -1 }, "value: -1" },
        { R::setTransparency{ .level = 256 }, "level: 256" },
        { R::setTransparency{ .level = -1 }, "level: -1" },
        { R::setBaseAmplitude{ .freq = 1000, .amp = -1 }, "amp: -1" },
        { R::playSine{ .freq = 1000, .dB = 60, .timestamp = -1 }, "timestamp: -1" },
        { R::playSineAmplitude{ .freq = 1000, .amp = -32768, .timestamp = 0 }, "amp: -32768" },
        { R::playSineAmplitude{ .freq = 1000, .amp = 0, .timestamp = least }, "timestamp: -2147483648" },
        { R::writeDspData{ .data = Data(254), .program = 0, .withResponse = true }, "254" },
        { R::writeGlobalDspData{ .data = Data(254) }, "254" },
        { R::writeProfile{ .data = Data(254) }, "254" },
    };
    for (const auto& [request, named] : cases)
        EXPECT_THAT(stopOf([&, &asked = request] { return asked.requestRawData(); }), Optional(HasSubstr(named)))
            << description(request);
}

TEST(AuriskRequest, IsDescribedByItsCaseAndItsLabels)
{
    const struct {
        AuriskRequest request;
        const char* expected;
    } cases[] = {
        { R::readVolume{ .program = 0 }, "readVolume(program: 0)" },
        { R::readOrientation{}, "readOrientation" },
        { R::controlVolume{ .volume = 5, .program = 1 }, "controlVolume(volume: 5, program: 1)" },
        { R::controlMute{ .mute = true }, "controlMute(mute: true)" },
        { R::readGlobalDsp{ .chip = AuriskChip::a16 }, "readGlobalDsp(chip: a16)" },
        { R::writeDspData{ .data = Data(12), .program = 2, .withResponse = false },
            "writeDspData(data: 12 bytes, program: 2, withResponse: false)" },
        { R::playSine{ .freq = 1000, .dB = 200, .timestamp = 7 }, "playSine(freq: 1000, dB: 200, timestamp: 7)" },
    };
    for (const auto& [request, expected] : cases)
        EXPECT_EQ(description(request), expected);
}

} // namespace
} // namespace aurisk::tests
