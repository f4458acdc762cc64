#include <AuriskSDK/AuriskSDK.h>
#include <Simulator/Simulator.h>
#include <iostream>

using namespace aurisk;
template <typename T> using Ref = const std::shared_ptr<T>&;

/// Connects to the first hearing aid that the radio hears and asks how loud it is.
struct FirstProgram : AccessoryManagerScanningDelegate, AccessoryDelegate, std::enable_shared_from_this<FirstProgram> {
    std::shared_ptr<AuriskAccessory> aid;
    void accessoryManagerDidDiscover(Ref<AccessoryManager> manager, Ref<Accessory> found, std::optional<int>) override
    {
        aid = std::dynamic_pointer_cast<AuriskAccessory>(found);
        if (aid && aid->connect(weak_from_this(), Seconds(5), "first"))
            manager->stopScan();
    }
    void deviceDidDiscoverServices(Ref<Accessory>, const std::vector<std::shared_ptr<AccessoryService>>&) override
    {
        aid->request(AuriskRequest::readProgramVolume{}, [](const AuriskResult&) { stopMainQueue(); });
    }
    void accessoryManagerIsScanning(Ref<AccessoryManager>, bool) override { }
    void accessoryManagerDidUpdate(Ref<AccessoryManager>, Ref<Accessory>, std::optional<int>) override { }
    void deviceDidUpdate(Ref<Accessory>, AccessoryState) override { }
    void deviceDidConnect(Ref<Accessory>, const MaybeError&) override { }
    void deviceDidDisconnect(Ref<Accessory>, const MaybeError&) override { }
    void deviceDidFailToConnect(Ref<Accessory>, const MaybeError&) override { }
};

int main()
{
    setPreconditionPolicy(PreconditionPolicy::contain);
    const auto simulator = Simulator::create(SimulatedWorld::makeDefault());
    const auto manager = AccessoryManager::create(simulator->platform());
    const auto program = std::make_shared<FirstProgram>();
    manager->setScanningDelegate(program);
    manager->startScan();
    DispatchQueue::main().asyncAfter(Seconds(10), stopMainQueue); // whatever happens, this is the longest it runs
    runMainQueue();
    const auto volume = program->aid ? program->aid->volume() : std::nullopt;
    std::cout << (volume ? program->aid->name() + " plays at volume " + std::to_string(*volume) : "no answer") << '\n';
    return volume ? 0 : 1;
}
