#pragma once

#include "Tests/RadioContract/RadioUnderTest.h"
#include "Tests/Support/RadioRecorder.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <stdexcept>
#include <string_view>
#include <utility>

/// What AuriskSDK/Platform/Bluetooth.h promises, for any implementation. A test program compiles the sources of this
/// folder, and one of its own that instantiates the suite:
///
///     INSTANTIATE_TEST_SUITE_P(Simulator, RadioContract, testing::Values(RadioImplementation{ "Perfect", make }),
///     named);
///
/// Times, the words of errors and the order of independent events are no part of the contract.

namespace aurisk::tests {

using namespace std::chrono_literals;
using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

inline std::string named(const testing::TestParamInfo<RadioImplementation>& one) { return one.param.name; }

/// Writes down what a central tells of the aid; other devices within reach are none of its business.
class ContractRecorder final : public RadioRecorder {
public:
    static constexpr std::string_view aidName = "X1-L";

    std::shared_ptr<CBPeripheral> aid; ///< as it was found last, and what was heard of it then
    CBAdvertisementData advertisement;
    std::optional<int> rssi;

    void centralManagerDidDiscover(CBCentralManager&, const std::shared_ptr<CBPeripheral>& peripheral,
        const CBAdvertisementData& advertisementData, std::optional<int> itsRssi) override
    {
        if (peripheral->name() != aidName && advertisementData.localName != aidName)
            return;
        aid = peripheral;
        advertisement = advertisementData;
        rssi = itsRssi;
        hear("found " + nameOf(peripheral));
    }
    void peripheralDidDiscoverServices(CBPeripheral&, const MaybeError& error) override
    {
        hear("services" + text(error));
    }
    void peripheralDidDiscoverCharacteristicsFor(
        CBPeripheral&, const std::shared_ptr<CBService>& service, const MaybeError& error) override
    {
        hear("characteristics of " + service->uuid().uuidString() + text(error));
    }

protected:
    std::string nameOf(const std::shared_ptr<CBPeripheral>& peripheral) const override
    {
        return std::string(peripheral == aid ? aidName : "a stranger");
    }
    std::string text(const MaybeError& error) const override { return error ? " with error" : ""; }
};

class RadioContract : public testing::TestWithParam<RadioImplementation> {
protected:
    using Characteristic = std::shared_ptr<CBCharacteristic>;
    static constexpr auto withResponse = CBCharacteristicWriteType::withResponse;
    static constexpr auto withoutResponse = CBCharacteristicWriteType::withoutResponse;

    // What is heard

    /// The next `count` lines, and what came along with them; fewer where no more come within `limit`.
    Lines next(std::size_t count = 1, Seconds limit = 10s)
    {
        radio->until([&] { return recorder->heard.size() >= count; }, limit);
        return recorder->take();
    }

    /// An attempt at a connection may take long.
    Lines nextOfAnAttempt() { return next(1, 60s); }

    /// What comes while a while goes by.
    Lines whatElseComes()
    {
        radio->until([] { return false; }, radio->aWhile());
        return recorder->take();
    }

    // Calls. Nothing is heard inside any of them.

    template <typename... Call> void quietly(Call&&... call)
    {
        const auto before = recorder->heard;
        std::invoke(std::forward<Call>(call)...);
        EXPECT_EQ(recorder->heard, before) << "a callback came inside the call";
    }
    std::shared_ptr<CBCentralManager> makeCentral()
    {
        std::shared_ptr<CBCentralManager> made;
        quietly([&] { made = radio->platform()->makeCentralManager(recorder, {}); });
        return made;
    }
    void scan(CBScanOptions options = {}) { quietly(&CBCentralManager::scanForPeripherals, *central, options); }
    void stopScan() { quietly(&CBCentralManager::stopScan, *central); }
    void connect() { quietly(&CBCentralManager::connectPeripheral, *central, aid); }
    void cancel() { quietly(&CBCentralManager::cancelPeripheralConnection, *central, aid); }
    void discoverServices() { quietly(&CBPeripheral::discoverServices, *aid); }
    void discoverCharacteristics(const std::shared_ptr<CBService>& service)
    {
        quietly(&CBPeripheral::discoverCharacteristics, *aid, service);
    }
    void subscribe(const Characteristic& characteristic, bool enabled = true)
    {
        quietly(&CBPeripheral::setNotifyValue, *aid, enabled, characteristic);
    }
    void read(const Characteristic& characteristic) { quietly(&CBPeripheral::readValue, *aid, characteristic); }
    void write(const Data& value, const Characteristic& characteristic, CBCharacteristicWriteType type)
    {
        quietly(&CBPeripheral::writeValue, *aid, value, characteristic, type);
    }
    void ask(const char* frame, CBCharacteristicWriteType type = withoutResponse)
    {
        write(*ask_hexadecimal(frame), request, type);
    }

    // What a case begins with. It ends at once where that does not come.

    void needs(Lines lines, Seconds limit = 10s)
    {
        auto heard = next(lines.size(), limit);
        std::sort(heard.begin(), heard.end());
        std::sort(lines.begin(), lines.end());
        if (heard != lines)
            throw std::runtime_error(
                "needs " + testing::PrintToString(lines) + " and heard " + testing::PrintToString(heard));
    }
    void givenACentral()
    {
        central = makeCentral();
        needs({ "state 5" });
    }
    void givenAFoundAid()
    {
        givenACentral();
        scan();
        needs({ "found X1-L" });
        stopScan();
        aid = recorder->aid;
        aid->setDelegate(recorder);
    }
    void givenAConnectedAid()
    {
        givenAFoundAid();
        connect();
        needs({ "connected X1-L" }, 60s);
    }
    void givenCharacteristics()
    {
        givenAConnectedAid();
        discoverAll();
    }
    void givenASubscribedAid()
    {
        givenCharacteristics();
        subscribe(reply);
        needs({ "subscribed AE02" });
    }

    void discoverAll()
    {
        discoverServices();
        needs({ "services" });
        for (const auto uuid : { 0xAE30, 0x180F, 0xAE3A })
            discoverCharacteristics(service(uuid));
        needs({ "characteristics of AE30", "characteristics of 180F", "characteristics of AE3A" });
        request = characteristic(0xAE30, 0xAE01);
        reply = characteristic(0xAE30, 0xAE02);
        battery = characteristic(0x180F, 0x2A19);
    }

    static auto withUuid(int uuid, const auto& all)
    {
        for (const auto& one : all)
            if (one->uuid() == CBUUID(std::uint16_t(uuid)))
                return one;
        throw std::out_of_range("the aid shows no " + CBUUID(std::uint16_t(uuid)).uuidString());
    }
    std::shared_ptr<CBService> service(int uuid) const { return withUuid(uuid, aid->services()); }
    Characteristic characteristic(int ofService, int uuid) const
    {
        return withUuid(uuid, service(ofService)->characteristics());
    }

    std::shared_ptr<RadioUnderTest> radio = GetParam().make();
    std::shared_ptr<ContractRecorder> recorder = std::make_shared<ContractRecorder>();
    std::shared_ptr<CBCentralManager> central;
    std::shared_ptr<CBPeripheral> aid;
    Characteristic request, reply, battery; ///< AE01, AE02, 2A19
};

} // namespace aurisk::tests
