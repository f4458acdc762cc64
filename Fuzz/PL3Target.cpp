#include "AuriskSDK/HearingAid/Vortilex/Data/HDLC.h"
#include "Fuzz/FuzzTargets.h"
#include "Fuzz/InputReader.h"
#include "Tests/HearingAid/Vortilex/PlayedPL3.h"
#include "Tests/HearingAid/Vortilex/SecondReceiver.h"

#include <deque>

namespace aurisk::fuzz {

namespace {

using tests::PL3Cache;
using tests::ReceivedAgain;

constexpr Seconds pauseBeforeSending{ 0.1 }, timeLimit{ 3.0 }, longestTransaction{ 30 };
constexpr Seconds rounding{ 1e-6 };

PL3Request chooseRequest(InputReader& reader)
{
    const auto choice = reader.byte();
    PL3Request request{ .command = static_cast<PL3Command>(choice % 21), .read = choice >= 0x80 };
    if (choice < 0xC0) {
        const auto data = reader.take(std::min<std::size_t>(reader.byte(), CHDLC::longestPayload));
        request.data.emplace(data.begin(), data.end());
    }
    return request;
}

/// An accessory and its device, connected, and beside them what ought to become of the requests and be held.
class Session final : public PL3AccessoryDelegate, public std::enable_shared_from_this<Session> {
public:
    void begin()
    {
        _aid.accessory->setDataDelegate(weak_from_this());
        _aid.connects();
        _aid.showsItsServices();
        _aid.peripheral->take();
    }

    void step(InputReader& reader)
    {
        const auto choice = reader.byte();
        switch (choice % 8) {
        case 0: request(chooseRequest(reader)); break;
        case 1: notify(reader.counted()); break;
        case 2: confirm(std::nullopt); break;
        case 3: confirm(BluetoothError{ "fuzz", 1, "no" }); break;
        case 4: _aid.subscribed(); break;
        case 5: passTime(0); break;
        case 6: passTime(1 + choice / 8); break;
        case 7: passTime(reader.byte() * 4); break;
        }
        require(PL3Cache::of(*_aid.accessory) == _expected, "what is held does not follow from what was received");
        require(_notified == _toNotify, "the delegate was not told of what answers nothing, or of something else");
    }

    /// Nothing comes any more, so that every request that still waits runs into its time limit.
    void end()
    {
        _aid.subscribed();
        passTime(63 * static_cast<int>(_requests.size() + 1));
        for (const auto& one : _requests)
            require(one.completions == 1, "a request did not complete exactly once");
        require(_aid.queue.clock()->pendingCount() == 0, "work is left over");
        require(PL3Cache::of(*_aid.accessory) == _expected, "a time-out has changed what is held");
    }

    void didUpdateValue(const std::shared_ptr<PL3Accessory>&, const PL3Request&) override { ++_updates; }
    void didNotify(const std::shared_ptr<PL3Accessory>&, const PL3Response& data) override
    {
        _notified.push_back(data);
    }

private:
    struct Request {
        PL3Request value;
        int completions = 0;
    };
    struct Write {
        Seconds at;
        std::optional<std::size_t> ends; ///< the request that its confirmation ends, if that is still on the air
    };

    static PL3Response responseOf(const ReceivedAgain& frame)
    {
        return { static_cast<PL3Command>(std::min(frame.command, 20U)), frame.payload };
    }
    Seconds now() const { return _aid.queue.now(); }

    void request(const PL3Request& request)
    {
        const auto index = _requests.size();
        _requests.push_back({ request });
        _aid.accessory->request(request, [weak = weak_from_this(), index](const PL3Result& result) {
            if (const auto self = weak.lock())
                self->completed(index, result);
        });
    }

    void notify(DataView value)
    {
        ReceivedAgain frame;
        frame.take(value);
        if (_onAir && _requests[*_onAir].value.read)
            ends(PL3Result::success(responseOf(frame)));
        else {
            _expected.keep(frame.command, frame.payload);
            _toNotify.push_back(responseOf(frame));
        }
        _aid.notifies(value);
    }

    /// The device confirms the writes in their order, or there is none left to confirm.
    void confirm(const MaybeError& error)
    {
        while (!_writes.empty() && now() - _writes.front().at > longestTransaction + rounding)
            _writes.pop_front();
        if (!_writes.empty() && now() - _writes.front().at > longestTransaction - rounding)
            return; // just now: either would do
        if (!_writes.empty()) {
            const auto ended = _writes.front().ends;
            _writes.pop_front();
            if (ended && ended == _onAir) {
                const auto& written = _requests[*ended].value;
                ends(error ? PL3Result::error(PL3Error::unknown)
                           : PL3Result::success({ written.command, *written.data }));
            }
        }
        _aid.confirms(error);
    }

    /// The request on the air has its result, which is told in a moment.
    void ends(PL3Result result)
    {
        _onAir.reset();
        _result = std::move(result);
    }

    /// At most one request is sent in each twentieth of a second.
    void passTime(int twentieths)
    {
        _aid.queue.runUntilIdle();
        require(!_result, "a result was not told at once");
        for (; twentieths > 0; --twentieths) {
            _aid.queue.advance(Seconds(0.05));
            noteWrites();
            require(!_onAir || now() - _sentAt < timeLimit + rounding, "a request has outlived its time limit");
        }
    }

    void noteWrites()
    {
        const auto written = _aid.peripheral->take();
        if (written.empty())
            return;
        require(!_onAir && _completed < _requests.size(), "something was written that nobody asked for");
        require(now() - _completedAt > pauseBeforeSending - rounding, "two sendings came too close to each other");
        _onAir = _completed;
        _sentAt = now();
        const auto& request = _requests[_completed].value;
        Data bytes;
        for (const auto& line : written) {
            const auto piece = ask_hexadecimal(line.substr(line.rfind(' '))).value();
            require(piece.size() == 20 || &line == &written.back(), "a piece has another length than 20 bytes");
            bytes.insert(bytes.end(), piece.begin(), piece.end());
            const bool isFirst = &line == &written.front();
            _writes.push_back({ _sentAt, isFirst && !request.read ? std::optional(_completed) : std::nullopt });
        }
        ReceivedAgain frame;
        frame.take(bytes); // which waits for one byte more: a device counts differently
        const auto data = request.data.value_or(Data());
        require(frame.command == rawValue(request.command) && frame.payload == data && frame.length == data.size() + 1,
            "what was written is not what was asked for");
    }

    void completed(std::size_t index, const PL3Result& result)
    {
        require(index == _completed, "a request was overtaken");
        ++_requests[index].completions;
        ++_completed;
        _completedAt = now();
        if (_result) {
            require(result == *_result, "a request has the result of something else");
        } else {
            require(result == PL3Result::error(PL3Error::timeout), "a request has a result that nothing gave it");
            require(_onAir == index && now() - _sentAt > timeLimit - rounding, "a time-out came too early");
        }
        require(std::exchange(_updates, 0) == (result.isSuccess() ? 1 : 0), "the delegate was not told of a success");
        if (const auto* response = result.data())
            _expected.keep(rawValue(response->command), response->data);
        _onAir.reset();
        _result.reset();
    }

    tests::PlayedPL3 _aid;
    PL3Cache _expected;
    std::deque<Request> _requests;
    std::size_t _completed = 0; ///< of the requests, which complete in their order
    std::optional<std::size_t> _onAir; ///< the request that has been sent and has no result yet
    std::optional<PL3Result> _result; ///< of the request that was on the air, and is to be told
    std::deque<Write> _writes; ///< those that no confirmation has come for
    Seconds _sentAt{ 0 }, _completedAt{ -1 };
    std::vector<PL3Response> _notified, _toNotify;
    int _updates = 0; ///< told since the last completion
};

} // namespace

/// Whatever a device sends and confirms, and whenever: each request completes exactly once, with what follows from it
/// or by its time limit, and what is held follows from the frames that were received.
void pl3(DataView input)
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
