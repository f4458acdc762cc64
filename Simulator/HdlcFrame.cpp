#include "Simulator/HdlcFrame.h"

#include <cstddef>

namespace aurisk {

namespace {

constexpr std::uint8_t start = 0x7E, escape = 0x7D, change = 0x20;
constexpr std::size_t lengthSize = 2;

} // namespace

Data HdlcFrame::notified() const
{
    Data value = { start };
    const auto append = [&value](std::uint8_t byte) {
        const bool isSpecial = byte == start || byte == escape;
        if (isSpecial)
            value.push_back(escape);
        value.push_back(isSpecial ? byte ^ change : byte);
    };
    append(std::uint8_t(payload.size() >> 8));
    append(std::uint8_t(payload.size()));
    append(command);
    for (const auto byte : payload)
        append(byte);
    return value;
}

std::vector<HdlcFrame> HdlcReceiver::receive(DataView piece)
{
    std::vector<HdlcFrame> frames;
    for (const auto byte : piece) {
        if (byte == start) {
            *this = {};
            _hasBegun = true;
        } else if (_hasBegun && byte == escape) {
            _isEscaped = true;
        } else if (_hasBegun) {
            _content.push_back(_isEscaped ? byte ^ change : byte);
            _isEscaped = false;
        }
        if (_content.size() < lengthSize)
            continue;
        const std::size_t length = _content[0] * 256u + _content[1];
        if (_content.size() < lengthSize + length)
            continue;
        if (length > 0) // else there is not even a command
            frames.push_back({ _content[lengthSize], Data(_content.begin() + lengthSize + 1, _content.end()) });
        *this = {};
    }
    return frames;
}

} // namespace aurisk
