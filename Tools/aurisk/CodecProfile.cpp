#include "Tools/aurisk/CodecOperations.h"

#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskProfile.h"

namespace aurisk::codec {

namespace {

/// The fields that the object names, each of which there has to be. The others have their defaults.
template <bits::BitBlock Block> Block readFields(const Json& object, const Place& place)
{
    if (!object.is_object())
        throw Unusable(place, shown(object) + " is no object");
    Block block;
    for (const auto& [name, value] : object.items()) {
        const Place inside{ name, &place };
        bool isField = false;
        bits::eachMember<Block>([&, &value = value](const auto& part) {
            using Value = typename std::decay_t<decltype(part)>::Value;
            if (part.name != inside.name)
                return;
            isField = true;
            if constexpr (bits::BitBlock<Value>)
                part.member(block) = readFields<Value>(value, inside);
            else
                part.member(block) = read<Value>(value, inside);
        });
        if (!isField)
            throw Unusable(place, shown(name) + " is the name of no field");
    }
    return block;
}

AuriskProfile readProfile(const Members& line)
{
    return line.get<std::optional<AuriskProfile>>("profile").value_or(AuriskProfile());
}

} // namespace

Answer decodeReserved(const Members& line)
{
    const auto field = AuriskProfileReservedField::decode(line.get<Data>("bytes"));
    return field ? field->toJson() : Answer();
}

Answer encodeReserved(const Members& line)
{
    const Place place{ "fields" };
    return toJson(readFields<AuriskProfileReservedField>(line.at(place), place).toData());
}

Answer applyToProfile(const Members& line)
{
    auto profile = readProfile(line);
    const auto type = line.get<AuriskProfileType>("type");
    profile.set(type, line.get<Data>("data"));
    return profile.toJson();
}

Answer listPrograms(const Members& line) { return toJson(readProfile(line).programs()); }

} // namespace aurisk::codec
