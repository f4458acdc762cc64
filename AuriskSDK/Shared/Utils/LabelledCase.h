#pragma once

#include "AuriskSDK/Platform/Data.h"
#include "AuriskSDK/Shared/Utils/EnumTable.h"

#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <variant>

/// Enumerations whose cases carry values: one struct a case in a std::variant, each with `labels`, its name and its
/// members. Printing and JSON both read the labels.

namespace aurisk {

template <typename... Handlers> struct overloaded : Handlers... {
    using Handlers::operator()...;
};
template <typename... Handlers> overloaded(Handlers...) -> overloaded<Handlers...>;

/// The name of a case, and the label and place of each of its values.
template <typename... Members> struct CaseLabels {
    std::string_view name;
    std::tuple<std::pair<std::string_view, Members>...> members;

    /// Calls `visit(label, value)` for each value of `one`, in order.
    template <typename Case, typename Visit> constexpr void each(Case& one, Visit&& visit) const
    {
        std::apply([&](const auto&... member) { (visit(member.first, one.*member.second), ...); }, members);
    }
};

template <typename Member> constexpr std::pair<std::string_view, Member> label(std::string_view text, Member member)
{
    return { text, member };
}

template <typename... Members>
constexpr CaseLabels<Members...> labelled(std::string_view name, std::pair<std::string_view, Members>... members)
{
    return { name, { members... } };
}

template <typename T>
concept LabelledCase = requires
{
    T::labels.name;
};

inline std::string description(bool value) { return value ? "true" : "false"; }
inline std::string description(const std::string& text) { return '"' + text + '"'; }
inline std::string description(const Data& bytes) { return std::to_string(bytes.size()) + " bytes"; }
template <typename Number>
requires(std::is_integral_v<Number> && !std::is_same_v<Number, bool>) std::string description(Number value)
{
    return std::to_string(value);
}
template <TabledEnum E> std::string description(E value) { return std::string(caseName(value)); }
template <typename T> std::string description(const std::optional<T>& value)
{
    return value ? description(*value) : "nil";
}

/// A case as text: its name, and in brackets its labels and values, if it has any.
template <LabelledCase Case> std::string description(const Case& one)
{
    std::string values;
    Case::labels.each(one, [&](std::string_view text, const auto& value) {
        values += (values.empty() ? "" : ", ") + std::string(text) + ": " + description(value);
    });
    return std::string(Case::labels.name) + (values.empty() ? "" : "(" + values + ")");
}

template <typename... Cases> std::string description(const std::variant<Cases...>& value)
{
    return std::visit([](const auto& one) { return description(one); }, value);
}

} // namespace aurisk
