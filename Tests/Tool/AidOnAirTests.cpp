#include "Tools/aurisk/AidOnAir.h"

#include "Simulator/SimulatedPL3Aid.h"
#include "Tests/Support/FakeAir.h"
#include "Tests/Tool/ToolScenario.h"

namespace aurisk::tests {
namespace {

using Kind = Fault::Kind;
constexpr auto withoutResponse = CBCharacteristicWriteType::withoutResponse;
const CBUUID request(0xAE01), reply(0xAE02), battery(0x2A19);
const CBUUID pl3 = *CBUUID::fromString("95E82A96-47B6-C216-A125-403009D6F03E");

constexpr auto readVolume = "fe68110201048016", volumeIs8 = "notified AE02 00fe6891030104080916";
constexpr auto readPL3Volume = "7e000180", setPL3Volume = "7e0002000c", setPL3Volume99 = "7e00020063";

/// X1-L and P3-L, which is a PL3 aid with a volume of 6, each on an adapter of its own.
class OnAir : public ToolScenario {
protected:
    static SimulatedWorld world()
    {
        SimulatedWorld world;
        world.aids = { placed("X1-L", "0A:1B:2C:3D:4E:5F", 0x06),
            { .aid = std::make_shared<SimulatedPL3Aid>(
                  PL3AidState{ .name = "P3-L", .address = "0A:1B:2C:00:55:66", .volume = 6 }) } };
        return world;
    }

    OnAir()
    {
        simulator = Simulator::create(world());
        for (const auto* name : { "X1-L", "P3-L" })
            aids.push_back(tool::AidOnAir::create(simulator, name, fakeAir, "hci1", {}));
        after(1);
    }

    FakeGattServer& air(const std::string& name = "X1-L") { return *fakeAir.servers.at(name); }

    /// What the server is told while `seconds` go by.
    Lines within(double seconds, const std::string& name = "X1-L")
    {
        after(seconds);
        return air(name).take();
    }

    bool isAdvertised(const std::string& name = "X1-L") { return air(name).advertisement.has_value(); }
    bool hasLink(const std::string& name = "X1-L") { return simulator->radio().isConnected(name); }

    FakeAir fakeAir;
    std::vector<std::shared_ptr<tool::AidOnAir>> aids;
};

TEST_F(OnAir, AnAidAdvertisesAsItDoesWithoutAnAirAndOnlyWhileItIsOn)
{
    EXPECT_EQ(air().advertisement->localName, "X1-L");
    EXPECT_EQ(
        air().advertisement->manufacturerData, Data({ 0xFE, 0xFE, 0x0A, 0x1B, 0x2C, 0x3D, 0x4E, 0x5F, 0x08, 0x06 }));
    EXPECT_EQ(air("P3-L").advertisement->localName, "P3-L");
    wearer("X1-L", "power 0");
    after(2);
    EXPECT_FALSE(isAdvertised());
    EXPECT_TRUE(isAdvertised("P3-L"));
    wearer("X1-L", "power 1");
    auto state = aid("X1-L").state();
    state.transparencyFlag = true;
    aid("X1-L").setState(state);
    after(0.5);
    EXPECT_EQ(air().advertisement->manufacturerData->at(8), 0x88);
}

TEST_F(OnAir, ItsTableIsThatOfTheAid)
{
    const auto& table = air().options.services;
    ASSERT_EQ(table.size(), 3u);
    EXPECT_EQ(table[0].uuid, CBUUID(0xAE30));
    EXPECT_EQ(table[1].characteristics.at(0).uuid, battery);
    EXPECT_EQ(int(table[1].characteristics.at(0).properties), 0x12) << "read and notify";
}

TEST_F(OnAir, ACentralIsPassedOnToTheSimulatedLink)
{
    air().connects("A");
    after(0.1);
    EXPECT_TRUE(hasLink());
    EXPECT_FALSE(isAdvertised());
    EXPECT_EQ(simulator->radio().messageCount("X1-L"), 5) << "connection, services, characteristics of three";
    air().writes("A", request, readVolume, withoutResponse);
    EXPECT_THAT(within(0.1), ElementsAre("dropped AE01")) << "the answer that a command has no use for";

    air().subscribes(reply);
    after(0.1);
    air().writes("A", request, readVolume);
    EXPECT_THAT(within(0.1), ElementsAre("confirmed AE01", volumeIs8));
    air().reads("A", battery);
    EXPECT_THAT(within(0.1), ElementsAre("read 2A19 54"));
    wearer("X1-L", "battery 66");
    EXPECT_THAT(within(0.1), IsEmpty()) << "nobody has subscribed to it";
    wearer("X1-L", "volume 5");
    EXPECT_THAT(within(0.1), ElementsAre("notified AE02 00fe689f04010505071d16"));
    air().subscribes(reply, false);
    after(0.1);
    wearer("X1-L", "volume 6");
    EXPECT_THAT(within(0.1), IsEmpty());
}

TEST_F(OnAir, WhatComesBeforeTheLinkIsReadyWaitsInItsOrderAndWithinBounds)
{
    air().connects("A");
    air().subscribes(reply);
    air().writes("A", request, readVolume);
    air().reads("A", battery);
    EXPECT_THAT(air().take(), IsEmpty());
    EXPECT_THAT(within(1), ElementsAre("confirmed AE01", volumeIs8, "read 2A19 54"));

    air("P3-L").connects("A");
    for (int i = 0; i < 100; ++i)
        air("P3-L").writes("A", pl3, readPL3Volume);
    EXPECT_EQ(air("P3-L").take(), Lines(36, "dropped 95E82A96-47B6-C216-A125-403009D6F03E"));
    EXPECT_EQ(within(1, "P3-L"), Lines(64, "confirmed 95E82A96-47B6-C216-A125-403009D6F03E"));
}

TEST_F(OnAir, AWriteThatTheAidLetsFailFailsOverTheAirToo)
{
    const auto name = pl3.uuidString();
    air("P3-L").connects("A");
    air("P3-L").subscribes(pl3);
    after(0.5);
    air("P3-L").writes("A", pl3, setPL3Volume);
    air("P3-L").writes("A", pl3, setPL3Volume99);
    air("P3-L").writes("A", pl3, readPL3Volume);
    EXPECT_THAT(within(0.1, "P3-L"),
        ElementsAre(
            "confirmed " + name, "refused " + name + " 0", "confirmed " + name, "notified " + name + " 7e0001800c"));
    air("P3-L").writes("A", pl3, std::string(2 * 244, '0'));
    air("P3-L").writes("A", pl3, std::string(2 * 245, '0'));
    EXPECT_THAT(within(0.1, "P3-L"), ElementsAre("refused " + name + " 2", "confirmed " + name))
        << "an MTU of 247 carries 244 bytes";
}

TEST_F(OnAir, WhicheverSideEndsTheConnectionEndsTheOther)
{
    const auto connect = [&] {
        ASSERT_TRUE(isAdvertised());
        air().connects("A");
        air().subscribes(reply);
        after(0.5);
        ASSERT_TRUE(hasLink());
        faults("X1-L").isSilent = true;
        air().reads("A", battery);
        ASSERT_THAT(within(0.1), IsEmpty());
        faults("X1-L").isSilent = false;
    };
    connect();
    air().disconnects("A");
    EXPECT_THAT(within(1), ElementsAre("dropped 2A19"));
    EXPECT_FALSE(hasLink());

    connect();
    simulator->radio().dropLink("X1-L");
    EXPECT_THAT(within(0.1), ElementsAre("dropped 2A19", "ends A"));
    air().writes("A", request, readVolume);
    EXPECT_THAT(within(1), ElementsAre("refused AE01 1")) << "the link over the air takes its time to go";
    EXPECT_FALSE(isAdvertised());
    air().disconnects("A");
    after(1);

    connect();
    simulator->aid("X1-L")->restart(); // as after an update
    EXPECT_THAT(within(0.5), ElementsAre("dropped 2A19", "ends A"));
    air().disconnects("A");
    after(0.5);
    EXPECT_FALSE(isAdvertised()) << "it is still starting";
    after(1);

    connect();
    wearer("X1-L", "power 0");
    EXPECT_THAT(within(0.1), ElementsAre("dropped 2A19", "ends A"));
    air().disconnects("A");
    after(3);
    EXPECT_FALSE(isAdvertised());
}

TEST_F(OnAir, ASubscriptionThatOutlastsItsConnectionCountsInTheNext)
{
    air().connects("A");
    air().subscribes(reply);
    after(0.5);
    air().disconnects("A");
    after(1);
    air().connects("A");
    after(0.5);
    air().writes("A", request, readVolume);
    EXPECT_THAT(within(0.1), ElementsAre("confirmed AE01", volumeIs8));
}

TEST_F(OnAir, ASecondCentralIsEndedAndTheFirstHearsNothingOfIt)
{
    air().connects("A");
    air().subscribes(reply);
    after(0.5);
    air().connects("B");
    air().writes("B", request, readVolume);
    air().reads("B", battery);
    air().writes("A", request, readVolume);
    air().disconnects("B");
    EXPECT_THAT(within(0.5), ElementsAre("ends B", "refused AE01 1", "dropped 2A19", "confirmed AE01", volumeIs8));
    EXPECT_TRUE(hasLink());
    EXPECT_FALSE(isAdvertised());
}

TEST_F(OnAir, AnAidThatLetsNobodyConnectKeepsNobodyForLong)
{
    faults("X1-L").refusesConnections = true;
    air().connects("A");
    air().writes("A", request, readVolume);
    EXPECT_THAT(within(0.1), ElementsAre("dropped AE01", "ends A"));
    air().disconnects("A");
    faults("X1-L") = { .ignoresConnections = true };
    after(1);
    air().connects("A");
    air().writes("A", request, readVolume);
    EXPECT_THAT(within(9.9), IsEmpty());
    EXPECT_THAT(within(0.2), ElementsAre("dropped AE01", "ends A"));
}

TEST_F(OnAir, WithAnyFaultAtAnyMessageEachRequestEndsOnceAndTheNextCentralIsServed)
{
    const auto state = aid("X1-L").state();
    const auto play = [&] {
        aid("X1-L").setState(state); // whose battery drains
        air().connects("A");
        air().subscribes(reply);
        air().writes("A", request, readVolume);
        air().reads("A", battery);
        after(0.5);
        wearer("X1-L", "volume 9");
        wearer("X1-L", "volume 8");
        after(15);
        air().subscribes(reply, false);
        air().disconnects("A");
        after(3);
        auto lines = air().take();
        EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                      [](const auto& line) { return !line.starts_with("notified") && !line.starts_with("ends"); }),
            2)
            << testing::PrintToString(lines);
        EXPECT_THAT(lines, testing::Not(testing::Contains(testing::StartsWith("again"))));
        EXPECT_LE(std::count(lines.begin(), lines.end(), "ends A"), 1);
        EXPECT_TRUE(isAdvertised());
        EXPECT_FALSE(hasLink());
        return lines;
    };
    const auto messages = [&] { return simulator->radio().messageCount("X1-L"); };
    const int before = messages();
    const auto clean = play();
    const int count = messages() - before;
    ASSERT_EQ(count, 13)
        << "five to connect, subscription, write, its confirmation and reply, read, two of the wearer's "
           "and the end of the subscription";
    for (const auto kind : { Kind::lose, Kind::delay, Kind::duplicate, Kind::corrupt, Kind::refuse,
             Kind::dropLinkBefore, Kind::dropLinkAfter })
        for (int n = 1; n <= count; ++n) {
            SCOPED_TRACE("fault " + std::to_string(int(kind)) + " at message " + std::to_string(n));
            faults("X1-L").faults = { { .kind = kind, .message = messages() + n, .by = Seconds(0.3) } };
            play();
            faults("X1-L").faults.clear();
            EXPECT_EQ(play(), clean);
        }
}

} // namespace
} // namespace aurisk::tests
