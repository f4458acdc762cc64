#pragma once

#include "Tests/Support/AuriskScenario.h"
#include "Tests/Support/ForwardingDelegate.h"

#include <numeric>
#include <set>

/// What the fault sweeps stand on: the bytes at the edge of the library, and an oracle that says what may be known
/// after them, by the drawing of the frame alone.

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

/// What a host may know of an aid.
struct Knowledge {
    std::optional<int> program = {};
    std::map<int, int> volumes = {};
    std::optional<int> transparency = {}, battery = {};
    std::optional<bool> brEdr = {};
    bool brEdrContinuous = false, hearingTest = false;
    std::map<int, Data> blocks = {};
    std::optional<Data> global = {};
    std::map<std::uint8_t, Data> profile = {}; ///< by field number

    friend bool operator==(const Knowledge&, const Knowledge&) = default;
    friend void PrintTo(const Knowledge& known, std::ostream* out)
    {
        *out << "program " << description(known.program) << ", volumes";
        for (const auto& [number, level] : known.volumes)
            *out << " " << number << ":" << level;
        *out << ", transparency " << description(known.transparency) << ", battery " << description(known.battery)
             << ", BR/EDR " << description(known.brEdr) << known.brEdrContinuous << ", test " << known.hearingTest
             << ", blocks " << testing::PrintToString(known.blocks) << ", global "
             << testing::PrintToString(known.global) << ", profile " << testing::PrintToString(known.profile);
    }
};

/// Follows the bytes that arrived, by the drawing of the frame alone, and says what may be known after them: the
/// oracle.
class Oracle {
public:
    Knowledge known;
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
                known.battery = event.bytes[0];
            break;
        case Event::Kind::frame:
            if (isFrame(event.bytes))
                followFrame(event.bytes);
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
    static bool isFrame(const Data& b)
    {
        if (b.size() < 9 || b[1] != 0xFE || b[2] != 0x68 || b.back() != 0x16 || b.size() != b[4] + 7U)
            return false;
        return std::accumulate(b.begin() + 2, b.end() - 2, 0) % 256 == b[b.size() - 2];
    }

    void followFrame(const Data& b) // b[3] command, b[5] and b[6] identifiers, payload from b[7] on
    {
        if (b[3] == 0x9F) {
            const int program = b[5] - 1, volume = b[6 + std::size_t(program)];
            if (known.program == program)
                known.volumes[program] = volume;
            known.program = program;
            return;
        }
        const auto request = std::exchange(_onTheAir, std::nullopt);
        if (!request)
            return; // nobody waits for an answer
        const Data payload(b.begin() + 7, b.end() - 2);
        const bool isLog = b[3] == 0x91 && b[6] == 0x06;
        if (request->as<AuriskRequest::writeProtocolData>() && log)
            isLog ? void(log->insert(log->end(), payload.begin(), payload.end())) : log.reset();
        if (b[3] == 0x91 && b[6] == 0x04)
            followVolumes(b);
        else if (b[3] == 0x91 && b[6] == 0x03 && (b[5] == 0x05 || b[5] == 0x06))
            known.global = payload;
        else if (b[3] == 0x91 && b[6] == 0x03)
            known.blocks[b[5]] = payload;
        else if (b[3] == 0x91 && b[6] == 0x08)
            known.profile[b[5]] = payload;
        else if (b[3] == 0x9D && b[5] == 0xBE)
            known.transparency = b[7];
        else if (b[3] == 0x9D && b[5] == 0xBF)
            std::tie(known.brEdr, known.brEdrContinuous) = std::pair(b[7] != 0, b[7] == 1);
        else if (b[3] == 0x9D && b[5] == 0x39 && b[6] == 0x05)
            known.hearingTest = true;
        else if (b[3] < 0xA0)
            followAcknowledgement(*request);
    }

    void followVolumes(const Data& b)
    {
        known.program = b[5] == 0xFF ? b[7] - 1 : b[5] - 1;
        known.volumes[*known.program] = b[5] == 0xFF ? b[7 + std::size_t(b[7])] : b[7];
    }

    void followAcknowledgement(const AuriskRequest& request)
    {
        if (const auto* block = request.as<AuriskRequest::writeDsp>()) {
            known.blocks[block->program] = block->dsp.toBytes();
            _written.insert(block->program);
        }
        if (const auto* bytes = request.as<AuriskRequest::writeDspData>())
            _written.insert(bytes->program);
        if (const auto* field = request.as<AuriskRequest::writeProfile>())
            known.profile[static_cast<std::uint8_t>(field->type)] = field->data;
        if (const auto* block = request.as<AuriskRequest::writeGlobalDsp>())
            known.global = block->global.toData();
        if (const auto* volume = request.as<AuriskRequest::controlVolume>())
            known.volumes[volume->program] = volume->volume;
        if (const auto* program = request.as<AuriskRequest::controlProgram>())
            known.program = program->program;
        if (const auto* level = request.as<AuriskRequest::setTransparency>())
            known.transparency = level->level;
        if (const auto* brEdr = request.as<AuriskRequest::setBrEdr>())
            std::tie(known.brEdr, known.brEdrContinuous) = std::pair(brEdr->enable, brEdr->continuousIfEnable);
    }

    std::optional<AuriskRequest> _onTheAir;
    Seconds _sentAt{ 0 };
    std::set<int> _written; ///< programs whose block was taken, and that have not been switched to since
};

} // namespace aurisk::tests
