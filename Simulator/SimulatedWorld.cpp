#include "Simulator/SimulatedWorld.h"

#include "Simulator/WorldReader.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fmt/format.h>
#include <fstream>
#include <random>
#include <stdexcept>
#include <system_error>

namespace aurisk {

namespace {

using NamedState = Named<CBManagerState>;
constexpr std::array radioStates = {
    NamedState{ CBManagerState::unknown, "unknown" },
    NamedState{ CBManagerState::resetting, "resetting" },
    NamedState{ CBManagerState::unsupported, "unsupported" },
    NamedState{ CBManagerState::unauthorized, "unauthorized" },
    NamedState{ CBManagerState::poweredOff, "poweredOff" },
    NamedState{ CBManagerState::poweredOn, "poweredOn" },
};

constexpr Seconds longestScript{ 24 * 3600 };
constexpr int mostLevels = 16; ///< of lists and objects in each other; a world needs less than half of it

/// Whether lists and objects stand in each other more than `levels` deep. To copy JSON takes stack for each level, so
/// this comes before anything else does.
bool isDeeperThan(int levels, const nlohmann::json& value)
{
    return value.is_structured() && (levels == 0 || std::any_of(value.begin(), value.end(), [&](const auto& inner) {
        return isDeeperThan(levels - 1, inner);
    }));
}

void readLink(PlacedAid& placed, const nlohmann::json& value, const std::string& place)
{
    WorldReader reader(value, place);
    placed.rssi = int(reader.integer("rssi", placed.rssi, -127, 20));
    placed.advertisingInterval
        = reader.seconds("advertisingInterval", placed.advertisingInterval, Seconds(0.02), Seconds(10.24));
    placed.mtu = int(reader.integer("mtu", placed.mtu, 23, 517));
    placed.faults = linkFaultsFrom(reader);
    reader.finish();
}

PlacedAid placedFromJson(const nlohmann::json& value, const std::string& place)
{
    PlacedAid placed;
    auto description = value;
    if (description.is_object())
        description.erase("link");
    placed.aid = aidFromJson(description, place);
    if (const auto link = value.find("link"); link != value.end())
        readLink(placed, *link, place + ".link");
    return placed;
}

nlohmann::json toJson(const PlacedAid& placed)
{
    auto link = toJson(placed.faults);
    link["rssi"] = placed.rssi;
    link["advertisingInterval"] = placed.advertisingInterval.count();
    link["mtu"] = placed.mtu;
    auto value = placed.aid->toJson();
    value["link"] = std::move(link);
    return value;
}

ScriptedAction scriptedFromJson(const nlohmann::json& value, const std::string& place, const SimulatedWorld& world)
{
    WorldReader reader(value, place);
    const auto longest = world.scriptPeriod.value_or(longestScript);
    const auto at = reader.seconds("at", Seconds(0), Seconds(0), longest);
    const auto name = reader.text("aid");
    const auto text = reader.text("action");
    reader.finish();

    const auto aid = world.aid(name);
    const auto action = WearerAction::fromString(text);
    if (!aid)
        failAt(place + ".aid", "no aid is called \"" + name + "\"");
    if (!action || !aid->accepts(*action))
        failAt(place + ".action", "\"" + text + "\" is nothing that the wearer of " + name + " can do");
    return { at, name, *action };
}

nlohmann::json toJson(const ScriptedAction& scripted)
{
    return { { "at", scripted.at.count() }, { "aid", scripted.aid }, { "action", scripted.action.toString() } };
}

template <typename Element> nlohmann::json listToJson(const std::vector<Element>& elements)
{
    auto list = nlohmann::json::array();
    for (const auto& element : elements)
        list.push_back(toJson(element));
    return list;
}

void refuseTwins(const SimulatedWorld& world, const SimulatedAid& newcomer, const std::string& place)
{
    for (const auto& other : world.aids) {
        if (other.aid->name() == newcomer.name())
            failAt(place + ".name", "there is already an aid called \"" + newcomer.name() + "\"");
        if (other.aid->address() == newcomer.address())
            failAt(place + ".address", other.aid->name() + " already has the address " + newcomer.address());
    }
}

} // namespace

SimulatedWorld SimulatedWorld::fromJson(const nlohmann::json& value)
{
    if (isDeeperThan(mostLevels, value))
        failAt("world", fmt::format("holds lists and objects more than {} deep", mostLevels));
    WorldReader reader(value, "");
    SimulatedWorld world;
    world.radioState = reader.choice<CBManagerState>("radio", world.radioState, radioStates);
    reader.each("aids", [&](const auto& element, const auto& place) {
        auto placed = placedFromJson(element, place);
        refuseTwins(world, *placed.aid, place);
        world.aids.push_back(std::move(placed));
    });
    if (reader.find("scriptPeriod"))
        world.scriptPeriod = reader.seconds("scriptPeriod", Seconds(0), Seconds(0.1), longestScript);
    reader.each("script", [&](const auto& element, const auto& place) {
        world.script.push_back(scriptedFromJson(element, place, world));
    });
    reader.finish();
    return world;
}

nlohmann::json SimulatedWorld::toJson() const
{
    nlohmann::json value = {
        { "radio", nameOf<CBManagerState>(radioState, radioStates) },
        { "aids", listToJson(aids) },
        { "script", listToJson(script) },
    };
    if (scriptPeriod)
        value["scriptPeriod"] = scriptPeriod->count();
    return value;
}

SimulatedWorld SimulatedWorld::load(const std::filesystem::path& path)
{
    std::ifstream file(path);
    if (!file || std::filesystem::is_directory(path))
        failAt(path.string(), "cannot be read: " + std::generic_category().message(file ? EISDIR : errno));
    const std::string text(std::istreambuf_iterator<char>(file), {});
    try {
        return fromJson(nlohmann::json::parse(text));
    } catch (const nlohmann::json::parse_error& error) {
        const auto end = text.begin() + std::ptrdiff_t(std::min(error.byte, text.size()));
        failAt(path.string(), fmt::format("is no JSON (line {})", 1 + std::count(text.begin(), end, '\n')));
    } catch (const nlohmann::json::exception&) {
        failAt(path.string(), "holds a number that is too large");
    } catch (const SimulatedWorldError& error) {
        failAt(path.string(), error.what());
    }
}

void SimulatedWorld::save(const std::filesystem::path& path) const
{
    auto fresh = path;
    fresh += fmt::format(".{:08x}", std::random_device{}());
    std::error_code error;
    {
        std::ofstream file(fresh);
        file << toJson().dump(4, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
        file.close();
        if (!file)
            error = std::error_code(errno, std::generic_category());
    }
    if (!error)
        std::filesystem::rename(fresh, path, error);
    if (!error)
        return;
    std::error_code ignored;
    std::filesystem::remove(fresh, ignored);
    failAt(path.string(), "cannot be written: " + error.message());
}

std::shared_ptr<SimulatedAid> SimulatedWorld::aid(std::string_view name) const
{
    for (const auto& placed : aids)
        if (placed.aid->name() == name)
            return placed.aid;
    return nullptr;
}

const PlacedAid& SimulatedWorld::placed(std::string_view name) const
{
    for (const auto& placed : aids)
        if (placed.aid->name() == name)
            return placed;
    throw std::out_of_range("no aid of this world is called \"" + std::string(name) + "\"");
}

PlacedAid& SimulatedWorld::placed(std::string_view name)
{
    return const_cast<PlacedAid&>(std::as_const(*this).placed(name));
}

} // namespace aurisk
