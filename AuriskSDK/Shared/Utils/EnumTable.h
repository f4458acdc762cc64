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

/// Whether the raw value of each case is its place in the table.
template <TabledEnum E> constexpr bool countsUpFromZero()
{
    for (std::size_t i = 0; i < enumCases<E>.size(); ++i)
        if (static_cast<std::size_t>(enumCases<E>[i].value) != i)
            return false;
    return true;
}

/// The name of a case in code, and its label where it has one.
struct CaseText {
    constexpr CaseText(const char* nameInCode, const char* labelForPeople = "")
        : name(nameInCode)
        , label(labelForPeople)
    {
    }
    std::string_view name;
    std::string_view label;
};

/// The table of an enumeration whose raw values count up from zero to `Last`, one text each.
template <auto Last, std::size_t Count> constexpr auto countingUp(const CaseText (&texts)[Count])
{
    using E = decltype(Last);
    static_assert(Count == static_cast<std::size_t>(Last) + 1, "one text for each case");
    std::array<EnumCase<E>, Count> rows{};
    for (std::size_t i = 0; i < Count; ++i)
        rows[i] = { static_cast<E>(i), texts[i].name, texts[i].label };
    return rows;
}

/// The case with that raw value; none where there is none.
template <TabledEnum E> constexpr std::optional<E> fromRawValue(long long raw)
{
    if constexpr (countsUpFromZero<E>()) {
        const bool isCase = raw >= 0 && static_cast<unsigned long long>(raw) < enumCases<E>.size();
        return isCase ? std::optional(static_cast<E>(raw)) : std::nullopt;
    }
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
