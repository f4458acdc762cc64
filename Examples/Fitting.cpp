#include "Listener.h"

#include <Simulator/Simulator.h>
#include <iostream>

using namespace aurisk;

/// Fits the first hearing aid that the radio hears: reads the settings of a program, makes the high tones a step louder
/// and the noise reduction stronger, writes them back, and asks again to see what the device holds now.
class Fitting {
public:
    void begin(const std::shared_ptr<AccessoryManager>& manager)
    {
        _listener->reports.discovered = [this, manager](const auto& found, auto) {
            _aid = std::dynamic_pointer_cast<AuriskAccessory>(found);
            if (_aid && _aid->connect(_listener, Seconds(5), "fitting"))
                manager->stopScan();
        };
        _listener->reports.services = [this](const auto&) { read([this](const AuriskDsp& dsp) { change(dsp); }); };
        manager->setScanningDelegate(_listener);
        manager->startScan(Seconds(5));
    }

    bool isDone() const { return _isDone; }

private:
    static constexpr int program = 0;

    /// Goes on with what the device answers. The accessory keeps that, too; but what it keeps may be older.
    void read(std::function<void(const AuriskDsp&)> then)
    {
        _aid->request(AuriskRequest::readDsp{ .program = program }, [this, then](const AuriskResult& result) {
            const auto* read = result.isSuccess() ? result.data()->as<AuriskResponse::didReadDsp>() : nullptr;
            const auto dsp = read ? AuriskDsp::decode(_aid->hearChip(), read->data) : std::nullopt;
            if (!dsp || read->program != program)
                return end("cannot be read: " + description(result));
            then(*dsp);
        });
    }

    void change(const AuriskDsp& dsp)
    {
        _wanted = dsp;
        std::cout << _aid->name() << " had " << summary(*_wanted) << '\n';
        for (const int frequency : _wanted->frequences())
            if (const int step = *_wanted->getEq(frequency); frequency >= 2000 && step + 1 < _wanted->maxEQValue())
                _wanted->setEq(step + 1, frequency);
        _wanted->setNoise(AuriskNoise::strong);
        const AuriskRequest::writeDsp write{ .dsp = *_wanted, .program = program, .withResponse = true };
        _aid->request(write, [this](const AuriskResult& result) {
            if (!result.isSuccess())
                return end("refuses: " + description(result));
            read([this](const AuriskDsp& held) { compare(held); });
        });
    }

    void compare(const AuriskDsp& held)
    {
        _isDone = held == *_wanted;
        end("has " + summary(held));
    }

    void end(const std::string& sentence)
    {
        std::cout << _aid->name() << ' ' << sentence << '\n';
        stopMainQueue();
    }

    static std::string summary(const AuriskDsp& dsp)
    {
        std::string gains;
        for (const int frequency : dsp.frequences())
            gains += ' ' + std::to_string(*dsp.getEq(frequency));
        return "noise reduction " + std::string(caseName(dsp.noise())) + " and equaliser steps" + gains;
    }

    std::shared_ptr<Listener> _listener = std::make_shared<Listener>();
    std::shared_ptr<AuriskAccessory> _aid;
    std::optional<AuriskDsp> _wanted;
    bool _isDone = false;
};

int main()
{
    setPreconditionPolicy(PreconditionPolicy::contain);
    const auto simulator = Simulator::create(SimulatedWorld::makeDefault());
    const auto manager = AccessoryManager::create(simulator->platform());
    Fitting fitting;
    fitting.begin(manager);
    DispatchQueue::main().asyncAfter(Seconds(10), stopMainQueue); // whatever happens, this is the longest it runs
    runMainQueue();
    return fitting.isDone() ? 0 : 1;
}
