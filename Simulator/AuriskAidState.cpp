#include "Simulator/AuriskAidState.h"

#include "Simulator/AidMembers.h"
#include "Simulator/AuriskAidMemory.h"
#include "Simulator/AuriskFactory.h"
#include "Simulator/SimulatedAid.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <limits>

namespace aurisk {

namespace {

using NamedByte = Named<std::uint8_t>;
constexpr std::array chips = { NamedByte{ 0x00, "a4" }, NamedByte{ 0x01, "h01" }, NamedByte{ 0x06, "a16" } };
constexpr std::array radioChips = { NamedByte{ 7, "u87" }, NamedByte{ 8, "tiny600" } };
constexpr std::array firmwareFailures = {
    Named<FirmwareFailure>{ FirmwareFailure::none, "none" },
    Named<FirmwareFailure>{ FirmwareFailure::init, "init" },
    Named<FirmwareFailure>{ FirmwareFailure::space, "space" },
    Named<FirmwareFailure>{ FirmwareFailure::sequence, "sequence" },
    Named<FirmwareFailure>{ FirmwareFailure::crc, "crc" },
    Named<FirmwareFailure>{ FirmwareFailure::boot, "boot" },
    Named<FirmwareFailure>{ FirmwareFailure::bootError, "bootError" },
};

constexpr std::int64_t largestFrequency = 0xFFFF;
constexpr std::int64_t largestWord = std::numeric_limits<std::uint32_t>::max();
constexpr std::int64_t mostPackets = std::numeric_limits<int>::max();

/// Each member of a state with its key and its range: reading and writing both follow this list.
struct Members {
    template <typename Visitor, typename Tone> static void ofTone(Visitor& visit, Tone& tone)
    {
        visit.number("frequency", tone.frequency, largestFrequency);
        visit.number("dB", tone.dB, 0xFF);
        visit.number("amplitude", tone.amplitude, largestWord);
        visit.number("timestamp", tone.timestamp, largestWord);
    }

    template <typename Visitor, typename Base> static void ofBaseAmplitude(Visitor& visit, Base& base)
    {
        visit.number("frequency", base.frequency, largestFrequency);
        visit.number("amplitude", base.amplitude, largestWord);
    }

    template <typename Visitor, typename Usage> static void ofUsage(Visitor& visit, Usage& usage)
    {
        visit.number("totalRunTime", usage.totalRunTime, mostCounted);
        visit.number("runTimeSincePowerUp", usage.runTimeSincePowerUp, mostCounted);
        visit.number("batteryRunTime", usage.batteryRunTime, mostCounted);
        visit.number("numberOfBatteryChanges", usage.numberOfBatteryChanges, mostCounted);
        visit.numbers("programRunTimes", usage.programRunTimes, mostCounted);
        visit.numbers("runTimeHistory", usage.runTimeHistory, mostCounted);
        visit.bytes("userEvents", usage.userEvents);
        visit.bytes("loopGains", usage.loopGains);
    }

    template <typename Visitor, typename Firmware> static void ofFirmware(Visitor& visit, Firmware& firmware)
    {
        visit.number("diskSize", firmware.diskSize, largestWord);
        visit.choice("fails", firmware.fails, firmwareFailures);
        visit.number("failsAt", firmware.failsAt, mostPackets, 1);
        visit.bytes("image", firmware.image);
        visit.number("imageType", firmware.imageType, 2);
        visit.number("updates", firmware.updates, mostCounted);
    }

    template <typename Visitor, typename Fields> static void ofProfile(Visitor& visit, Fields& fields)
    {
        for (const auto& field : auriskProfileFields())
            visit.entry(field.name, fields, field.number, field.isText);
    }

    template <typename Visitor, typename State> static void ofState(Visitor& visit, State& state)
    {
        visit.text("name", state.name);
        visit.text("address", state.address);
        visit.byte("chip", state.chip, 0xFF, chips);
        visit.byte("radioChip", state.radioChip, 0x7F, radioChips);
        visit.flag("transparencyFlag", state.transparencyFlag);
        visit.flag("hearingTestSupported", state.hearingTestSupported);
        visit.numbers("volumes", state.volumes, loudest);
        visit.number("program", state.program, mostPrograms - 1);
        visit.flag("muted", state.muted);
        visit.number("transparencyLevel", state.transparencyLevel, 0xFF);
        visit.flag("brEdrEnabled", state.brEdrEnabled);
        visit.flag("brEdrContinuous", state.brEdrContinuous);
        visit.choice("ear", state.isRight, ears);
        visit.flag("locked", state.locked);
        visit.flag("finding", state.finding);
        visit.flag("inHearingMode", state.inHearingMode);
        visit.flag("inDeviceTest", state.inDeviceTest);
        visit.part("tone", state.tone, [](auto& inner, auto& tone) { ofTone(inner, tone); });
        visit.part("baseAmplitude", state.baseAmplitude, [](auto& inner, auto& base) { ofBaseAmplitude(inner, base); });
        visit.number("lastBeep", state.lastBeep, 0xFF);
        visit.number("battery", state.battery, 100);
        visit.flag("shipped", state.shipped);
        visit.flag("switchedOff", state.switchedOff);
        visit.byteLists("programBlocks", state.programBlocks);
        visit.bytes("globalBlock", state.globalBlock);
        visit.group("profile", state.profile, [](auto& inner, auto& fields) { ofProfile(inner, fields); });
        visit.group("usage", state.usage, [](auto& inner, auto& usage) { ofUsage(inner, usage); });
        visit.group("firmware", state.firmware, [](auto& inner, auto& firmware) { ofFirmware(inner, firmware); });
    }
};

void refuseBrokenRecords(const Data& records, std::size_t size, std::size_t most, const std::string& place)
{
    if (records.size() % size != 0 || records.size() > most)
        failAt(place, fmt::format("must be records of {} bytes, at most {}", size, most / size));
}

} // namespace

nlohmann::json toJson(const AuriskAidState& state)
{
    WritingMembers writing;
    Members::ofState(writing, state);
    return std::move(writing.object);
}

AuriskAidState auriskAidStateFromJson(const nlohmann::json& value, const std::string& place)
{
    ReadingMembers reading{ WorldReader(value, place) };
    AuriskAidState state;
    state.isRight = isRightByName(reading.reader.text("name"));
    Members::ofState(reading, state);
    reading.reader.finish();

    const auto programs = state.volumes.size();
    refuseNamelessAid(state.name, state.address, place);
    if (programs < 1 || programs > mostPrograms)
        failAt(place + ".volumes", fmt::format("must be 1 to {} numbers", mostPrograms));
    if (std::size_t(state.program) >= programs)
        failAt(place + ".program", fmt::format("{} is outside 0 to {}", state.program, programs - 1));
    refuseBrokenRecords(state.usage.userEvents, userEventSize, mostUserEventBytes, place + ".usage.userEvents");
    refuseBrokenRecords(state.usage.loopGains, loopGainSize, mostLoopGainBytes, place + ".usage.loopGains");
    if (state.firmware.image.empty() == state.firmware.imageType.has_value())
        failAt(place + ".firmware", "must have both image and imageType, or neither");
    completeMemory(state, place);
    return state;
}

AuriskAidState completed(AuriskAidState state, const std::string& place)
{
    state.programBlocks.resize(std::min(state.programBlocks.size(), state.volumes.size()));
    return auriskAidStateFromJson(toJson(state), place);
}

} // namespace aurisk
