#include "Tools/aurisk/ProfileFields.h"

#include "AuriskSDK/Shared/Utils/BitLayout.h"
#include "AuriskSDK/Shared/Utils/HexToData.h"
#include "AuriskSDK/Shared/Utils/Utf8.h"
#include "Tools/aurisk/CodecJson.h"
#include "Tools/aurisk/DeviceFields.h"
#include "Tools/aurisk/Values.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>

namespace aurisk::tool {

namespace {

using Type = AuriskProfileType;
using Reserved = AuriskProfileReservedField;

constexpr struct {
    Type type;
    std::string_view label;
} labels[] = {
    { Type::productSeries, "product series" },
    { Type::productSku, "SKU" },
    { Type::productPattern, "pattern" },
    { Type::productHard, "hardware version" },
    { Type::productSoft, "software version" },
    { Type::bluetoothHardPattern, "radio pattern" },
    { Type::bluetoothHard, "radio hardware" },
    { Type::bluetoothSoft, "radio software" },
    { Type::hearingAidChip, "hearing-aid chip" },
    { Type::ota, "update version" },
    { Type::productSeriesCode, "series code" },
    { Type::advertisementName, "advertised name" },
    { Type::productReserved, "codes and wearer" },
};

/// A reply, whose size byte counts two identifiers, stays below 250. What is longer could never be read back.
constexpr std::size_t longestText = 247;

/// A member of the reserved field, or of a block inside it.
struct ReservedMember {
    std::string path; ///< `modeConfig.mode1`
    std::string_view name;
    int most = 0;
    int (*get)(const Reserved&) = nullptr;
    void (*set)(Reserved&, int) = nullptr;

    Json value(const std::optional<Reserved>& field) const { return field ? Json(get(*field)) : Json(); }
    std::string text(const std::optional<Reserved>& field) const
    {
        return field ? std::to_string(get(*field)) : notTold;
    }
};

/// `within` leads from the reserved field to the block that holds the member.
template <typename Within, typename Part> ReservedMember describe(const Part& part, const std::string& prefix)
{
    return { .path = prefix + std::string(part.name),
        .name = part.name,
        .most = (1 << part.width) - 1,
        .get = [](const Reserved& field) { return int(Part::member(Within::block(field))); },
        .set = [](Reserved& field,
                   int value) { Part::member(Within::block(field)) = static_cast<typename Part::Value>(value); } };
}

struct Outermost {
    static auto& block(auto& field) { return field; }
};
template <typename Part> struct InsideOf {
    static auto& block(auto& field) { return Part::member(field); }
};

const std::vector<ReservedMember>& reservedMembers()
{
    static const auto members = [] {
        std::vector<ReservedMember> all;
        bits::eachMember<Reserved>([&]<typename Part>(const Part& part) {
            if constexpr (bits::BitBlock<typename Part::Value>)
                bits::eachMember<typename Part::Value>([&](const auto& inner) {
                    all.push_back(describe<InsideOf<Part>>(inner, std::string(part.name) + "."));
                });
            else
                all.push_back(describe<Outermost>(part, ""));
        });
        return all;
    }();
    return members;
}

const ReservedMember* reservedMember(std::string_view name)
{
    const auto& all = reservedMembers();
    const auto found = std::find_if(
        all.begin(), all.end(), [&](const auto& member) { return member.path == name || member.name == name; });
    return found == all.end() ? nullptr : &*found;
}

const ProfileField* fieldNamed(std::string_view name)
{
    const auto& all = profileFields();
    const auto found = std::find_if(all.begin(), all.end(), [&](const auto& field) { return field.name == name; });
    return found == all.end() ? nullptr : &*found;
}

std::optional<Reserved> reservedIn(const std::optional<Data>& value)
{
    return value ? Reserved::decode(*value) : std::nullopt;
}

std::optional<Data> told(const ProfileValues& values, Type type)
{
    const auto found = values.find(type);
    return found == values.end() ? std::nullopt : std::optional(found->second);
}

std::string inWords(const std::optional<Data>& value)
{
    if (!value)
        return notTold;
    if (const auto text = utf8Text(*value))
        return text->empty() ? "(empty)" : *text;
    return ask_hexadecimal(*value) + " (no text)";
}

Json textToJson(const std::optional<Data>& value)
{
    const auto text = value ? utf8Text(*value) : std::nullopt;
    return text ? Json(*text) : Json();
}

using Members = std::vector<std::pair<const ReservedMember*, int>>;

/// Bytes behind the 20 that stand for something stay.
Data withMembers(DataView before, const Members& members)
{
    Reserved field(before);
    for (const auto& [member, value] : members)
        member->set(field, value);
    auto after = field.toData();
    if (before.size() > after.size())
        after.insert(after.end(), before.begin() + std::ptrdiff_t(after.size()), before.end());
    return after;
}

/// Collects what fields become.
class EditList {
public:
    void add(Type type, const std::string& text)
    {
        edits[type] = [bytes = Data(text.begin(), text.end())](DataView) { return bytes; };
    }
    void add(const ReservedMember& member, int value)
    {
        _members.emplace_back(&member, value);
        edits[Type::productReserved] = [all = _members](DataView before) { return withMembers(before, all); };
    }

    ProfileEdits edits;

private:
    Members _members;
};

/// What is wrong with a text that is to be written; nothing where it is right.
std::string problemOf(const std::string& text)
{
    if (!utf8Text(DataView(reinterpret_cast<const std::uint8_t*>(text.data()), text.size())))
        return "is no UTF-8";
    if (text.size() > longestText)
        return fmt::format("has {} bytes, at most {} fit", text.size(), longestText);
    return {};
}

void readMembers(EditList& list, const nlohmann::json& object, const codec::Place& place, const std::string& prefix)
{
    const codec::Members isObject(object, &place);
    for (const auto& [name, value] : object.items()) {
        const codec::Place inside{ name, &place };
        const auto path = prefix + name;
        const auto& all = reservedMembers();
        const bool isBlock = prefix.empty() && std::any_of(all.begin(), all.end(), [&](const auto& member) {
            return member.path.starts_with(path + ".");
        });
        if (isBlock) {
            readMembers(list, value, inside, path + ".");
            continue;
        }
        const auto found
            = std::find_if(all.begin(), all.end(), [&](const auto& member) { return member.path == path; });
        if (found == all.end())
            throw codec::Unusable(inside, codec::shown(name) + " is the name of no field");
        const int number = codec::read<int>(value, inside);
        if (number < 0 || number > found->most)
            throw codec::Unusable(inside, fmt::format("{} is outside 0 to {}", number, found->most));
        list.add(*found, number);
    }
}

} // namespace

const std::vector<ProfileField>& profileFields()
{
    static const auto fields = [] {
        std::vector<ProfileField> all;
        AuriskProfile profile;
        const auto place = [&](Type type) -> const void* {
            const auto text = AuriskProfile::textOf(type);
            return text ? static_cast<const void*>(&(profile.*text)) : &profile.reservedField;
        };
        AuriskProfile::fields.each(profile, [&](std::string_view name, const auto& member) {
            for (const auto& [type, label] : labels)
                if (place(type) == &member)
                    all.push_back({ type, name, label });
        });
        return all;
    }();
    return fields;
}

const ProfileField& profileField(Type type)
{
    const auto& all = profileFields();
    return *std::find_if(all.begin(), all.end(), [&](const auto& field) { return field.type == type; });
}

std::vector<Type> allProfileTypes()
{
    std::vector<Type> types;
    for (const auto& field : profileFields())
        types.push_back(field.type);
    return types;
}

void readProfile(Session& session, const std::vector<Type>& types, Session::ThenWith<ProfileValues> then)
{
    const auto values = std::make_shared<ProfileValues>();
    std::vector<Step> steps;
    for (const auto type : types)
        steps.emplace_back([=](Session& self, const Session::Then& next) {
            const AuriskRequest request = AuriskRequest::readProfile{ .type = type };
            self.attempt(request, [=](Session& again, const AuriskResult& result) {
                const auto* read = result.isSuccess() ? result.data()->as<AuriskResponse::didReadProfile>() : nullptr;
                const bool isAnswer
                    = result.isSuccess() ? read && read->type == type : !result.error()->as<AuriskResultError::other>();
                if (!isAnswer)
                    return again.failBeyondAnswer(request);
                if (read)
                    values->emplace(type, read->data);
                next(again);
            });
        });
    inTurn(session, std::move(steps), [=](Session& self) { then(self, *values); });
}

Json profileToJson(const ProfileValues& values, const std::vector<Type>& types)
{
    auto object = Json::object();
    for (const auto type : types) {
        const auto value = told(values, type);
        auto& member = object[std::string(profileField(type).name)];
        if (type != Type::productReserved)
            member = textToJson(value);
        else if (const auto field = reservedIn(value))
            member = field->toJson();
    }
    return object;
}

Fields profileInWords(const ProfileValues& values, Type type)
{
    const auto value = told(values, type);
    const auto& [ignored, name, label] = profileField(type);
    const auto line = [](std::string_view what, std::string_view words, const std::string& text) {
        return Field{ .label = fmt::format("{:22} {}", what, words), .text = text };
    };
    const auto field = type == Type::productReserved ? reservedIn(value) : std::nullopt;
    if (!field)
        return { line(name, label,
            type == Type::productReserved && value ? fmt::format("{} bytes that make no sense", value->size())
                                                   : inWords(value)) };
    Fields lines;
    for (const auto& member : reservedMembers())
        lines.push_back(line(member.path, "", member.text(field)));
    return lines;
}

bool makesSense(Type type, DataView value)
{
    return type == Type::productReserved ? Reserved::decode(value).has_value() : utf8Text(value).has_value();
}

ProfileEdits profileEdits(const std::vector<Assignment>& changes)
{
    EditList list;
    for (const auto& change : changes) {
        const auto isKnown = [](const std::string& name) { return fieldNamed(name) || reservedMember(name); };
        const auto* const field = fieldNamed(change.field);
        if (const auto* member = reservedMember(change.field))
            list.add(*member, wholeNumber(change.field, change.value, { 0, member->most }));
        else if (!field)
            refuseField(change, "profile", isKnown(change.value));
        else if (field->type == Type::productReserved)
            throw UsageError(fmt::format("{}: name one of its members (aurisk profile show lists them)", field->name));
        else if (const auto problem = problemOf(change.value); !problem.empty())
            throw UsageError(fmt::format("{}: the text {}", change.field, problem));
        else
            list.add(field->type, change.value);
    }
    return list.edits;
}

ProfileEdits profileEdits(const nlohmann::json& object, const std::string& place)
{
    EditList list;
    const codec::Place whole{ place };
    const codec::Members isObject(object, &whole);
    for (const auto& [name, value] : object.items()) {
        const codec::Place inside{ name, &whole };
        const auto* const field = fieldNamed(name);
        if (!field)
            throw codec::Unusable(inside, codec::shown(name) + " is the name of no field");
        if (field->type == Type::productReserved) {
            readMembers(list, value, inside, "");
            continue;
        }
        const auto text = codec::read<std::string>(value, inside);
        if (const auto problem = problemOf(text); !problem.empty())
            throw codec::Unusable(inside, "the text " + problem);
        list.add(field->type, text);
    }
    return list.edits;
}

std::vector<Difference> differences(Type type, const std::optional<Data>& before, const Data& after)
{
    if (before == after)
        return {};
    if (type != Type::productReserved)
        return { { .name = std::string(profileField(type).name),
            .before = inWords(before),
            .after = inWords(after),
            .from = textToJson(before),
            .to = textToJson(after) } };
    std::vector<Difference> list;
    const auto from = reservedIn(before), to = reservedIn(after);
    for (const auto& member : reservedMembers())
        if (member.value(from) != member.value(to))
            list.push_back({ .name = member.path,
                .before = member.text(from),
                .after = member.text(to),
                .from = member.value(from),
                .to = member.value(to) });
    return list;
}

} // namespace aurisk::tool
