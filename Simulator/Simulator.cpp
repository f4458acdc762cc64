#include "Simulator/Simulator.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace aurisk {

std::shared_ptr<Simulator> Simulator::create(SimulatedWorld world, DispatchQueue& queue)
{
    SimulatedWorld::fromJson(world.toJson()); // it has all the rules
    auto simulator = std::make_shared<Simulator>(Key(), std::move(world), queue);
    simulator->schedule(queue.now(), 0);
    return simulator;
}

Simulator::Simulator(Key, SimulatedWorld world, DispatchQueue& queue)
    : _queue(queue)
    , _world(std::make_shared<SimulatedWorld>(std::move(world)))
    , _radio(std::make_shared<SimulatedRadio>(_world, queue))
{
    std::stable_sort(_world->script.begin(), _world->script.end(),
        [](const auto& one, const auto& other) { return one.at < other.at; });
}

/// Waits for action number `next` of the repetition that began at `start`.
void Simulator::schedule(Seconds start, std::size_t next)
{
    const auto& script = _world->script;
    if (next == script.size() && _world->scriptPeriod) {
        start += *_world->scriptPeriod;
        next = 0;
    }
    if (next >= script.size())
        return;
    _queue.asyncAfter(start + script[next].at - _queue.now(), [weak = weak_from_this(), start, next] {
        const auto self = weak.lock();
        if (!self)
            return;
        const auto& scripted = self->_world->script[next];
        self->_radio->perform(scripted.aid, scripted.action);
        self->schedule(start, next + 1);
    });
}

} // namespace aurisk
