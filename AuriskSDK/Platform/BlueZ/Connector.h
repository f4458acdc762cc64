#pragma once

#include "AuriskSDK/Platform/BlueZ/BlueZErrors.h"
#include "AuriskSDK/Platform/BlueZ/Discovery.h"

#include <deque>

namespace aurisk::bluez {

/// Who wants a connection.
class ConnectionClient {
public:
    virtual ~ConnectionClient() = default;
    virtual std::string devicePath() const = 0;
    virtual std::string label() const = 0; ///< for sentences

    /// The link is up, and its services are in the object tree.
    virtual void connectionIsMade() = 0;
    virtual void connectionFailed(const BluetoothError& error) = 0;
    virtual void connectionIsGivenUp() = 0;
};

/// Makes the connections of one adapter, one after the other, as most adapters can. An attempt consists of tries: what
/// fails on the air is tried again while the time lasts, and an attempt that hears nothing lets the next one have a
/// try.
class Connector final : public std::enable_shared_from_this<Connector> {
public:
    Connector(std::shared_ptr<BlueZObjects> objects, std::shared_ptr<Discovery> discovery)
        : _objects(std::move(objects))
        , _discovery(std::move(discovery))
    {
    }

    /// Tries for `limit` at most, from now on.
    void connect(const std::shared_ptr<ConnectionClient>& client, Seconds limit);

    /// Gives an attempt up, which its client will hear; false where there is none.
    bool cancel(const ConnectionClient& client);

    /// The same, and nobody is told.
    void abandon(const ConnectionClient& client);

    bool isTrying(const ConnectionClient& client) const;

    /// The radio, or the daemon, has gone: every attempt fails.
    void failAll(const BluetoothError& error);

    // What the daemon tells of a device. Whether it is connected may be told long after `Connect` has been answered,
    // with its services: what counts is that it is told not to be any more.
    void deviceDidAppear(const std::string& path);
    void servicesDidResolve(const std::string& path);
    void linkDidGo(const std::string& path);

private:
    enum class Step {
        waiting, ///< for the attempts before it, or for the scan to pause
        searching, ///< the daemon has forgotten the device
        connecting,
        resolving, ///< the link is up, its services are being discovered
        settling, ///< the services are known; they may not be in the tree yet
        backingOff, ///< until the next try
        stopping, ///< a try is being given up
    };

    struct Attempt {
        std::shared_ptr<ConnectionClient> client;
        Seconds limit{ 0 };
        Seconds deadline{ 0 };
        Step step = Step::waiting;
        int turn = 0; ///< counts the steps: what was begun in one does not end another
        bool hasBeenTried = false;
        int tries = 0;
        int strikes = 0; ///< tries in a row in which the daemon seemed to be at odds with itself about the device
        bool isAdopted = false; ///< there was a link before the try, of which nobody knows whose it is
        bool isMadeByOthers = false; ///< somebody was making one at the try before
        MaybeError lastError = {};
        std::function<void()> stopped = {}; ///< what comes after `stopping`
    };
    using Attempts = std::deque<std::shared_ptr<Attempt>>;

    void beginNext();
    void tryConnecting(Attempt& attempt);
    void search(Attempt& attempt);
    void didAnswer(Attempt& attempt, const BusReply& reply);
    void resolve(Attempt& attempt);
    void settle(Attempt& attempt);
    void settleLater(Attempt& attempt);
    void didFail(Attempt& attempt, const BluetoothError& error, ConnectFailure failure);
    bool forget(Attempt& attempt);
    void waitForOthers(Attempt& attempt);
    void backOff(Attempt& attempt, Seconds delay);
    void stop(Attempt& attempt, std::function<void()> stopped);
    void letOthersLater(Attempt& attempt);
    void letOthers(Attempt& attempt);
    void tryAgain(Attempt& attempt);
    void giveWay();
    void deadlineHasPassed(Attempt& attempt);
    std::shared_ptr<ConnectionClient> finish(Attempt& attempt);
    void fail(Attempt& attempt, const BluetoothError& error);
    void disconnect(const Attempt& attempt, SystemBus::Answer answered) const;
    BluetoothError tooLate(const Attempt& attempt) const;
    bool hasServices(const Attempt& attempt) const;
    bool isDevice(const Attempt& attempt, const char* property) const;

    void enter(Attempt& attempt, Step step);
    template <typename Work> auto inThisStep(Attempt& attempt, Work work);
    template <typename Work> void after(Seconds delay, Attempt& attempt, Work work);

    std::shared_ptr<Attempt> firstAt(const std::string& path) const;
    Attempts::iterator find(const ConnectionClient& client);
    bool isFirst(const Attempt& attempt) const { return !_attempts.empty() && _attempts.front().get() == &attempt; }

    std::shared_ptr<BlueZObjects> _objects;
    std::shared_ptr<Discovery> _discovery;
    Attempts _attempts; ///< the first is under way
    bool _isPausing = false; ///< the scan, as long as there are attempts
};

} // namespace aurisk::bluez
