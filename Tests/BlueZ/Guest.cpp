#include "Tests/BlueZ/Guest.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace aurisk::tests {

namespace {

constexpr auto reach = "/run/radio/hci1";

} // namespace

bool perform(const std::vector<std::string>& command)
{
    std::vector<char*> words;
    for (const auto& word : command)
        words.push_back(const_cast<char*>(word.c_str()));
    words.push_back(nullptr);
    pid_t process = 0;
    if (posix_spawnp(&process, words.front(), nullptr, nullptr, words.data(), environ) != 0)
        return false;
    int status = -1;
    const auto hasEnded = [&] { return waitpid(process, &status, WNOHANG) == process; };
    return until(hasEnded, Seconds(60)) && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void setPower(const std::string& adapter, bool on)
{
    const std::vector<std::string> command = { "dbus-send", "--system", "--print-reply=literal", "--dest=org.bluez",
        "/org/bluez/" + adapter, "org.freedesktop.DBus.Properties.Set", "string:org.bluez.Adapter1", "string:Powered",
        std::string("variant:boolean:") + (on ? "true" : "false") };
    EXPECT_TRUE(perform(command)) << adapter << " cannot be switched";
}

void setInReach(bool within)
{
    if (within)
        unlink(reach);
    else
        std::ofstream(reach) << "off";
}

int countOfSockets()
{
    int count = 0;
    for (const auto& one : std::filesystem::directory_iterator("/proc/self/fd"))
        count += std::filesystem::is_socket(one.status());
    return count;
}

void tidyUp()
{
    setInReach(true);
    if (!perform({ "vmctl", "check" })) {
        ADD_FAILURE() << "bluetoothd has ended, and nobody asked it to";
        perform({ "vmctl", "start" });
    }
    setPower(hostAdapter, true);
    setPower(aidAdapter, true);
}

std::shared_ptr<ServedAid> ServedAid::create(std::shared_ptr<SimulatedAuriskAid> aid)
{
    tidyUp(); // after a test that could not
    SimulatedWorld world;
    const auto name = aid->name();
    world.aids = { { .aid = std::move(aid), .mtu = 517, .faults = { .latency = Seconds(0) } } };
    const auto served = std::make_shared<ServedAid>();
    served->_simulator = Simulator::create(std::move(world));
    served->_aid = tool::AidOnAir::create(served->_simulator, name, *served->_servers, aidAdapter, served);
    if (!until([&] { return served->_isOnAir; }, Seconds(30)))
        throw std::runtime_error("the aid does not come on the air");
    return served;
}

const SimulatedAuriskAid& ServedAid::aid() const
{
    return dynamic_cast<const SimulatedAuriskAid&>(*_simulator->aid(_aid->name()));
}

ServedAid::~ServedAid()
{
    bool hasStopped = false;
    _aid->stop([&hasStopped] { hasStopped = true; });
    until([&] { return hasStopped; }, Seconds(10));
}

} // namespace aurisk::tests
