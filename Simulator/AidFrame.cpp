#include "Simulator/AidFrame.h"

#include <numeric>

namespace aurisk {

namespace {

constexpr std::uint8_t head = 0xFE, begin = 0x68, tail = 0x16;

std::uint8_t sum(DataView bytes) { return std::uint8_t(std::accumulate(bytes.begin(), bytes.end(), 0u)); }

} // namespace

std::optional<AidFrame> AidFrame::parse(DataView written)
{
    constexpr std::size_t around = 6; // head, begin, command, size; sum, tail
    const auto size = written.size();
    if (size < around || written[0] != head || written[1] != begin || written[size - 1] != tail)
        return std::nullopt;
    if (written[3] != size - around || sum(written.subspan(1, size - 3)) != written[size - 2])
        return std::nullopt;
    return AidFrame{ written[2], Data(written.begin() + 4, written.end() - 2) };
}

Data AidFrame::notified() const
{
    Data value = body;
    value.insert(value.begin(), { 0x00, head, begin, command, std::uint8_t(body.size()) });
    value.push_back(sum(DataView(value).subspan(2)));
    value.push_back(tail);
    return value;
}

std::uint64_t littleEndian(DataView bytes)
{
    std::uint64_t number = 0;
    for (auto i = bytes.size(); i > 0; --i)
        number = number << 8 | bytes[i - 1];
    return number;
}

} // namespace aurisk
