#include "Simulator/SimulatedLink.h"

#include <algorithm>
#include <utility>

namespace aurisk {

namespace {

constexpr Seconds retryInterval{ 1 };

/// An aid that starts anew keeps its link for a moment, and is off the air for a while then.
constexpr Seconds untilRestart{ 0.3 }, restartTime{ 1 };

} // namespace

/// What the faults make of one message.
struct SimulatedLink::Fate {
    bool linkGoesBefore = false, linkGoesAfter = false, lost = false, twice = false, corrupted = false, refused = false;
    Seconds late{ 0 };

    Fate(const std::vector<Fault>& faults, int message)
    {
        for (const auto& fault : faults)
            if (fault.message == message)
                add(fault);
    }

    void add(const Fault& fault)
    {
        switch (fault.kind) {
        case Fault::Kind::dropLinkBefore: linkGoesBefore = true; break;
        case Fault::Kind::dropLinkAfter: linkGoesAfter = true; break;
        case Fault::Kind::lose: lost = true; break;
        case Fault::Kind::duplicate: twice = true; break;
        case Fault::Kind::delay: late += fault.by; break;
        case Fault::Kind::corrupt: corrupted = true; break;
        case Fault::Kind::refuse: refused = true; break;
        }
    }
};

BluetoothError simulatedError(SimulatedErrorCode code, std::string sentence)
{
    return { "simulated", int(code), std::move(sentence) };
}

BluetoothError radioIsOff() { return simulatedError(SimulatedErrorCode::radioOff, "The radio is not powered on."); }

std::shared_ptr<SimulatedLink> SimulatedLink::create(
    DispatchQueue& queue, std::shared_ptr<SimulatedWorld> world, PlacedAid& placed)
{
    auto link = std::make_shared<SimulatedLink>(Key(), queue, std::move(world), placed);
    link->aid().notify = [weak = link->weak_from_this()](const CBUUID& characteristic, Data value) {
        if (const auto self = weak.lock())
            self->notifyHost(characteristic, std::move(value));
    };
    link->aid().restart = [weak = link->weak_from_this()] {
        if (const auto self = weak.lock())
            self->restartAid();
    };
    link->aid().keepTime([&queue] { return queue.now(); });
    return link;
}

SimulatedLink::SimulatedLink(Key, DispatchQueue& queue, std::shared_ptr<SimulatedWorld> world, PlacedAid& placed)
    : _queue(queue)
    , _world(std::move(world))
    , _placed(placed)
{
}

SimulatedLink::~SimulatedLink()
{
    release();
    aid().notify = nullptr;
    aid().restart = nullptr;
    aid().keepTime(nullptr);
}

std::size_t SimulatedLink::maximumValueLength() const
{
    constexpr int header = 3, shortest = 20, longest = 512;
    return std::size_t(std::clamp(_placed.mtu - header, shortest, longest));
}

void SimulatedLink::connect(const std::shared_ptr<SimulatedLinkHost>& host)
{
    _waiting.push_back(host);
    connectNext();
}

void SimulatedLink::connectNext()
{
    if (!isAudible() || _placed.faults.ignoresConnections)
        return;
    while (_host.expired() && !_waiting.empty()) {
        _host = _waiting.front();
        _waiting.erase(_waiting.begin());
        if (!_host.expired())
            carry([this] { didHearAttempt(); });
    }
}

void SimulatedLink::didHearAttempt()
{
    if (!isAudible() || _placed.faults.ignoresConnections) {
        _waiting.insert(_waiting.begin(), std::exchange(_host, {}));
        return;
    }
    if (_placed.faults.refusesConnections)
        return carry([this] { refuseAttempt(); });
    _isUp = true;
    aid().didConnect();
    if (Fate(_placed.faults.faults, _messageCount + 1).lost)
        _queue.asyncAfter(retryInterval, ofThisConnection([this] { tryAgain(); }));
    send({}, [this](const Data&, bool refused) {
        if (refused)
            refuseAttempt();
        else if (const auto host = _host.lock())
            host->linkDidConnect();
    });
}

/// A radio that hears nothing of its attempt makes it again.
void SimulatedLink::tryAgain()
{
    _isUp = false;
    aid().didDisconnect();
    carry([this] { didHearAttempt(); });
}

void SimulatedLink::refuseAttempt()
{
    end(_host.lock(), simulatedError(SimulatedErrorCode::connectionRefused, aid().name() + " refused the connection."));
}

void SimulatedLink::cancel(const std::shared_ptr<SimulatedLinkHost>& host)
{
    const auto finish = [weak = weak_from_this(), leaving = std::weak_ptr(host)] {
        const auto self = weak.lock();
        if (const auto alive = leaving.lock(); self && alive)
            self->end(alive, std::nullopt);
    };
    if (_host.lock() == host)
        carry(finish);
    else
        _queue.async(finish);
}

bool SimulatedLink::abandon(const std::shared_ptr<SimulatedLinkHost>& host)
{
    const auto isHost = [&](const auto& weak) { return host && weak.lock() == host; };
    const auto waiting = std::find_if(_waiting.begin(), _waiting.end(), isHost);
    if (waiting != _waiting.end())
        _waiting.erase(waiting);
    else if (isHost(_host))
        release();
    else
        return false;
    connectNext();
    return true;
}

void SimulatedLink::end(const std::shared_ptr<SimulatedLinkHost>& host, const MaybeError& error)
{
    if (abandon(host))
        host->linkDidEnd(error);
}

void SimulatedLink::drop()
{
    if (_isUp)
        soon([this] { lose(); });
}

void SimulatedLink::lose()
{
    end(_host.lock(), simulatedError(SimulatedErrorCode::linkLost, "The link to " + aid().name() + " was lost."));
}

void SimulatedLink::release()
{
    ++_connection;
    _host.reset();
    if (std::exchange(_isUp, false))
        aid().didDisconnect();
}

void SimulatedLink::aidDidChange()
{
    if (aid().isOnAir())
        connectNext();
    else if (_isUp)
        carry([this] { lose(); }); // after what it said before it went
}

/// Where the link goes by itself before its moment is over, the aid is off the air for that longer.
void SimulatedLink::restartAid()
{
    _isRestarting = true;
    _queue.asyncAfter(untilRestart, ofThisConnection([this] { carry([this] { lose(); }); }));
    _queue.asyncAfter(untilRestart + restartTime, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) {
            self->_isRestarting = false;
            self->connectNext();
        }
    });
}

void SimulatedLink::notifyHost(const CBUUID& characteristic, Data value)
{
    if (!_isUp || _placed.faults.isSilent)
        return;
    value.resize(std::min(value.size(), maximumValueLength()));
    send(std::move(value), [this, characteristic](const Data& arrived, bool) {
        if (const auto host = _host.lock())
            host->linkDidNotify(characteristic, arrived);
    });
}

void SimulatedLink::carry(Work arrival)
{
    _underWay.enqueue({ _connection, std::move(arrival) });
    _queue.asyncAfter(_placed.faults.latency, [weak = weak_from_this()] {
        if (const auto self = weak.lock())
            self->deliverNext();
    });
}

void SimulatedLink::deliverNext()
{
    // Each call belongs to one element, though not to this one where the latency has changed meanwhile.
    const auto next = _underWay.dequeue();
    if (next && next->connection == _connection)
        next->arrival();
}

bool SimulatedLink::send(Data value, Arrival arrival)
{
    const Fate fate(_placed.faults.faults, ++_messageCount);
    if (fate.corrupted && !value.empty())
        value[value.size() / 2] ^= 0x01;
    Work work = [this, fate, value = std::move(value), arrival = std::move(arrival)] { arrive(fate, value, arrival); };
    if (fate.late > Seconds(0))
        _queue.asyncAfter(_placed.faults.latency + fate.late, ofThisConnection(std::move(work)));
    else
        carry(std::move(work));
    return fate.refused;
}

void SimulatedLink::arrive(const Fate& fate, const Data& value, const Arrival& arrival)
{
    const auto connection = _connection;
    if (fate.linkGoesBefore)
        return lose();
    if (!fate.lost)
        arrival(value, fate.refused);
    if (!fate.lost && fate.twice && !value.empty() && connection == _connection)
        arrival(value, fate.refused);
    if (fate.linkGoesAfter && connection == _connection)
        lose();
}

void SimulatedLink::soon(Work work) { _queue.async(ofThisConnection(std::move(work))); }

Work SimulatedLink::ofThisConnection(Work work)
{
    return [weak = weak_from_this(), connection = _connection, work = std::move(work)] {
        if (const auto self = weak.lock(); self && self->_connection == connection)
            work();
    };
}

} // namespace aurisk
