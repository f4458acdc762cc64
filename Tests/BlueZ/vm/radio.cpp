// Preloaded into btvirt, so that its controllers hear each other as over the air.
//
// By itself btvirt reports an advertisement once, when it begins or when a scan does, and without its strength. A
// kernel that is just beginning to scan drops that one report, and finds nobody. This stands between btvirt and
// /dev/vhci: it keeps what btvirt reports and repeats it to every controller that scans, for as long as the advertiser
// advertises and is in range.
//
// Files say what the radio is like. They are read again each time:
//   /run/radio/interval   milliseconds between advertisements; 100 without it
//   /run/radio/hciN       how strong those of controller N are, in dBm; about -60 without it. "off" is out of range: it
//                         is not heard, and connections to it stay pending

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <dlfcn.h>
#include <fcntl.h>
#include <fstream>
#include <mutex>
#include <optional>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <sys/uio.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;
using Address = std::array<std::uint8_t, 6>;

/// An advertising report of a controller, or its answer to a scan, as it goes to one that scans.
struct Report {
    std::size_t advertiser = 0;
    bool isScanResponse = false;
    std::size_t strengthAt = 0;
    Bytes packet = {};
};

struct Controller {
    std::size_t number = 0;
    int file = -1;
    bool scans = false, advertises = false;
    Address publicAddress = {}, randomAddress = {}, advertisedAddress = {};
    std::vector<Report> reports = {};
};

std::recursive_mutex mutex; // the files above are read by way of here, too
std::deque<Controller> controllers; // hci0, hci1 and so on, in the order in which they are opened

template <typename Function> Function theRealOne(const char* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

ssize_t writeThrough(int file, const iovec* pieces, int count)
{
    static const auto real = theRealOne<ssize_t (*)(int, const iovec*, int)>("writev");
    return real(file, pieces, count);
}

void sendToHost(const Controller& controller, Bytes packet)
{
    const iovec whole{ packet.data(), packet.size() };
    writeThrough(controller.file, &whole, 1);
}

std::optional<std::string> setting(const std::string& name)
{
    std::string text;
    return std::ifstream("/run/radio/" + name) >> text ? std::optional(text) : std::nullopt;
}

/// In dBm; none where it is out of range.
std::optional<int> strengthOf(std::size_t controller)
{
    const auto text = setting("hci" + std::to_string(controller));
    if (text == "off")
        return std::nullopt;
    return text ? std::atoi(text->c_str()) : -60;
}

Controller* controllerAt(int file)
{
    for (auto& one : controllers)
        if (one.file == file)
            return &one;
    return nullptr;
}

Address addressAt(const std::uint8_t* bytes)
{
    Address address;
    std::copy_n(bytes, address.size(), address.begin());
    return address;
}

std::optional<std::size_t> controllerOf(const Address& address)
{
    for (const auto& one : controllers)
        for (const auto& own : { one.publicAddress, one.randomAddress, one.advertisedAddress })
            if (own == address && own != Address{})
                return one.number;
    return std::nullopt;
}

void forgetReportsOf(std::size_t advertiser)
{
    for (auto& one : controllers)
        std::erase_if(one.reports, [&](const Report& report) { return report.advertiser == advertiser; });
}

void keep(Controller& listener, Report report)
{
    std::erase_if(listener.reports, [&](const Report& known) {
        return known.advertiser == report.advertiser && known.isScanResponse == report.isScanResponse;
    });
    listener.reports.push_back(std::move(report));
}

/// An advertisement goes before the answer to a scan, as over the air.
void advertise(std::size_t advertiser, int strength)
{
    for (const auto& listener : controllers)
        for (const bool response : { false, true })
            for (auto report : listener.reports)
                if (listener.scans && report.advertiser == advertiser && report.isScanResponse == response) {
                    report.packet[report.strengthAt] = std::uint8_t(strength);
                    sendToHost(listener, std::move(report.packet));
                }
}

[[noreturn]] void repeatReports()
{
    std::minstd_rand random;
    std::uniform_int_distribution<int> jitter(-2, 2);
    for (;;) {
        const auto interval = std::atoi(setting("interval").value_or("100").c_str());
        std::this_thread::sleep_for(std::chrono::milliseconds(interval > 0 ? interval : 100));
        const std::scoped_lock lock(mutex);
        for (const auto& one : controllers)
            if (const auto strength = strengthOf(one.number); strength && one.advertises)
                advertise(one.number, *strength + jitter(random));
    }
}

/// Learns from a command of the host what its controller does from now on. Says whether btvirt is to hear it, too.
bool heed(Controller& controller, const std::uint8_t* packet)
{
    const auto opcode = std::uint16_t(packet[1] | packet[2] << 8);
    const std::uint8_t* parameters = packet + 4;
    const std::uint8_t* peer = nullptr;
    switch (opcode) {
    case 0x0C03: // reset
        controller.scans = controller.advertises = false;
        break;
    case 0x2005: // set random address
        controller.randomAddress = addressAt(parameters);
        break;
    case 0x2035: // set random address of an advertising set
        controller.advertisedAddress = addressAt(parameters + 1);
        break;
    case 0x200A: // set advertising enable
    case 0x2039: // the same, extended
        controller.advertises = parameters[0] != 0;
        forgetReportsOf(controller.number); // what it advertises may be new
        break;
    case 0x200C: // set scan enable
    case 0x2042: // the same, extended
        controller.scans = parameters[0] != 0;
        controller.reports.clear();
        break;
    case 0x200D: // create connection: to a peer, or to those of the accept list
        peer = parameters[4] == 0 ? parameters + 6 : nullptr;
        break;
    case 0x2043: // the same, extended
        peer = parameters[0] == 0 ? parameters + 3 : nullptr;
        break;
    default: break;
    }
    const auto wanted = peer ? controllerOf(addressAt(peer)) : std::nullopt;
    if (!wanted || strengthOf(*wanted))
        return true;
    // The attempt has begun, and nothing comes of it.
    sendToHost(controller, { 0x04, 0x0F, 4, 0x00, 1, packet[1], packet[2] });
    return false;
}

/// Learns from an event of btvirt. Says whether the host is to hear it now.
bool heedEvent(Controller& controller, const Bytes& packet)
{
    const auto keepReport = [&](std::size_t addressAtByte, bool isScanResponse, std::size_t strengthAt) {
        if (const auto advertiser = controllerOf(addressAt(&packet[addressAtByte])))
            keep(controller, { *advertiser, isScanResponse, strengthAt, packet });
        return false;
    };

    const bool isCommandComplete = packet[1] == 0x0E;
    if (isCommandComplete && packet.size() >= 13 && packet[4] == 0x09 && packet[5] == 0x10) // read public address
        controller.publicAddress = addressAt(&packet[7]);
    if (packet[1] != 0x3E || packet.size() < 15) // the rest are events of low energy
        return true;
    switch (packet[3]) {
    case 0x01: // connection complete
    case 0x0A: // the same, enhanced
        if (packet[4] == 0 && packet[7] == 0x01) // the advertiser's end of it
            controller.advertises = false;
        return true;
    case 0x02: // advertising report
        return keepReport(7, packet[5] == 0x04, packet.size() - 1);
    case 0x0D: // the same, extended
        return keepReport(8, packet[5] & 0x08, 18);
    default: return true;
    }
}

} // namespace

extern "C" int open(const char* path, int flags, ...)
{
    static const auto real = theRealOne<int (*)(const char*, int, ...)>("open");
    va_list arguments;
    va_start(arguments, flags);
    const auto mode = flags & O_CREAT ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);

    const int file = real(path, flags, mode);
    if (file >= 0 && std::string_view(path) == "/dev/vhci") {
        const std::scoped_lock lock(mutex);
        controllers.push_back({ .number = controllers.size(), .file = file });
        if (controllers.size() == 1)
            std::thread(repeatReports).detach();
    }
    return file;
}

/// What the host says to a controller.
extern "C" ssize_t read(int file, void* buffer, size_t size)
{
    static const auto real = theRealOne<ssize_t (*)(int, void*, size_t)>("read");
    const auto count = real(file, buffer, size);
    auto* const packet = static_cast<std::uint8_t*>(buffer);
    const std::scoped_lock lock(mutex);
    if (auto* const controller = count >= 4 ? controllerAt(file) : nullptr; controller && packet[0] == 0x01)
        if (!heed(*controller, packet))
            packet[0] = 0xFF; // no packet that btvirt knows
    return count;
}

/// What a controller says to its host.
extern "C" ssize_t writev(int file, const iovec* pieces, int count)
{
    Bytes packet;
    for (const auto& piece : std::span(pieces, std::size_t(count))) {
        const auto* const bytes = static_cast<const std::uint8_t*>(piece.iov_base);
        packet.insert(packet.end(), bytes, bytes + piece.iov_len);
    }
    const std::scoped_lock lock(mutex);
    auto* const controller = controllerAt(file);
    if (controller && packet.size() > 5 && packet[0] == 0x04 && !heedEvent(*controller, packet))
        return ssize_t(packet.size());
    return writeThrough(file, pieces, count);
}
