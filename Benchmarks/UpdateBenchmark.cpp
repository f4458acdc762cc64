#include "AuriskSDK/HearingAid/Aurisk/AuriskAccessory.h"
#include "AuriskSDK/Platform/Manual/ManualDispatchQueue.h"
#include "AuriskSDK/Shared/Accessory/AccessoryManager.h"
#include "AuriskSDK/Shared/Utils/Crc16.h"
#include "Benchmarks/Measure.h"
#include "Simulator/SimulatedAuriskAid.h"
#include "Simulator/Simulator.h"
#include "Tests/Support/PlayedAid.h"

#include <cmath>
#include <numeric>

#include <fcntl.h>
#include <unistd.h>

namespace aurisk::benchmarks {

namespace {

// The checksum

constexpr std::uint16_t polynomial = 0x1021;
constexpr std::size_t imageSize = 65536;

Data anImage()
{
    Data bytes(imageSize);
    std::uint32_t random = 1;
    for (auto& byte : bytes)
        byte = static_cast<std::uint8_t>((random = random * 1664525 + 1013904223) >> 24);
    return bytes;
}

std::uint16_t bitByBit(DataView bytes)
{
    std::uint16_t crc = 0;
    for (const auto byte : bytes) {
        crc = static_cast<std::uint16_t>(crc ^ byte << 8);
        for (int bit = 0; bit < 8; ++bit)
            crc = static_cast<std::uint16_t>(crc << 1 ^ ((crc & 0x8000) != 0 ? polynomial : 0));
    }
    return crc;
}

std::uint16_t byTable(DataView bytes)
{
    static const auto table = Crc16::generateCRCTable(polynomial);
    std::uint16_t crc = 0;
    for (const auto byte : bytes)
        crc = static_cast<std::uint16_t>(table[(crc >> 8 ^ byte) & 0xFF] ^ crc << 8);
    return crc;
}

template <std::uint16_t baseline(DataView)> void checksum(benchmark::State& state)
{
    const auto image = anImage();
    if (Crc16::crc16(image, polynomial, 0, 0, false, false) != baseline(image))
        state.SkipWithError("the checksums differ");
    compare(
        state, 10, [&] { benchmark::DoNotOptimize(Crc16::crc16(image, polynomial, 0, 0, false, false)); },
        [&] { benchmark::DoNotOptimize(baseline(image)); });
    state.counters["of_baseline's_speed"] = 1 / state.counters["x_baseline"];
}

void againstBits(benchmark::State& state)
{
    state.SetLabel("baseline: bit by bit");
    checksum<bitByBit>(state);
}

void againstTable(benchmark::State& state)
{
    state.SetLabel("baseline: byte by byte with a table; target: 3 times its speed");
    checksum<byTable>(state);
}

BENCHMARK(againstBits)->Name("CRC-16 of 64 KiB (bits)")->UseManualTime();
BENCHMARK(againstTable)->Name("CRC-16 of 64 KiB (table)")->UseManualTime();

// The transfer

/// Takes what the library prints while it updates.
class [[nodiscard]] SilentOutput {
public:
    SilentOutput()
    {
        const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
        ::dup2(nowhere, STDOUT_FILENO);
        ::close(nowhere);
    }
    ~SilentOutput()
    {
        ::dup2(_output, STDOUT_FILENO);
        ::close(_output);
    }
    SilentOutput(const SilentOutput&) = delete;
    SilentOutput& operator=(const SilentOutput&) = delete;

private:
    int _output = ::dup(STDOUT_FILENO);
};

/// A connected hearing aid on a link with that round trip, and an application that updates it.
class UpdatedAid final : public DFUServiceDelegate, public std::enable_shared_from_this<UpdatedAid> {
public:
    UpdatedAid(int mtu, Seconds roundTrip)
        : simulator(Simulator::create(world(mtu, roundTrip)))
        , manager(AccessoryManager::create(simulator->platform()))
    {
        queue.advance(Seconds(1));
        manager->startScan(Seconds(1));
        queue.advance(Seconds(2));
        accessory = std::dynamic_pointer_cast<AuriskAccessory>(manager->accessories().at(0));
    }

    /// Connects and updates; returns the time from the first packet to the last acknowledgement.
    Seconds update(const std::shared_ptr<DFUFirmware>& firmware)
    {
        accessory->connect({}, "updated");
        queue.advance(Seconds(2));
        const auto configure = DFUConfigure::create()->with(firmware);
        configure->delegate = weak_from_this();
        began.reset();
        accessory->startOTA(configure);
        queue.advance(Seconds(3600));
        accessory->stopOTA();
        queue.advance(Seconds(1));
        return ended - began.value_or(ended);
    }

    void dfuStateDidChange(DFUState to) override
    {
        if (to == DFUState::uploading && !began)
            began = DispatchQueue::main().now();
        if (to == DFUState::validating)
            ended = DispatchQueue::main().now();
        completed += to == DFUState::completed;
    }
    void dfuError(DFUError, const std::string&) override { }

    static SimulatedWorld world(int mtu, Seconds roundTrip)
    {
        SimulatedWorld world;
        AuriskAidState state;
        state.name = "X1-L";
        state.address = "0A:1B:2C:3D:4E:5F";
        world.aids.push_back(
            { .aid = std::make_shared<SimulatedAuriskAid>(state), .mtu = mtu, .faults = { .latency = roundTrip / 2 } });
        return world;
    }

    ManualDispatchQueue queue;
    ScopedMainQueue scope{ queue };
    std::shared_ptr<Simulator> simulator;
    std::shared_ptr<AccessoryManager> manager;
    std::shared_ptr<AuriskAccessory> accessory;
    std::optional<Seconds> began;
    Seconds ended{ 0 };
    int completed = 0;
};

/// How long a transfer takes that sends the next packet when the last one has been acknowledged, and does nothing else.
void transfer(benchmark::State& state)
{
    state.SetLabel("virtual time of the transfer; bound: packets x round trip; target: within 1 % of it");
    const Seconds roundTrip(static_cast<double>(state.range(0)) / 1e6);
    const auto mtu = static_cast<int>(state.range(1));
    const SilentOutput silent;
    const auto aid = std::make_shared<UpdatedAid>(mtu, roundTrip);
    const auto firmware = DFUFirmware::create(anImage(), DFUFirmwareType::type0);
    Seconds took{ 0 };
    for (auto _ : state) {
        took = aid->update(firmware);
        state.SetIterationTime(took.count());
    }
    const auto packets = std::ceil(double(imageSize) / std::min(mtu - 3 - 10, 251));
    state.counters["x_bound"] = took / (packets * roundTrip);
    state.counters["bytes/s"] = double(imageSize) / took.count();
    if (aid->completed != state.iterations())
        state.SkipWithError("an update did not complete");
}

BENCHMARK(transfer)
    ->Name("transfer, us x MTU")
    ->ArgsProduct({ { 7500, 15000, 30000, 50000 }, { 23, 185, 247 } })
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

// The processor

/// A hearing aid that takes every packet as it is, on a link that takes no time.
class AgreeingAid {
public:
    AgreeingAid(ManualDispatchQueue& queue, std::size_t longestWrite)
    {
        _peripheral->longestWrite = longestWrite;
        CBAdvertisementData advertisement;
        advertisement.manufacturerData = Data{ 0xFE, 0xFE, 0x0A, 0x1B, 0x2C, 0x3D, 0x4E, 0x5F, 0x08, 0x06 };
        _radio.hear(_peripheral, advertisement);
        accessory = std::dynamic_pointer_cast<AuriskAccessory>(_radio.manager->accessories().at(0));
        _radio.connect(_peripheral, *accessory);
        _peripheral->onWrite = [weak = _peripheral->weak_from_this(), &queue](DataView frame) {
            constexpr std::uint8_t spaceEnough = 0x13, taken = 0x15, crcSuccess = 0x17;
            const std::uint8_t request = frame[5],
                               status = request == 1 ? spaceEnough
                : request == 2                       ? taken
                                                     : crcSuccess;
            queue.async([weak, request, status] {
                const auto sum = static_cast<std::uint8_t>(0x68 + 0x9D + 3 + 0x91 + request + status);
                if (const auto peripheral = weak.lock())
                    peripheral->notify(
                        peripheral->updateAnswers, { 0x00, 0xFE, 0x68, 0x9D, 0x03, 0x91, request, status, sum, 0x16 });
            });
        };
    }

    void update(const std::shared_ptr<DFUConfigure>& configure) const
    {
        accessory->startOTA(configure);
        _peripheral->subscribed(_peripheral->updateAnswers);
    }

    std::shared_ptr<AuriskAccessory> accessory;

private:
    std::shared_ptr<tests::PlayedAid> _peripheral = tests::PlayedAid::create(CBUUID(0x0001), "X1-L");
    tests::PlayedRadio _radio;
};

class CountedUpdates final : public DFUServiceDelegate {
public:
    void dfuStateDidChange(DFUState to) override { validated += to == DFUState::validated; }
    void dfuError(DFUError, const std::string&) override { }
    int validated = 0;
};

/// What each packet needs of any library: its frame copied and summed, and an answer and a report in their turn.
void queueAndBytesAlone(ManualDispatchQueue& queue, DataView image, std::size_t chunk)
{
    for (std::size_t offset = 0; offset < image.size(); offset += chunk) {
        const auto part = image.subspan(offset, std::min(chunk, image.size() - offset));
        Data frame(part.begin(), part.end());
        frame.push_back(static_cast<std::uint8_t>(std::accumulate(part.begin(), part.end(), 0U)));
        queue.async([frame = std::move(frame)] { benchmark::DoNotOptimize(frame.data()); });
        queue.async([&queue] { benchmark::DoNotOptimize(&queue); });
        queue.runUntilIdle();
    }
}

void processor(benchmark::State& state)
{
    state.SetLabel("64 KiB, the link apart; baseline: frames copied and summed, and the queue");
    const auto longestWrite = static_cast<std::size_t>(state.range(0)) - 3;
    const auto chunk = longestWrite - 10;
    const SilentOutput silent;
    ManualDispatchQueue queue, queueOfBaseline;
    const ScopedMainQueue scope(queue);
    const AgreeingAid aid(queue, longestWrite);
    const auto counted = std::make_shared<CountedUpdates>();
    const auto image = anImage();
    const auto configure = DFUConfigure::create()->with(DFUFirmware::create(image, DFUFirmwareType::type0));
    configure->delegate = counted;

    Seconds took{ 0 };
    const auto update = [&] {
        took += timeOf(1, [&] {
            aid.update(configure);
            queue.runUntilIdle();
            aid.accessory->stopOTA();
        });
    };
    compare(state, 1, update, [&] { queueAndBytesAlone(queueOfBaseline, image, chunk); });
    const auto perUpdate = took.count() / double(state.iterations());
    state.counters["ms/MiB"] = 16 * 1000 * perUpdate;
    state.counters["us/packet"] = 1e6 * perUpdate / std::ceil(double(imageSize) / double(chunk));
    if (counted->validated != state.iterations())
        state.SkipWithError("an update did not complete");
}

BENCHMARK(processor)->Name("update, MTU")->Arg(23)->Arg(185)->Arg(247)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace

} // namespace aurisk::benchmarks
