#pragma once

#include "AuriskSDK/Platform/Manual/ManualDispatchQueue.h"
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

/// Plays a story once with `fault` at each of its messages, and then at every message from one on: a link that goes bad
/// and stays so.
template <typename Run> void playWithFaults(const NamedFault& fault, int messages, Run run)
{
    const auto from = [&](int first, int last) {
        LinkFaults faults;
        for (int message = first; message <= last; ++message)
            faults.faults.push_back({ .kind = fault.kind, .message = message, .by = fault.by });
        return faults;
    };
    for (int message = 1; message <= messages; ++message) {
        SCOPED_TRACE("message " + std::to_string(message));
        run(from(message, message));
    }
    for (int first = 1; first <= messages; first += 3) {
        SCOPED_TRACE("every message from " + std::to_string(first));
        run(from(first, 3 * messages));
    }
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

/// An application, a radio and one hearing aid, whose accessory is of that class, in virtual time. The link takes 5 ms
/// each way.
template <typename Class> class AidScenario : public testing::Test {
protected:
    AidScenario(std::string name, SimulatedWorld world)
        : simulator(Simulator::create(std::move(world)))
        , _name(std::move(name))
    {
        manager->setScanningDelegate(app);
    }

    LinkFaults& faults() { return simulator->world().placed(_name).faults; }
    int messages() const { return simulator->radio().messageCount(_name); }
    void wearer(const std::string& action)
    {
        ASSERT_TRUE(simulator->radio().perform(_name, *WearerAction::fromString(action)));
    }
    void after(Seconds span) { queue.advance(span); }

    /// Scans until the aid is found; nothing heard is left over.
    void givenAFoundAid()
    {
        manager->startScan(1s);
        after(2s);
        ASSERT_EQ(manager->accessories().size(), 1U);
        accessory = std::dynamic_pointer_cast<Class>(manager->accessories().front());
        ASSERT_TRUE(accessory);
        whenFound();
        app->take();
    }
    virtual void whenFound() { }

    /// Connects, and waits until requests can be answered.
    void givenAConnectedAid()
    {
        givenAFoundAid();
        ASSERT_TRUE(accessory->connect(app, "left"));
        after(1s);
        ASSERT_EQ(accessory->state(), AccessoryState::connected);
        app->take();
    }

    ManualDispatchQueue queue;
    ScopedMainQueue main{ queue };
    std::shared_ptr<Simulator> simulator;
    std::shared_ptr<Application> app = std::make_shared<Application>();
    std::shared_ptr<WatchedPlatform> platform = std::make_shared<WatchedPlatform>(simulator->platform());
    std::shared_ptr<AccessoryManager> manager = AccessoryManager::create(platform);
    std::shared_ptr<Class> accessory;

private:
    std::string _name;
};

} // namespace aurisk::tests
