#pragma once

#include "Tools/aurisk/CodecJson.h"

#include "AuriskSDK/Shared/Utils/BitLayout.h"

#include <fmt/format.h>

#include <functional>

/// The members of settings blocks as JSON, both ways, by the tables that describe the blocks.

namespace aurisk::codec {

enum class EnumerationsAs { rawValues, caseNames };

template <typename Value> Answer valueToJson(Value value, EnumerationsAs form)
{
    if constexpr (TabledEnum<Value>) {
        if (form == EnumerationsAs::caseNames)
            return caseName(value);
        return rawValue(value);
    } else
        return value;
}

/// The value of one member: a number or a case name, or a list of them.
template <typename Part, typename Block> Answer memberToJson(const Part& part, const Block& block, EnumerationsAs form)
{
    if constexpr (Part::isList) {
        auto list = Answer::array();
        for (const auto value : part.member(block))
            list.push_back(valueToJson(value, form));
        return list;
    } else
        return valueToJson(part.member(block), form);
}

template <bits::BitBlock Block> Answer membersToJson(const Block& block, EnumerationsAs form)
{
    auto object = Answer::object();
    bits::eachMember<Block>([&](const auto& part) { object.emplace(part.name, memberToJson(part, block, form)); });
    return object;
}

/// A number, or for an enumeration the raw value of a case or, where `form` says so, its name.
template <typename Value> Value readValue(const Json& value, const Place& place, EnumerationsAs form)
{
    if constexpr (TabledEnum<Value>)
        if (form == EnumerationsAs::caseNames && value.is_string())
            return readCaseName<Value>(value, place);
    const auto number = read<int>(value, place);
    if constexpr (TabledEnum<Value>) {
        const auto found = fromRawValue<Value>(number);
        if (!found)
            throw Unusable(place, fmt::format("{} is the raw value of no case", number));
        return *found;
    } else
        return number;
}

/// What sets one member of a block to a value that has been read. A list of the wrong length breaks a precondition when
/// it is set, not when it is read.
template <typename Block> using Setter = std::function<void(Block&)>;

template <typename Block, typename Part>
Setter<Block> readMember(const Part& part, const Json& value, const Place& place, EnumerationsAs form)
{
    using Value = typename Part::Value;
    if constexpr (Part::isList) {
        if (!value.is_array())
            throw Unusable(place, shown(value) + " is no list");
        std::vector<Value> values;
        for (const auto& element : value)
            values.push_back(readValue<Value>(element, place, form));
        return [name = part.name, values = std::move(values)](Block& block) {
            auto& array = Part::member(block);
            precondition(
                values.size() == array.size(), "{}: {} values where {} are needed", name, values.size(), array.size());
            std::copy(values.begin(), values.end(), array.begin());
        };
    } else
        return [set = readValue<Value>(value, place, form)](Block& block) { Part::member(block) = set; };
}

/// The setter of the member with that name. Throws Unusable where there is none.
template <bits::BitBlock Block>
Setter<Block> readNamedMember(std::string_view name, const Json& value, const Place& place, EnumerationsAs form)
{
    Setter<Block> setter;
    bits::eachMember<Block>([&](const auto& part) {
        if (part.name == name)
            setter = readMember<Block>(part, value, place, form);
    });
    if (!setter)
        throw Unusable(place, shown(std::string(name)) + " is the name of no field");
    return setter;
}

/// Sets the members that an object names. Every one is read before the first is set.
template <bits::BitBlock Block>
void setMembers(Block& block, const Json& object, const Place& place, EnumerationsAs form)
{
    const Members members(object, &place);
    std::vector<Setter<Block>> setters;
    for (const auto& [name, value] : object.items())
        setters.push_back(readNamedMember<Block>(name, value, Place{ name, &place }, form));
    for (const auto& set : setters)
        set(block);
}

} // namespace aurisk::codec
