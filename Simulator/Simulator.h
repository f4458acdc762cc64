#pragma once

#include "AuriskSDK/Platform/Bluetooth.h"
#include "AuriskSDK/Platform/Dispatch.h"
#include "Simulator/SimulatedRadio.h"
#include "Simulator/SimulatedWorld.h"

#include <memory>
#include <string_view>

namespace aurisk {

/// A world that runs: its radio works, and its wearers do what the script says. Hold on to it for as long as it is to
/// run; the script ends with it. Use it on the thread that runs its queue, which has to outlive it, its platform and
/// whatever holds them.
///
///     const auto simulator = Simulator::create(SimulatedWorld::makeDefault());
///     const auto manager = AccessoryManager::create(simulator->platform());
class Simulator : public std::enable_shared_from_this<Simulator> {
    class Key {
        friend class Simulator;
        Key() = default;
    };

public:
    /// Starts the script at its time 0. Throws SimulatedWorldError for a world that cannot be.
    static std::shared_ptr<Simulator> create(SimulatedWorld world, DispatchQueue& queue = DispatchQueue::main());
    Simulator(Key, SimulatedWorld world, DispatchQueue& queue);

    std::shared_ptr<BluetoothPlatform> platform() const { return _radio; }
    SimulatedRadio& radio() const { return *_radio; }

    /// The world as it is now; its link faults may be changed at any time.
    SimulatedWorld& world() const { return *_world; }

    /// None where the world has no aid of that name.
    std::shared_ptr<SimulatedAid> aid(std::string_view name) const { return _world->aid(name); }

private:
    void schedule(Seconds start, std::size_t next);

    DispatchQueue& _queue;
    std::shared_ptr<SimulatedWorld> _world;
    std::shared_ptr<SimulatedRadio> _radio;
};

} // namespace aurisk
