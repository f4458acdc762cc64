#pragma once

#include "Simulator/SimulatedWorld.h"

#include <nlohmann/json.hpp>

#include <string>

namespace aurisk::tool {

/// A world of simulated hearing aids, and the file that keeps it from one run to the next.
class WorldFile {
public:
    /// Reads the file or, where `begin` is given, makes it, with the default world. No path: the default world, which
    /// is not kept. Throws a UsageError where the file cannot be used.
    WorldFile(std::string path, bool begin);

    const SimulatedWorld& world() const { return _world; }

    /// Writes `world` where it is no longer what the file holds. Throws a UsageError where that fails.
    void keep(const SimulatedWorld& world);

private:
    std::string _path;
    SimulatedWorld _world;
    nlohmann::json _kept; ///< what the file holds
};

} // namespace aurisk::tool
