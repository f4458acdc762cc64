#include "Tools/aurisk/SettingsTransfer.h"

#include "AuriskSDK/Shared/Utils/Precondition.h"
#include "Tools/aurisk/CodecJson.h"
#include "Tools/aurisk/DeviceFields.h"
#include "Tools/aurisk/Transfer.h"
#include "Tools/aurisk/Values.h"

#include <fmt/format.h>

#include <map>
#include <memory>

namespace aurisk::tool {

namespace {

std::string_view formatOf(BlockKind kind) { return kind == BlockKind::program ? "dsp" : "global"; }

// Export

using Exported = std::shared_ptr<ExportedParts>;

void keepPrograms(Session& session, const Exported& exported)
{
    readPrograms(session, [exported](Session& self, const ProgramBlocks& blocks) {
        auto list = Json::array();
        for (const auto& [program, block] : blocks)
            list.push_back({ { "program", program }, { "fields", fieldsToJson(block) } });
        exported->add(self, "programs", std::move(list));
        self.finish();
    });
}

void keepGlobal(Session& session, const Exported& exported)
{
    readBlock(session, {}, [exported](Session& self, const SettingsBlock& block) {
        exported->add(self, "fields", fieldsToJson(block));
        self.finish();
    });
}

// Import

/// A block that is to be written.
struct Wanted {
    BlockPlace place = {};
    nlohmann::json fields = {};
    std::optional<SettingsBlock> block = {}; ///< what the device holds with these fields
};

using Shared = std::shared_ptr<Wanted>;

/// The program to go back to at the end, until a write sees to it.
using Running = std::shared_ptr<std::optional<int>>;

std::string described(const BlockPlace& place)
{
    return place.program ? fmt::format("program {}", *place.program) : "all programs";
}

/// The fields at that place, which have to fit the chip.
nlohmann::json readFields(const codec::Members& holder, const codec::Place& place, BlockKind kind, AuriskChip chip)
{
    const codec::Place inside{ "fields", &place };
    auto fields = holder.at(inside);
    auto block = *defaultBlock(kind, chip);
    try {
        setFields(block, fields, inside.path());
    } catch (const PreconditionStop& stop) {
        throw codec::Unusable(inside, stop.what());
    }
    return fields;
}

std::vector<Wanted> programsIn(const ExchangePart& part, const codec::Members& device, const codec::Place& place)
{
    const codec::Place inside{ "programs", &place };
    const auto& given = device.at(inside);
    if (!given.is_array() || given.empty())
        throw codec::Unusable(inside, "a list of programs is needed");
    std::map<int, Wanted> wanted;
    for (std::size_t i = 0; i < given.size(); ++i) {
        const auto name = fmt::format("programs[{}]", i);
        const codec::Place here{ name, &place };
        const codec::Members members(given[i], &here);
        const codec::Place number{ "program", &here };
        const auto program = members.get<int>("program");
        if (program < blockPrograms.low || program > blockPrograms.high)
            throw codec::Unusable(
                number, fmt::format("{} is outside {} ... {}", program, blockPrograms.low, blockPrograms.high));
        auto fields = readFields(members, here, BlockKind::program, part.chip);
        if (!wanted.emplace(program, Wanted{ { program }, std::move(fields) }).second)
            throw codec::Unusable(number, fmt::format("{} is there twice", program));
    }
    std::vector<Wanted> list;
    for (auto& [program, one] : wanted)
        list.push_back(std::move(one));
    return list;
}

std::vector<Wanted> wantedBy(const ExchangePart& part, BlockKind kind, const std::string& path)
{
    std::vector<Wanted> list;
    readingFile(path, [&] {
        const codec::Place place{ part.place };
        const codec::Members device(part.device, &place);
        if (kind == BlockKind::program)
            list = programsIn(part, device, place);
        else
            list.push_back({ .fields = readFields(device, place, kind, part.chip) });
    });
    return list;
}

void prepare(Session& session, const Shared& wanted, const Session::Then& then)
{
    const auto take = [=](Session& self, const SettingsBlock& block) {
        wanted->block = block;
        setFields(*wanted->block, wanted->fields, "fields");
        then(self);
    };
    const auto refuse = [place = wanted->place](Session& self) {
        self.fail(fmt::format("{} is for {}, which {} does not have; nothing was written", self.options().file,
                      described(place), self.name()),
            ExitCode::usage);
    };
    readBlock(session, wanted->place, take, wanted->place.program ? Session::Then(refuse) : Session::Then());
}

void write(Session& session, const Shared& wanted, const Running& running, const Session::Then& then)
{
    writeBlock(session, wanted->place, *wanted->block, std::exchange(*running, std::nullopt), [=](Session& self) {
        Fields fields = { { .key = "written", .value = true, .text = described(wanted->place) + " written" } };
        if (wanted->place.program)
            fields.insert(fields.begin(), { .key = "program", .value = *wanted->place.program });
        self.line(fields);
        then(self);
    });
}

void compare(Session& session, const Shared& wanted, const Session::Then& then)
{
    readBlock(session, wanted->place, [=](Session& self, const SettingsBlock& block) {
        const auto others = differences(*wanted->block, block);
        if (others.empty())
            return then(self);
        const auto& first = others.back();
        self.setIfCutShort(nullptr);
        self.fail(fmt::format("{} did not keep what was written for {}: {} is {}, not {}", self.name(),
            described(wanted->place), first.place(), first.after, first.before));
    });
}

void importAll(Session& session, const std::vector<Wanted>& all, std::optional<int> program)
{
    const auto running = std::make_shared<std::optional<int>>(program);
    std::vector<ImportItem> items;
    for (const auto& one : all) {
        const auto wanted = std::make_shared<Wanted>(one);
        items.push_back({ .prepare = [=](Session& self, const Session::Then& then) { prepare(self, wanted, then); },
            .write = [=](Session& self, const Session::Then& then) { write(self, wanted, running, then); },
            .compare = [=](Session& self, const Session::Then& then) { compare(self, wanted, then); } });
    }
    importItems(session, items, [count = all.size()](Session& self) {
        self.line({ { .key = "imported", .value = count, .text = "imported and read back" } });
        self.finish();
    });
}

} // namespace

Plan planExport(const Options& options, BlockKind kind)
{
    checkWritable(options.file);
    const auto exported = std::make_shared<ExportedParts>();
    return { .play =
                 [=](Session& session) {
                     if (kind == BlockKind::program)
                         keepPrograms(session, exported);
                     else
                         keepGlobal(session, exported);
                 },
        .check = whyWithoutSettings,
        .conclude = [=, path = options.file](Output& output) { exported->write(path, formatOf(kind), output); } };
}

Plan planImport(const Options& options, BlockKind kind)
{
    const auto parts = readExchangeFile(options.file, formatOf(kind));
    std::map<std::string, std::vector<Wanted>> wanted; // by place
    for (const auto& part : parts)
        wanted[part.place] = wantedBy(part, kind, options.file);
    return {
        .play =
            [=](Session& session) {
                const auto& part = partFor(session.device(), parts, session.options().file);
                const auto all = wanted.at(part.place);
                if (kind == BlockKind::global)
                    return importAll(session, all, std::nullopt);
                readProgramToRestore(
                    session, [all](Session& self, std::optional<int> running) { importAll(self, all, running); });
            },
        .check =
            [=, path = options.file](const AuriskAccessory& device) {
                const auto failure = whyWithoutSettings(device);
                if (!failure)
                    partFor(device, parts, path);
                return failure;
            },
    };
}

} // namespace aurisk::tool
