#pragma once

#include "AuriskSDK/Platform/Manual/ManualDispatchQueue.h"
#include "Simulator/SimulatedAuriskAid.h"
#include "Simulator/Simulator.h"
#include "Tests/Support/Application.h"

#include <gmock/gmock.h>

#include <chrono>

namespace aurisk::tests {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using Kind = Fault::Kind;

/// A kind of fault, under the name that a sweep gives its test.
struct NamedFault {
    const char* name;
    Kind kind;
    Seconds by = Seconds(0);
};

/// Every kind of fault; of delays those that matter to what is swept.
inline std::vector<NamedFault> everyFault(std::initializer_list<NamedFault> delays)
{
    std::vector<NamedFault> all = {
        { "DropLinkBefore", Kind::dropLinkBefore },
        { "DropLinkAfter", Kind::dropLinkAfter },
        { "Lose", Kind::lose },
        { "Duplicate", Kind::duplicate },
        { "Corrupt", Kind::corrupt },
        { "Refuse", Kind::refuse },
    };
    all.insert(all.end(), delays);
    return all;
}

/// Passes on a platform, and knows the central that it made last.
class WatchedPlatform final : public BluetoothPlatform {
public:
    explicit WatchedPlatform(std::shared_ptr<BluetoothPlatform> platform)
        : _platform(std::move(platform))
    {
    }
    std::shared_ptr<CBCentralManager> makeCentralManager(
        std::weak_ptr<CBCentralManagerDelegate> delegate, const CBCentralManagerOptions& options) override
    {
        auto made = _platform->makeCentralManager(std::move(delegate), options);
        central = made;
        return made;
    }

    std::weak_ptr<CBCentralManager> central;

private:
    std::shared_ptr<BluetoothPlatform> _platform;
};

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
class AuriskScenario : public testing::Test {
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
    {
        manager->setStatusDelegate(app);
        manager->setScanningDelegate(app);
    }

    AuriskAidState aid() const { return dynamic_cast<const SimulatedAuriskAid&>(*simulator->aid(aidName)).state(); }
    LinkFaults& faults() { return simulator->world().placed(aidName).faults; }
    void wearer(const std::string& action)
    {
        ASSERT_TRUE(simulator->radio().perform(aidName, *WearerAction::fromString(action)));
    }
    void after(Seconds span) { queue.advance(span); }

    /// Scans until the aid is found; nothing heard is left over.
    void givenAFoundAid()
    {
        manager->startScan(1s);
        after(2s);
        ASSERT_EQ(manager->accessories().size(), 1U);
        accessory = std::dynamic_pointer_cast<AuriskAccessory>(manager->accessories().front());
        ASSERT_TRUE(accessory);
        app->take();
    }

    /// Connects, and waits until requests can be answered.
    void givenAConnectedAid()
    {
        givenAFoundAid();
        ASSERT_TRUE(accessory->connect(app, "left"));
        after(1s);
        ASSERT_EQ(accessory->state(), AccessoryState::connected);
        app->take();
    }

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

    ManualDispatchQueue queue;
    ScopedMainQueue main{ queue };
    std::shared_ptr<Simulator> simulator = Simulator::create(world());
    std::shared_ptr<Application> app = std::make_shared<Application>();
    std::shared_ptr<WatchedPlatform> platform = std::make_shared<WatchedPlatform>(simulator->platform());
    std::shared_ptr<AccessoryManager> manager = AccessoryManager::create(platform);
    std::shared_ptr<AuriskAccessory> accessory;
};

} // namespace aurisk::tests
