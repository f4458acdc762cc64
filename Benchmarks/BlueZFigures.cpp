// Measures the library over BlueZ, with nothing but the hearing aid X1-L in the air: `Tests/BlueZ/figures.py` runs it
// in a guest, and other programs that do the same. One JSON object a line.

#include "AuriskSDK/HearingAid/Aurisk/AuriskAccessory.h"
#include "AuriskSDK/Platform/Asio/MainQueue.h"
#include "AuriskSDK/Platform/BlueZ/BlueZ.h"
#include "AuriskSDK/Shared/Accessory/AccessoryManager.h"

#include <asio/io_context.hpp>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <random>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

using namespace aurisk;

constexpr int advertisements = 1000, roundTrips = 1500, imageSize = 65536;

const CBUUID requestService(0xAE30), requestCharacteristic(0xAE01), replyCharacteristic(0xAE02);
const Data readVolume{ 0xFE, 0x68, 0x11, 0x02, 0x01, 0x04, 0x80, 0x16 };

/// Standard output for the figures alone: what the library prints goes nowhere.
class Figures {
public:
    Figures()
        : _output(dup(STDOUT_FILENO))
    {
        const int nowhere = open("/dev/null", O_WRONLY);
        dup2(nowhere, STDOUT_FILENO);
        close(nowhere);
    }
    ~Figures() { close(_output); }
    Figures(const Figures&) = delete;
    Figures& operator=(const Figures&) = delete;

    void tell(const char* name, double value, const char* unit) const
    {
        dprintf(_output,
            R"({"name": "%s", "value": %f, "unit": "%s"})"
            "\n",
            name, value, unit);
    }

private:
    int _output;
};

/// Without a look at the clock, which an application would not need either. Whoever runs this limits its time.
void waitUntil(const std::function<bool()>& condition)
{
    auto& loop = mainQueueContext();
    while (!condition()) {
        loop.restart();
        loop.run_one();
    }
}

/// The time, and the time of this process's on the processor, since it was made; in milliseconds.
class Meter {
public:
    double elapsed() const { return (DispatchQueue::main().now() - _start).count() * 1000; }
    double cpu() const { return used() - _used; }

private:
    static double used()
    {
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        const auto milliseconds
            = [](const timeval& time) { return double(time.tv_sec) * 1e3 + double(time.tv_usec) / 1e3; };
        return milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime);
    }

    Seconds _start = DispatchQueue::main().now();
    double _used = used();
};

/// A host on the port, as a family's services are.
class Host final : public CBCentralManagerDelegate, public CBPeripheralDelegate {
public:
    int heard = 0, replies = 0;
    bool isOn = false, isSubscribed = false, isConnected = false;
    std::shared_ptr<CBPeripheral> aid;
    std::shared_ptr<CBCharacteristic> request;

    void ask()
    {
        const auto before = replies;
        aid->writeValue(readVolume, request, CBCharacteristicWriteType::withoutResponse);
        waitUntil([&] { return replies > before; });
    }

    void centralManagerDidUpdateState(CBCentralManager& central) override
    {
        isOn = central.state() == CBManagerState::poweredOn;
    }
    void centralManagerDidDiscover(CBCentralManager&, const std::shared_ptr<CBPeripheral>& peripheral,
        const CBAdvertisementData&, std::optional<int>) override
    {
        ++heard;
        aid = peripheral;
    }
    void centralManagerDidConnect(CBCentralManager&, const std::shared_ptr<CBPeripheral>& peripheral) override
    {
        isConnected = true;
        peripheral->discoverServices();
    }
    void centralManagerDidDisconnectPeripheral(
        CBCentralManager&, const std::shared_ptr<CBPeripheral>&, const MaybeError&) override
    {
        isConnected = false;
    }
    void centralManagerDidFailToConnect(
        CBCentralManager&, const std::shared_ptr<CBPeripheral>&, const MaybeError&) override
    {
    }
    void peripheralDidDiscoverServices(CBPeripheral& peripheral, const MaybeError&) override
    {
        for (const auto& service : peripheral.services())
            if (service->uuid() == requestService)
                peripheral.discoverCharacteristics(service);
    }
    void peripheralDidDiscoverCharacteristicsFor(
        CBPeripheral& peripheral, const std::shared_ptr<CBService>& service, const MaybeError&) override
    {
        for (const auto& one : service->characteristics()) {
            if (one->uuid() == requestCharacteristic)
                request = one;
            if (one->uuid() == replyCharacteristic)
                peripheral.setNotifyValue(true, one);
        }
    }
    void peripheralDidUpdateNotificationStateFor(
        CBPeripheral&, const std::shared_ptr<CBCharacteristic>&, const MaybeError&) override
    {
        isSubscribed = true;
    }
    void peripheralDidUpdateValueFor(
        CBPeripheral&, const std::shared_ptr<CBCharacteristic>&, const MaybeError&) override
    {
        ++replies;
    }
};

void measurePort(BluetoothPlatform& platform, const Figures& figures)
{
    const auto host = std::make_shared<Host>();
    const auto central = platform.makeCentralManager(host, {});
    waitUntil([&] { return host->isOn; });

    Meter scanning;
    central->scanForPeripherals({ .allowDuplicates = true });
    waitUntil([&] { return host->heard >= advertisements; });
    central->stopScan();
    figures.tell("cpuPerThousandAdvertisements", scanning.cpu() * 1000 / host->heard, "ms");

    Meter connecting;
    host->aid->setDelegate(host);
    central->connectPeripheral(host->aid);
    waitUntil([&] { return host->isSubscribed; });
    host->ask();
    figures.tell("connectToFirstReply", connecting.elapsed(), "ms");

    Meter asking;
    for (int i = 0; i < roundTrips; ++i)
        host->ask();
    figures.tell("requestsPerSecond", roundTrips * 1000 / asking.elapsed(), "1/s");
    figures.tell("cpuPerRoundTrip", asking.cpu() / roundTrips, "ms");

    central->cancelPeripheralConnection(host->aid);
    waitUntil([&] { return !host->isConnected; });
}

class Updater final : public AccessoryManagerScanningDelegate,
                      public AccessoryDelegate,
                      public DFUServiceDelegate,
                      public DFUProgressDelegate {
public:
    std::shared_ptr<AuriskAccessory> aid;
    bool isReady = false, isValidating = false;
    std::optional<Meter> transfer;

    void accessoryManagerIsScanning(const std::shared_ptr<AccessoryManager>&, bool) override { }
    void accessoryManagerDidDiscover(const std::shared_ptr<AccessoryManager>&,
        const std::shared_ptr<Accessory>& accessory, std::optional<int>) override
    {
        aid = std::dynamic_pointer_cast<AuriskAccessory>(accessory);
    }
    void accessoryManagerDidUpdate(
        const std::shared_ptr<AccessoryManager>&, const std::shared_ptr<Accessory>&, std::optional<int>) override
    {
    }
    void deviceDidUpdate(const std::shared_ptr<Accessory>&, AccessoryState) override { }
    void deviceDidConnect(const std::shared_ptr<Accessory>&, const MaybeError&) override { }
    void deviceDidDisconnect(const std::shared_ptr<Accessory>&, const MaybeError&) override { }
    void deviceDidFailToConnect(const std::shared_ptr<Accessory>&, const MaybeError&) override { }
    void deviceDidDiscoverServices(
        const std::shared_ptr<Accessory>&, const std::vector<std::shared_ptr<AccessoryService>>&) override
    {
        isReady = true;
    }
    void dfuStateDidChange(DFUState to) override
    {
        if (to == DFUState::uploading && !transfer)
            transfer.emplace();
        isValidating = isValidating || to == DFUState::validating;
    }
    void dfuError(DFUError, const std::string& message) override
    {
        std::cerr << "BlueZFigures: " << message << std::endl;
        std::exit(1);
    }
    void dfuProgressDidChange(int, double, double) override { }
};

void measureUpdate(std::shared_ptr<BluetoothPlatform> platform, const Figures& figures)
{
    const auto updater = std::make_shared<Updater>();
    const auto manager = AccessoryManager::create(std::move(platform));
    manager->setScanningDelegate(updater);
    manager->startScan();
    waitUntil([&] { return updater->aid != nullptr; });
    manager->stopScan();
    updater->aid->connect(updater, std::nullopt);
    waitUntil([&] { return updater->isReady; });

    std::minstd_rand random;
    Data image(imageSize);
    for (auto& byte : image)
        byte = static_cast<std::uint8_t>(random());
    auto configure = DFUConfigure::create()->with(DFUFirmware::create(image, DFUFirmwareType::type0));
    configure->delegate = updater;
    configure->progressDelegate = updater;
    updater->aid->startOTA(configure);
    waitUntil([&] { return updater->isValidating; });

    constexpr int chunk = 251; // of the longest frame, which the guest's connection carries
    constexpr int packets = (imageSize + chunk - 1) / chunk;
    const auto elapsed = updater->transfer->elapsed();
    figures.tell("updatePacket", elapsed / packets, "ms");
    figures.tell("updateThroughput", imageSize / elapsed, "kB/s");
}

} // namespace

int main()
{
    const Figures figures;
    const auto platform = bluez::makePlatform();
    measurePort(*platform, figures);
    measureUpdate(platform, figures);
}
