#include "AuriskSDK/HearingAid/Vortilex/Data/HDLC.h"

#include "AuriskSDK/Shared/Utils/Precondition.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

namespace aurisk {

namespace {

constexpr std::string_view delimiterChars = " ,.:";

bool isMark(std::uint8_t byte) { return byte == CHDLC::kEscapeChar || byte == CHDLC::kFrameStart; }

/// Does not stop at the first mark, so that a compiler can look at sixteen bytes at a time.
bool hasMark(DataView bytes)
{
    std::uint8_t has = 0;
    for (const auto byte : bytes)
        has |= std::uint8_t{ isMark(byte) };
    return has != 0;
}

/// How many bytes at the front of `data` travel as they are. Marks are rare: most stretches have none.
std::size_t plainRun(DataView data)
{
    constexpr std::size_t stretch = 128;
    auto rest = data;
    while (!rest.empty() && !isMark(rest.front())) {
        const auto next = rest.first(std::min(rest.size(), stretch));
        if (hasMark(next))
            break;
        rest = rest.subspan(next.size());
    }
    const auto mark = std::find_if(rest.begin(), rest.end(), isMark);
    return data.size() - static_cast<std::size_t>(rest.end() - mark);
}

struct HexadecimalNumber {
    std::uint32_t value = 0; ///< 256 where it is larger than a byte
    std::size_t length = 0; ///< of its text
};

/// The number at the front of `text`; none where there is none.
std::optional<HexadecimalNumber> hexadecimalNumber(std::string_view text)
{
    const bool hasPrefix = text.starts_with("0x") || text.starts_with("0X");
    const auto* const begin = text.data() + (hasPrefix ? 2 : 0);
    const auto* const end = text.data() + text.size();
    HexadecimalNumber number;
    const auto [rest, error] = std::from_chars(begin, end, number.value, 16);
    if (error == std::errc::invalid_argument)
        return std::nullopt;
    if (error == std::errc::result_out_of_range)
        number.value = 256;
    number.length = static_cast<std::size_t>(rest - text.data());
    return number;
}

std::uint8_t asByte(const HexadecimalNumber& number, std::string_view text)
{
    precondition(number.value <= 0xFF, "{} is more than a byte", text);
    return static_cast<std::uint8_t>(number.value);
}

std::string_view withoutLeadingDelimiters(std::string_view text)
{
    return text.substr(std::min(text.find_first_not_of(delimiterChars), text.size()));
}

std::string_view trimmed(std::string_view text)
{
    text = withoutLeadingDelimiters(text);
    return text.substr(0, text.find_last_not_of(delimiterChars) + 1);
}

std::string formatText(std::size_t count)
{
    std::string text;
    while (count-- > 0)
        text += "{0:x2}";
    return text;
}

} // namespace

// Sending

void CHDLC::create(std::uint8_t command, DataView payload, bool read)
{
    begin(static_cast<std::uint8_t>(read ? command | kReadFlag : command), payload.size());
    while (!payload.empty()) {
        const auto run = plainRun(payload);
        _dataSent.insert(_dataSent.end(), payload.begin(), payload.begin() + static_cast<std::ptrdiff_t>(run));
        payload = payload.subspan(run);
        if (!payload.empty()) {
            append(payload.front());
            payload = payload.subspan(1);
        }
    }
}

bool CHDLC::create(std::string_view command, std::string_view payload)
{
    command = withoutLeadingDelimiters(command);
    const auto number = hexadecimalNumber(command);
    if (!number)
        return false;
    const auto commandByte = asByte(*number, command);
    payload = trimmed(payload);
    const auto separators = std::count_if(
        payload.begin(), payload.end(), [](char one) { return delimiterChars.find(one) != delimiterChars.npos; });
    begin(commandByte, payload.empty() ? 0 : static_cast<std::size_t>(separators) + 1);

    while (!payload.empty()) {
        const auto piece = payload.substr(0, payload.find_first_of(delimiterChars));
        payload.remove_prefix(std::min(piece.size() + 1, payload.size()));
        const auto byte = hexadecimalNumber(piece);
        if (!byte || byte->length != piece.size())
            return false;
        append(asByte(*byte, piece));
    }
    return true;
}

/// Everything in front of the payload.
void CHDLC::begin(std::uint8_t command, std::size_t payloadSize)
{
    const auto low = exactly<std::uint8_t>(payloadSize + 1, "length of a frame");
    _dataSent.clear();
    _dataSent.reserve(payloadSize + payloadSize / 8 + 8);
    _dataSent.push_back(kFrameStart);
    _bytesSent = 0;
    _lengthSent = low;
    _commandSent = command;
    append(highByte(_lengthSent));
    append(low);
    append(command);
}

void CHDLC::append(std::uint8_t byte)
{
    if (isMark(byte)) {
        _dataSent.push_back(kEscapeChar);
        byte ^= kEscapeXOR;
    }
    _dataSent.push_back(byte);
}

Data CHDLC::getHDLC()
{
    const auto rest = DataView(_dataSent).subspan(_bytesSent);
    const auto piece = rest.first(std::min(rest.size(), kBLEPacketLength));
    _bytesSent += piece.size();
    return { piece.begin(), piece.end() };
}

std::uint8_t CHDLC::lowByte(std::uint16_t length) { return exactly<std::uint8_t>(length, "low byte of a length"); }

std::string CHDLC::getSentDataString() const { return formatText(_dataSent.size()); }

// Receiving

/// What one call of `parse` knows of the frame that it is in.
struct CHDLC::Receiver {
    enum class Expects { lengthHigh, lengthLow, command, payload, nothing };

    CHDLC& frame;
    Expects next = Expects::lengthHigh;
    std::uint16_t taken = 0; ///< payload bytes, of all frames in this call

    void start()
    {
        frame._lengthRcvd = 0;
        frame._commandRcvd = 0;
        frame._dataRcvd.clear();
        next = Expects::lengthHigh;
    }

    void take(std::uint8_t byte)
    {
        switch (next) {
        case Expects::lengthHigh:
            frame._lengthRcvd = static_cast<std::uint16_t>(byte << 8);
            next = Expects::lengthLow;
            break;
        case Expects::lengthLow:
            frame._lengthRcvd |= byte;
            next = Expects::command;
            break;
        case Expects::command:
            frame._commandRcvd = byte & static_cast<std::uint8_t>(~kReadFlag);
            next = Expects::payload;
            break;
        case Expects::payload: takePayload(DataView(&byte, 1)); break;
        case Expects::nothing: break;
        }
    }

    void takePayload(DataView bytes)
    {
        frame._dataRcvd.insert(frame._dataRcvd.end(), bytes.begin(), bytes.end());
        taken = static_cast<std::uint16_t>(taken + bytes.size());
        next = frame._lengthRcvd > taken ? Expects::payload : Expects::nothing;
    }

    /// How many bytes are payload for sure.
    std::size_t wanted() const
    {
        return next == Expects::payload && frame._lengthRcvd > taken ? frame._lengthRcvd - taken : 0u;
    }
};

void CHDLC::parse(DataView data)
{
    Receiver receiver{ *this };
    bool isEscaped = false;
    while (!data.empty()) {
        const auto run = isEscaped ? 0 : plainRun(data.first(std::min(data.size(), receiver.wanted())));
        if (run > 0) {
            receiver.takePayload(data.first(run));
            data = data.subspan(run);
            continue;
        }
        const auto byte = data.front();
        data = data.subspan(1);
        if (byte == kEscapeChar)
            isEscaped = true;
        else if (byte == kFrameStart) // the next byte is escaped still where this one was, deliberately
            receiver.start();
        else
            receiver.take(static_cast<std::uint8_t>(std::exchange(isEscaped, false) ? byte ^ kEscapeXOR : byte));
    }
}

std::string CHDLC::getRcvdDataString() const { return formatText(_dataRcvd.size()); }

} // namespace aurisk
