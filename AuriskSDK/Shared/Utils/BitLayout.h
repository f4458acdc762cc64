#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <tuple>
#include <type_traits>

/// Blocks of bit fields, each described once. A block is one little-endian bit stream: field after field from bit 0 of
/// byte 0, each with its least significant bit first; bit n of the stream is bit n mod 8 of byte n div 8. `layoutOf`
/// the block lists its fields in the order of the stream, and everything else reads that list.

namespace aurisk::bits {

template <typename Member> struct MemberTraits;
template <typename Block, typename T> struct MemberTraits<T Block::*> {
    using Owner = Block;
    using Type = T;
};

/// One member, `width` bits wide.
template <auto Member> struct Field {
    using Block = typename MemberTraits<decltype(Member)>::Owner;
    using Value = typename MemberTraits<decltype(Member)>::Type;

    std::string_view name;
    unsigned width;
    std::optional<Value> fallback = {}; ///< taken where the bits name no case; without one they cannot be decoded

    constexpr Field orElse(Value value) const { return { name, width, value }; }
    static constexpr bool isList = false;
    static constexpr bool beginsMember() { return true; }
    constexpr unsigned bitCount() const { return width; }
    static constexpr auto& member(auto& block) { return block.*Member; }
    constexpr void each(auto& block, auto&& visit) const { visit(*this, block.*Member); }
};

/// The elements first ... last of an array member, `width` bits each.
template <auto Member> struct Bands {
    using Block = typename MemberTraits<decltype(Member)>::Owner;
    using Value = typename MemberTraits<decltype(Member)>::Type::value_type;

    std::string_view name;
    unsigned width;
    std::size_t first;
    std::size_t last;
    std::optional<Value> fallback = {};

    constexpr Bands orElse(Value value) const { return { name, width, first, last, value }; }
    static constexpr bool isList = true;
    constexpr bool beginsMember() const { return first == 0; }
    constexpr unsigned bitCount() const { return width * static_cast<unsigned>(last - first + 1); }
    static constexpr auto& member(auto& block) { return block.*Member; }
    constexpr void each(auto& block, auto&& visit) const
    {
        for (auto i = first; i <= last; ++i)
            visit(*this, (block.*Member)[i]);
    }
};

/// A std::tuple of Field, Bands and Inner in the order of the stream. Specialised beside each block.
template <typename Block> inline constexpr std::nullptr_t layoutOf = nullptr;

template <typename Block>
concept BitBlock = !std::is_same_v<decltype(layoutOf<Block>), const std::nullptr_t>;

/// Calls `visit(part)` for each part of the stream, in order.
template <BitBlock Block> constexpr void eachPart(auto&& visit)
{
    std::apply([&](const auto&... part) { (visit(part), ...); }, layoutOf<Block>);
}

/// Calls `visit(part)` once for each member: `part` is the first part of the stream that holds bits of it.
template <BitBlock Block> constexpr void eachMember(auto&& visit)
{
    eachPart<Block>([&](const auto& part) {
        if (part.beginsMember())
            visit(part);
    });
}

template <BitBlock Block> constexpr unsigned bitCount()
{
    unsigned count = 0;
    eachPart<Block>([&](const auto& part) { count += part.bitCount(); });
    return count;
}

/// The stream's bit at which the member begins.
template <BitBlock Block> constexpr unsigned bitOf(std::string_view name)
{
    unsigned bit = 0, begin = bitCount<Block>();
    eachPart<Block>([&](const auto& part) {
        if (part.name == name && part.beginsMember())
            begin = bit;
        bit += part.bitCount();
    });
    return begin;
}

/// A member that is a block itself.
template <auto Member> struct Inner {
    using Block = typename MemberTraits<decltype(Member)>::Owner;
    using Value = typename MemberTraits<decltype(Member)>::Type;

    std::string_view name;

    static constexpr bool isList = false;
    static constexpr bool beginsMember() { return true; }
    constexpr unsigned bitCount() const { return bits::bitCount<Value>(); }
    static constexpr auto& member(auto& block) { return block.*Member; }
    constexpr void each(auto& block, auto&& visit) const
    {
        eachPart<Value>([&](const auto& part) { part.each(block.*Member, visit); });
    }
};

} // namespace aurisk::bits
