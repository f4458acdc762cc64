#pragma once

#include "Simulator/SimulatedAuriskAid.h"
#include "Tests/Support/AidScenario.h"

namespace aurisk::tests {

/// Makes an accessory of no family of whatever is heard.
struct PlainSelector final : AccessorySelectorDelegate {
    std::shared_ptr<Accessory> select(const std::shared_ptr<CBPeripheral>& peripheral, DataView mfgData,
        const std::shared_ptr<AccessoryManager>& manager) override
    {
        if (onSelect)
            onSelect();
        return Accessory::create(peripheral, mfgData, manager);
    }
    std::function<void()> onSelect;
};

/// An application, a radio and one A16 hearing aid, "X1-L", in virtual time. The link takes 5 ms each way.
class AuriskScenario : public AidScenario<AuriskAccessory> {
protected:
    static constexpr auto aidName = "X1-L";

    static AuriskAidState aidState()
    {
        AuriskAidState state;
        state.name = aidName;
        state.address = "0A:1B:2C:3D:4E:5F";
        state.volumes = { 8, 5, 7, 2 };
        state.battery = 80;
        return state;
    }

    static SimulatedWorld world(LinkFaults faults = {})
    {
        SimulatedWorld world;
        world.aids.push_back(
            { .aid = std::make_shared<SimulatedAuriskAid>(aidState()), .rssi = -48, .faults = std::move(faults) });
        return world;
    }

    AuriskScenario()
        : AidScenario(aidName, world())
    {
        manager->setStatusDelegate(app);
    }

    AuriskAidState aid() const { return dynamic_cast<const SimulatedAuriskAid&>(*simulator->aid(aidName)).state(); }

    void whenRequesting(const AuriskRequest& request) { app->request(*accessory, request); }

    /// What was heard, without the lines about sending and updating.
    Lines results()
    {
        Lines lines;
        for (auto& line : app->take())
            if (!line.starts_with("sent ") && !line.starts_with("updated "))
                lines.push_back(line);
        return lines;
    }
};

} // namespace aurisk::tests
