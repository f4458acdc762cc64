#pragma once

#include "Tests/Platform/RadioUnderTest.h"
#include "Tests/Support/RadioRecorder.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <string_view>

/// What AuriskSDK/Platform/Bluetooth.h promises, for any implementation. A test program includes this in the source
/// that instantiates it:
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

    template <typename Call> void quietly(Call call)
    {
        const auto before = recorder->heard;
        call();
        EXPECT_EQ(recorder->heard, before) << "a callback came inside the call";
    }
    std::shared_ptr<CBCentralManager> makeCentral()
    {
        std::shared_ptr<CBCentralManager> made;
        quietly([&] { made = radio->platform()->makeCentralManager(recorder, {}); });
        return made;
    }
    void scan(CBScanOptions options = {})
    {
        quietly([&] { central->scanForPeripherals(options); });
    }
    void stopScan()
    {
        quietly([&] { central->stopScan(); });
    }
    void connect()
    {
        quietly([&] { central->connectPeripheral(aid); });
    }
    void cancel()
    {
        quietly([&] { central->cancelPeripheralConnection(aid); });
    }
    void discoverServices()
    {
        quietly([&] { aid->discoverServices(); });
    }
    void discoverCharacteristics(const std::shared_ptr<CBService>& service)
    {
        quietly([&] { aid->discoverCharacteristics(service); });
    }
    void subscribe(const Characteristic& characteristic, bool enabled = true)
    {
        quietly([&] { aid->setNotifyValue(enabled, characteristic); });
    }
    void read(const Characteristic& characteristic)
    {
        quietly([&] { aid->readValue(characteristic); });
    }
    void write(const Data& value, const Characteristic& characteristic, CBCharacteristicWriteType type)
    {
        quietly([&] { aid->writeValue(value, characteristic, type); });
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

// The macros of a suite belong to one source of a program.
namespace {

// State and scan

TEST_P(RadioContract, ACentralSaysOnceWhetherItsRadioCanBeUsedAndDoesNotKnowBefore)
{
    central = makeCentral();
    EXPECT_EQ(central->state(), CBManagerState::unknown);
    EXPECT_THAT(next(), ElementsAre("state 5"));
    EXPECT_EQ(central->state(), CBManagerState::poweredOn);
    EXPECT_THAT(whatElseComes(), IsEmpty());
}

TEST_P(RadioContract, AnAidIsFoundOnceAScanAndIsTheSameInEach)
{
    givenACentral();
    scan();
    needs({ "found X1-L" });
    const auto first = recorder->aid;
    EXPECT_THAT(whatElseComes(), IsEmpty());
    scan(); // anew, without having stopped
    ASSERT_THAT(next(), ElementsAre("found X1-L"));
    EXPECT_EQ(recorder->aid, first);
    stopScan();
    EXPECT_THAT(whatElseComes(), IsEmpty());
    scan();
    ASSERT_THAT(next(), ElementsAre("found X1-L"));
    EXPECT_EQ(recorder->aid, first);

    EXPECT_EQ(first->state(), CBPeripheralState::disconnected);
    givenAFoundAid(); // by another central
    EXPECT_EQ(aid->identifier(), first->identifier());
}

TEST_P(RadioContract, EveryAdvertisementIsHeardWholeWhereDuplicatesAreWanted)
{
    auto expected = *ask_hexadecimal("FEFE");
    const auto address = *ask_hexadecimal(radio->aidAddress());
    expected.insert(expected.end(), address.begin(), address.end());
    expected.insert(expected.end(), { 0x08, 0x06 });

    givenACentral();
    scan({ .allowDuplicates = true });
    for (int i = 0; i < 3; ++i) {
        ASSERT_THAT(next(), AllOf(testing::Not(IsEmpty()), Each("found X1-L")));
        EXPECT_EQ(recorder->advertisement.manufacturerData, expected);
        if (recorder->rssi) {
            EXPECT_THAT(*recorder->rssi, AllOf(testing::Ge(-127), testing::Le(20)));
        }
    }
    stopScan();
    EXPECT_THAT(whatElseComes(), IsEmpty());
}

TEST_P(RadioContract, AnAidThatHasLeftTheAirIsNotFoundThoughItIsKnown)
{
    givenAFoundAid();
    radio->setAidOnAir(false);
    EXPECT_THAT(whatElseComes(), IsEmpty());
    scan();
    EXPECT_THAT(whatElseComes(), IsEmpty());
    radio->setAidOnAir(true);
    EXPECT_THAT(next(), ElementsAre("found X1-L"));
}

// Connections

TEST_P(RadioContract, AConnectionIsMadeOnceAndEndedOnceHoweverOftenItIsAskedFor)
{
    givenAFoundAid();
    connect();
    EXPECT_EQ(aid->state(), CBPeripheralState::connecting);
    connect();
    EXPECT_THAT(nextOfAnAttempt(), ElementsAre("connected X1-L"));
    EXPECT_EQ(aid->state(), CBPeripheralState::connected);
    connect();
    EXPECT_THAT(whatElseComes(), IsEmpty());

    cancel();
    EXPECT_EQ(aid->state(), CBPeripheralState::disconnecting);
    cancel();
    EXPECT_THAT(next(), ElementsAre("disconnected X1-L"));
    EXPECT_EQ(aid->state(), CBPeripheralState::disconnected);
    cancel();
    EXPECT_THAT(whatElseComes(), IsEmpty());
}

TEST_P(RadioContract, AConnectionThatIsAskedForWhileOneEndsComesAfterIt)
{
    givenAConnectedAid();
    cancel();
    connect();
    EXPECT_EQ(aid->state(), CBPeripheralState::disconnecting);
    EXPECT_THAT(next(2, 60s), ElementsAre("disconnected X1-L", "connected X1-L"));
    cancel();
    connect();
    cancel(); // takes it back
    EXPECT_THAT(next(), ElementsAre("disconnected X1-L"));
    EXPECT_THAT(whatElseComes(), IsEmpty());
    EXPECT_EQ(aid->state(), CBPeripheralState::disconnected);
}

TEST_P(RadioContract, AnAttemptWaitsForAnAidThatIsOffTheAirUnlessItIsCancelled)
{
    givenAFoundAid();
    connect();
    cancel(); // before anything can have come of it
    EXPECT_THAT(next(), ElementsAre("disconnected X1-L"));

    radio->setAidOnAir(false);
    connect();
    EXPECT_THAT(whatElseComes(), IsEmpty());
    EXPECT_EQ(aid->state(), CBPeripheralState::connecting);
    cancel();
    EXPECT_THAT(next(), ElementsAre("disconnected X1-L"));
    EXPECT_EQ(aid->state(), CBPeripheralState::disconnected);
    radio->setAidOnAir(true);
    EXPECT_THAT(whatElseComes(), IsEmpty());

    radio->setAidOnAir(false);
    connect();
    EXPECT_THAT(whatElseComes(), IsEmpty());
    radio->setAidOnAir(true);
    EXPECT_THAT(nextOfAnAttempt(), ElementsAre("connected X1-L"));
}

TEST_P(RadioContract, APeripheralThatAnotherCentralFoundCannotBeConnected)
{
    givenAFoundAid();
    const auto first = central;
    const auto itsRecorder = std::exchange(recorder, std::make_shared<ContractRecorder>());
    givenACentral();
    connect();
    EXPECT_THAT(next(), ElementsAre("failed a stranger with error"));
    EXPECT_EQ(aid->state(), CBPeripheralState::disconnected);
    EXPECT_THAT(itsRecorder->take(), IsEmpty());
}

TEST_P(RadioContract, ALinkThatTheAidEndsIsReportedWithAnErrorAndLeavesNothingBehind)
{
    givenASubscribedAid();
    subscribe(battery);
    needs({ "subscribed 2A19" });
    const auto oldService = service(0xAE30);
    const auto oldRequest = request, oldReply = reply, oldBattery = battery;
    const auto tryWhatIsOld = [&] {
        discoverCharacteristics(oldService);
        write(*ask_hexadecimal(readVolume1), oldRequest, withResponse);
        write(*ask_hexadecimal(readVolume1), oldRequest, withoutResponse);
        subscribe(oldReply);
        read(oldBattery);
        read(nullptr);
        EXPECT_THAT(whatElseComes(), IsEmpty());
    };

    radio->endLink();
    EXPECT_THAT(next(), ElementsAre("disconnected X1-L with error"));
    EXPECT_EQ(aid->state(), CBPeripheralState::disconnected);
    EXPECT_THAT(aid->services(), IsEmpty());
    discoverServices();
    tryWhatIsOld();

    connect();
    needs({ "connected X1-L" }, 60s);
    tryWhatIsOld();
    discoverAll();
    EXPECT_NE(service(0xAE30), oldService);
    EXPECT_NE(request, oldRequest);
    tryWhatIsOld();

    radio->perform("battery 65"); // nobody has subscribed in this connection
    EXPECT_THAT(whatElseComes(), IsEmpty());
    subscribe(reply);
    EXPECT_THAT(next(), ElementsAre("subscribed AE02"));
    ask(readVolume2);
    EXPECT_THAT(next(), ElementsAre(volume2Is11));
}

// Services and values

TEST_P(RadioContract, ServicesAndCharacteristicsAreTheSameObjectsForAWholeConnection)
{
    givenAConnectedAid();
    EXPECT_THAT(aid->services(), IsEmpty());
    discoverServices();
    EXPECT_THAT(next(), ElementsAre("services"));
    EXPECT_THAT(service(0xAE30)->characteristics(), IsEmpty());
    discoverAll();

    const struct {
        int service, uuid;
        CBCharacteristicProperties properties;
    } rows[] = {
        { 0xAE30, 0xAE01, CBCharacteristicProperties(0x0C) }, // written with and without response
        { 0xAE30, 0xAE02, CBCharacteristicProperties(0x10) }, // notified
        { 0x180F, 0x2A19, CBCharacteristicProperties(0x12) }, // read and notified
        { 0xAE3A, 0xAE3B, CBCharacteristicProperties(0x04) }, // written without response
        { 0xAE3A, 0xAE3C, CBCharacteristicProperties(0x10) },
    };
    for (const auto& row : rows) {
        const auto one = characteristic(row.service, row.uuid);
        EXPECT_EQ(one->properties(), row.properties) << std::hex << row.uuid;
        EXPECT_EQ(one->value(), std::nullopt);
        EXPECT_EQ(one->service(), service(row.service));
        EXPECT_EQ(one->service()->peripheral(), aid);
    }

    const auto services = aid->services();
    const auto characteristics = service(0xAE30)->characteristics();
    discoverAll();
    EXPECT_EQ(aid->services(), services);
    EXPECT_EQ(service(0xAE30)->characteristics(), characteristics);
}

TEST_P(RadioContract, AValueComesOnceForEachChangeWhileSubscribedAndOnceForEachRead)
{
    givenCharacteristics();
    subscribe(battery);
    EXPECT_THAT(next(), ElementsAre("subscribed 2A19"));
    radio->perform("battery 65");
    EXPECT_THAT(next(), ElementsAre("value 2A19 41"));
    EXPECT_EQ(battery->value(), Data{ 0x41 });
    EXPECT_THAT(whatElseComes(), IsEmpty());
    read(battery);
    EXPECT_THAT(next(), ElementsAre("value 2A19 41"));
    EXPECT_THAT(whatElseComes(), IsEmpty());

    subscribe(battery, false);
    EXPECT_THAT(next(), ElementsAre("subscribed 2A19"));
    radio->perform("battery 64");
    EXPECT_THAT(whatElseComes(), IsEmpty());
    read(battery);
    EXPECT_THAT(next(), ElementsAre("value 2A19 40"));
    EXPECT_EQ(battery->value(), Data{ 0x40 });
}

TEST_P(RadioContract, WritesArriveInTheirOrderAndAreConfirmedOnceEachWhereTheyAskForIt)
{
    givenASubscribedAid();
    const auto askAll = [this](CBCharacteristicWriteType type) {
        for (const auto* frame : { readVolume1, readVolume2, readVolume3, readVolume1, readVolume2 })
            ask(frame, type);
    };
    askAll(withoutResponse);
    EXPECT_THAT(next(5), ElementsAre(volume1Is10, volume2Is11, volume3Is12, volume1Is10, volume2Is11));
    EXPECT_THAT(whatElseComes(), IsEmpty());

    askAll(withResponse);
    auto heard = next(10);
    EXPECT_EQ(std::erase(heard, "written AE01"), 5u);
    EXPECT_THAT(heard, ElementsAre(volume1Is10, volume2Is11, volume3Is12, volume1Is10, volume2Is11));
    EXPECT_THAT(whatElseComes(), IsEmpty());

    const Data nothing(1), tooMuch(513);
    for (const auto& value : { nothing, tooMuch, nothing })
        write(value, request, withResponse);
    EXPECT_THAT(next(3), ElementsAre("written AE01", "written AE01 with error", "written AE01"));
}

TEST_P(RadioContract, AWriteCarriesWhatTheConnectionSaysAndFailsBeyondIt)
{
    givenASubscribedAid();
    for (const auto type : { withResponse, withoutResponse }) {
        SCOPED_TRACE(int(type));
        const auto most = aid->maximumWriteValueLength(type);
        ASSERT_THAT(most, AllOf(testing::Ge(20u), testing::Le(512u)));

        // The longest frame that fits: it writes a block to a program that the aid does not have.
        const auto size = std::min<std::size_t>(most, 261) - 6;
        Data frame = { 0xFE, 0x68, 0x14, std::uint8_t(size), 0x7F, 0x03 };
        frame.resize(size + 4);
        frame.push_back(std::uint8_t(0x68 + 0x14 + size + 0x7F + 0x03));
        frame.push_back(0x16);
        const std::string refusal = "value AE02 00fe68d4027f03c016";
        write(frame, request, type);
        write(Data(most), request, type); // no frame: the aid does not answer
        write(Data(most + 1), request, type);
        auto heard = next(type == withResponse ? 4 : 1);
        EXPECT_EQ(std::erase(heard, refusal), 1u) << "it has not arrived whole";
        const Lines confirmations = { "written AE01", "written AE01", "written AE01 with error" };
        EXPECT_EQ(heard, type == withResponse ? confirmations : Lines());
        EXPECT_THAT(whatElseComes(), IsEmpty());
    }
}

TEST_P(RadioContract, WhatACharacteristicDoesNotPermitFailsOnItsOwnCallback)
{
    givenASubscribedAid();
    write(Data(1), reply, withResponse);
    write(Data(1), battery, withoutResponse); // which nobody is told
    read(reply);
    subscribe(request);
    EXPECT_THAT(next(3),
        UnorderedElementsAre("written AE02 with error", "value AE02 with error", "subscribed AE01 with error"));
    EXPECT_THAT(whatElseComes(), IsEmpty());
    ask(readVolume3);
    EXPECT_THAT(next(), ElementsAre(volume3Is12)) << "no harm done";
}

// The radio goes off

TEST_P(RadioContract, ARadioThatGoesOffEndsAConnectionButNotTheScan)
{
    givenAConnectedAid();
    scan({ .allowDuplicates = true });
    EXPECT_THAT(recorder->take(), IsEmpty());
    radio->setRadioOn(false);
    EXPECT_THAT(next(2), UnorderedElementsAre("state 4", "disconnected X1-L with error"));
    EXPECT_EQ(central->state(), CBManagerState::poweredOff);
    EXPECT_EQ(aid->state(), CBPeripheralState::disconnected);
    connect();
    EXPECT_THAT(next(), ElementsAre("failed X1-L with error"));
    EXPECT_EQ(aid->state(), CBPeripheralState::disconnected);
    EXPECT_THAT(whatElseComes(), IsEmpty());

    radio->setRadioOn(true);
    EXPECT_THAT(next(2), AllOf(Contains("state 5"), Contains("found X1-L")));
    EXPECT_EQ(recorder->aid, aid);
    stopScan();
    recorder->take();
    connect();
    EXPECT_THAT(nextOfAnAttempt(), ElementsAre("connected X1-L"));
}

TEST_P(RadioContract, ARadioThatGoesOffFailsAnAttemptAndAScanThatBeginsMeanwhileWaits)
{
    givenAFoundAid();
    radio->setAidOnAir(false);
    connect();
    EXPECT_THAT(whatElseComes(), IsEmpty());
    radio->setRadioOn(false);
    EXPECT_THAT(next(2), UnorderedElementsAre("state 4", "failed X1-L with error"));
    radio->setAidOnAir(true);
    scan({ .allowDuplicates = true });
    EXPECT_THAT(whatElseComes(), IsEmpty());
    radio->setRadioOn(true);
    EXPECT_THAT(next(2), AllOf(Contains("state 5"), Contains("found X1-L")));
    EXPECT_EQ(aid->state(), CBPeripheralState::disconnected) << "an attempt that has failed is over";
}

// Lifetimes

TEST_P(RadioContract, ACentralThatIsDestroyedTellsNobodyAndFreesItsAid)
{
    givenASubscribedAid();
    scan({ .allowDuplicates = true });
    ask(readVolume1);
    quietly([&] { central.reset(); });
    EXPECT_EQ(aid->state(), CBPeripheralState::disconnected);
    ask(readVolume1);
    EXPECT_THAT(whatElseComes(), IsEmpty());
    givenAConnectedAid();
}

/// Everything that a delegate does here it does inside the callback before.
TEST_P(RadioContract, ADelegateMayDoAnythingInACallbackEvenDestroyItsCentral)
{
    const Lines story = { "state 5", "found X1-L", "connected X1-L", "services", "characteristics of AE30",
        "subscribed AE02", volume1Is10, "disconnected X1-L" };
    const auto step = [&](const std::string& line) {
        if (line == "state 5")
            return central->scanForPeripherals({ .allowDuplicates = true });
        if (line == "found X1-L") {
            aid = recorder->aid;
            aid->setDelegate(recorder);
            central->stopScan();
            return central->connectPeripheral(aid);
        }
        if (line == "connected X1-L")
            return aid->discoverServices();
        if (line == "services")
            return aid->discoverCharacteristics(service(0xAE30));
        if (line == "characteristics of AE30")
            return aid->setNotifyValue(true, characteristic(0xAE30, 0xAE02));
        if (line == "subscribed AE02")
            return aid->writeValue(*ask_hexadecimal(readVolume1), characteristic(0xAE30, 0xAE01), withoutResponse);
        if (line == volume1Is10)
            return central->cancelPeripheralConnection(aid);
    };
    for (const std::size_t length : { 1u, 2u, 3u, 7u, 8u }) {
        SCOPED_TRACE(story[length - 1]);
        recorder->onLine = [&](const std::string& line) {
            if (line == story[length - 1])
                central.reset();
            else
                step(line);
        };
        central = makeCentral();
        EXPECT_EQ(next(length, 60s), Lines(story.begin(), story.begin() + long(length)));
        EXPECT_THAT(whatElseComes(), IsEmpty());
        EXPECT_EQ(central, nullptr);
    }
}

TEST_P(RadioContract, NoDelegateIsKeptAliveNorMissed)
{
    givenASubscribedAid();
    ask(readVolume1);
    const std::weak_ptr<ContractRecorder> gone = recorder;
    recorder.reset();
    EXPECT_TRUE(gone.expired());
    radio->endLink();
    EXPECT_TRUE(radio->until([&] { return aid->state() == CBPeripheralState::disconnected; }, 10s));
}

} // namespace
} // namespace aurisk::tests
