#pragma once

#include "AuriskSDK/Platform/Data.h"
#include "AuriskSDK/Platform/Dispatch.h"
#include "AuriskSDK/Shared/Utils/HexToData.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

namespace aurisk::tests {

/// What the delegate of a device's updates is to hear after what arrived, by the drawing of the frames alone, while
/// preconditions that a device breaks are contained.
class UpdateOracle {
public:
    /// `chunk`: how many bytes of an image a packet carries.
    explicit UpdateOracle(std::size_t chunk)
        : _chunk(chunk)
    {
    }

    std::vector<int> states;
    std::vector<std::string> errors;

    /// An update of an image of that many bytes; nothing where one runs.
    void starts(std::size_t size, Seconds now)
    {
        pass(now);
        if (_isRunning)
            return;
        _isRunning = _isUnderWay = true;
        _image = size;
        _step = _isKnown ? Step::subscribing : Step::discovering;
        if (_isKnown)
            begin();
    }

    void characteristicsArrive(bool failed, Seconds now)
    {
        pass(now);
        _isKnown = _isKnown || !failed || !_isRunning;
        if (_step != Step::discovering)
            return;
        _step = failed ? Step::stuck : Step::subscribing;
        if (failed)
            errors.push_back("5 Characteristics discovery failed");
        else
            begin();
    }

    void subscriptionArrives(bool failed, Seconds now)
    {
        pass(now);
        if (!isListening())
            return;
        if (failed)
            errors.push_back("8 Enabling notifications failed");
        else
            succeed();
    }

    void valueArrives(const Data& b, Seconds now)
    {
        pass(now);
        if (!isListening() || b.empty())
            return;
        const bool isLikeAFrame = b.size() >= 7 && b[1] == 0xFE && b[2] == 0x68 && b.back() == 0x16;
        if (isLikeAFrame && b[4] >= 250)
            return; // no frame is that long
        const bool isFrame = isLikeAFrame && b.size() == b[4] + 7U
            && std::accumulate(b.begin() + 2, b.end() - 2, 0) % 256 == b[b.size() - 2];
        const int payload = isFrame && b[4] >= 3 ? b[7] : 0;
        switch (b.size() > 3 && b[3] == 0xDD && payload != 0x1A ? 0 : payload) {
        case 0x11: break;
        case 0x12: errors.push_back("16 init failure"); break;
        case 0x13: succeed(); break;
        case 0x14: errors.push_back("17 Disk is not enough"); break;
        case 0x15: packetIsTaken(); break;
        case 0x16: errors.push_back("18 recv_pkg_seq_failure"); break;
        case 0x17: succeed(); break;
        case 0x18: errors.push_back("15 crc error"); break;
        case 0x19: _late.push_back({ now + delay, false, _step }); break;
        case 0x1A: _late.push_back({ now + delay, true, _step }); break;
        default: errors.push_back("11 Unsupported response received: 0x" + ask_hexadecimal(b));
        }
    }

    void linkGoes(Seconds now)
    {
        pass(now);
        const auto isFinal = [](const Late& late) { return late.isFailure || late.in == Step::validating; };
        if (std::exchange(_isUnderWay, false) && std::ranges::none_of(_late, isFinal))
            errors.push_back("10 Receiving notification failed");
    }

    void stops(Seconds now)
    {
        pass(now);
        if (_step != Step::none && _step != Step::discovering)
            states.push_back(11);
        else
            _step = Step::none;
        _isRunning = _isUnderWay = false;
    }

    /// What the device said of its boot is told a moment later.
    void pass(Seconds now)
    {
        while (!_late.empty() && _late.front().due <= now + Seconds(1e-9)) {
            const auto late = _late.front();
            _late.erase(_late.begin());
            if (late.isFailure)
                fails("19 boot write failed");
            else if (late.in == Step::validating)
                completes();
            else if (late.in == Step::uploading)
                validates();
        }
    }

private:
    enum class Step { none, discovering, stuck, subscribing, starting, uploading, validating };
    struct Late {
        Seconds due;
        bool isFailure;
        Step in; ///< in which the device said so
    };
    static constexpr Seconds delay{ 0.1 };

    bool isListening() const { return _isRunning && _step >= Step::subscribing; }

    void begin()
    {
        states.push_back(1);
        _late.clear(); // whatever became of the update before
    }

    void fails(std::string error)
    {
        errors.push_back(std::move(error));
        _isRunning = true; // until it is stopped
    }

    void completes()
    {
        states.push_back(10);
        _isUnderWay = false;
    }

    void validates()
    {
        states.push_back(6);
        _step = Step::validating;
    }

    void succeed()
    {
        if (_step == Step::validating)
            return states.push_back(7);
        if (_step == Step::subscribing) {
            states.push_back(2);
            _step = Step::starting;
            _size = _image;
            _taken = _underWay = 0;
        } else {
            states.push_back(5);
            _step = Step::uploading;
            _underWay = std::min(_chunk, _size - _taken);
        }
    }

    void packetIsTaken()
    {
        if (_size == 0 || (_taken + _underWay) * 100 / _size > 255)
            return; // none was sent that this could be about
        _taken += _underWay;
        if (_taken != _size)
            return succeed();
        if (_step == Step::uploading)
            validates();
        else if (_step == Step::validating)
            completes();
    }

    std::size_t _chunk, _image = 0, _size = 0, _taken = 0, _underWay = 0;
    Step _step = Step::none;
    bool _isKnown = false; ///< both characteristics
    bool _isRunning = false, _isUnderWay = false;
    std::vector<Late> _late;
};

} // namespace aurisk::tests
