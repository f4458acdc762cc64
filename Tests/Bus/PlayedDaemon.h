#pragma once

#include "AuriskSDK/Platform/BlueZ/BlueZObjects.h"
#include "Tests/Support/RealTime.h"

#include <algorithm>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <sys/types.h>

/// A Bluetooth daemon that does as a test tells it, which the real one cannot be made to do at will. It is played by
/// the test's own process, on a bus of the test's own.

namespace aurisk::bluez {

using tests::pass;
using tests::until;

/// A bus that this process takes for the system's as long as this lives. Without one there is no test: it throws.
class PrivateBus {
public:
    PrivateBus();
    ~PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

private:
    pid_t _process = 0;
};

/// It has one adapter, hci0, and where it is told nothing else it obeys at once.
class PlayedDaemon {
public:
    static constexpr auto hci0 = "/org/bluez/hci0", hci1 = "/org/bluez/hci1";

    PlayedDaemon();

    void addAdapter(const std::string& path);

    /// An aid with one service, AE30, and its characteristic AE02. Returns the path of its device.
    std::string addAid(const std::string& name, int number);

    // What the daemon tells
    void announce(const std::string& path);
    void change(const std::string& path, const std::string& interface, const BusDictionary& changed);
    void remove(const std::string& path);
    void setPower(bool isOn);
    void hear(const std::string& device);
    void setLink(const std::string& device, bool isUp);

    // How it answers
    void answer(const BusRequest& request, const BusValues& values = {}) { _bus->answer(request, values); }
    void refuse(const BusRequest& request, const BusError& error) { _bus->refuse(request, error); }
    void fail(const BusRequest& request, const char* text) { refuse(request, { "org.bluez.Error.Failed", text }); }
    void obey(const BusRequest& request);
    void hold(const BusRequest& request) { held.push_back(request); }

    /// Whether there is a daemon at all.
    void setPresent(bool isPresent);

    bool has(const std::string& path) const { return objects.contains(path); }
    int count(const std::string& call) const { return int(std::count(calls.begin(), calls.end(), call)); }

    /// False where there is no such call within a time that is ample.
    bool isCalled(const std::string& call) const;

    /// Returns once whatever is under way over the bus has come, and what follows from it without a delay.
    void catchUp();

    BusObjects objects;
    std::vector<std::string> calls; ///< "Connect /org/bluez/hci0/dev_..."
    std::map<std::string, std::function<void(const BusRequest&)>> on; ///< what it does instead, by call or its member
    std::deque<BusRequest> held; ///< to be answered later

private:
    void handle(const BusRequest& request);
    void askBus(const char* member, BusValues arguments);

    std::shared_ptr<SystemBus> _bus = SystemBus::open({});
};

} // namespace aurisk::bluez
