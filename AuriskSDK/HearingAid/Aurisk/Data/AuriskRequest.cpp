#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskRequest.h"

#include "AuriskSDK/Shared/Utils/ByteWriter.h"
#include "AuriskSDK/Shared/Utils/Precondition.h"

namespace aurisk {

namespace {

constexpr std::uint8_t reading = 0x11, writing = 0x14, controlling = 0x1C, auxiliary = 0x1D, shipping = 0xCC;
constexpr std::uint8_t hearingTest = 0x39;

std::uint8_t byte(std::int64_t value, std::string_view what) { return exactly<std::uint8_t>(value, what); }

/// A program as the device counts it where it counts from 1.
std::uint8_t fromOne(int program) { return byte(std::int64_t{ program } + 1, "program + 1"); }

/// Where a settings block goes. The flag asks the device not to answer.
std::uint8_t writeTarget(int target, bool withResponse)
{
    constexpr int withoutAnswer = 0x80;
    return byte(std::int64_t{ target } + (withResponse ? 0 : withoutAnswer), "program");
}

int globalBlock(AuriskChip chip) { return chip == AuriskChip::a16 ? 0x06 : 0x05; }

/// Program in the high four bits, volume in the low ones. The volume is not masked, deliberately.
std::uint8_t packed(const AuriskRequest::controlVolume& r)
{
    const unsigned program = fromOne(r.program), volume = byte(r.volume, "volume");
    return static_cast<std::uint8_t>((program << 4 | volume) & 0xFF);
}

std::uint32_t unsigned32(std::int32_t value, std::string_view what) { return exactly<std::uint32_t>(value, what); }

} // namespace

AuriskRawData AuriskRequest::requestRawData() const
{
    const auto frame = AuriskRawData::make;
    return std::visit(
        overloaded{
            [&](const readVolume& r) { return frame(reading, fromOne(r.program), 0x04, {}); },
            [&](const readDsp& r) {
                return frame(reading, byte(r.program, "program"), 0x03, {});
            }, // from 0, deliberately
            [&](const readGlobalDsp& r) { return frame(reading, byte(globalBlock(r.chip), "chip"), 0x03, {}); },
            [&](const readProfile& r) { return frame(reading, rawValue(r.type), 0x08, {}); },
            [&](const writeDsp& r) {
                return frame(writing, writeTarget(r.program, r.withResponse), 0x03, r.dsp.toBytes());
            },
            [&](const writeDspData& r) { return frame(writing, writeTarget(r.program, r.withResponse), 0x03, r.data); },
            [&](const writeGlobalDsp& r) {
                return frame(writing, writeTarget(globalBlock(r.chip), r.withResponse), 0x03, r.global.toData());
            },
            [&](const writeGlobalDspData& r) {
                return frame(writing, writeTarget(globalBlock(r.chip), r.withResponse), 0x03, r.data);
            },
            [&](const writeProfile& r) { return frame(writing, rawValue(r.type), 0x08, r.data); },
            [&](const writeOrientation& r) {
                const bool isLeft = r.orientation == AccessoryOrientation::left;
                return frame(writing, 0x80, 0x05, Data{ std::uint8_t(isLeft ? 0x00 : 0x01) });
            },
            [&](const controlVolume& r) { return frame(controlling, 0x01, packed(r), {}); },
            [&](const controlProgram& r) { return frame(controlling, 0x02, fromOne(r.program), {}); },
            [&](const controlMute& r) { return frame(controlling, r.mute ? 0x05 : 0x04, 0x00, {}); },
            [&](const controlBeep& r) { return frame(controlling, 0x06, byte(r.value, "value"), {}); },
            [&](const setTransparency& r) { return frame(auxiliary, 0xAE, 0x00, Data{ byte(r.level, "level") }); },
            [&](const setBrEdr& r) {
                const int mode = !r.enable ? 0x00 : r.continuousIfEnable ? 0x01 : 0x02;
                return frame(auxiliary, 0xAF, 0x00, Data{ byte(mode, "mode") });
            },
            [&](const enterHearingMode& r) { // 0 enters, inverted on purpose
                return frame(auxiliary, hearingTest, 0x04, Data{ std::uint8_t(r.enter ? 0x00 : 0x01) });
            },
            [&](const setBaseAmplitude& r) {
                auto payload = ByteWriter().u16(r.freq).u32(unsigned32(r.amp, "amp")).take();
                return frame(auxiliary, hearingTest, 0x02, std::move(payload));
            },
            [&](const playSine& r) {
                auto payload = ByteWriter().u16(r.freq).u8(r.dB).u32(unsigned32(r.timestamp, "timestamp")).take();
                return frame(auxiliary, hearingTest, 0x01, std::move(payload));
            },
            [&](const playSineAmplitude& r) {
                auto payload = ByteWriter()
                                   .u16(r.freq)
                                   .u32(unsigned32(r.amp, "amp"))
                                   .u32(unsigned32(r.timestamp, "timestamp"))
                                   .take();
                return frame(auxiliary, hearingTest, 0x03, std::move(payload));
            },
            [&](const writeProtocolData& r) { return r.data; },
            [&](const readProgramVolume&) { return frame(reading, 0xFF, 0x04, {}); },
            [&](const readOrientation&) { return frame(reading, 0x80, 0x05, {}); },
            [&](const controlLockChip&) { return frame(controlling, 0x03, 0x00, {}); },
            [&](const controlShip&) { return frame(shipping, 0xC3, 0x49, {}); },
            [&](const enterDUT&) { return frame(auxiliary, 0x83, 0x00, {}); },
            [&](const readBrEdr&) { return frame(auxiliary, 0xBF, 0x00, {}); },
            [&](const getTransparencyLevel&) { return frame(auxiliary, 0xBE, 0x00, {}); },
            [&](const beginFind&) { return frame(auxiliary, 0x81, 0x01, {}); },
            [&](const endFind&) { return frame(auxiliary, 0x81, 0x00, {}); },
            [&](const resetFactory&) { return frame(auxiliary, 0x82, 0x00, {}); },
            [&](const hearingSupported&) { return frame(auxiliary, hearingTest, 0x05, {}); },
            [&](const stopPlaySine&) { return frame(auxiliary, hearingTest, 0x00, {}); },
        },
        _case);
}

std::string description(const AuriskRequest& request) { return description(request.value()); }

} // namespace aurisk
