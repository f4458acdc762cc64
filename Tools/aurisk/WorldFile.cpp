#include "Tools/aurisk/WorldFile.h"

#include "Tools/aurisk/Values.h"

#include <filesystem>

namespace aurisk::tool {

namespace {

SimulatedWorld loaded(const std::string& path, bool begin)
{
    if (path.empty() || begin)
        return SimulatedWorld::makeDefault();
    if (!std::filesystem::exists(path))
        throw UsageError(path + " does not exist (--new-world begins it with the default world)");
    try {
        return SimulatedWorld::load(path);
    } catch (const SimulatedWorldError& error) {
        throw UsageError(error.what());
    }
}

} // namespace

WorldFile::WorldFile(std::string path, bool begin)
    : _path(std::move(path))
    , _world(loaded(_path, begin))
{
    if (!begin) {
        _kept = _world.toJson();
        return;
    }
    if (std::filesystem::exists(_path))
        throw UsageError(_path + " exists already (without --new-world it is used as it is)");
    keep(_world);
}

void WorldFile::keep(const SimulatedWorld& world)
{
    if (_path.empty())
        return;
    auto fresh = world.toJson();
    if (fresh == _kept)
        return;
    try {
        world.save(_path);
    } catch (const SimulatedWorldError& error) {
        throw UsageError(error.what());
    }
    _kept = std::move(fresh);
}

} // namespace aurisk::tool
