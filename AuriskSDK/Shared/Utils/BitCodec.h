#pragma once

#include "AuriskSDK/Platform/Data.h"
#include "AuriskSDK/Shared/Utils/BitLayout.h"
#include "AuriskSDK/Shared/Utils/EnumTable.h"
#include "AuriskSDK/Shared/Utils/Precondition.h"

#include <cstdint>
#include <string>
#include <utility>

/// Encodes and decodes what `layoutOf` describes. The one place that shifts bits.

namespace aurisk::bits {

class BitWriter {
public:
    /// `size`: of all that will be put, in bytes.
    explicit BitWriter(std::size_t size)
        : _bytes(size)
        , _next(_bytes.begin())
    {
    }

    /// Appends the low `width` bits of `value`.
    void put(std::uint64_t value, unsigned width)
    {
        _pending |= value << _count;
        for (_count += width; _count >= 8; _count -= 8, _pending >>= 8)
            *_next++ = static_cast<std::uint8_t>(_pending);
    }

    Data take() && { return std::move(_bytes); }

private:
    Data _bytes;
    Data::iterator _next;
    std::uint64_t _pending = 0; ///< the last `_count` bits, which fill no byte yet
    unsigned _count = 0;
};

class BitReader {
public:
    /// `bytes` hold all that will be taken.
    explicit BitReader(DataView bytes)
        : _next(bytes.begin())
    {
    }

    std::uint64_t take(unsigned width)
    {
        for (; _count < width; _count += 8)
            _pending |= std::uint64_t{ *_next++ } << _count;
        const auto value = _pending & ((std::uint64_t{ 1 } << width) - 1);
        _pending >>= width;
        _count -= width;
        return value;
    }

private:
    DataView::iterator _next;
    std::uint64_t _pending = 0;
    unsigned _count = 0;
};

/// The bits of a value. One that does not fit its field, or names no case, is a broken precondition: rather that than
/// a spoilt neighbour.
template <typename Part> std::uint64_t toBits(const Part& part, typename Part::Value value)
{
    const auto number = static_cast<std::int64_t>(value);
    precondition(
        number >= 0 && number >> part.width == 0, "{}: {} does not fit in {} bits", part.name, number, part.width);
    if constexpr (std::is_enum_v<typename Part::Value>)
        precondition(fromRawValue<typename Part::Value>(number).has_value(), "{}: {} names no case", part.name, number);
    return static_cast<std::uint64_t>(number);
}

/// None where the bits name no case and the field has no fallback.
template <typename Part> std::optional<typename Part::Value> fromBits(const Part& part, std::uint64_t number)
{
    using Value = typename Part::Value;
    if constexpr (std::is_enum_v<Value>) {
        const auto value = fromRawValue<Value>(static_cast<long long>(number));
        return value ? value : part.fallback;
    } else
        return static_cast<Value>(number);
}

/// The bytes of a block. A member that does not fit its field is a broken precondition that names it.
template <BitBlock Block> Data encode(const Block& block)
{
    static_assert(bitCount<Block>() % 8 == 0);
    BitWriter out(bitCount<Block>() / 8);
    eachPart<Block>([&](const auto& part) {
        part.each(block, [&](const auto& field, const auto& value) { out.put(toBits(field, value), field.width); });
    });
    return std::move(out).take();
}

/// The block with each number cut to the low bits that its field holds.
template <BitBlock Block> Block lowBits(Block block)
{
    eachPart<Block>([&](const auto& part) {
        part.each(block, [](const auto& field, auto& value) {
            value = static_cast<std::decay_t<decltype(value)>>(value & ((1U << field.width) - 1));
        });
    });
    return block;
}

/// Fills `block`, which is of no use where that fails. Returns why it failed; empty: it did not. Bytes past the
/// block's end are ignored.
template <BitBlock Block> std::string decode(DataView bytes, Block& block)
{
    constexpr auto size = bitCount<Block>() / 8;
    if (bytes.size() < size)
        return fmt::format("a block of {} bytes was given {}", size, bytes.size());
    std::string fault;
    BitReader in(bytes);
    eachPart<Block>([&](const auto& part) {
        part.each(block, [&](const auto& field, auto& value) {
            const auto number = in.take(field.width);
            if (const auto decoded = fromBits(field, number))
                value = *decoded;
            else if (fault.empty())
                fault = fmt::format("{}: {} names no case", field.name, number);
        });
    });
    return fault;
}

/// The block that `bytes` hold. Where they hold none, that is a broken precondition.
template <BitBlock Block> Block decoded(DataView bytes)
{
    Block block;
    const auto fault = decode(bytes, block);
    precondition(fault.empty(), "{}", fault);
    return block;
}

/// None where `bytes` hold no block.
template <BitBlock Block> std::optional<Block> decodedIfAny(DataView bytes)
{
    Block block;
    return decode(bytes, block).empty() ? std::optional(block) : std::nullopt;
}

} // namespace aurisk::bits
