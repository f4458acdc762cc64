#include "Tests/Bus/AHostOnAPlayedBus.h"

#include <random>

namespace aurisk::bluez {
namespace {

/// What an application has asked for and been told of one aid.
struct Hope {
    enum State { idle, connecting, connected, disconnecting };
    State state = idle;
    bool again = false; ///< a connection was asked for while one ends

    void connect()
    {
        if (state == idle)
            state = connecting;
        else if (state == disconnecting)
            again = true;
    }
    void cancel()
    {
        again = false;
        if (state != idle)
            state = disconnecting;
    }
    void end() { state = std::exchange(again, false) ? connecting : idle; }
};

/// An application, a daemon and two aids that do what occurs to them; each test has a seed of its own.
class ARandomStory : public AHostOnAPlayedBus, public testing::WithParamInterface<unsigned> {
protected:
    ARandomStory()
        : _random(GetParam())
    {
        addAid("L"), addAid("R");
        _whole = daemon.objects;
        daemon.on["Connect"] = [this](const BusRequest& request) { answerConnect(request); };
        daemon.on["Disconnect"] = [this](const BusRequest& request) { answerDisconnect(request); };
    }

    /// What an application may hear, given what it asked for and heard before.
    void told(const std::string& line)
    {
        _log.push_back(line);
        const auto word = line.substr(0, line.find(' '));
        if (word == "found" || word == "state")
            return;
        auto& hope = _hopes[line.substr(word.size() + 1, 1)];
        const bool wasConnected = hope.state == Hope::connected || hope.state == Hope::disconnecting;
        EXPECT_EQ(wasConnected, word == "disconnected") << line << " comes unasked: " << story();
        EXPECT_NE(hope.state, Hope::idle) << line << " comes twice: " << story();
        if (word == "connected")
            hope.state = Hope::connected;
        else
            hope.end();
    }

    void step()
    {
        const std::string name = chance(2) ? "L" : "R";
        const auto& path = aids.at(name);
        const bool isKnown = daemon.has(path);
        switch (pick(14)) {
        case 0:
        case 1:
        case 2:
            note("connect " + name);
            _hopes[name].connect();
            return connect(name);
        case 3:
        case 4:
            note("cancel " + name);
            _hopes[name].cancel();
            return cancel(name);
        case 5: return isKnown ? note("link down " + name), daemon.setLink(path, false) : void();
        case 6: return isKnown ? note("remove " + name), daemon.remove(path) : void();
        case 7: return bringAidsBack();
        case 8: return answerOneLate();
        case 9: return chance(3) ? setRadio(!_isOn, _isPresent) : void();
        case 10: return chance(3) ? setRadio(_isOn, !_isPresent) : void();
        case 11: return chance(2) ? central->scanForPeripherals({ .allowDuplicates = true }) : central->stopScan();
        case 12: return isKnown ? daemon.hear(path) : void();
        default: return isKnown ? daemon.change(path, interface::device, { { "ServicesResolved", true } }) : void();
        }
    }

    /// From now on the daemon obeys, and all that was begun comes to an end.
    void comeToAnEnd()
    {
        _isWayward = false;
        setRadio(true, true);
        const auto isSettled = [this] {
            return std::all_of(_hopes.begin(), _hopes.end(), [](const auto& entry) {
                return entry.second.state == Hope::idle || entry.second.state == Hope::connected;
            });
        };
        EXPECT_TRUE(until(isSettled, Seconds(25))) << story() << testing::PrintToString(daemon.calls);
        for (const auto& [name, hope] : _hopes)
            EXPECT_EQ(peripheral(name)->state() == CBPeripheralState::connected, hope.state == Hope::connected);
    }

    unsigned pick(unsigned below) { return unsigned(_random() % below); }

private:
    bool chance(unsigned outOf) { return pick(outOf) == 0; }
    void note(const std::string& what) { _log.push_back("> " + what); }
    std::string story() const { return testing::PrintToString(_log); }

    const char* anyError()
    {
        static constexpr const char* errors[] = { "le-connection-abort-by-local", "Operation already in progress",
            "Input/output error", "br-connection-canceled" };
        return errors[pick(4)];
    }

    void answerConnect(const BusRequest& request)
    {
        if (!daemon.has(request.path) || !_isWayward)
            return daemon.obey(request);
        switch (pick(4)) {
        case 0: return daemon.obey(request);
        case 1: return daemon.fail(request, anyError());
        case 2: // its services follow, or do not
            daemon.change(request.path, interface::device, { { "Connected", true } });
            return daemon.answer(request);
        default: daemon.hold(request);
        }
    }

    void answerDisconnect(const BusRequest& request)
    {
        if (_isWayward && chance(2))
            return daemon.hold(request);
        for (const auto& held : std::exchange(daemon.held, {})) // an attempt under way is given up
            if (held.path == request.path && held.member == "Connect")
                daemon.fail(held, "br-connection-canceled");
            else
                daemon.hold(held);
        const bool answersFirst = chance(2);
        if (answersFirst)
            daemon.answer(request);
        if (daemon.has(request.path))
            daemon.setLink(request.path, false);
        if (!answersFirst)
            daemon.answer(request);
    }

    void answerOneLate()
    {
        if (daemon.held.empty())
            return;
        const auto request = daemon.held.front();
        daemon.held.pop_front();
        if (request.member == "Connect" && chance(2))
            daemon.fail(request, anyError());
        else
            daemon.obey(request);
    }

    void bringAidsBack()
    {
        for (const auto& [name, path] : aids)
            if (!daemon.has(path)) {
                daemon.objects[path] = _whole.at(path);
                daemon.announce(path);
            }
    }

    void setRadio(bool isOn, bool isPresent)
    {
        if (isPresent != std::exchange(_isPresent, isPresent))
            note("daemon"), daemon.setPresent(isPresent);
        if (isOn != std::exchange(_isOn, isOn))
            note("power"), daemon.setPower(isOn);
    }

    std::mt19937 _random;
    BusObjects _whole; ///< with all that there may be
    std::map<std::string, Hope> _hopes; ///< by name
    Lines _log;
    bool _isWayward = true, _isOn = true, _isPresent = true;
};

TEST_P(ARandomStory, EndsEachAttemptAndEachLinkOnce)
{
    begin(Seconds(2));
    recorder->onLine = [this](const std::string& line) { told(line); };
    for (int i = 0; i < 120 && !HasFailure(); ++i) {
        step();
        pass(Seconds(0.002 * (1 << pick(7))));
    }
    comeToAnEnd();
}

INSTANTIATE_TEST_SUITE_P(OnAPlayedBus, ARandomStory, testing::Range(1u, 5u));

} // namespace
} // namespace aurisk::bluez
