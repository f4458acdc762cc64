#include "Simulator/AuriskAidState.h"

#include "AuriskSDK/Shared/Utils/HexToData.h"
#include "Simulator/AuriskAidMemory.h"
#include "Simulator/AuriskFactory.h"
#include "Simulator/WorldReader.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <limits>
#include <string_view>

namespace aurisk {

namespace {

using NamedByte = Named<std::uint8_t>;
constexpr std::array chips = { NamedByte{ 0x00, "a4" }, NamedByte{ 0x01, "h01" }, NamedByte{ 0x06, "a16" } };
constexpr std::array radioChips = { NamedByte{ 7, "u87" }, NamedByte{ 8, "tiny600" } };
constexpr std::array ears = { Named<bool>{ false, "left" }, Named<bool>{ true, "right" } };
constexpr std::array firmwareFailures = {
    Named<FirmwareFailure>{ FirmwareFailure::none, "none" },
    Named<FirmwareFailure>{ FirmwareFailure::init, "init" },
    Named<FirmwareFailure>{ FirmwareFailure::space, "space" },
    Named<FirmwareFailure>{ FirmwareFailure::sequence, "sequence" },
    Named<FirmwareFailure>{ FirmwareFailure::crc, "crc" },
    Named<FirmwareFailure>{ FirmwareFailure::boot, "boot" },
    Named<FirmwareFailure>{ FirmwareFailure::bootError, "bootError" },
};

constexpr std::size_t mostPrograms = 15; ///< a request names one in four bits, counted from 1
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
        visit.profile("profile", state.profile);
        visit.group("usage", state.usage, [](auto& inner, auto& usage) { ofUsage(inner, usage); });
        visit.group("firmware", state.firmware, [](auto& inner, auto& firmware) { ofFirmware(inner, firmware); });
    }
};

Data bytesOfText(const std::string& text) { return { text.begin(), text.end() }; }

struct Reading {
    WorldReader reader;

    void text(std::string_view key, std::string& value) { value = reader.text(key); }
    void flag(std::string_view key, bool& value) { value = reader.boolean(key, value); }

    template <typename Value> void choice(std::string_view key, Value& value, const auto& names)
    {
        value = reader.choice<Value>(key, value, names);
    }

    template <typename List> void numbers(std::string_view key, List& value, std::int64_t high)
    {
        const auto numbers = reader.integers(key, high);
        if (!numbers)
            return;
        if constexpr (requires { value.resize(0); })
            value.resize(numbers->size());
        else if (numbers->size() != value.size())
            failAt(reader.place(key), fmt::format("must be {} numbers", value.size()));
        std::transform(numbers->begin(), numbers->end(), value.begin(),
            [](std::int64_t number) { return typename List::value_type(number); });
    }

    void bytes(std::string_view key, Data& value) { value = reader.bytes(key).value_or(Data{}); }

    void byteLists(std::string_view key, std::vector<Data>& value)
    {
        reader.each(key,
            [&](const auto& element, const auto& place) { value.push_back(WorldReader::bytesOf(element, place)); });
    }

    void profile(std::string_view key, std::map<std::uint8_t, Data>& value)
    {
        group(key, value, [](Reading& inner, auto& fields) {
            for (const auto& field : auriskProfileFields())
                if (!inner.reader.find(field.name))
                    continue;
                else if (field.isText)
                    fields[field.number] = bytesOfText(inner.reader.text(field.name));
                else
                    inner.bytes(field.name, fields[field.number]);
        });
    }

    void byte(std::string_view key, std::uint8_t& value, int high, std::span<const NamedByte> names)
    {
        const auto* given = reader.find(key);
        if (given && given->is_string())
            value = reader.choice<std::uint8_t>(key, {}, names);
        else
            number(key, value, high);
    }

    template <typename Number> void number(std::string_view key, Number& value, std::int64_t high, std::int64_t low = 0)
    {
        value = Number(reader.integer(key, value, low, high));
    }

    template <typename Number> void number(std::string_view key, std::optional<Number>& value, std::int64_t high)
    {
        if (reader.find(key))
            number(key, value.emplace(), high);
    }

    template <typename Part> void part(std::string_view key, std::optional<Part>& value, auto visitMembers)
    {
        if (reader.find(key))
            group(key, value.emplace(), visitMembers);
    }

    template <typename Part> void group(std::string_view key, Part& value, auto visitMembers)
    {
        if (const auto* given = reader.find(key)) {
            Reading inner{ WorldReader(*given, reader.place(key)) };
            visitMembers(inner, value);
            inner.reader.finish();
        }
    }
};

struct Writing {
    nlohmann::json object = nlohmann::json::object();

    void text(const char* key, const std::string& value) { object[key] = value; }
    void flag(const char* key, bool value) { object[key] = value; }
    template <typename Value> void choice(const char* key, Value value, const auto& names)
    {
        object[key] = nameOf<Value>(value, names);
    }
    void numbers(const char* key, const auto& value, std::int64_t) { object[key] = value; }

    void bytes(const char* key, const Data& value)
    {
        if (!value.empty())
            object[key] = ask_hexadecimal(value);
    }

    void byteLists(const char* key, const std::vector<Data>& value)
    {
        auto list = nlohmann::json::array();
        for (const auto& bytes : value)
            list.push_back(ask_hexadecimal(bytes));
        object[key] = std::move(list);
    }

    void profile(const char* key, const std::map<std::uint8_t, Data>& value)
    {
        group(key, value, [](Writing& inner, const auto& fields) {
            for (const auto& field : auriskProfileFields())
                if (const auto found = fields.find(field.number); found == fields.end())
                    continue;
                else if (field.isText)
                    inner.text(field.name, { found->second.begin(), found->second.end() });
                else
                    inner.bytes(field.name, found->second);
        });
    }

    void byte(const char* key, std::uint8_t value, int, std::span<const NamedByte> names)
    {
        if (const auto name = nameOf(value, names); !name.empty())
            object[key] = name;
        else
            object[key] = value;
    }

    void number(const char* key, std::int64_t value, std::int64_t, std::int64_t = 0) { object[key] = value; }

    template <typename Number> void number(const char* key, const std::optional<Number>& value, std::int64_t)
    {
        if (value)
            object[key] = *value;
    }

    template <typename Part> void part(const char* key, const std::optional<Part>& value, auto visitMembers)
    {
        if (value)
            group(key, *value, visitMembers);
    }

    template <typename Part> void group(const char* key, const Part& value, auto visitMembers)
    {
        Writing inner;
        visitMembers(inner, value);
        object[key] = std::move(inner.object);
    }
};

bool isAddress(std::string_view text)
{
    constexpr std::string_view digits = "0123456789ABCDEF";
    for (std::size_t i = 0; i < text.size(); ++i)
        if (i % 3 == 2 ? text[i] != ':' : digits.find(text[i]) == std::string_view::npos)
            return false;
    return text.size() == 17;
}

void refuseBrokenRecords(const Data& records, std::size_t size, std::size_t most, const std::string& place)
{
    if (records.size() % size != 0 || records.size() > most)
        failAt(place, fmt::format("must be records of {} bytes, at most {}", size, most / size));
}

} // namespace

bool isRightByName(std::string_view name) { return name.ends_with("-R"); }

nlohmann::json toJson(const AuriskAidState& state)
{
    Writing writing;
    Members::ofState(writing, state);
    return std::move(writing.object);
}

AuriskAidState auriskAidStateFromJson(const nlohmann::json& value, const std::string& place)
{
    Reading reading{ WorldReader(value, place) };
    AuriskAidState state;
    state.isRight = isRightByName(reading.reader.text("name"));
    Members::ofState(reading, state);
    reading.reader.finish();

    const auto programs = state.volumes.size();
    if (state.name.empty())
        failAt(place + ".name", "must not be empty");
    if (!isAddress(state.address))
        failAt(place + ".address", "must look like 0A:1B:2C:3D:4E:5F, with capital letters");
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
