#include "AuriskSDK/HearingAid/Aurisk/Service/AuriskDFUService.h"
#include "AuriskSDK/Platform/Manual/ManualDispatchQueue.h"
#include "Fuzz/FuzzTargets.h"
#include "Fuzz/InputReader.h"
#include "Tests/Support/SecondDecoder.h"
#include "Tests/Support/StubPeripheral.h"
#include "Tests/Support/UpdateOracle.h"

namespace aurisk::fuzz {

namespace {

using Properties = CBCharacteristicProperties;

/// A service for updates, and beside it what its delegate ought to hear.
class Update final : public DFUServiceDelegate, public DFUProgressDelegate {
public:
    void step(InputReader& reader)
    {
        const auto now = _queue.now();
        const auto choice = reader.byte();
        const auto failure = choice < 0x80 ? MaybeError() : BluetoothError{ "fuzz", 1, "no" };
        switch (choice % 8) {
        case 0: start(1 + reader.byte() % 64u); break;
        case 1:
            _expected.stops(now);
            _service->abort();
            break;
        case 2:
            _expected.characteristicsArrive(failure.has_value(), now);
            _service->didDiscoverCharacteristics(_gatt->characteristics(), failure);
            break;
        case 3:
            _expected.subscriptionArrives(failure.has_value(), now);
            _service->didUpdateNotificationStateForCharacteristic(_answers, failure);
            break;
        case 4: notify(tests::frameAround(choice < 0x80 ? 0x9D : 0xDD, reader.take(3))); break;
        case 5: notify(reader.counted()); break;
        case 6: _queue.advance(Seconds(0.05)); break;
        case 7:
            _expected.linkGoes(now);
            _service->didDisconnect(std::nullopt);
            break;
        }
        _queue.runUntilIdle();
        check();
    }

    void end()
    {
        _queue.advance(Seconds(1));
        check();
        require(_queue.clock()->pendingCount() == 0, "work is left over");
    }

    void dfuStateDidChange(DFUState to) override { _states.push_back(rawValue(to)); }
    void dfuError(DFUError error, const std::string& message) override
    {
        _errors.push_back(std::to_string(rawValue(error)) + " " + message);
    }
    void dfuProgressDidChange(int to, double, double) override
    {
        require(to == 0 || to > _percent, "a percentage was told twice");
        require(to <= 255, "a percentage is beyond what is counted");
        _percent = to;
    }

private:
    void start(std::size_t size)
    {
        _expected.starts(size, _queue.now());
        const auto configure
            = DFUConfigure::create()->with(DFUFirmware::create(Data(size, 0x5A), DFUFirmwareType::type1));
        configure->delegate = _me;
        configure->progressDelegate = _me;
        _service->start(configure);
    }

    void notify(DataView value)
    {
        Data bytes(value.begin(), value.end());
        _expected.valueArrives(bytes, _queue.now());
        _answers->setValue(std::move(bytes));
        _service->didUpdateValueForCharacteristic(_answers, *_peripheral, std::nullopt);
    }

    void check()
    {
        _expected.pass(_queue.now());
        require(_states == _expected.states, "the states do not follow from what was received");
        require(_errors == _expected.errors, "the errors do not follow from what was received");
        for (const auto& asked : _peripheral->take())
            require(asked.size() <= std::string("write AE3B  without response").size() + 2 * longestWrite,
                "a write is longer than the connection allows");
    }

    static constexpr std::size_t longestWrite = 20;

    ManualDispatchQueue _queue;
    ScopedMainQueue _scope{ _queue };
    std::shared_ptr<tests::StubPeripheral> _peripheral = std::make_shared<tests::StubPeripheral>();
    std::shared_ptr<CBService> _gatt = std::make_shared<CBService>(CBUUID(0xAE3A), _peripheral);
    std::shared_ptr<CBCharacteristic> _controlPoint
        = std::make_shared<CBCharacteristic>(CBUUID(0xAE3B), Properties::writeWithoutResponse, _gatt);
    std::shared_ptr<CBCharacteristic> _answers
        = std::make_shared<CBCharacteristic>(CBUUID(0xAE3C), Properties::notify, _gatt);
    std::shared_ptr<AuriskDFUService> _service = AuriskDFUService::create("AE3A", _peripheral, _gatt);
    std::shared_ptr<Update> _me{ this, [](auto*) {} };
    tests::UpdateOracle _expected{ longestWrite - 10 };
    std::vector<int> _states;
    std::vector<std::string> _errors;
    int _percent = 0;

public:
    Update() { _gatt->setCharacteristics({ _controlPoint, _answers }); }
};

} // namespace

/// Whatever a device sends in an update, and whenever: the delegate hears what follows from it, and nothing else.
void update(DataView input)
{
    const ScopedContainPolicy contain;
    Update session;
    InputReader reader(input);
    while (!reader.isEmpty())
        session.step(reader);
    session.end();
}

} // namespace aurisk::fuzz
