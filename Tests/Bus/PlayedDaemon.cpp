#include "Tests/Bus/PlayedDaemon.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace aurisk::bluez {

namespace {

constexpr auto addressVariable = "DBUS_SYSTEM_BUS_ADDRESS", busName = "org.freedesktop.DBus";
constexpr Seconds ample{ 10 };

} // namespace

PrivateBus::PrivateBus()
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        throw std::runtime_error("there is no pipe to be had");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    // A test that is killed takes its bus along.
    const char* words[] = { "setpriv", "--pdeathsig", "TERM", "dbus-daemon", "--session", "--nofork", "--nopidfile",
        "--print-address", nullptr };
    const bool isStarted
        = posix_spawnp(&_process, words[0], &actions, nullptr, const_cast<char**>(words), environ) == 0;
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    std::array<char, 512> text = {};
    const auto count = isStarted ? read(ends[0], text.data(), text.size()) : 0;
    close(ends[0]);
    const std::string line(text.data(), std::size_t(std::max<ssize_t>(count, 0)));
    if (line.empty())
        throw std::runtime_error("dbus-daemon does not start; is it installed (scripts/install-packages)?");
    setenv(addressVariable, line.substr(0, line.find('\n')).c_str(), 1);
}

PrivateBus::~PrivateBus()
{
    unsetenv(addressVariable);
    kill(_process, SIGTERM);
    waitpid(_process, nullptr, 0);
}

PlayedDaemon::PlayedDaemon()
{
    addAdapter(hci0);
    for (const auto* path : { "/", "/org/bluez" })
        _bus->serve(path, [this](const BusRequest& request) { handle(request); });
    setPresent(true);
}

void PlayedDaemon::addAdapter(const std::string& path)
{
    objects[path] = { { interface::adapter, { { "Powered", true }, { "Address", "00:00:00:00:00:01" } } },
        { interface::gattManager, {} }, { interface::advertisingManager, {} } };
}

std::string PlayedDaemon::addAid(const std::string& name, int number)
{
    const auto digit = std::to_string(number);
    const auto path = std::string(hci0) + "/dev_00_AA_00_00_00_0" + digit;
    objects[path][interface::device] = { { "Address", "00:AA:00:00:00:0" + digit }, { "Name", name },
        { "Connected", false }, { "ServicesResolved", false }, { "RSSI", std::int16_t(-50) } };
    objects[path + "/service0"][interface::service] = { { "UUID", "AE30" }, { "Primary", true } };
    objects[path + "/service0/char0"][interface::characteristic]
        = { { "UUID", "AE02" }, { "Flags", std::vector<std::string>{ "notify", "read" } } };
    return path;
}

void PlayedDaemon::announce(const std::string& path)
{
    _bus->emit({ "/", interface::objectManager, "InterfacesAdded", { ObjectPath{ path }, objects.at(path) } });
}

void PlayedDaemon::change(const std::string& path, const std::string& interface, const BusDictionary& changed)
{
    for (const auto& [name, value] : changed)
        objects.at(path)[interface].insert_or_assign(name, value);
    _bus->emit(
        { path, interface::properties, "PropertiesChanged", { interface, changed, std::vector<std::string>() } });
}

void PlayedDaemon::remove(const std::string& path)
{
    std::vector<std::string> names;
    for (const auto& [name, properties] : objects.at(path))
        names.push_back(name);
    objects.erase(path);
    _bus->emit({ "/", interface::objectManager, "InterfacesRemoved", { ObjectPath{ path }, names } });
}

void PlayedDaemon::setPower(bool isOn) { change(hci0, interface::adapter, { { "Powered", isOn } }); }

void PlayedDaemon::hear(const std::string& device)
{
    change(device, interface::device, { { "RSSI", std::int16_t(-51) } });
}

void PlayedDaemon::setLink(const std::string& device, bool isUp)
{
    change(device, interface::device, { { "Connected", isUp }, { "ServicesResolved", isUp } });
}

void PlayedDaemon::setPresent(bool isPresent)
{
    constexpr auto noFlags = std::uint32_t(0);
    if (isPresent)
        askBus("RequestName", { "org.bluez", noFlags });
    else
        askBus("ReleaseName", { "org.bluez" });
}

void PlayedDaemon::askBus(const char* member, BusValues arguments)
{
    bool isDone = false;
    _bus->call({ busName, "/org/freedesktop/DBus", busName, member, std::move(arguments) }, ample,
        [&](const BusReply&) { isDone = true; });
    until([&] { return isDone; }, ample);
}

bool PlayedDaemon::isCalled(const std::string& call) const
{
    return until([&] { return count(call) > 0; }, ample);
}

void PlayedDaemon::catchUp()
{
    for (int round = 0; round < 5; ++round)
        askBus("GetId", {});
}

void PlayedDaemon::handle(const BusRequest& request)
{
    const auto call = request.member + " " + request.path;
    calls.push_back(call);
    for (const auto& key : { call, request.member })
        if (const auto found = on.find(key); found != on.end()) {
            const auto act = found->second; // which may replace itself
            return act(request);
        }
    obey(request);
}

void PlayedDaemon::obey(const BusRequest& request)
{
    if (request.member == "GetManagedObjects")
        return answer(request, { objects });
    if (!has(request.path) && request.path != "/org/bluez")
        return refuse(request, { "org.freedesktop.DBus.Error.UnknownObject", "gone" });
    if (request.member == "Get")
        return answer(request, { BusVariant(true) });
    if (request.member == "Connect" || request.member == "Disconnect")
        setLink(request.path, request.member == "Connect");
    answer(request);
}

} // namespace aurisk::bluez
