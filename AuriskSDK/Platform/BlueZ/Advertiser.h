#pragma once

#include "AuriskSDK/Platform/BlueZ/BlueZObjects.h"
#include "AuriskSDK/Platform/BlueZ/GattServer.h"

namespace aurisk::bluez {

/// One advertisement of one adapter, kept with the daemon as it is wanted, one call at a time. The daemon ends where a
/// registered advertisement changes while its adapter is off. So one that is to change is taken back and given anew,
/// nothing is done while the adapter is off, and once it is on again the advertisement begins anew, too.
class Advertiser final : public std::enable_shared_from_this<Advertiser> {
public:
    struct Handlers {
        std::function<void()> started = {};
        std::function<void(const BusError&)> failed = {}; ///< it will try again
    };

    /// `path` is where the daemon finds the advertisement.
    Advertiser(std::shared_ptr<BlueZObjects> objects, std::string path, Handlers handlers)
        : _objects(std::move(objects))
        , _path(std::move(path))
        , _handlers(std::move(handlers))
    {
    }

    /// The adapter's path while it is powered on; empty while it is not.
    void radioIs(const std::string& poweredAdapter);

    /// The daemon knows of no advertisement of ours: it has begun a new life, or it says so.
    void isForgotten();

    void want(std::optional<CBAdvertisementData> advertisement);

    /// Whether somebody may be hearing it.
    bool mayBeHeard() const { return !_adapter.empty() && _state != State::off; }

    /// What the daemon is to read at `path`.
    BusDictionary properties() const;

    /// Takes it back for good; `stopped` runs soon.
    void stop(std::function<void()> stopped);

private:
    enum class State { off, starting, on, stopping };

    void settle();
    void start();
    void takeBack();
    void call(const char* member, BusValues arguments, std::function<void(Advertiser&, const BusReply&)> answered);

    std::shared_ptr<BlueZObjects> _objects;
    std::string _path;
    Handlers _handlers;
    std::string _adapter;
    State _state = State::off;
    std::optional<CBAdvertisementData> _wanted;
    std::optional<CBAdvertisementData> _given; ///< none: whatever the daemon has, it is not what is wanted
    int _spell = 0; ///< counts what makes answers and timers void
};

} // namespace aurisk::bluez
