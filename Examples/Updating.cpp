#include "Listener.h"

#include <Simulator/Simulator.h>
#include <iostream>

using namespace aurisk;

/// Updates the firmware of the first hearing aid that the radio hears, waits until it is back, and asks which version
/// it has now. The library waits for a silent hearing aid without a limit, so this sets one.
class Updating final : public DFUServiceDelegate,
                       public DFUProgressDelegate,
                       public std::enable_shared_from_this<Updating> {
public:
    explicit Updating(Data image)
        : _image(DFUFirmware::create(std::move(image), DFUFirmwareType::type0))
    {
    }

    void begin(const std::shared_ptr<AccessoryManager>& manager)
    {
        _listener->reports.discovered = [this, manager](const auto& found, auto) {
            _aid = std::dynamic_pointer_cast<AuriskAccessory>(found);
            if (_aid && _aid->connect(_listener, Seconds(5), "updating"))
                manager->stopScan();
        };
        _listener->reports.services = [this](const auto&) { _isInstalled ? readVersion() : update(); };
        _listener->reports.disconnected = [this](const auto&) {
            if (_isInstalled && !_isDone) // it starts anew: an attempt to connect waits until it is back
                _aid->connect(_listener, Seconds(30), "updated");
        };
        manager->setScanningDelegate(_listener);
        manager->startScan(Seconds(5));
    }

    bool isDone() const { return _isDone; }

    void dfuStateDidChange(DFUState to) override
    {
        watch(); // "uploading" comes again with every packet
        if (to == DFUState::validating)
            std::cout << _aid->name() << " has taken the image\n";
        _isInstalled |= to == DFUState::completed;
    }

    void dfuError(DFUError, const std::string& message) override { end("failed to be updated: " + message); }

    void dfuProgressDidChange(int percent, double, double speed) override
    {
        if (percent % 25 == 0)
            std::cout << _aid->name() << ' ' << percent << " %, " << int(speed) << " bytes a second\n";
    }

private:
    void update()
    {
        const auto configure = DFUConfigure::create()->with(_image);
        configure->delegate = weak_from_this();
        configure->progressDelegate = weak_from_this();
        watch();
        _aid->startOTA(configure);
    }

    /// From now on the hearing aid has ten seconds for its next word.
    void watch()
    {
        if (_limit)
            _limit->invalidate();
        _limit = DispatchTimer::scheduledTimer(
            DispatchQueue::main(), Seconds(10), [this] { end("has not been heard for ten seconds"); });
    }

    void readVersion()
    {
        const AuriskRequest::readProfile version{ .type = AuriskProfileType::productSoft };
        _aid->request(version, [this](const AuriskResult& result) {
            _isDone = result.isSuccess();
            end("has version " + _aid->profile().swVersion);
        });
    }

    void end(const std::string& sentence)
    {
        std::cout << _aid->name() << ' ' << sentence << '\n';
        stopMainQueue();
    }

    std::shared_ptr<Listener> _listener = std::make_shared<Listener>();
    std::shared_ptr<DFUFirmware> _image;
    std::shared_ptr<AuriskAccessory> _aid;
    std::shared_ptr<DispatchTimer> _limit;
    bool _isInstalled = false, _isDone = false;
};

int main()
{
    setPreconditionPolicy(PreconditionPolicy::contain);
    const auto simulator = Simulator::create(SimulatedWorld::makeDefault());
    const auto manager = AccessoryManager::create(simulator->platform());

    const std::string head = "version 2.4.0\n"; // the simulated ones look for their version here
    Data image(head.begin(), head.end());
    image.resize(20000, 0xA5);
    const auto updating = std::make_shared<Updating>(std::move(image));
    updating->begin(manager);
    DispatchQueue::main().asyncAfter(Seconds(20), stopMainQueue); // whatever happens, this is the longest it runs
    runMainQueue();
    return updating->isDone() ? 0 : 1;
}
