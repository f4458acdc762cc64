#pragma once

#include "AuriskSDK/Platform/Data.h"
#include "AuriskSDK/Shared/Utils/BitLayout.h"
#include "AuriskSDK/Shared/Utils/HexToData.h"
#include "AuriskSDK/Shared/Utils/JsonError.h"

#include <concepts>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

/// Structs as JSON objects, both ways, by the tables that list their fields: `layoutOf` a block, or `fields`. Byte
/// strings are hexadecimal text, absent values null. Whatever cannot be read is a JsonError.

namespace aurisk::json {

using Input = nlohmann::json;
using Output = nlohmann::ordered_json; ///< members stand in the order of their tables

/// A value as an error shows it: texts shortened, objects and lists not spelled out.
std::string shown(const Input& value);

/// Whether something in `value` lies below more than `levels` lists and objects. Copying and writing a value recurse as
/// deep as that.
bool isDeeper(const Input& value, int levels);

/// The number, where it is written as an integer and within the bounds.
std::int64_t readInteger(const Input& value, std::int64_t least, std::int64_t most);
bool readBoolean(const Input& value);
const std::string& readText(const Input& value);
Data readBytes(const Input& value); ///< an even number of hexadecimal digits and nothing else
void expectObject(const Input& value);

/// A type with a form of its own, made of its fields as a rule.
template <typename T>
concept HasForm = requires(const T& value, const Input& input)
{
    T::fromJson(input);
    value.toJson();
};

template <typename T> struct OptionalTraits : std::false_type {
};
template <typename T> struct OptionalTraits<std::optional<T>> : std::true_type {
};

template <typename T> T read(const Input& value)
{
    if constexpr (OptionalTraits<T>::value)
        return value.is_null() ? T() : read<typename T::value_type>(value);
    else if constexpr (HasForm<T>)
        return T::fromJson(value);
    else if constexpr (std::same_as<T, bool>)
        return readBoolean(value);
    else if constexpr (std::same_as<T, std::string>)
        return readText(value);
    else if constexpr (std::same_as<T, Data>)
        return readBytes(value);
    else {
        static_assert(std::integral<T> && sizeof(T) <= sizeof(std::int32_t));
        using Limits = std::numeric_limits<T>;
        return static_cast<T>(readInteger(value, Limits::min(), Limits::max()));
    }
}

template <typename T> Output write(const T& value)
{
    if constexpr (OptionalTraits<T>::value)
        return value ? write(*value) : Output();
    else if constexpr (HasForm<T>)
        return value.toJson();
    else if constexpr (std::same_as<T, Data>)
        return ask_hexadecimal(value);
    else
        return value; // a Boolean, a number or a text
}

/// Calls `visit(name, member)` for each field of `one`, in order.
template <typename T> void eachField(T& one, auto&& visit)
{
    using Struct = std::remove_const_t<T>;
    if constexpr (bits::BitBlock<Struct>)
        bits::eachMember<Struct>([&](const auto& part) { visit(part.name, part.member(one)); });
    else
        Struct::fields.each(one, visit);
}

/// The fields that the object names. The others have their defaults; what it names beside them is ignored.
template <typename T> T readFields(const Input& object)
{
    expectObject(object);
    T one;
    eachField(one, [&](std::string_view name, auto& member) {
        const auto found = object.find(name);
        if (found == object.end())
            return;
        try {
            member = read<std::decay_t<decltype(member)>>(*found);
        } catch (const JsonError& fault) {
            throw fault.below(name);
        }
    });
    return one;
}

template <typename T> Output writeFields(const T& one)
{
    auto object = Output::object();
    eachField(one, [&](std::string_view name, const auto& member) { object.emplace(name, write(member)); });
    return object;
}

} // namespace aurisk::json
