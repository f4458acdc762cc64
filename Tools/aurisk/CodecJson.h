#pragma once

#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskDsp.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskGlobalDsp.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskManuData.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskRawData.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskResult.h"
#include "AuriskSDK/Shared/Utils/JsonFields.h"
#include "AuriskSDK/Shared/Utils/LabelledCase.h"
#include "AuriskSDK/Shared/Utils/Precondition.h"

#include <nlohmann/json.hpp>

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>

/// The library's values as JSON, both ways. Byte strings are hexadecimal text, absent values null, enumerations the
/// names of their cases; a case with values is `{"readVolume": {"program": 0}}`, a struct an object of its fields.

namespace aurisk::codec {

using Json = nlohmann::json; ///< what is read
using Answer = nlohmann::ordered_json; ///< what is written: members stand in the order of their declaration

/// Where a value stands in its line: its name, and the place of the object that holds it. Lives while it is read.
struct Place {
    std::string_view name;
    const Place* outer = nullptr;

    std::string path() const; ///< `request.readVolume.program`
};

/// Why a line cannot be used.
class Unusable : public std::runtime_error {
public:
    explicit Unusable(const std::string& text)
        : std::runtime_error(text)
    {
    }

    /// `member "request.readVolume.program": 1.5 is no integer`
    Unusable(const Place& place, std::string_view fault);

    /// The same, where the library found the fault.
    Unusable(const Place& place, const JsonError& fault);
};

using json::OptionalTraits;
using json::shown;

/// The value of a member as a `T`. Throws Unusable where it is none.
template <typename T> T read(const Json& value, const Place& place);

/// An object, each member of which that is asked for has to be there.
class Members {
public:
    /// The object at `place`; the whole line where there is no place. Throws Unusable where `value` is none.
    explicit Members(const Json& value, const Place* place = nullptr);

    template <typename T> T get(std::string_view name) const
    {
        const Place place{ name, _place };
        return read<T>(at(place), place);
    }

    /// The member as it stands. Throws Unusable where there is none.
    const Json& at(const Place& place) const;

private:
    const Json& _object;
    const Place* _place;
};

/// An object of one member, whose name says what its value is.
struct Named {
    std::string_view name;
    const Json& value;
};
Named onlyMember(const Json& value, const Place& place);

/// The number, where it is written as an integer and within the bounds.
std::int64_t readInteger(const Json& value, const Place& place, std::int64_t least, std::int64_t most);

template <typename T> struct ArrayTraits : std::false_type {
};
template <typename T, std::size_t Count> struct ArrayTraits<std::array<T, Count>> : std::true_type {
};

template <typename T>
concept HasFields = requires
{
    T::fields.members;
};

template <typename T>
concept HasCases = requires
{
    typename T::Case;
};

template <TabledEnum E> E readCaseName(const Json& value, const Place& place)
{
    if (const auto found = fromCaseName<E>(read<std::string>(value, place)))
        return *found;
    std::string names;
    for (const auto& row : enumCases<E>)
        names += (names.empty() ? "" : ", ") + std::string(row.name);
    throw Unusable(place, shown(value) + " is none of " + names);
}

/// The values of one case. A line that cannot be used is just that, whatever else it breaks: so a precondition that one
/// value breaks waits until the others have been read.
template <LabelledCase Case> Case readValues(const Json& value, const Place& place)
{
    const Members members(value, &place);
    Case one;
    std::optional<PreconditionStop> stop;
    Case::labels.each(one, [&](std::string_view name, auto& member) {
        try {
            member = members.get<std::decay_t<decltype(member)>>(name);
        } catch (const PreconditionStop& broken) {
            stop = broken;
        }
    });
    if (stop)
        throw *stop;
    return one;
}

/// One of the cases of `T`.
template <typename T, typename... Cases>
T readCase(const Json& value, const Place& place, std::type_identity<std::variant<Cases...>>)
{
    const auto member = onlyMember(value, place);
    const Place inside{ member.name, &place };
    std::optional<T> found;
    const auto take = [&]<typename Case>(std::type_identity<Case>) {
        if (Case::labels.name == member.name)
            found = readValues<Case>(member.value, inside);
        return found.has_value();
    };
    if (!(take(std::type_identity<Cases>()) || ...))
        throw Unusable(place, shown(std::string(member.name)) + " is the name of no case");
    return *std::move(found);
}

template <typename T> T read(const Json& value, const Place& place)
{
    if constexpr (OptionalTraits<T>::value)
        return value.is_null() ? T() : read<typename T::value_type>(value, place);
    else if constexpr (TabledEnum<T>)
        return readCaseName<T>(value, place);
    else if constexpr (HasCases<T>)
        return readCase<T>(value, place, std::type_identity<typename T::Case>());
    else {
        try {
            return json::read<T>(value);
        } catch (const JsonError& fault) {
            throw Unusable(place, fault);
        }
    }
}
template <> AuriskRawData read(const Json& value, const Place& place);
template <> AuriskDsp read(const Json& value, const Place& place);
template <> AuriskGlobalDsp read(const Json& value, const Place& place);

/// The fields of a struct, as an answer shows them. Specialised for each struct that answers hold.
template <typename T> inline constexpr std::nullptr_t fieldsOf = nullptr;
template <>
inline constexpr auto fieldsOf<AuriskRawData> = labelled("AuriskRawData", label("cmd", &AuriskRawData::cmd),
    label("dataSize", &AuriskRawData::dataSize), label("di0", &AuriskRawData::di0), label("di1", &AuriskRawData::di1),
    label("data", &AuriskRawData::data));
template <>
inline constexpr auto fieldsOf<AuriskManuData> = labelled("AuriskManuData", label("address", &AuriskManuData::address),
    label("hearChip", &AuriskManuData::hearChip), label("bleChip", &AuriskManuData::bleChip),
    label("transEnable", &AuriskManuData::transEnable));

template <typename T> Answer toJson(const T& value);
template <> Answer toJson(const AuriskResult& result); ///< `{"success": …}` or `{"error": …}`

/// The values of `one` under their labels.
template <typename Labels, typename T> Answer toObject(const Labels& labels, const T& one)
{
    auto object = Answer::object();
    labels.each(one, [&](std::string_view name, const auto& member) { object.emplace(name, toJson(member)); });
    return object;
}

template <typename T> Answer toJson(const T& value)
{
    if constexpr (OptionalTraits<T>::value)
        return value ? toJson(*value) : Answer();
    else if constexpr (TabledEnum<T>)
        return caseName(value);
    else if constexpr (std::same_as<T, Data>)
        return ask_hexadecimal(value);
    else if constexpr (HasCases<T>)
        return std::visit([](const auto& one) { return toJson(one); }, value.value());
    else if constexpr (LabelledCase<T>)
        return Answer::object({ { T::labels.name, toObject(T::labels, value) } });
    else if constexpr (!std::same_as<decltype(fieldsOf<T>), const std::nullptr_t>)
        return toObject(fieldsOf<T>, value);
    else if constexpr (HasFields<T>)
        return toObject(T::fields, value);
    else if constexpr (ArrayTraits<T>::value) {
        auto list = Answer::array();
        for (const auto& element : value)
            list.push_back(toJson(element));
        return list;
    } else
        return value; // a Boolean, a number or a text
}

} // namespace aurisk::codec
