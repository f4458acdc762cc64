#include "AuriskSDK/Shared/Utils/HexToData.h"

namespace aurisk {

namespace {

std::optional<std::uint8_t> digitValue(char digit)
{
    if (digit >= '0' && digit <= '9')
        return std::uint8_t(digit - '0');
    if (digit >= 'a' && digit <= 'f')
        return std::uint8_t(digit - 'a' + 10);
    if (digit >= 'A' && digit <= 'F')
        return std::uint8_t(digit - 'A' + 10);
    return std::nullopt;
}

} // namespace

std::optional<Data> ask_hexadecimal(std::string_view text)
{
    Data bytes;
    bytes.reserve(text.size() / 2);
    std::optional<std::uint8_t> high; // the first digit of a pair, waiting for its second
    for (const char character : text) {
        const auto digit = digitValue(character);
        if (digit && high) {
            bytes.push_back(std::uint8_t(*high << 4 | *digit));
            high.reset();
        } else {
            if (high)
                bytes.push_back(*high);
            high = digit;
        }
    }
    if (high)
        bytes.push_back(*high);
    if (bytes.empty())
        return std::nullopt;
    return bytes;
}

std::string ask_hexadecimal(DataView bytes)
{
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const auto byte : bytes) {
        text += digits[byte >> 4];
        text += digits[byte & 0x0F];
    }
    return text;
}

} // namespace aurisk
