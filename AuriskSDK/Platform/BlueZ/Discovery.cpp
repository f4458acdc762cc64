#include "AuriskSDK/Platform/BlueZ/Discovery.h"

#include "AuriskSDK/Shared/Utils/AuriskLog.h"

#include <algorithm>

namespace aurisk::bluez {

namespace {

constexpr Seconds retryInterval{ 1 };

/// How long a scan may hear nobody before it is started anew: at first hardly longer than aids take to advertise, later
/// longer and longer, since there may be nobody.
constexpr Seconds firstPatience{ 2 }, patienceOnceHeard{ 10 }, longestPatience{ 60 };

} // namespace

void Discovery::radioIs(const std::string& poweredAdapter)
{
    if (std::exchange(_adapter, poweredAdapter) == poweredAdapter)
        return;
    ++_spell;
    ++_watch;
    _patience = firstPatience;
    _isRestarting = false;
    become(State::off);
}

void Discovery::want(bool wanted)
{
    if (!std::exchange(_wanted, wanted))
        _patience = firstPatience;
    settle();
}

void Discovery::search(bool searching)
{
    if (!std::exchange(_isSearching, searching))
        _patience = firstPatience;
    settle();
}

void Discovery::oncePaused(std::function<void()> paused)
{
    _pausing.push_back(std::move(paused));
    settle();
}

void Discovery::resume()
{
    --_pauses;
    settle();
}

void Discovery::become(State state)
{
    _state = state;
    settle();
}

void Discovery::settle()
{
    if (_state == State::off && isToBeOn())
        return start();
    if (_state == State::on && (!isToBeOn() || _isRestarting))
        return stop();
    if ((_state == State::off || _state == State::refused) && _pauses > 0)
        for (auto& paused : std::exchange(_pausing, {}))
            DispatchQueue::main().async(std::move(paused));
}

void Discovery::start()
{
    _state = State::starting;
    _isRestarting = false;
    // Any filter takes away the daemon's threshold below which a change of the RSSI is not told.
    call("SetDiscoveryFilter", { BusDictionary{ { "Transport", "le" }, { "DuplicateData", true } } },
        [](Discovery& self, const BusReply& filtered) {
            if (filtered.error)
                AuriskLog::log("the scan has no filter: " + filtered.error->message);
            self.call("StartDiscovery", {}, [](Discovery& me, const BusReply& started) {
                // In progress: it is on already, by a call whose answer was not waited for.
                if (started.error && !started.error->name.ends_with(".InProgress")) {
                    AuriskLog::log("the scan does not start: " + started.error->message);
                    return me.retryLater();
                }
                me.watch();
                me.become(State::on);
            });
        });
}

void Discovery::retryLater()
{
    become(State::refused);
    DispatchQueue::main().asyncAfter(retryInterval, [weak = weak_from_this(), spell = _spell] {
        if (const auto self = weak.lock(); self && self->_spell == spell && self->_state == State::refused)
            self->become(State::off);
    });
}

void Discovery::stop()
{
    _state = State::stopping;
    ++_watch;
    call("StopDiscovery", {}, [](Discovery& self, const BusReply&) { self.become(State::off); });
}

/// Restarts the scan where it hears nobody for as long as the patience lasts.
void Discovery::watch()
{
    _hasHeard = false;
    DispatchQueue::main().asyncAfter(_patience, [weak = weak_from_this(), watch = ++_watch] {
        const auto self = weak.lock();
        if (!self || self->_watch != watch)
            return;
        if (!self->_hasHeard)
            return self->didLoseEars();
        self->_patience = patienceOnceHeard;
        self->watch();
    });
}

void Discovery::didLoseEars()
{
    AuriskLog::log("nobody is heard: the scan is started anew");
    _patience = std::min(_patience * 2, longestPatience);
    _isRestarting = true;
    settle();
}

/// An answer that comes after the radio has changed is nobody's.
void Discovery::call(const char* member, BusValues arguments, std::function<void(Discovery&, const BusReply&)> answered)
{
    _objects->call(_adapter, interface::adapter, member, std::move(arguments), daemonLimit,
        [weak = weak_from_this(), spell = _spell, answered = std::move(answered)](const BusReply& reply) {
            if (const auto self = weak.lock(); self && self->_spell == spell)
                answered(*self, reply);
        });
}

} // namespace aurisk::bluez
