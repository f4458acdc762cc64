#include "Simulator/AuriskAidState.h"

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

constexpr std::size_t mostPrograms = 15; ///< a request names one in four bits, counted from 1
constexpr std::int64_t largestFrequency = 0xFFFF;
constexpr std::int64_t largestWord = std::numeric_limits<std::uint32_t>::max();

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
        visit.ear("ear", state.isRight);
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
    }
};

struct Reading {
    WorldReader reader;

    void text(std::string_view key, std::string& value) { value = reader.text(key); }
    void flag(std::string_view key, bool& value) { value = reader.boolean(key, value); }
    void ear(std::string_view key, bool& isRight) { isRight = reader.choice<bool>(key, isRight, ears); }
    void numbers(std::string_view key, std::vector<int>& value, int high)
    {
        value = reader.integers(key, value, 0, high);
    }

    void byte(std::string_view key, std::uint8_t& value, int high, std::span<const NamedByte> names)
    {
        const auto* given = reader.find(key);
        if (given && given->is_string())
            value = reader.choice<std::uint8_t>(key, {}, names);
        else
            number(key, value, high);
    }

    template <typename Number> void number(std::string_view key, Number& value, std::int64_t high)
    {
        value = Number(reader.integer(key, value, 0, high));
    }

    template <typename Number> void number(std::string_view key, std::optional<Number>& value, std::int64_t high)
    {
        if (reader.find(key))
            number(key, value.emplace(), high);
    }

    template <typename Part> void part(std::string_view key, std::optional<Part>& value, auto visitMembers)
    {
        if (const auto* given = reader.find(key)) {
            Reading inner{ WorldReader(*given, reader.place(key)) };
            visitMembers(inner, value.emplace());
            inner.reader.finish();
        }
    }
};

struct Writing {
    nlohmann::json object = nlohmann::json::object();

    void text(const char* key, const std::string& value) { object[key] = value; }
    void flag(const char* key, bool value) { object[key] = value; }
    void ear(const char* key, bool isRight) { object[key] = nameOf<bool>(isRight, ears); }
    void numbers(const char* key, const std::vector<int>& value, int) { object[key] = value; }

    void byte(const char* key, std::uint8_t value, int, std::span<const NamedByte> names)
    {
        if (const auto name = nameOf(value, names); !name.empty())
            object[key] = name;
        else
            object[key] = value;
    }

    void number(const char* key, std::int64_t value, std::int64_t) { object[key] = value; }

    template <typename Number> void number(const char* key, const std::optional<Number>& value, std::int64_t)
    {
        if (value)
            object[key] = *value;
    }

    template <typename Part> void part(const char* key, const std::optional<Part>& value, auto visitMembers)
    {
        if (!value)
            return;
        Writing inner;
        visitMembers(inner, *value);
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
    return state;
}

void validate(const AuriskAidState& state, const std::string& place) { auriskAidStateFromJson(toJson(state), place); }

} // namespace aurisk
