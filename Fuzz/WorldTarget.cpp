#include "Fuzz/FuzzTargets.h"
#include "Simulator/SimulatedWorld.h"

#include <nlohmann/json.hpp>

#include <string>

namespace aurisk::fuzz {

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
    require(SimulatedWorld::fromJson(written).toJson() == written, "a world did not survive being written and read");
}

} // namespace aurisk::fuzz
