#include "Tools/aurisk/SimCommand.h"

#include "Tools/aurisk/Values.h"
#include "Tools/aurisk/WearerLine.h"

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
    Names all;
    for (const auto& placed : world.aids)
        all.push_back(placed.aid->name());
    Names chosen;
    for (const auto& name : options.aids) {
        const auto known = findName(all, name);
        if (known == all.end())
            throw UsageError(
                fmt::format("sim: the world has no hearing aid called {} ({})", inQuotes(name), fmt::join(all, ", ")));
        chosen.push_back(*known);
    }
    if (!chosen.empty())
        return chosen;
    const auto count = std::max<std::size_t>(options.adapters.size(), 1);
    if (all.size() < count)
        throw UsageError(fmt::format("sim: the world has {} hearing aid(s) for {} adapter(s)", all.size(), count));
    if (const auto pair = count == 2 ? firstPair(all) : std::nullopt)
        return *pair;
    all.resize(count);
    return all;
}

namespace {

constexpr int largestMtu = 517; ///< that a world can name; the air settles for less by itself

} // namespace

std::shared_ptr<Serving> Serving::start(
    const Options& options, SimulatedWorld world, Servers servers, Output& output, std::function<void(ExitCode)> ended)
{
    if (world.radioState != CBManagerState::poweredOn)
        throw UsageError("sim: the radio of the world is not powered on");
    auto serving = std::make_shared<Serving>(Key{}, std::move(servers), output, std::move(ended));
    serving->_names = servedAids(options, world);
    if (options.world.empty()) // whoever plays the wearer is at the keyboard
        world.script.clear();
    for (const auto& name : serving->_names) {
        auto& placed = world.placed(name);
        serving->_links.insert({ name, { placed.mtu, placed.faults } });
        placed.mtu = largestMtu;
        if (placed.faults.latency == LinkFaults{}.latency)
            placed.faults.latency = Seconds(0);
    }
    serving->_simulator = Simulator::create(std::move(world));
    for (std::size_t i = 0; i < serving->_names.size(); ++i) {
        const auto adapter = i < options.adapters.size() ? options.adapters[i] : std::string();
        serving->_aids.push_back(
            AidOnAir::create(serving->_simulator, serving->_names[i], *serving->_servers, adapter, serving));
    }
    return serving;
}

Serving::Serving(Key, Servers servers, Output& output, std::function<void(ExitCode)> ended)
    : _servers(std::move(servers))
    , _output(output)
    , _ended(std::move(ended))
{
}

void Serving::take(const std::string& line)
try {
    const auto deed = WearerLine::parse(line);
    if (!deed)
        return;
    if (std::holds_alternative<WearerLine::Help>(deed->deed))
        _output.document(std::string(WearerLine::help()), { { "help", WearerLine::help() } });
    deed->apply(*_simulator, _names);
} catch (const UsageError& error) {
    _output.failure({ .code = ExitCode::usage, .sentence = error.what() });
}

SimulatedWorld Serving::world() const
{
    auto world = _simulator->world();
    for (const auto& [name, link] : _links) {
        world.placed(name).mtu = link.mtu;
        world.placed(name).faults = link.faults;
    }
    return world;
}

void Serving::aidDidBecomeAudible(const AidOnAir& aid)
{
    _told[aid.name()] = { .hasBeenHeard = true };
    tell(aid, "onAir", fmt::format("{} is on the air as {} {}", aid.name(), aid.adapter(), aid.address()),
        { { "adapter", aid.adapter() }, { "address", aid.address() } });
}

void Serving::aidDidFallSilent(const AidOnAir& aid) { tellOffAir(aid, "it does not advertise"); }

void Serving::tellOffAir(const AidOnAir& aid, const std::string& why)
{
    if (std::exchange(_told[aid.name()].whyNot, why) != why)
        tell(aid, "offAir", fmt::format("{} is off the air: {}", aid.name(), why), { { "why", why } });
}

/// One that has been on the air waits until it can be there again.
void Serving::aidCannotBeHeard(const AidOnAir& aid, const std::string& why)
{
    if (_told[aid.name()].hasBeenHeard)
        return tellOffAir(aid, why);
    if (!_ended)
        return;
    _output.failure({ .code = ExitCode::bluetoothUnavailable, .sentence = why, .name = aid.name() });
    finish(ExitCode::bluetoothUnavailable);
}

void Serving::aidDidConnect(const AidOnAir& aid, const std::string& central)
{
    tell(aid, "connected", fmt::format("{} is connected to {}", aid.name(), central), { { "central", central } });
}

void Serving::aidDidDisconnect(const AidOnAir& aid, const std::string& central)
{
    tell(aid, "disconnected", fmt::format("{} is disconnected from {}", aid.name(), central),
        { { "central", central } });
}

void Serving::tell(const AidOnAir& aid, const std::string& event, const std::string& words, const Json& more)
{
    Json object = { { "event", event }, { "name", aid.name() } };
    object.update(more);
    _output.document(words, object);
}

void Serving::finish(ExitCode code)
{
    const auto ended = std::exchange(_ended, nullptr);
    if (!ended)
        return;
    const auto group = std::make_shared<DispatchGroup>();
    for (const auto& aid : _aids) {
        group->enter();
        aid->stop([group] { group->leave(); });
    }
    group->notify(DispatchQueue::main(), [ended, code] { ended(code); });
}

} // namespace aurisk::tool
