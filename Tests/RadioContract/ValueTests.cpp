#include "Tests/RadioContract/RadioContract.h"

namespace aurisk::tests {
namespace {

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

} // namespace
} // namespace aurisk::tests
