#include "Tools/aurisk/CodecJson.h"
#include "Tools/aurisk/PL3Commands.h"
#include "Tools/aurisk/Steps.h"
#include "Tools/aurisk/TextLayout.h"

#include <fmt/format.h>

#include <memory>

namespace aurisk::tool {

namespace {

/// The settings of one program.
struct Settings {
    int program = 0;
    PL3BandEQ bandEQ = {};
    PL3CompRatio compRatio = {};
    PL3CompThreshold compThreshold = {};
    PL3CompTime compTime = {};
    PL3MpoConfig mpoConfig = {};
    PL3InputSettings inputSetting = {};
};
using Shared = std::shared_ptr<Settings>;

/// What a fitter sees of a value; of one beyond the table its number.
template <typename Block> std::string words(std::span<const std::string_view> table, std::uint8_t value)
{
    return value < table.size() ? std::string(Block::description(value)) : fmt::format("unknown ({})", value);
}

/// A channel a row.
std::vector<std::string> channelLines(const Settings& settings)
{
    const auto ratios = settings.compRatio.toData(), thresholds = settings.compThreshold.toData(),
               limits = settings.mpoConfig.toData(), times = settings.compTime.toData();
    Table rows = { { "CHANNEL", "RATIO", "THRESHOLD", "LIMIT", "TIME CONSTANTS" } };
    for (std::size_t i = 0; i < pl3BlockSize; ++i)
        rows.push_back({ std::to_string(i + 1), words<PL3CompRatio>(PL3CompRatio::CX_RATIO, ratios[i]),
            words<PL3CompThreshold>(PL3CompThreshold::CX_THRESHOLD, thresholds[i]),
            words<PL3MpoConfig>(PL3MpoConfig::CX_LIMITER, limits[i]),
            words<PL3CompTime>(PL3CompTime::CTRL_TIME_CONSTANTS, times[i]) });
    return aligned(rows);
}

/// The two blocks whose numbers nothing explains, beside each other.
std::vector<std::string> numberLines(const Settings& settings)
{
    Table rows = { { "EQUALISER", "RAW", "INPUT", "RAW" } };
    const auto add = [](std::vector<std::string>& row, std::string_view name, std::uint8_t value) {
        row.insert(row.end(), { std::string(name), std::to_string(value) });
    };
    PL3BandEQ::fields.each(
        settings.bandEQ, [&](std::string_view name, std::uint8_t value) { add(rows.emplace_back(), name, value); });
    std::size_t next = 1;
    PL3InputSettings::fields.each(
        settings.inputSetting, [&](std::string_view name, std::uint8_t value) { add(rows.at(next++), name, value); });
    return aligned(rows);
}

void show(Session& session, const Settings& settings)
{
    auto lines = channelLines(settings);
    lines.emplace_back();
    for (auto& line : numberLines(settings))
        lines.push_back(std::move(line));
    session.picture(fmt::format("program {}", settings.program),
        { { .key = "program", .value = settings.program }, { .key = "bandEQ", .value = codec::toJson(settings.bandEQ) },
            { .key = "compRatio", .value = codec::toJson(settings.compRatio) },
            { .key = "compTime", .value = codec::toJson(settings.compTime) },
            { .key = "compThreshold", .value = codec::toJson(settings.compThreshold) },
            { .key = "mpoConfig", .value = codec::toJson(settings.mpoConfig) },
            { .key = "inputSetting", .value = codec::toJson(settings.inputSetting) } },
        lines);
    session.finish();
}

void readBlocks(Session& session, int program, int attempt);

/// The wearer has switched the program: what has been read so far is of another one.
void readAnew(Session& session, int program, int attempt)
{
    constexpr int often = 3;
    if (session.options().program || attempt == often)
        return session.fail(
            fmt::format("{} was switched to program {} while its settings were read", session.name(), program));
    readBlocks(session, program, attempt + 1);
}

void readBlocks(Session& session, int program, int attempt)
{
    const auto settings = std::make_shared<Settings>(Settings{ .program = program });
    const auto reads = [=]<typename Block>(PL3Command command, Block Settings::*block) -> Step {
        return [=](Session& asking, const Session::Then& then) {
            asking.read(command, [=](Session& self, const Data& answer) {
                if (answer.size() < pl3BlockSize)
                    return self.fail(fmt::format("{} told {} of the {} bytes of its {}", self.name(), answer.size(),
                        pl3BlockSize, caseName(command)));
                if (const int running = self.pl3().program(); running != program)
                    return readAnew(self, running, attempt);
                settings.get()->*block = Block(answer);
                then(self);
            });
        };
    };
    inTurn(session,
        { reads(PL3Command::bandEQs, &Settings::bandEQ), reads(PL3Command::compRatios, &Settings::compRatio),
            reads(PL3Command::compTimes, &Settings::compTime),
            reads(PL3Command::compThreshold, &Settings::compThreshold),
            reads(PL3Command::mpoConfig, &Settings::mpoConfig),
            reads(PL3Command::inputSettings, &Settings::inputSetting) },
        [settings](Session& self) { show(self, *settings); });
}

} // namespace

void playPL3Settings(Session& session)
{
    readNumber(session, PL3Command::program, [](Session& self, int running) {
        const int wanted = self.options().program.value_or(running);
        if (wanted == running)
            return readBlocks(self, running, 1);
        self.fail(fmt::format("{} tells the settings of the program that is running alone, and that is {} "
                              "(aurisk program set {} {} switches)",
            self.name(), running, self.name(), wanted));
    });
}

std::optional<Failure> whyWithoutAllPrograms(const Options& options, const PL3Accessory& device)
{
    if (!options.allPrograms)
        return std::nullopt;
    return Failure{ .code = ExitCode::usage,
        .sentence
        = fmt::format("{} tells the settings of the program that is running alone: leave --program out", device.name()),
        .name = device.name() };
}

} // namespace aurisk::tool
