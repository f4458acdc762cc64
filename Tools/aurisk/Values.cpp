#include "Tools/aurisk/Values.h"

#include "AuriskSDK/HearingAid/Vortilex/Data/HDLC.h"
#include "AuriskSDK/Shared/Utils/HexToData.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>

namespace aurisk::tool {

namespace {

template <typename... Arguments>
[[noreturn]] void refuse(fmt::format_string<Arguments...> sentence, Arguments&&... arguments)
{
    throw UsageError(fmt::format(sentence, std::forward<Arguments>(arguments)...));
}

bool isAll(std::string_view text, std::string_view characters)
{
    return !text.empty() && text.find_first_not_of(characters) == text.npos;
}

} // namespace

int wholeNumber(std::string_view place, std::string_view text, Range range)
{
    const auto digits = text.substr(text.starts_with('-') ? 1 : 0);
    if (!isAll(digits, "0123456789"))
        refuse("{}: {} is no whole number", place, inQuotes(text));
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || value < range.low || value > range.high)
        refuse("{}: {} is outside {} to {}", place, text, range.low, range.high);
    return value;
}

Seconds timeSpan(std::string_view place, std::string_view text)
{
    constexpr double shortest = 0.001, longest = 86400;
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::invalid_argument || end != text.data() + text.size() || std::isnan(value))
        refuse("{}: {} is no number of seconds", place, inQuotes(text));
    if (error != std::errc() || value < shortest || value > longest)
        refuse("{}: {} is outside {} to {} seconds", place, text, shortest, longest);
    return Seconds(value);
}

std::optional<bool> onOrOff(std::string_view text)
{
    if (text == "on")
        return true;
    if (text == "off")
        return false;
    return std::nullopt;
}

Data bytes(std::string_view place, std::string_view text)
{
    if (!isAll(text, "0123456789abcdefABCDEF"))
        refuse("{}: {} is not hexadecimal", place, inQuotes(text));
    if (text.size() % 2 != 0)
        refuse("{}: {} has {} hexadecimal digits, an even number is needed", place, inQuotes(text), text.size());
    return *ask_hexadecimal(text);
}

namespace {

/// Takes a whole frame apart, and says what is wrong where something is.
AuriskRawData wholeFrame(const Data& given)
{
    constexpr std::size_t head = 4, tail = 2, identifiers = 2;
    if (given.size() < head + identifiers + tail)
        refuse("frame: {} bytes, a whole frame has at least 8 (FE 68 cmd size di0 di1 checksum 16)", given.size());
    if (given.size() != head + given[3] + tail)
        refuse("frame: its size byte says {}, but {} bytes lie between it and the checksum", given[3],
            given.size() - head - tail);
    if (given.back() != AuriskRawData::end)
        refuse("frame: it ends with {:02X}, not with {:02X}", given.back(), AuriskRawData::end);

    auto frame = AuriskRawData::make(
        given[2], given[4], given[5], Data(given.begin() + 6, given.end() - std::ptrdiff_t(tail)));
    const auto right = frame.toData();
    if (right != given)
        refuse("frame: its checksum is {:02X}, {:02X} is needed", given[given.size() - 2], right[right.size() - 2]);
    return frame;
}

} // namespace

AuriskRawData frame(const Data& given)
{
    constexpr std::size_t identifiers = 3, longestPayload = 253;
    if (given.size() >= 2 && given[0] == AuriskRawData::head && given[1] == AuriskRawData::begin)
        return wholeFrame(given);
    if (given.size() < identifiers)
        refuse("frame: {} byte(s), at least cmd di0 di1 are needed", given.size());
    if (given.size() > identifiers + longestPayload)
        refuse("frame: a payload of {} bytes, at most {} fit", given.size() - identifiers, longestPayload);
    return AuriskRawData::make(given[0], given[1], given[2], Data(given.begin() + identifiers, given.end()));
}

PL3Request pl3Request(const Data& given)
{
    CHDLC heard, expected;
    heard.parse(given);
    const auto command = fromRawValue<PL3Command>(heard.rcvdCommand());
    const auto& payload = heard.rcvdPayload();
    if (given.empty() || given.front() != CHDLC::kFrameStart || payload.size() > CHDLC::longestPayload)
        refuse("frame: PL3 hearing aids take 7E, the length in two bytes, the command and at most {} bytes of payload",
            CHDLC::longestPayload);
    for (const bool read : { false, true }) {
        expected.create(heard.rcvdCommand(), payload, read);
        if (expected.getHDLCAll() != given)
            continue;
        if (!command || command == PL3Command::unknown)
            refuse("frame: {:02x} is no command of PL3 hearing aids, which are 00 to 13", heard.rcvdCommand());
        if (payload.empty() && !read)
            refuse(
                "frame: it writes, and has nothing to write ({:02x} reads)", expected.sentCommand() | CHDLC::kReadFlag);
        return { .command = *command, .data = payload.empty() ? std::nullopt : std::optional(payload), .read = read };
    }
    refuse("frame: its length does not count command and payload, or a 7D or 7E in it is not escaped");
}

void expectFrame(const Data& given)
{
    if (!given.empty() && given.front() == CHDLC::kFrameStart)
        pl3Request(given);
    else
        frame(given);
}

std::string inQuotes(std::string_view text) { return '"' + printable(text) + '"'; }

bool isSameInEitherCase(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
        [](unsigned char x, unsigned char y) { return std::tolower(x) == std::tolower(y); });
}

std::vector<std::string>::const_iterator findName(const std::vector<std::string>& names, std::string_view wanted)
{
    if (const auto exact = std::find(names.begin(), names.end(), wanted); exact != names.end())
        return exact;
    return std::find_if(
        names.begin(), names.end(), [&](const std::string& name) { return isSameInEitherCase(name, wanted); });
}

std::string printable(std::string_view text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const auto next = i + 1 < text.size() ? static_cast<unsigned char>(text[i + 1]) : 0;
        const bool isC1 = byte == 0xC2 && next >= 0x80 && next < 0xA0; // U+0080 to U+009F
        if (byte < 0x20 || byte == 0x7F || isC1) {
            result += '?';
            i += isC1 ? 1 : 0;
        } else
            result += text[i];
    }
    return result;
}

} // namespace aurisk::tool
