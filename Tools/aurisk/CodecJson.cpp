#include "Tools/aurisk/CodecJson.h"

#include <fmt/core.h>

namespace aurisk::codec {

namespace {

/// A block under the name of its chip: `{"a4": bytes}` or `{"a16": bytes}`.
template <typename Block, typename A4, typename A16> Block readBlock(const Json& value, const Place& place)
{
    const auto member = onlyMember(value, place);
    const Place inside{ member.name, &place };
    if (member.name == "a4")
        return A4(read<Data>(member.value, inside));
    if (member.name == "a16")
        return A16(read<Data>(member.value, inside));
    throw Unusable(place, shown(std::string(member.name)) + " is none of a4, a16");
}

} // namespace

std::string Place::path() const { return outer ? outer->path() + '.' + std::string(name) : std::string(name); }

Unusable::Unusable(const Place& place, std::string_view fault)
    : Unusable(fmt::format("member \"{}\": {}", place.path(), fault))
{
}

Unusable::Unusable(const Place& place, const JsonError& fault)
    : Unusable(fault.key().empty() ? place : Place{ fault.key(), &place }, fault.problem())
{
}

Members::Members(const Json& value, const Place* place)
    : _object(value)
    , _place(place)
{
    if (value.is_object())
        return;
    const auto fault = shown(value) + " is no object";
    if (place)
        throw Unusable(*place, fault);
    throw Unusable("the line: " + fault);
}

const Json& Members::at(const Place& place) const
{
    const auto member = _object.find(place.name);
    if (member == _object.end())
        throw Unusable(place, "missing");
    return *member;
}

Named onlyMember(const Json& value, const Place& place)
{
    if (!value.is_object() || value.size() != 1)
        throw Unusable(place, shown(value) + " where an object with one member is needed");
    return { value.begin().key(), *value.begin() };
}

std::int64_t readInteger(const Json& value, const Place& place, std::int64_t least, std::int64_t most)
{
    try {
        return json::readInteger(value, least, most);
    } catch (const JsonError& fault) {
        throw Unusable(place, fault);
    }
}

/// A frame as it is to be sent; identifiers that are null are left out of it. The size follows from the payload.
template <> AuriskRawData read(const Json& value, const Place& place)
{
    const Members members(value, &place);
    const auto cmd = members.get<std::uint8_t>("cmd");
    const auto di0 = members.get<std::optional<std::uint8_t>>("di0");
    const auto di1 = members.get<std::optional<std::uint8_t>>("di1");
    auto frame = AuriskRawData::make(cmd, di0.value_or(0), di1.value_or(0), members.get<std::optional<Data>>("data"));
    frame.di0 = di0;
    frame.di1 = di1;
    return frame;
}

template <> AuriskDsp read(const Json& value, const Place& place)
{
    return readBlock<AuriskDsp, AuriskA4Dsp, AuriskA16Dsp>(value, place);
}

template <> AuriskGlobalDsp read(const Json& value, const Place& place)
{
    return readBlock<AuriskGlobalDsp, AuriskA4GlobalDsp, AuriskA16GlobalDsp>(value, place);
}

template <> Answer toJson(const AuriskResult& result)
{
    return result.isSuccess() ? Answer::object({ { "success", toJson(*result.data()) } })
                              : Answer::object({ { "error", toJson(*result.error()) } });
}

} // namespace aurisk::codec
