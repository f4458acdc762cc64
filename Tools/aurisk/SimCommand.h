#pragma once

#include "Simulator/SimulatedWorld.h"
#include "Tools/aurisk/Options.h"
#include "Tools/aurisk/Output.h"

#include <string>
#include <vector>

namespace aurisk::tool {

/// Which hearing aids of `world` are to be served, one for each adapter and in their order. Where none is named: the
/// first ones; of two the first pair, if there is one. Throws a UsageError where the world does not have them.
std::vector<std::string> servedAids(const Options& options, const SimulatedWorld& world);

/// Serves them until it is interrupted. Throws a UsageError for a world that cannot be used.
ExitCode runSim(const Options& options, Output& output);

} // namespace aurisk::tool
