#pragma once

#include "AuriskSDK/Platform/BlueZ/BlueZObjects.h"

namespace aurisk::bluez {

/// The daemon's scan on one adapter, kept as it is wanted: started and stopped one call at a time, paused while a
/// connection is being made (an adapter that does both at once fails at either), begun anew after the radio was off,
/// and restarted where it dries up, as scans of many adapters do after a while.
class Discovery final : public std::enable_shared_from_this<Discovery> {
public:
    explicit Discovery(std::shared_ptr<BlueZObjects> objects)
        : _objects(std::move(objects))
    {
    }

    /// The adapter's path while it is powered on; empty while it is not.
    void radioIs(const std::string& poweredAdapter);

    /// Whether anybody scans, and whether a device is looked for that the daemon has forgotten.
    void want(bool wanted);
    void search(bool searching);

    /// Holds the scan back until `resume`. `paused` runs soon, once there is none.
    void pause() { ++_pauses; }
    void oncePaused(std::function<void()> paused);
    void resume();

    /// An advertisement has been heard.
    void didHear() { _hasHeard = true; }

private:
    enum class State { off, refused, starting, on, stopping };

    bool isToBeOn() const { return (_wanted || _isSearching) && _pauses == 0 && !_adapter.empty(); }
    void settle();
    void retryLater();
    void start();
    void stop();
    void become(State state);
    void watch();
    void didLoseEars();
    void call(const char* member, BusValues arguments, std::function<void(Discovery&, const BusReply&)> answered);

    std::shared_ptr<BlueZObjects> _objects;
    std::string _adapter;
    State _state = State::off;
    bool _wanted = false;
    bool _isSearching = false;
    bool _isRestarting = false; ///< it is stopped to be started at once
    int _pauses = 0;
    std::vector<std::function<void()>> _pausing;
    int _spell = 0; ///< counts what makes answers and timers void: the radio's changes
    int _watch = 0; ///< counts the watches, the last of which counts
    Seconds _patience{ 0 }; ///< of the watch
    bool _hasHeard = false; ///< since the watch began
};

} // namespace aurisk::bluez
