#include "AuriskSDK/Platform/BlueZ/Connector.h"

#include "AuriskSDK/Shared/Utils/AuriskLog.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace aurisk::bluez {

namespace {

/// How long one attempt with this limit may hear nothing while others wait.
Seconds sliceOf(Seconds limit) { return std::min(Seconds(10), limit / 4); }

/// Discovering services takes a second or two, and many times that on a bad link. A link that was there before may be
/// one that a daemon before this one made: nobody will ever discover its services.
constexpr Seconds resolveLimit{ 15 }, adoptedResolveLimit{ 3 };

/// Such a link may also be one that somebody is just ending, for which the daemon takes two seconds without a word.
constexpr Seconds adoptionTime{ 2.5 };

/// The services of a device may follow the word that they are known.
constexpr Seconds settleTime{ 0.5 };

/// Between two tries: the delay doubles from the first to the longest.
constexpr Seconds busyDelay{ 1 }, fullDelay{ 4 }, firstDelay{ 0.2 }, longestDelay{ 5 };
constexpr int mostDoublings = 5;

/// A delay of a length that nobody else will have chosen, so that two hosts do not meet again and again.
Seconds jittered(Seconds delay)
{
    const auto fraction = std::fmod(DispatchQueue::main().now().count() * 1000, 1.0);
    return delay * (0.75 + 0.5 * fraction);
}

} // namespace

/// `work`, unless the attempt has ended or gone on to another step by then.
template <typename Work> auto Connector::inThisStep(Attempt& attempt, Work work)
{
    const auto found = find(*attempt.client);
    return [weak = weak_from_this(), weakAttempt = std::weak_ptr(*found), turn = attempt.turn, work](
               const auto&... arguments) mutable {
        const auto self = weak.lock();
        const auto alive = weakAttempt.lock();
        if (self && alive && alive->turn == turn)
            work(*self, *alive, arguments...);
    };
}

template <typename Work> void Connector::after(Seconds delay, Attempt& attempt, Work work)
{
    DispatchQueue::main().asyncAfter(delay, inThisStep(attempt, std::move(work)));
}

void Connector::enter(Attempt& attempt, Step step)
{
    attempt.step = step;
    ++attempt.turn;
    if (isFirst(attempt))
        _discovery->search(step == Step::searching);
}

Connector::Attempts::iterator Connector::find(const ConnectionClient& client)
{
    return std::find_if(
        _attempts.begin(), _attempts.end(), [&](const auto& attempt) { return attempt->client.get() == &client; });
}

void Connector::connect(const std::shared_ptr<ConnectionClient>& client, Seconds limit)
{
    const auto attempt = std::make_shared<Attempt>();
    attempt->client = client;
    attempt->limit = limit;
    attempt->deadline = DispatchQueue::main().now() + limit;
    _attempts.push_back(attempt);
    DispatchQueue::main().asyncAfter(limit, [weak = weak_from_this(), weakAttempt = std::weak_ptr(attempt)] {
        const auto self = weak.lock();
        const auto alive = weakAttempt.lock();
        if (self && alive)
            self->deadlineHasPassed(*alive);
    });
    if (_attempts.size() == 1)
        beginNext();
    else if (const auto step = _attempts.front()->step; step == Step::connecting || step == Step::searching)
        letOthersLater(*_attempts.front());
}

void Connector::beginNext()
{
    if (_attempts.empty()) {
        if (std::exchange(_isPausing, false))
            _discovery->resume();
        return;
    }
    auto& attempt = *_attempts.front();
    enter(attempt, Step::waiting);
    auto begin = inThisStep(attempt, [](Connector& self, Attempt& first) { self.tryConnecting(first); });
    if (!std::exchange(_isPausing, true))
        _discovery->pause();
    _discovery->oncePaused(std::move(begin));
}

bool Connector::isDevice(const Attempt& attempt, const char* property) const
{
    return _objects->isTrue(attempt.client->devicePath(), interface::device, property);
}

bool Connector::hasServices(const Attempt& attempt) const
{
    return !_objects->below(attempt.client->devicePath(), interface::service).empty();
}

void Connector::tryConnecting(Attempt& attempt)
{
    if (!_objects->propertiesOf(attempt.client->devicePath(), interface::device))
        return search(attempt);
    enter(attempt, Step::connecting);
    attempt.hasBeenTried = true;
    const bool isMadeByOthers = std::exchange(attempt.isMadeByOthers, false);
    attempt.isAdopted = isDevice(attempt, "Connected") && !isMadeByOthers;
    const auto remaining = attempt.deadline - DispatchQueue::main().now() + daemonLimit; // we give up before the bus
    _objects->call(attempt.client->devicePath(), interface::device, "Connect", {}, remaining,
        inThisStep(
            attempt, [](Connector& self, Attempt& first, const BusReply& reply) { self.didAnswer(first, reply); }));
    if (_attempts.size() > 1)
        letOthersLater(attempt);
}

/// Devices that have not been heard for a while leave the tree. The scan goes on until this one is back.
void Connector::search(Attempt& attempt)
{
    enter(attempt, Step::searching);
    if (std::exchange(_isPausing, false))
        _discovery->resume();
    if (_attempts.size() > 1)
        letOthersLater(attempt);
}

void Connector::didAnswer(Attempt& attempt, const BusReply& reply)
{
    if (!reply.error)
        return resolve(attempt);
    const auto failure = classify(*reply.error);
    if (failure == ConnectFailure::connected)
        return resolve(attempt);
    didFail(attempt, bluezError("connecting to " + attempt.client->label(), *reply.error), failure);
}

void Connector::resolve(Attempt& attempt)
{
    enter(attempt, Step::resolving);
    if (isDevice(attempt, "ServicesResolved")) {
        if (!attempt.isAdopted)
            return settle(attempt);
        return after(adoptionTime, attempt, [](Connector& self, Attempt& first) { self.settle(first); });
    }
    const auto limit = attempt.isAdopted ? adoptedResolveLimit : resolveLimit;
    after(limit, attempt, [limit](Connector& self, Attempt& first) {
        const auto error = bluezError(ErrorCode::timedOut,
            fmt::format("{} did not tell its services within {:g} s.", first.client->label(), limit.count()));
        self.stop(first, [&self, &first, error] { self.didFail(first, error, ConnectFailure::confused); });
    });
}

/// The daemon tells what has appeared before it answers a call, so that after any answer the services are in the tree.
/// Of services that are there from an earlier connection it does not tell the MTU of this one.
void Connector::settle(Attempt& attempt)
{
    enter(attempt, Step::settling);
    const auto done = inThisStep(attempt, [](Connector& self, Attempt& first) {
        if (self.hasServices(first))
            self.finish(first)->connectionIsMade();
        else
            self.settleLater(first);
    });
    const auto device = attempt.client->devicePath();
    const auto known = _objects->below(device, interface::characteristic);
    if (known.empty())
        _objects->fetch(device, interface::device, "ServicesResolved", done);
    else
        _objects->fetch(known.front(), interface::characteristic, "MTU", done);
}

/// A device may have no services. Others may be late, and what a refresh does not bring is not there.
void Connector::settleLater(Attempt& attempt)
{
    after(settleTime, attempt, [](Connector& self, Attempt& first) {
        self._objects->refresh(self.inThisStep(first, [](Connector& me, Attempt& same) {
            AuriskLog::log(fmt::format(
                "{} {} services", same.client->label(), me.hasServices(same) ? "was late with its" : "has no"));
            me.finish(same)->connectionIsMade();
        }));
    });
}

void Connector::didFail(Attempt& attempt, const BluetoothError& error, ConnectFailure failure)
{
    AuriskLog::log(error.localizedDescription);
    attempt.lastError = error;
    if (failure != ConnectFailure::confused)
        attempt.strikes = 0;
    switch (failure) {
    case ConnectFailure::final: return fail(attempt, error);
    case ConnectFailure::busy: return waitForOthers(attempt);
    case ConnectFailure::full: return backOff(attempt, fullDelay);
    case ConnectFailure::gone: return search(attempt);
    case ConnectFailure::confused:
        if (++attempt.strikes > 1 && forget(attempt))
            return;
        break;
    case ConnectFailure::connected:
    case ConnectFailure::transient: break;
    }
    backOff(attempt, jittered(std::min(firstDelay * (1 << std::min(attempt.tries++, mostDoublings)), longestDelay)));
}

/// The daemon can be left with a link that it cannot use, or with services that it does not tell. It begins anew with a
/// device that it has forgotten; one that is bonded it is not made to forget.
bool Connector::forget(Attempt& attempt)
{
    const auto path = attempt.client->devicePath();
    if (isDevice(attempt, "Paired") || isDevice(attempt, "Bonded"))
        return false;
    AuriskLog::log(fmt::format("{} is made forgotten, to begin anew", attempt.client->label()));
    attempt.strikes = 0;
    enter(attempt, Step::backingOff);
    _objects->call(parentOf(path), interface::adapter, "RemoveDevice", { ObjectPath{ path } }, daemonLimit,
        inThisStep(attempt, [](Connector& self, Attempt& first, const BusReply&) { self.tryConnecting(first); }));
    return true;
}

/// Somebody else is making the link, which is not to be ended.
void Connector::waitForOthers(Attempt& attempt)
{
    enter(attempt, Step::backingOff);
    attempt.isMadeByOthers = true;
    after(busyDelay, attempt, [](Connector& self, Attempt& first) { self.tryAgain(first); });
}

/// The next try has to wait for the end of a link that this one may have left behind.
void Connector::backOff(Attempt& attempt, Seconds delay)
{
    enter(attempt, Step::backingOff);
    after(delay, attempt, [](Connector& self, Attempt& first) {
        if (!self.isDevice(first, "Connected") || self.isDevice(first, "ServicesResolved"))
            return self.tryAgain(first);
        self.stop(first, [&self, &first] { self.tryAgain(first); });
    });
}

void Connector::tryAgain(Attempt& attempt)
{
    if (_attempts.size() > 1)
        return giveWay();
    tryConnecting(attempt);
}

void Connector::giveWay()
{
    enter(*_attempts.front(), Step::waiting);
    std::rotate(_attempts.begin(), _attempts.begin() + 1, _attempts.end());
    beginNext();
}

/// Ends the try: the daemon gives up a `Connect` at a `Disconnect`, and ends a link.
void Connector::stop(Attempt& attempt, std::function<void()> stopped)
{
    enter(attempt, Step::stopping);
    attempt.stopped = std::move(stopped);
    disconnect(attempt, inThisStep(attempt, [](Connector& self, Attempt& first, const BusReply&) {
        self.enter(first, Step::waiting);
        std::exchange(first.stopped, nullptr)();
    }));
}

void Connector::disconnect(const Attempt& attempt, SystemBus::Answer answered) const
{
    _objects->call(
        attempt.client->devicePath(), interface::device, "Disconnect", {}, disconnectLimit, std::move(answered));
}

void Connector::letOthersLater(Attempt& attempt)
{
    after(sliceOf(attempt.limit), attempt, [](Connector& self, Attempt& first) { self.letOthers(first); });
}

/// Lets those who wait have a try; this attempt comes again after them.
void Connector::letOthers(Attempt& attempt)
{
    if (_attempts.size() < 2)
        return;
    if (attempt.step == Step::connecting)
        return stop(attempt, [this] { giveWay(); });
    giveWay();
}

std::shared_ptr<Connector::Attempt> Connector::firstAt(const std::string& path) const
{
    return !_attempts.empty() && _attempts.front()->client->devicePath() == path ? _attempts.front() : nullptr;
}

void Connector::deviceDidAppear(const std::string& path)
{
    if (const auto attempt = firstAt(path); attempt && attempt->step == Step::searching)
        beginNext();
}

void Connector::servicesDidResolve(const std::string& path)
{
    if (const auto attempt = firstAt(path); attempt && attempt->step == Step::resolving)
        settle(*attempt);
}

void Connector::linkDidGo(const std::string& path)
{
    const auto attempt = firstAt(path);
    if (attempt && attempt->step == Step::connecting) {
        attempt->isAdopted = false;
        if (!_objects->propertiesOf(path, interface::device))
            return search(*attempt);
    }
    if (attempt && (attempt->step == Step::resolving || attempt->step == Step::settling))
        didFail(*attempt, bluezError(ErrorCode::linkLost, "The link to " + attempt->client->label() + " did not last."),
            ConnectFailure::transient);
}

BluetoothError Connector::tooLate(const Attempt& attempt) const
{
    const auto within = fmt::format(" within {:g} s", attempt.limit.count());
    const auto sentence = [&]() -> std::string {
        switch (attempt.step) {
        case Step::searching: return "was not heard" + within;
        case Step::resolving:
        case Step::settling: return "did not tell its services" + within;
        case Step::waiting:
        case Step::connecting:
        case Step::backingOff:
        case Step::stopping: break;
        }
        return isFirst(attempt) || attempt.hasBeenTried ? "did not answer" + within
                                                        : "was not tried" + within + ": the radio was busy";
    };
    auto text = fmt::format("{} {}.", attempt.client->label(), sentence());
    if (attempt.lastError)
        text += " Before that: " + attempt.lastError->localizedDescription;
    return bluezError(ErrorCode::timedOut, std::move(text));
}

void Connector::deadlineHasPassed(Attempt& attempt)
{
    const auto error = tooLate(attempt);
    const auto step = attempt.step;
    if (step == Step::connecting || step == Step::resolving || step == Step::settling)
        return stop(attempt, [this, &attempt, error] { fail(attempt, error); });
    if (step == Step::stopping)
        attempt.stopped = [this, &attempt, error] { fail(attempt, error); };
    else
        fail(attempt, error);
}

bool Connector::cancel(const ConnectionClient& client)
{
    const auto found = find(client);
    if (found == _attempts.end())
        return false;
    auto& attempt = **found;
    const auto giveUp = [this, &attempt] { finish(attempt)->connectionIsGivenUp(); };
    switch (attempt.step) {
    case Step::connecting:
    case Step::resolving:
    case Step::settling: stop(attempt, giveUp); break;
    case Step::stopping: attempt.stopped = giveUp; break;
    case Step::waiting:
    case Step::searching:
    case Step::backingOff:
        DispatchQueue::main().async([told = finish(attempt)] { told->connectionIsGivenUp(); });
        break;
    }
    return true;
}

bool Connector::isTrying(const ConnectionClient& client) const
{
    return std::any_of(
        _attempts.begin(), _attempts.end(), [&](const auto& attempt) { return attempt->client.get() == &client; });
}

void Connector::abandon(const ConnectionClient& client)
{
    const auto found = find(client);
    if (found == _attempts.end())
        return;
    if ((*found)->step != Step::waiting && (*found)->step != Step::searching)
        disconnect(**found, nullptr);
    finish(**found);
}

void Connector::failAll(const BluetoothError& error)
{
    _discovery->search(false);
    const auto failing = std::exchange(_attempts, {});
    beginNext();
    for (const auto& attempt : failing)
        attempt->client->connectionFailed(error);
}

/// The attempt is over, and the next one begins. Returns whom the attempt was for.
std::shared_ptr<ConnectionClient> Connector::finish(Attempt& attempt)
{
    const auto found = find(*attempt.client);
    const auto finished = *found;
    const bool wasFirst = isFirst(attempt);
    enter(attempt, Step::waiting); // whatever it waits for is void
    _attempts.erase(found);
    if (wasFirst)
        beginNext();
    return finished->client;
}

void Connector::fail(Attempt& attempt, const BluetoothError& error) { finish(attempt)->connectionFailed(error); }

} // namespace aurisk::bluez
