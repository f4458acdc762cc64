#include "AuriskSDK/Platform/Manual/ManualDispatchQueue.h"
#include "Fuzz/FuzzTargets.h"
#include "Fuzz/InputReader.h"
#include "Tests/Support/AuriskCache.h"
#include "Tests/Support/PlayedAid.h"
#include "Tests/Support/SecondDecoder.h"

#include <array>

namespace aurisk::fuzz {

namespace {

using tests::AuriskCache;
using tests::decodeAgain;
using tests::frameAround;

AuriskRequest chooseRequest(InputReader& reader)
{
    const int which = reader.byte() % 12, a = reader.byte() % 200, b = reader.byte();
    switch (which) {
    case 0: return AuriskRequest::readVolume{ .program = a };
    case 1: return AuriskRequest::controlVolume{ .volume = b, .program = a };
    case 2: return AuriskRequest::controlProgram{ .program = a };
    case 3: return AuriskRequest::setTransparency{ .level = a };
    case 4: return AuriskRequest::setBrEdr{ .enable = a % 2 == 1, .continuousIfEnable = b % 2 == 1 };
    case 5: return AuriskRequest::readProgramVolume{};
    case 6: return AuriskRequest::getTransparencyLevel{};
    case 7: return AuriskRequest::readOrientation{};
    case 8: {
        AuriskA16Dsp dsp;
        dsp.setEq(b, 250);
        return AuriskRequest::writeDsp{ .dsp = dsp, .program = a % 8, .withResponse = true };
    }
    case 9: {
        AuriskA16GlobalDsp global;
        global.numberOfPrograms = b % 8;
        return AuriskRequest::writeGlobalDsp{ .global = global, .chip = AuriskChip::a16, .withResponse = true };
    }
    case 10:
        return AuriskRequest::writeProfile{ .data = Data(std::size_t(a % 40), std::uint8_t(b)),
            .type = enumCases<AuriskProfileType>[std::size_t(b) % enumCases<AuriskProfileType>.size()].value };
    default: return AuriskRequest::writeDspData{ .data = Data(std::size_t(a)), .program = 0, .withResponse = true };
    }
}

// A little less than is promised, for the clock's rounding.
constexpr Seconds pauseBeforeSending{ 0.1 - 1e-9 };
constexpr Seconds timeLimit{ 3.0 - 1e-9 };

/// An accessory and its device, connected at first, and beside them what the accessory ought to hold.
class Session final : public AuriskAccessoryDelegate, public std::enable_shared_from_this<Session> {
public:
    void begin()
    {
        CBAdvertisementData advertisement;
        advertisement.manufacturerData = Data{ 0xFE, 0xFE, 0x0A, 0x1B, 0x2C, 0x3D, 0x4E, 0x5F, 0x08, 0x06 };
        _radio.hear(_peripheral, advertisement);
        _accessory = std::dynamic_pointer_cast<AuriskAccessory>(_radio.manager->accessories().at(0));
        connect();
    }

    void step(InputReader& reader)
    {
        constexpr std::array<std::uint8_t, 10> replies = { 0x91, 0x94, 0x9C, 0x9D, 0x9F, 0xD1, 0xD4, 0xDC, 0xDD, 0x42 };
        switch (reader.byte() % 7) {
        case 0: request(chooseRequest(reader)); break;
        case 1: {
            const auto choice = reader.byte();
            const int times = choice < 0x80 ? 1 : 2;
            notify(frameAround(replies[choice % replies.size()], reader.counted()), times);
            break;
        }
        case 2: notify(reader.counted(), 1); break;
        case 3: notifyBattery(reader.counted()); break;
        case 4: _queue.advance(Seconds(0.1)); break;
        case 5: _queue.advance(Seconds(reader.byte() * 0.05)); break;
        case 6: _peripheral->isConnected ? _radio.loseLink(_peripheral) : connect(); break;
        }
        require(AuriskCache::of(*_accessory) == _expected, "what is held does not follow from what was received");
    }

    /// Nothing comes any more, so that every request that still waits runs into its time limit.
    void end()
    {
        _queue.advance(Seconds(4.0 * double(_completions.size() + 1)));
        for (const auto count : _completions)
            require(count == 1, "a request did not complete exactly once");
        require(_queue.clock()->pendingCount() == 0, "work is left over");
        require(AuriskCache::of(*_accessory) == _expected, "a time-out has changed what is held");
    }

    void didSendRequest(const std::shared_ptr<AuriskAccessory>&, const AuriskRequest& request) override
    {
        require(_queue.now() - _completedAt >= pauseBeforeSending, "two sendings came too close to each other");
        _inFlight = request;
        _sentAt = _queue.now();
    }
    void batteryDidChanged(const std::shared_ptr<AuriskAccessory>&, int) override { }
    void didNotifyProgram(const std::shared_ptr<AuriskAccessory>&, int, int) override { }
    void didNotifyVolume(const std::shared_ptr<AuriskAccessory>&, int, int) override { }
    void didUpdateValue(const std::shared_ptr<AuriskAccessory>&, const AuriskRequest&) override { }
    void deviceDidUpdate(const std::shared_ptr<Accessory>&, AccessoryState) override { }
    void deviceDidDiscoverServices(
        const std::shared_ptr<Accessory>&, const std::vector<std::shared_ptr<AccessoryService>>&) override
    {
    }
    void deviceDidConnect(const std::shared_ptr<Accessory>&, const MaybeError&) override { }
    void deviceDidDisconnect(const std::shared_ptr<Accessory>&, const MaybeError&) override { }
    void deviceDidFailToConnect(const std::shared_ptr<Accessory>&, const MaybeError&) override { }

private:
    void connect()
    {
        ++_connection;
        _inFlight.reset(); // what the last connection asked for cannot be answered in this one
        _completedAt = Seconds(-1);
        _radio.connect(_peripheral, *_accessory, weak_from_this());
    }

    void request(const AuriskRequest& request)
    {
        const auto index = _completions.size();
        _completions.push_back(0);
        _accessory->request(
            request, [weak = weak_from_this(), index, connection = _connection](const AuriskResult& result) {
                if (const auto self = weak.lock())
                    self->completed(index, connection, result);
            });
    }

    void completed(std::size_t index, int connection, const AuriskResult& result)
    {
        ++_completions[index];
        if (connection != _connection || _accessory->state() != AccessoryState::connected)
            return;
        const auto* error = result.error();
        const bool isTimeOut = error && error->as<AuriskResultError::timeout>();
        require(isTimeOut == (_queue.now() - _sentAt >= timeLimit), "a time-out came too early, or a reply too late");
        _inFlight.reset();
        _completedAt = _queue.now();
    }

    /// The same value so many times at one instant. Only the first reply is one: it completes the request.
    void notify(DataView value, int times)
    {
        if (!_peripheral->isConnected)
            return;
        const auto result = decodeAgain(value).result;
        const auto* response = result ? result->data() : nullptr;
        const auto* notified = response ? response->as<AuriskResponse::didNotify>() : nullptr;
        if (response && !notified && _inFlight)
            _expected.replied(*response, *_inFlight, AuriskChip::a16);
        for (int i = 0; i < times; ++i) {
            if (notified)
                _expected.notified(*notified);
            _peripheral->notify(_peripheral->replies, Data(value.begin(), value.end()));
        }
        _queue.runUntilIdle();
    }

    void notifyBattery(DataView value)
    {
        if (!_peripheral->isConnected)
            return;
        if (!value.empty())
            _expected.bat = value.front();
        _peripheral->notify(_peripheral->battery, Data(value.begin(), value.end()));
    }

    ManualDispatchQueue _queue;
    ScopedMainQueue _scope{ _queue };
    tests::PlayedRadio _radio;
    std::shared_ptr<tests::PlayedAid> _peripheral = tests::PlayedAid::create(CBUUID(0x0001), "X1-L");
    std::shared_ptr<AuriskAccessory> _accessory;
    AuriskCache _expected;
    std::optional<AuriskRequest> _inFlight; ///< sent in this connection, and not yet completed
    Seconds _sentAt{ 0 }, _completedAt{ -1 }; ///< the last time that it happened in this connection
    int _connection = 0;
    std::vector<int> _completions; ///< how often each request has completed
};

} // namespace

/// Whatever a device sends, and whenever: each request completes exactly once, and what is held follows from the frames
/// that were received, each taken for the reply to the request in flight.
void accessory(DataView input)
{
    const ScopedContainPolicy contain;
    const auto session = std::make_shared<Session>();
    session->begin();
    InputReader reader(input);
    while (!reader.isEmpty())
        session->step(reader);
    session->end();
}

} // namespace aurisk::fuzz
