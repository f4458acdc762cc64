#pragma once

#include "AuriskSDK/Platform/BlueZ/BlueZ.h"
#include "Tests/Bus/PlayedDaemon.h"
#include "Tests/Support/RadioRecorder.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>

namespace aurisk::bluez {

using tests::Lines;

class Recorder final : public tests::RadioRecorder {
public:
    void centralManagerDidDiscover(CBCentralManager&, const std::shared_ptr<CBPeripheral>& peripheral,
        const CBAdvertisementData&, std::optional<int>) override
    {
        found[*peripheral->name()] = peripheral;
        hear("found " + *peripheral->name());
    }

    bool has(const std::string& line) const { return std::find(heard.begin(), heard.end(), line) != heard.end(); }
    bool hears(const std::string& line, Seconds limit = Seconds(10))
    {
        return until([&] { return has(line); }, limit);
    }

protected:
    std::string text(const MaybeError& error) const override { return error ? " with error" : ""; }
};

/// An application that has one central, and the aids L and R, which are in the daemon's tree where a test adds them.
class AHostOnAPlayedBus : public testing::Test {
protected:
    ~AHostOnAPlayedBus() override { end(); }

    /// A central that has found the aids that there are, and scans no more.
    void begin(Seconds connectionLimit = Seconds(60))
    {
        end();
        platform = makePlatform({ .connectionLimit = connectionLimit });
        central = platform->makeCentralManager(recorder, {});
        ASSERT_TRUE(recorder->hears("state 5"));
        if (!aids.empty())
            find(*central, *recorder);
        recorder->take();
        daemon.calls.clear();
    }

    void find(CBCentralManager& one, Recorder& told)
    {
        daemon.calls.clear();
        one.scanForPeripherals({});
        ASSERT_TRUE(daemon.isCalled("StartDiscovery /org/bluez/hci0"));
        for (const auto& [name, path] : aids)
            daemon.hear(path);
        ASSERT_TRUE(until([&] { return told.found.size() == aids.size(); }, Seconds(10)));
        one.stopScan();
        ASSERT_TRUE(daemon.isCalled("StopDiscovery /org/bluez/hci0"));
    }

    void end()
    {
        recorder = std::make_shared<Recorder>();
        central.reset();
        platform.reset();
    }

    std::string addAid(const std::string& name)
    {
        const auto path = daemon.addAid(name, int(aids.size()) + 1);
        aids.emplace(name, path);
        return path;
    }
    std::shared_ptr<CBPeripheral> peripheral(const std::string& name) const { return recorder->found.at(name); }
    void connect(const std::string& name) { central->connectPeripheral(peripheral(name)); }
    void cancel(const std::string& name) { central->cancelPeripheralConnection(peripheral(name)); }
    bool hears(const std::string& line, Seconds limit = Seconds(10)) { return recorder->hears(line, limit); }

    void givenAConnectedAid()
    {
        begin();
        connect("L");
        ASSERT_TRUE(hears("connected L"));
        recorder->take();
        daemon.calls.clear();
    }

    void discoverServices()
    {
        peripheral("L")->setDelegate(recorder);
        peripheral("L")->discoverServices();
        ASSERT_TRUE(hears("services AE30"));
    }

    PrivateBus bus;
    PlayedDaemon daemon;
    std::map<std::string, std::string> aids; ///< the path of each
    std::shared_ptr<Recorder> recorder;
    std::shared_ptr<Platform> platform;
    std::shared_ptr<CBCentralManager> central;
};

} // namespace aurisk::bluez
