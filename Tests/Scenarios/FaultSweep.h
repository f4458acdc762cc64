#pragma once

#include "Tests/Support/AuriskCache.h"
#include "Tests/Support/AuriskScenario.h"
#include "Tests/Support/ForwardingDelegate.h"
#include "Tests/Support/SecondDecoder.h"

#include <set>

/// What the fault sweeps stand on: the bytes at the edge of the library, and an oracle that says what may be known
/// after them.

namespace aurisk::tests {

/// What happened at the edge of the library: what it sent, and what reached it.
struct Event {
    enum class Kind { sent, frame, battery } kind;
    Seconds at{ 0 };
    std::optional<AuriskRequest> request = {};
    Data bytes = {};
};

/// Hears a peripheral in the accessory's place and writes down what arrives.
class Tap final : public ForwardingDelegate {
public:
    Tap(std::shared_ptr<CBPeripheralDelegate> next, std::vector<Event>& events)
        : ForwardingDelegate(std::move(next))
        , _events(events)
    {
    }
    void peripheralDidUpdateValueFor(CBPeripheral& peripheral, const std::shared_ptr<CBCharacteristic>& characteristic,
        const MaybeError& error) override
    {
        note(*characteristic);
        ForwardingDelegate::peripheralDidUpdateValueFor(peripheral, characteristic, error);
    }
    void peripheralDidUpdateNotificationStateFor(CBPeripheral& peripheral,
        const std::shared_ptr<CBCharacteristic>& characteristic, const MaybeError& error) override
    {
        if (characteristic->uuid() == CBUUID(0x2A19)) // the battery reads what a confirmed subscription holds
            note(*characteristic);
        ForwardingDelegate::peripheralDidUpdateNotificationStateFor(peripheral, characteristic, error);
    }

private:
    void note(const CBCharacteristic& characteristic)
    {
        const bool isBattery = characteristic.uuid() == CBUUID(0x2A19);
        _events.push_back({ .kind = isBattery ? Event::Kind::battery : Event::Kind::frame,
            .at = DispatchQueue::main().now(),
            .bytes = characteristic.value().value_or(Data{}) });
    }

    std::vector<Event>& _events;
};

/// Follows the bytes that arrived, and says what may be known after them: the oracle.
class Oracle {
public:
    explicit Oracle(AuriskChip chip)
        : _chip(chip)
    {
    }

    AuriskCache known;
    std::optional<Data> log = Data(); ///< what the log's frames brought; none once one of them has failed

    /// Whether a switch of the program was sent that no acknowledged write of its block had asked for.
    bool hasSwitchedUnasked = false;

    void follow(const Event& event)
    {
        if (event.at - _sentAt >= Seconds(3.0))
            giveUp(); // nobody waits for that answer any more
        switch (event.kind) {
        case Event::Kind::sent:
            giveUp();
            _onTheAir = event.request;
            _sentAt = event.at;
            if (const auto* program = event.request->as<AuriskRequest::controlProgram>())
                hasSwitchedUnasked |= _written.erase(program->program) == 0;
            break;
        case Event::Kind::battery:
            if (!event.bytes.empty())
                known.bat = event.bytes[0];
            break;
        case Event::Kind::frame:
            if (const auto decoded = decodeAgain(event.bytes); decoded.result)
                followResult(*decoded.result, *decoded.frame);
            break;
        }
    }

    /// Nothing more will arrive.
    void giveUp()
    {
        if (const auto request = std::exchange(_onTheAir, std::nullopt))
            if (request->as<AuriskRequest::writeProtocolData>())
                log.reset();
    }

private:
    void followResult(const AuriskResult& result, const AuriskRawData& frame)
    {
        const auto* response = result.data();
        if (const auto* notified = response ? response->as<AuriskResponse::didNotify>() : nullptr)
            return known.notified(*notified);
        const auto request = std::exchange(_onTheAir, std::nullopt);
        if (!request)
            return; // nobody waits for an answer
        if (request->as<AuriskRequest::writeProtocolData>() && log) {
            const bool isLog = frame.cmd == 0x91 && frame.di1 == 0x06;
            isLog ? void(log->insert(log->end(), frame.data->begin(), frame.data->end())) : log.reset();
        }
        if (!response || !known.replied(*response, *request, _chip))
            return;
        if (const auto* block = request->as<AuriskRequest::writeDsp>())
            _written.insert(block->program);
        if (const auto* bytes = request->as<AuriskRequest::writeDspData>())
            _written.insert(bytes->program);
    }

    AuriskChip _chip;
    std::optional<AuriskRequest> _onTheAir;
    Seconds _sentAt{ 0 };
    std::set<int> _written; ///< programs whose block was taken, and that have not been switched to since
};

} // namespace aurisk::tests
