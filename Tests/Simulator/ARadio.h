#pragma once

#include "AuriskSDK/Platform/Manual/ManualDispatchQueue.h"
#include "Simulator/SimulatedAuriskAid.h"
#include "Simulator/Simulator.h"
#include "Tests/Support/RadioRecorder.h"

#include <gmock/gmock.h>

namespace aurisk::simulatortests {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using namespace tests;

/// A radio with the aids "X1-L" and "X1-R", in virtual time. A link takes 5 ms each way.
struct ARadio : testing::Test {
    static SimulatedWorld world()
    {
        SimulatedWorld world;
        world.aids = {
            { .aid = std::make_shared<SimulatedAuriskAid>(AuriskAidState{
                  .name = "X1-L", .address = "00:00:00:00:00:01", .volumes = { 10, 11, 12 }, .battery = 80 }),
                .rssi = -50 },
            { .aid = std::make_shared<SimulatedAuriskAid>(
                  AuriskAidState{ .name = "X1-R", .address = "00:00:00:00:00:02" }),
                .rssi = -60 },
        };
        return world;
    }

    std::shared_ptr<CBCentralManager> makeCentral(CBCentralManagerOptions options = {})
    {
        return simulator->platform()->makeCentralManager(recorder, options);
    }

    SimulatedRadio& radio() { return simulator->radio(); }
    LinkFaults& faults() { return simulator->world().placed("X1-L").faults; }
    AuriskAidState aid() { return dynamic_cast<const SimulatedAuriskAid&>(*simulator->aid("X1-L")).state(); }

    /// What is heard while `span` goes by.
    Lines within(Seconds span)
    {
        recorder->take();
        queue.advance(span);
        return recorder->take();
    }

    void givenFoundAids()
    {
        queue.runUntilIdle();
        central->scanForPeripherals({});
        queue.advance(1s);
        central->stopScan();
        queue.advance(1s);
        left = recorder->found.at("X1-L");
        left->setDelegate(recorder);
        recorder->take();
    }

    void connect()
    {
        central->connectPeripheral(left);
        queue.advance(10ms);
    }

    /// Messages 1 to 4: connection, services, and the characteristics of the first two of them.
    void givenDiscoveredCharacteristics()
    {
        givenFoundAids();
        connect();
        left->discoverServices();
        queue.advance(10ms);
        for (const auto service : { 0u, 1u })
            left->discoverCharacteristics(left->services().at(service));
        queue.advance(10ms);
        request = characteristic(0, 0);
        reply = characteristic(0, 1);
        battery = characteristic(1, 0);
        recorder->take();
    }

    /// Message 5: the subscription to replies. The next message is number 6.
    void givenASubscribedAid()
    {
        givenDiscoveredCharacteristics();
        left->setNotifyValue(true, reply);
        queue.advance(10ms);
        recorder->take();
        ASSERT_EQ(radio().messageCount("X1-L"), 5);
    }

    std::shared_ptr<CBCharacteristic> characteristic(std::size_t service, std::size_t index) const
    {
        return left->services().at(service)->characteristics().at(index);
    }

    void write(const char* value, CBCharacteristicWriteType type = CBCharacteristicWriteType::withoutResponse)
    {
        left->writeValue(*ask_hexadecimal(value), request, type);
    }

    ManualDispatchQueue queue;
    std::shared_ptr<Simulator> simulator = Simulator::create(world(), queue);
    std::shared_ptr<RadioRecorder> recorder = std::make_shared<RadioRecorder>();
    std::shared_ptr<CBCentralManager> central = makeCentral();
    std::shared_ptr<CBPeripheral> left;
    std::shared_ptr<CBCharacteristic> request, reply, battery;
};

constexpr auto volume1Refused = "value AE02 00fe68d10201044016";

} // namespace aurisk::simulatortests
