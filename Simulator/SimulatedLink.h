#pragma once

#include "AuriskSDK/Platform/Bluetooth.h"
#include "AuriskSDK/Platform/Dispatch.h"
#include "AuriskSDK/Shared/Utils/Queue.h"
#include "Simulator/SimulatedWorld.h"

#include <functional>
#include <memory>
#include <vector>

namespace aurisk {

/// The host's end of a link, as the link sees it.
class SimulatedLinkHost {
public:
    virtual ~SimulatedLinkHost() = default;
    virtual void linkDidConnect() = 0;
    /// A link has gone, or an attempt at one; no error where the host asked for it.
    virtual void linkDidEnd(const MaybeError& error) = 0;
    virtual void linkDidNotify(const CBUUID& characteristic, const Data& value) = 0;
};

/// The numbers of the errors of the domain "simulated".
enum class SimulatedErrorCode : int {
    linkLost = 1,
    radioOff = 2,
    connectionRefused = 3,
    requestRefused = 4,
    notPermitted = 5,
    tooLong = 6,
    foreignPeripheral = 7,
};

/// An error of this radio, with a sentence for a person.
BluetoothError simulatedError(SimulatedErrorCode code, std::string sentence);
BluetoothError radioIsOff();

/// What lies between one aid and whoever is connected to it, or tries to be: it takes the time that the air takes,
/// keeps the order, counts the messages and spoils those that are to be spoiled. One for each aid, whatever connections
/// come and go; what belongs to a connection that has ended never arrives.
class SimulatedLink : public std::enable_shared_from_this<SimulatedLink> {
    class Key {
        friend class SimulatedLink;
        Key() = default;
    };

public:
    /// An arrival hears the value that came, and whether the other side is to refuse.
    using Arrival = std::function<void(const Data& value, bool refused)>;

    static std::shared_ptr<SimulatedLink> create(
        DispatchQueue& queue, std::shared_ptr<SimulatedWorld> world, PlacedAid& placed);
    SimulatedLink(Key, DispatchQueue& queue, std::shared_ptr<SimulatedWorld> world, PlacedAid& placed);
    ~SimulatedLink();
    SimulatedLink(const SimulatedLink&) = delete;
    SimulatedLink& operator=(const SimulatedLink&) = delete;

    SimulatedAid& aid() const { return *_placed.aid; }
    const PlacedAid& placed() const { return _placed; }
    int messageCount() const { return _messageCount; }
    std::size_t maximumValueLength() const;

    /// Whether the aid has a link, of which the host may not have heard yet.
    bool isUp() const { return _isUp; }

    /// Whether the aid can be heard: it is on the air, and does not start anew.
    bool isAudible() const { return aid().isOnAir() && !_isRestarting; }

    /// Tries to connect `host`, after those who asked before it.
    void connect(const std::shared_ptr<SimulatedLinkHost>& host);

    /// The host ends its link or its attempt: what it sent before still arrives.
    void cancel(const std::shared_ptr<SimulatedLinkHost>& host);

    /// The link or attempt of `host` ends at once, and nobody is told; false where it had none.
    bool abandon(const std::shared_ptr<SimulatedLinkHost>& host);

    /// The link or attempt of `host` ends at once, and at once it hears of it; nothing where it had none.
    void end(const std::shared_ptr<SimulatedLinkHost>& host, const MaybeError& error);

    /// Soon the link goes, whoever has it.
    void drop();

    /// The aid may have left the air, or be back on it.
    void aidDidChange();

    /// Takes something to the other side that is no message, such as the question to an answer.
    void carry(Work arrival);

    /// Sends one message; true where a fault turns it into a refusal, as its arrival will hear, too.
    bool send(Data value, Arrival arrival);

    /// Runs `work` soon: something for the host that does not come over the air.
    void soon(Work work);

private:
    struct UnderWay {
        int connection = 0;
        Work arrival = {};
    };
    struct Fate;

    void connectNext();
    void didHearAttempt();
    void tryAgain();
    void refuseAttempt();
    void notifyHost(const CBUUID& characteristic, Data value);
    void deliverNext();
    void arrive(const Fate& fate, const Data& value, const Arrival& arrival);
    void lose();
    void release();
    void restartAid();
    Work ofThisConnection(Work work);

    DispatchQueue& _queue;
    std::shared_ptr<SimulatedWorld> _world; ///< keeps `_placed`
    PlacedAid& _placed;
    std::vector<std::weak_ptr<SimulatedLinkHost>> _waiting;
    std::weak_ptr<SimulatedLinkHost> _host; ///< has the link, or the attempt
    bool _isUp = false;
    bool _isRestarting = false; ///< the aid does; the link that it has stays up for a moment
    int _connection = 0; ///< counts how often one has ended: what is under way belongs to one
    Queue<UnderWay> _underWay;
    int _messageCount = 0;
};

} // namespace aurisk
