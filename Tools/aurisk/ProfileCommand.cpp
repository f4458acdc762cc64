#include "Tools/aurisk/CodecJson.h"
#include "Tools/aurisk/ProfileFields.h"
#include "Tools/aurisk/SettingsAccess.h"
#include "Tools/aurisk/Transfer.h"
#include "Tools/aurisk/Values.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>

namespace aurisk::tool {

namespace {

using Type = AuriskProfileType;

constexpr std::string_view format = "profile";

/// Why a text, or the reply that tells it again, does not fit this link; none where both do.
std::optional<std::string> whyTooLong(const Session& session, Type type, const Data& text)
{
    constexpr std::size_t around = 9; // one byte before the frame, six of the frame, two identifiers
    const auto fitting = session.longestValue();
    if (type == Type::productReserved || text.size() + around <= fitting)
        return std::nullopt;
    return fmt::format("{}: the text has {} bytes, and the link to {} carries at most {}; nothing was written",
        profileField(type).name, text.size(), session.name(), fitting - std::min(fitting, around));
}

/// Writes a field and waits until that is acknowledged.
void writeField(Session& session, Type type, const Data& value, const Session::Then& then)
{
    session.read<AuriskResponse::didRequest>(
        AuriskRequest::writeProfile{ .data = value, .type = type }, [then](Session& self, const auto&) { then(self); });
}

/// Parts of files are for a chip.
std::optional<Failure> whyWithoutFile(const AuriskAccessory& device)
{
    return whyWithoutChip(device, "no file is for it");
}

// Show

Json scenesToJson(const ProfileValues& values)
{
    AuriskProfile profile;
    for (const auto& [type, value] : values)
        profile.set(type, value);
    return codec::toJson(profile.programs());
}

std::string joined(const Json& names)
{
    std::string text;
    for (const auto& name : names)
        text += (text.empty() ? "" : ", ") + name.get<std::string>();
    return text;
}

void tell(Session& session, const ProfileValues& values)
{
    if (values.empty())
        return session.fail(fmt::format("{} refused to tell any field of its profile", session.name()));
    Fields fields;
    for (const auto type : allProfileTypes())
        for (auto& line : profileInWords(values, type))
            fields.push_back(std::move(line));
    const auto scenes = scenesToJson(values);
    fields.push_back({ .key = "profile", .value = profileToJson(values, allProfileTypes()) });
    fields.push_back(
        { .key = "scenesOfProgram", .value = scenes, .label = "scenes of the programs", .text = joined(scenes) });
    session.block(fields);
    session.finish();
}

void playShow(Session& session) { readProfile(session, allProfileTypes(), tell); }

// Set

/// What is to be written to one device.
struct Change {
    std::vector<Difference> differences = {};
    std::vector<Step> writes = {};
};

std::vector<Type> typesOf(const ProfileEdits& edits)
{
    std::vector<Type> types;
    for (const auto type : allProfileTypes())
        if (edits.count(type) != 0)
            types.push_back(type);
    return types;
}

Change changeOf(const ProfileEdits& edits, const ProfileValues& values)
{
    Change change;
    for (const auto type : typesOf(edits)) {
        const auto& before = values.at(type);
        const auto after = edits.at(type)(before);
        if (after == before)
            continue;
        for (auto& difference : differences(type, before, after))
            change.differences.push_back(std::move(difference));
        change.writes.emplace_back(
            [=](Session& session, const Session::Then& then) { writeField(session, type, after, then); });
    }
    return change;
}

/// The first of these fields that the device did not tell.
const ProfileField* firstUntold(const std::vector<Type>& types, const ProfileValues& values)
{
    for (const auto type : types)
        if (values.count(type) == 0)
            return &profileField(type);
    return nullptr;
}

Plan planSet(const Options& options)
{
    const auto edits = profileEdits(options.assignments);
    const auto types = typesOf(edits);
    const auto write = [=](Session& session, const ProfileValues& values) {
        if (const auto* field = firstUntold(types, values))
            return session.fail(
                fmt::format("{} refused to tell {}, so nothing was written", session.name(), field->name));
        for (const auto type : types)
            if (const auto why = whyTooLong(session, type, edits.at(type)(values.at(type))))
                return session.fail(*why, ExitCode::usage);
        const auto change = std::make_shared<Change>(changeOf(edits, values));
        session.meet([change](Session& self) {
            inTurn(self, change->writes, [change](Session& again) {
                again.block(changeFields(change->differences));
                again.finish();
            });
        });
    };
    return { .play = [=](Session& session) { readProfile(session, types, write); } };
}

// Export

void keep(Session& session, const ProfileValues& values, const std::shared_ptr<ExportedParts>& exported)
{
    if (values.empty())
        return session.fail(fmt::format("{} refused to tell any field of its profile", session.name()));
    std::vector<Type> types;
    for (const auto type : allProfileTypes()) {
        const auto found = values.find(type);
        if (found != values.end() && makesSense(type, found->second))
            types.push_back(type);
        else
            session.note(fmt::format("{} does not tell a {} that makes sense, so it is not exported", session.name(),
                profileField(type).name));
    }
    exported->add(session, "profile", profileToJson(values, types));
    session.finish();
}

Plan planExport(const Options& options)
{
    checkWritable(options.file);
    const auto exported = std::make_shared<ExportedParts>();
    const auto play = [=](Session& session) {
        readProfile(session, allProfileTypes(),
            [exported](Session& self, const ProfileValues& values) { keep(self, values, exported); });
    };
    return { .play = play, .check = whyWithoutFile, .conclude = [=, path = options.file](Output& output) {
                exported->write(path, format, output);
            } };
}

// Import

/// A field that a file names.
struct Wanted {
    Type type = Type::unknown;
    std::function<Data(DataView)> edit = {};
    Data before = {}, after = {}; ///< once the device has been asked
};
using Shared = std::shared_ptr<Wanted>;

void prepare(Session& session, const Shared& wanted, const Session::Then& then)
{
    readProfile(session, { wanted->type }, [=](Session& self, const ProfileValues& values) {
        const auto name = profileField(wanted->type).name;
        if (values.empty())
            return self.fail(fmt::format("{} holds {}, which {} does not tell; nothing was written",
                                 self.options().file, name, self.name()),
                ExitCode::usage);
        wanted->before = values.begin()->second;
        wanted->after = wanted->edit(wanted->before);
        if (const auto why = whyTooLong(self, wanted->type, wanted->after))
            return self.fail(*why, ExitCode::usage);
        then(self);
    });
}

void write(Session& session, const Shared& wanted, const Session::Then& then)
{
    if (wanted->after == wanted->before)
        return then(session);
    writeField(session, wanted->type, wanted->after, [=](Session& self) {
        const auto name = std::string(profileField(wanted->type).name);
        self.line(
            { { .key = "field", .value = name, .text = name + " written" }, { .key = "written", .value = true } });
        then(self);
    });
}

void compare(Session& session, const Shared& wanted, const Session::Then& then)
{
    if (wanted->after == wanted->before)
        return then(session);
    readProfile(session, { wanted->type }, [=](Session& self, const ProfileValues& values) {
        if (!values.empty() && values.begin()->second == wanted->after)
            return then(self);
        self.setIfCutShort(nullptr);
        self.fail(fmt::format("{} did not keep what was written for {}", self.name(), profileField(wanted->type).name));
    });
}

void importAll(Session& session, const ProfileEdits& edits)
{
    std::vector<ImportItem> items;
    std::vector<Shared> all;
    for (const auto type : typesOf(edits)) {
        const auto wanted = std::make_shared<Wanted>(Wanted{ .type = type, .edit = edits.at(type) });
        all.push_back(wanted);
        items.push_back({ .prepare = [=](Session& self, const Session::Then& then) { prepare(self, wanted, then); },
            .write = [=](Session& self, const Session::Then& then) { write(self, wanted, then); },
            .compare = [=](Session& self, const Session::Then& then) { compare(self, wanted, then); } });
    }
    importItems(session, items, [all](Session& self) {
        const auto count
            = std::count_if(all.begin(), all.end(), [](const auto& wanted) { return wanted->after != wanted->before; });
        self.line({ { .key = "imported",
            .value = count,
            .text = count == 0 ? "holds all of it already" : "imported and read back" } });
        self.finish();
    });
}

Plan planImport(const Options& options)
{
    const auto parts = readExchangeFile(options.file, format);
    std::map<std::string, ProfileEdits> edits; // by place
    for (const auto& part : parts)
        readingFile(options.file, [&] {
            const codec::Place place{ part.place };
            const codec::Place inside{ "profile", &place };
            edits[part.place] = profileEdits(codec::Members(part.device, &place).at(inside), inside.path());
        });
    const auto play = [=](Session& session) {
        importAll(session, edits.at(partFor(session.device(), parts, session.options().file).place));
    };
    return { .play = play, .check = [=, path = options.file](const AuriskAccessory& device) {
                const auto failure = whyWithoutFile(device);
                if (!failure)
                    partFor(device, parts, path);
                return failure;
            } };
}

} // namespace

Plan planProfile(const Options& options)
{
    switch (options.action) {
    case Action::show: return { .play = playShow };
    case Action::set: return planSet(options);
    case Action::exportFile: return planExport(options);
    case Action::importFile: return planImport(options);
    }
    return {};
}

} // namespace aurisk::tool
