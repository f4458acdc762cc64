#include "Tools/aurisk/CodecJson.h"
#include "Tools/aurisk/Commands.h"
#include "Tools/aurisk/ExchangeFile.h"
#include "Tools/aurisk/Steps.h"
#include "Tools/aurisk/UsagePicture.h"

#include <fmt/format.h>

#include <filesystem>
#include <memory>

namespace aurisk::tool {

namespace {

/// A log that goes to a file as it is.
struct LogFile {
    AuriskDataLogType log;
    std::string path;
};

/// The file of a device: of a pair each has its own, `events-L.bin` beside `events-R.bin`.
std::string pathFor(AccessoryOrientation ear, const Options& options, const std::string& path)
{
    if (!options.both)
        return path;
    const std::filesystem::path given(path);
    const auto suffix = ear == AccessoryOrientation::left ? "-L" : "-R";
    return (given.parent_path() / (given.stem().string() + suffix + given.extension().string())).string();
}

std::vector<LogFile> logFiles(const Options& options)
{
    std::vector<LogFile> files;
    if (!options.events.empty())
        files.push_back({ AuriskDataLogType::userEvent, options.events });
    if (!options.loopGain.empty())
        files.push_back({ AuriskDataLogType::loopGain, options.loopGain });
    for (const auto& file : files)
        for (const auto ear : { AccessoryOrientation::left, AccessoryOrientation::right })
            checkWritable(pathFor(ear, options, file.path));
    return files;
}

std::optional<Failure> whyWithoutLogs(const AuriskAccessory& device)
{
    if (device.hearChip() == AuriskChip::a16)
        return std::nullopt;
    return Failure{ .sentence = fmt::format("{} keeps no logs, as its chip is no a16", device.name()),
        .name = device.name() };
}

void playSummary(Session& session)
{
    session.fetchLog(AuriskDataLogType::summary, [](Session& self, const Data& bytes) {
        const auto log = AuriskSummaryDataLog::decode(bytes);
        if (!log)
            return self.fail(
                fmt::format("the summary of its use that {} told is too short: {} bytes", self.name(), bytes.size()));
        self.picture(
            "use", { { .key = "summary", .value = codec::toJson(*log) } }, usagePicture(*log, self.style().drawing));
        self.finish();
    });
}

/// What has been read, and whose it is.
struct Fetched {
    std::string identifier, name;
    LogFile file;
    Data bytes;
};
using Shared = std::shared_ptr<std::vector<Fetched>>;

void playFiles(Session& session, const std::vector<LogFile>& files, const Shared& fetched)
{
    std::vector<Step> steps;
    for (const auto& file : files)
        steps.emplace_back([=](Session& self, const Session::Then& then) {
            self.fetchLog(file.log, [=](Session& again, const Data& bytes) {
                const auto& device = again.device();
                const auto path = pathFor(device.orientation(), again.options(), file.path);
                fetched->push_back({ device.deviceId(), again.name(), { file.log, path }, bytes });
                then(again);
            });
        });
    inTurn(session, std::move(steps), [](Session& self) { self.finish(); });
}

void writeFiles(const std::vector<Fetched>& fetched, Output& output)
{
    for (const auto& [identifier, name, file, bytes] : fetched) {
        writeFile(file.path, { bytes.begin(), bytes.end() });
        output.line(name,
            { { .key = "identifier", .value = identifier }, { .key = "name", .value = name },
                { .key = "log",
                    .value = caseName(file.log),
                    .label = std::string(caseName(file.log)) + ":",
                    .text = fmt::format("{} bytes to {}", bytes.size(), file.path) },
                { .key = "bytes", .value = bytes.size() }, { .key = "file", .value = file.path } });
    }
}

} // namespace

Plan planLogs(const Options& options)
{
    const auto files = logFiles(options);
    if (files.empty())
        return { .play = playSummary, .check = whyWithoutLogs };
    const auto fetched = std::make_shared<std::vector<Fetched>>();
    return { .play = [=](Session& session) { playFiles(session, files, fetched); },
        .check = whyWithoutLogs,
        .conclude = [=](Output& output) { writeFiles(*fetched, output); } };
}

} // namespace aurisk::tool
