#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <type_traits>

namespace aurisk {

/// A row of an enumeration's table: its case, the name that the case has in code, and a label for people where it has
/// one.
template <typename E> struct EnumCase {
    E value;
    std::string_view name;
    std::string_view label = {};
};

/// The table of an enumeration, in the order of its declaration. Specialised beside each enumeration.
template <typename E> inline constexpr std::array<EnumCase<E>, 0> enumCases = {};

template <typename E>
concept TabledEnum = std::is_enum_v<E> &&(enumCases<E>.size() > 0);

template <TabledEnum E> constexpr const EnumCase<E>* enumCase(E value)
{
    for (const auto& row : enumCases<E>)
        if (row.value == value)
            return &row;
    return nullptr;
}

template <TabledEnum E> constexpr auto rawValue(E value) { return static_cast<std::underlying_type_t<E>>(value); }

/// The case with that raw value; none where there is none.
template <TabledEnum E> constexpr std::optional<E> fromRawValue(long long raw)
{
    for (const auto& row : enumCases<E>)
        if (static_cast<long long>(row.value) == raw)
            return row.value;
    return std::nullopt;
}

/// The case with that name in code; none where there is none.
template <TabledEnum E> constexpr std::optional<E> fromCaseName(std::string_view name)
{
    for (const auto& row : enumCases<E>)
        if (row.name == name)
            return row.value;
    return std::nullopt;
}

template <TabledEnum E> constexpr std::string_view caseName(E value)
{
    const auto* row = enumCase(value);
    return row ? row->name : std::string_view();
}

} // namespace aurisk
