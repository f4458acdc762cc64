#include "Simulator/SimulatedRadio.h"

#include "Simulator/SimulatedCentral.h"

#include <algorithm>

namespace aurisk {

namespace {

SimulatedLink& linkOf(const SimulatedAir& air, std::string_view aidName)
{
    const auto& aids = air.world->aids;
    return *air.links[std::size_t(&air.world->placed(aidName) - aids.data())];
}

} // namespace

SimulatedRadio::SimulatedRadio(std::shared_ptr<SimulatedWorld> world, DispatchQueue& queue)
    : _air(std::make_shared<SimulatedAir>(SimulatedAir{ queue, std::move(world), {} }))
{
    for (auto& placed : _air->world->aids)
        _air->links.push_back(SimulatedLink::create(queue, _air->world, placed));
}

SimulatedRadio::~SimulatedRadio() = default;

std::shared_ptr<CBCentralManager> SimulatedRadio::makeCentralManager(
    std::weak_ptr<CBCentralManagerDelegate> delegate, const CBCentralManagerOptions& options)
{
    if (options.showPowerAlert && state() == CBManagerState::poweredOff)
        setState(CBManagerState::poweredOn);
    auto central = std::make_shared<SimulatedCentral>(_air, std::move(delegate));
    central->radioIs(state());
    std::erase_if(_centrals, [](const auto& one) { return one.expired(); });
    _centrals.push_back(central);
    return central;
}

CBManagerState SimulatedRadio::state() const { return _air->world->radioState; }

void SimulatedRadio::setState(CBManagerState state)
{
    if (std::exchange(_air->world->radioState, state) == state)
        return;
    for (const auto& weak : _centrals)
        if (const auto central = weak.lock())
            central->radioIs(state);
}

void SimulatedRadio::dropLink(std::string_view aidName) { linkOf(*_air, aidName).drop(); }

int SimulatedRadio::messageCount(std::string_view aidName) const { return linkOf(*_air, aidName).messageCount(); }

int SimulatedRadio::linkCount() const
{
    return int(std::count_if(_air->links.begin(), _air->links.end(), [](const auto& link) { return link->isUp(); }));
}

bool SimulatedRadio::isConnected(std::string_view aidName) const { return linkOf(*_air, aidName).isUp(); }

bool SimulatedRadio::perform(std::string_view aidName, const WearerAction& action)
{
    auto& link = linkOf(*_air, aidName);
    const auto accepted = link.aid().perform(action);
    link.aidDidChange();
    return accepted;
}

} // namespace aurisk
