#pragma once

#include "AuriskSDK/Platform/Data.h"
#include "AuriskSDK/Shared/Utils/LabelledCase.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

/// The settings of a program are six blocks of sixteen bytes, one byte a field, in the order of each block's `fields`.

namespace aurisk {

constexpr std::size_t pl3BlockSize = 16;

/// Fills the fields from the first sixteen bytes. Those whose bytes are missing stay as they are.
template <typename Block> void fillPL3Block(Block& block, DataView data)
{
    Block::fields.each(block, [&](std::string_view, std::uint8_t& field) {
        if (data.empty())
            return;
        field = data.front();
        data = data.subspan(1);
    });
}

/// The sixteen bytes of a block.
template <typename Block> Data pl3BlockData(const Block& block)
{
    Data data;
    data.reserve(pl3BlockSize);
    Block::fields.each(block, [&](std::string_view, std::uint8_t field) { data.push_back(field); });
    return data;
}

/// The entry of a display table. An index beyond it is a broken precondition; `what` names the table then.
std::string_view pl3Description(std::span<const std::string_view> table, std::uint8_t index, std::string_view what);

/// The shape of four of the blocks: a number for each of sixteen channels.
struct PL3Channels {
    std::uint8_t ch1 = 0, ch2 = 0, ch3 = 0, ch4 = 0, ch5 = 0, ch6 = 0, ch7 = 0, ch8 = 0;
    std::uint8_t ch9 = 0, ch10 = 0, ch11 = 0, ch12 = 0, ch13 = 0, ch14 = 0, ch15 = 0, ch16 = 0;

    static constexpr auto fields = labelled("PL3Channels", label("ch1", &PL3Channels::ch1),
        label("ch2", &PL3Channels::ch2), label("ch3", &PL3Channels::ch3), label("ch4", &PL3Channels::ch4),
        label("ch5", &PL3Channels::ch5), label("ch6", &PL3Channels::ch6), label("ch7", &PL3Channels::ch7),
        label("ch8", &PL3Channels::ch8), label("ch9", &PL3Channels::ch9), label("ch10", &PL3Channels::ch10),
        label("ch11", &PL3Channels::ch11), label("ch12", &PL3Channels::ch12), label("ch13", &PL3Channels::ch13),
        label("ch14", &PL3Channels::ch14), label("ch15", &PL3Channels::ch15), label("ch16", &PL3Channels::ch16));

    PL3Channels() = default;
    explicit PL3Channels(DataView data) { fillPL3Block(*this, data); }
    Data toData() const { return pl3BlockData(*this); }

    friend bool operator==(const PL3Channels&, const PL3Channels&) = default;
};

} // namespace aurisk
