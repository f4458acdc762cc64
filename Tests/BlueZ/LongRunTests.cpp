#include "Tests/BlueZ/AHost.h"

#include "AuriskSDK/Platform/BlueZ/SystemBus.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>

#include <malloc.h>
#include <unistd.h>

namespace aurisk::tests {
namespace {

constexpr auto busName = "org.freedesktop.DBus", busPath = "/org/freedesktop/DBus";

struct Footprint {
    long residentKilobytes = 0;
    long heapBytes = 0; ///< in use
    long descriptors = 0;
    long connections = 0; ///< to the bus
    long matchRules = 0; ///< of all of them

    friend std::ostream& operator<<(std::ostream& out, const Footprint& one)
    {
        return out << one.residentKilobytes << " KB, of them " << one.heapBytes << " bytes of heap in use, "
                   << one.descriptors << " descriptors, " << one.connections << " bus connections, " << one.matchRules
                   << " match rules";
    }
};

/// Asks the daemon of the bus.
class Bus {
public:
    bluez::BusReply ask(const char* interface, const char* member, bluez::BusValues arguments)
    {
        std::optional<bluez::BusReply> reply;
        _bus->call({ busName, busPath, interface, member, std::move(arguments) }, 5s,
            [&](const bluez::BusReply& told) { reply = told; });
        until([&] { return reply.has_value(); }, 10s);
        return reply.value_or(bluez::BusReply{});
    }

    /// What this process has of it, this connection left out.
    void measure(Footprint& footprint)
    {
        const auto names = ask(busName, "ListNames", {});
        const auto* all = bluez::find<std::vector<std::string>>(names.values, 0);
        for (const auto& name : all ? *all : std::vector<std::string>()) {
            const auto owner = ask(busName, "GetConnectionUnixProcessID", { name });
            const auto* process = bluez::find<std::uint32_t>(owner.values, 0);
            if (!process || *process != std::uint32_t(getpid()) || !name.starts_with(":"))
                continue;
            const auto stats = ask("org.freedesktop.DBus.Debug.Stats", "GetConnectionStats", { name });
            const auto* figures = bluez::find<bluez::BusDictionary>(stats.values, 0);
            const auto* rules = figures ? bluez::find<std::uint32_t>(*figures, "MatchRules") : nullptr;
            ASSERT_TRUE(rules) << "the bus does not count match rules";
            ++footprint.connections;
            footprint.matchRules += *rules;
        }
    }

private:
    std::shared_ptr<bluez::SystemBus> _bus = bluez::SystemBus::open({});
};

Footprint measure(Bus& bus)
{
    Footprint footprint;
    long pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    footprint.residentKilobytes = pages * sysconf(_SC_PAGESIZE) / 1024;
    footprint.heapBytes = long(mallinfo2().uordblks);
    for ([[maybe_unused]] const auto& one : std::filesystem::directory_iterator("/proc/self/fd"))
        ++footprint.descriptors;
    bus.measure(footprint);
    return footprint;
}

int cycles()
{
    const auto* wanted = std::getenv("AURISK_CYCLES");
    return wanted ? std::atoi(wanted) : 5;
}

/// A hub connects to the same aid for years. AURISK_CYCLES says how often it does here.
TEST_F(AHost, LeavesNothingBehindHoweverOftenItConnects)
{
    Bus bus;
    givenADiscoveredAid();
    Footprint first;
    const int warm = std::min(10, cycles() / 2);
    for (int cycle = 0; cycle < cycles(); ++cycle) {
        SCOPED_TRACE(cycle);
        if (cycle == warm)
            first = measure(bus);
        givenAConnectedAid();
        accessory->disconnect();
        expect("did disconnect");
        app->take();
        if (HasFailure())
            return;
    }
    const auto last = measure(bus);
    std::cout << "after " << warm << ": " << first << "\nafter " << cycles() << ": " << last << std::endl;
    EXPECT_EQ(last.descriptors, first.descriptors);
    EXPECT_EQ(last.connections, first.connections);
    EXPECT_EQ(last.matchRules, first.matchRules);
    EXPECT_LE(last.residentKilobytes, first.residentKilobytes + 256);
    EXPECT_LE(last.heapBytes, first.heapBytes + 16 * 1024);
}

} // namespace
} // namespace aurisk::tests
