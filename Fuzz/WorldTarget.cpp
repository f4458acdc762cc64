#include "Fuzz/FuzzTargets.h"
#include "Simulator/SimulatedWorld.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace aurisk::fuzz {

namespace {

/// Whether `written` says all that `given` says. A number may have become the name that stands for it, and what was
/// left out has its default.
bool saysAll(const nlohmann::json& written, const nlohmann::json& given)
{
    if (given.is_object())
        return std::ranges::all_of(given.items(), [&](const auto& member) {
            return written.contains(member.key()) && saysAll(written[member.key()], member.value());
        });
    if (given.is_array())
        return std::ranges::equal(written, given, saysAll);
    if (given.is_number()) // compared as doubles, since JSON values wrap where one is signed and the other is not
        return written.is_string() || (written.is_number() && written.get<double>() == given.get<double>());
    return written == given;
}

} // namespace

void world(DataView input)
{
    const auto json = nlohmann::json::parse(input.begin(), input.end(), nullptr, false);
    if (json.is_discarded())
        return;
    std::optional<SimulatedWorld> read;
    try {
        read = SimulatedWorld::fromJson(json);
    } catch (const SimulatedWorldError& error) {
        require(*error.what() != '\0', "a world was refused without a word");
        return;
    }
    const auto written = read->toJson();
    require(saysAll(written, json), "a world has lost something that was read");
    require(SimulatedWorld::fromJson(written).toJson() == written, "a world did not survive being written and read");
}

} // namespace aurisk::fuzz
