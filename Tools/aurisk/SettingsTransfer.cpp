#include "Tools/aurisk/SettingsTransfer.h"

#include "AuriskSDK/Shared/Utils/Precondition.h"
#include "Tools/aurisk/CodecJson.h"
#include "Tools/aurisk/DeviceFields.h"
#include "Tools/aurisk/ExchangeFile.h"
#include "Tools/aurisk/Values.h"

#include <fmt/format.h>

#include <map>
#include <memory>

namespace aurisk::tool {

namespace {

std::string_view formatOf(BlockKind kind) { return kind == BlockKind::program ? "dsp" : "global"; }

// Export

/// What has been read of a device.
struct Part {
    std::string identifier;
    Json device; ///< as the file holds it
};

/// By name: the left one of a pair comes first.
using Exported = std::map<std::string, Part>;

Part partOf(const AuriskAccessory& device, const std::string& member, Json value)
{
    auto head = exchangeHead(device);
    head[member] = std::move(value);
    return { device.deviceId(), std::move(head) };
}

void keepPrograms(Session& session, const std::shared_ptr<Exported>& exported)
{
    readPrograms(session, [exported](Session& self, const ProgramBlocks& blocks) {
        auto list = Json::array();
        for (const auto& [program, block] : blocks)
            list.push_back({ { "program", program }, { "fields", fieldsToJson(block) } });
        exported->emplace(self.name(), partOf(self.device(), "programs", std::move(list)));
        self.finish();
    });
}

void keepGlobal(Session& session, const std::shared_ptr<Exported>& exported)
{
    readBlock(session, {}, [exported](Session& self, const SettingsBlock& block) {
        exported->emplace(self.name(), partOf(self.device(), "fields", fieldsToJson(block)));
        self.finish();
    });
}

void writeExported(const Exported& exported, const std::string& path, BlockKind kind, Output& output)
{
    std::vector<Json> devices;
    for (const auto& [name, part] : exported)
        devices.push_back(part.device);
    writeExchangeFile(path, formatOf(kind), devices, output);
    if (path == "-")
        return;
    for (const auto& [name, part] : exported)
        output.line(name,
            { { .key = "identifier", .value = part.identifier }, { .key = "name", .value = name },
                { .key = "exported", .value = path, .text = "exported to " + path } });
}

// Import

/// A block that is to be written.
struct Wanted {
    BlockPlace place = {};
    nlohmann::json fields = {};
    std::optional<SettingsBlock> block = {}; ///< what the device holds with these fields
};

/// What is to be written to one device, and how far that is.
struct Job {
    std::vector<Wanted> wanted = {};
    std::optional<int> running = {}; ///< the program to go back to
    std::size_t next = 0;
};
using Shared = std::shared_ptr<Job>;

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
        const auto program = int(codec::readInteger(members.at(number), number, blockPrograms.low, blockPrograms.high));
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

/// Reads back what has been written.
void compareNext(Session& session, const Shared& job)
{
    if (job->next == job->wanted.size()) {
        const auto count = job->wanted.size();
        session.line({ { .key = "imported", .value = count, .text = "imported and read back" } });
        return session.finish();
    }
    const auto& wanted = job->wanted[job->next++];
    readBlock(session, wanted.place, [=](Session& self, const SettingsBlock& block) {
        const auto others = differences(*wanted.block, block);
        if (others.empty())
            return compareNext(self, job);
        const auto& first = others.back();
        self.fail(fmt::format("{} did not keep what was written for {}: {} is {}, not {}", self.name(),
            described(wanted.place), first.place(), first.after, first.before));
    });
}

void writeNext(Session& session, const Shared& job)
{
    if (job->next == job->wanted.size()) {
        job->next = 0;
        return compareNext(session, job);
    }
    const auto& wanted = job->wanted[job->next++];
    writeBlock(session, wanted.place, *wanted.block, std::exchange(job->running, std::nullopt), [=](Session& self) {
        Fields fields = { { .key = "written", .value = true, .text = described(wanted.place) + " written" } };
        if (wanted.place.program)
            fields.insert(fields.begin(), { .key = "program", .value = *wanted.place.program });
        self.line(fields);
        writeNext(self, job);
    });
}

/// Reads what the device holds, as the fields that the file does not name stay as they are.
void prepareNext(Session& session, const Shared& job)
{
    if (job->next == job->wanted.size()) {
        job->next = 0;
        return session.meet([job](Session& self) { writeNext(self, job); });
    }
    const auto place = job->wanted[job->next].place;
    const auto take = [=](Session& self, const SettingsBlock& block) {
        auto& wanted = job->wanted[job->next++];
        wanted.block = block;
        setFields(*wanted.block, wanted.fields, "fields");
        prepareNext(self, job);
    };
    const auto refuse = [=](Session& self) {
        self.fail(fmt::format("{} is for {}, which {} does not have; nothing was written", self.options().file,
                      described(place), self.name()),
            ExitCode::usage);
    };
    readBlock(session, place, take, place.program ? Session::Then(refuse) : Session::Then());
}

} // namespace

Plan planExport(const Options& options, BlockKind kind)
{
    checkWritable(options.file);
    const auto exported = std::make_shared<Exported>();
    return { .play =
                 [=](Session& session) {
                     if (kind == BlockKind::program)
                         keepPrograms(session, exported);
                     else
                         keepGlobal(session, exported);
                 },
        .check = whyWithoutSettings,
        .conclude = [=, path = options.file](Output& output) { writeExported(*exported, path, kind, output); } };
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
                const auto job = std::make_shared<Job>(Job{ .wanted = wanted.at(part.place) });
                if (kind == BlockKind::global)
                    return prepareNext(session, job);
                readProgramToRestore(session, [job](Session& self, std::optional<int> running) {
                    job->running = running;
                    prepareNext(self, job);
                });
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
