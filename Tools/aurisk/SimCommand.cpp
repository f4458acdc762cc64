#include "Tools/aurisk/SimCommand.h"

#include "Tools/aurisk/Values.h"
#include "Tools/aurisk/WorldFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

namespace aurisk::tool {

namespace {

using Names = std::vector<std::string>;

std::optional<Names> firstPair(const Names& names)
{
    for (const auto& left : names) {
        if (!left.ends_with("-L"))
            continue;
        const auto right = left.substr(0, left.size() - 1) + "R";
        if (std::find(names.begin(), names.end(), right) != names.end())
            return Names{ left, right };
    }
    return std::nullopt;
}

} // namespace

Names servedAids(const Options& options, const SimulatedWorld& world)
{
    for (const auto& name : options.aids)
        if (!world.aid(name))
            throw UsageError(fmt::format("sim: the world has no hearing aid called {}", inQuotes(name)));
    if (!options.aids.empty())
        return options.aids;

    Names all;
    for (const auto& placed : world.aids)
        all.push_back(placed.aid->name());
    const auto count = std::max<std::size_t>(options.adapters.size(), 1);
    if (all.size() < count)
        throw UsageError(fmt::format("sim: the world has {} hearing aid(s) for {} adapter(s)", all.size(), count));
    if (const auto pair = count == 2 ? firstPair(all) : std::nullopt)
        return *pair;
    all.resize(count);
    return all;
}

ExitCode runSim(const Options& options, Output& output)
{
    const WorldFile file(options.world, options.newWorld);
    servedAids(options, file.world());
    output.failure({ .code = ExitCode::bluetoothUnavailable, .sentence = "this build cannot serve hearing aids" });
    return ExitCode::bluetoothUnavailable;
}

} // namespace aurisk::tool
