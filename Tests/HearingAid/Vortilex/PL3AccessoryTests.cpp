#include "Tests/HearingAid/Vortilex/PlayedPL3.h"

#include "AuriskSDK/Shared/Utils/PreconditionPolicy.h"
#include "Tests/Support/Bytes.h"
#include "Tests/Support/Stops.h"

#include <gmock/gmock.h>

#include <chrono>
#include <random>

namespace aurisk::tests {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using Lines = std::vector<std::string>;

class PL3AccessoryState : public testing::Test, public PL3AccessoryDelegate {
protected:
    void didUpdateValue(const std::shared_ptr<PL3Accessory>& one, const PL3Request& request) override
    {
        EXPECT_EQ(one, aid.accessory);
        hear("updated " + description(request.command));
    }
    void didNotify(const std::shared_ptr<PL3Accessory>&, const PL3Response& data) override
    {
        hear("notified " + description(data.command));
    }
    /// Whatever is told, the state is there already.
    void hear(const std::string& what)
    {
        const auto& one = *aid.accessory;
        heard.push_back(what + " [" + std::to_string(one.volume()) + " " + std::to_string(one.program()) + " "
            + std::to_string(one.battery()) + "]");
    }
    Lines take() { return std::exchange(heard, {}); }

    void request(const PL3Request& request)
    {
        aid.accessory->request(request, [this](const PL3Result& result) { hear("=> " + description(result)); });
    }
    void givenAConnection()
    {
        aid.connects();
        aid.showsItsServices();
        aid.subscribed();
    }
    void after(Seconds span) { aid.queue.advance(span); }

    PlayedPL3 aid;
    Lines heard;
    std::shared_ptr<PL3AccessoryState> me{ this, [](auto*) {} };

public:
    PL3AccessoryState() { aid.accessory->setDataDelegate(me); }
};

TEST_F(PL3AccessoryState, IsZeroUntilTheDeviceSaysSomething)
{
    const auto& one = *aid.accessory;
    EXPECT_EQ(one.tag(), "PL3 Accessory");
    EXPECT_EQ(one.orientation(), AccessoryOrientation::right);
    EXPECT_EQ(one.manufacturerId(), 0x1234);
    EXPECT_EQ(one.modelName(), "22136");
    EXPECT_EQ(PL3Cache::of(one), PL3Cache());
    EXPECT_EQ(PL3Accessory::getValueAsUInt8({}), 0);
    EXPECT_EQ(PL3Accessory::getValueAsUInt8("07 08"_bytes), 7);
}

TEST_F(PL3AccessoryState, FollowsWhatTheDeviceSays)
{
    givenAConnection();
    const auto& one = *aid.accessory;
    aid.notifies("7E 00 01 00 09"_bytes);
    aid.notifies("7E 00 01 03 64"_bytes);
    aid.notifies("7E 00 02 07 AA BB"_bytes);
    aid.notifies("7E 00 01 01 02"_bytes);
    aid.notifies("7E 00 05 06 01 02 03 04 05"_bytes);
    aid.notifies("7E 00 10 07 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F 10"_bytes);
    aid.notifies("7E 00 01 07 11"_bytes); // takes the place of the whole block
    for (const auto command : "08 09 0A 0B"_bytes)
        aid.notifies(Data{ 0x7E, 0x00, 0x01, command, command });
    for (const auto command : "02 04 05 0C 0F 13 14 15 7F"_bytes) // nothing is kept of these
        aid.notifies(Data{ 0x7E, 0x00, 0x01, command, 0x55 });
    aid.notifies("7E 00 00 00"_bytes);
    EXPECT_EQ(one.volume(), 0);
    EXPECT_EQ(one.battery(), 100);
    EXPECT_EQ(one.program(), 2);
    EXPECT_THAT(one.bandEQ(), ElementsAre(Pair(2, PL3BandEQ("01 02 03 04 05"_bytes))));
    EXPECT_EQ(one.bandEQ().at(2).eq2000, 5);
    EXPECT_THAT(one.compRatio(), ElementsAre(Pair(0, PL3CompRatio("AA BB"_bytes)), Pair(2, PL3CompRatio("11"_bytes))));
    EXPECT_THAT(one.compTime(), ElementsAre(Pair(2, PL3CompTime("08"_bytes))));
    EXPECT_THAT(one.compThreshold(), ElementsAre(Pair(2, PL3CompThreshold("09"_bytes))));
    EXPECT_THAT(one.mpoConfig(), ElementsAre(Pair(2, PL3MpoConfig("0A"_bytes))));
    EXPECT_THAT(one.inputSetting(), ElementsAre(Pair(2, PL3InputSettings("0B"_bytes))));
    const auto lines = take();
    EXPECT_EQ(lines.size(), 21U); // each of them was told
    EXPECT_EQ(lines[0], "notified volumeLevel [9 0 0]");
    EXPECT_EQ(lines[3], "notified program [9 2 100]");
    EXPECT_EQ(lines[19], "notified unknown [9 2 100]");
}

TEST_F(PL3AccessoryState, FollowsAnswersAndWritesBeforeTheyAreTold)
{
    givenAConnection();
    request({ .command = PL3Command::volumeLevel, .read = true });
    after(0.1s);
    aid.notifies("7E 00 01 03 50"_bytes); // about something else: it is believed
    after(0s);
    request({ .command = PL3Command::program, .data = "02"_bytes });
    after(0.1s);
    EXPECT_EQ(aid.accessory->program(), 0); // not before it is confirmed
    aid.confirms(); // the read
    aid.confirms();
    after(0s);
    EXPECT_THAT(take(),
        ElementsAre("updated volumeLevel [0 0 80]",
            "=> success(data: PL3Response(command: batteryLevel, data: 1 bytes)) [0 0 80]", "updated program [0 2 80]",
            "=> success(data: PL3Response(command: program, data: 1 bytes)) [0 2 80]"));

    request({ .command = PL3Command::program, .data = "03"_bytes });
    after(0.1s);
    aid.confirms(BluetoothError{ "test", 1, "no" });
    after(0s);
    request({ .command = PL3Command::program, .read = true });
    after(4s);
    EXPECT_THAT(take(), ElementsAre("=> error(error: unknown) [0 2 80]", "=> error(error: timeout) [0 2 80]"));
}

TEST_F(PL3AccessoryState, RefusesRequestsAtOnceWhereThereIsNobodyToAsk)
{
    const PL3Request read{ .command = PL3Command::program, .read = true };
    const auto refused = "=> error(error: unknown) [0 0 0]";
    request(read);
    EXPECT_THAT(take(), ElementsAre(refused));
    aid.connects();
    request(read); // its services are not known
    aid.accessory->request(read);
    EXPECT_THAT(take(), ElementsAre(refused));
    bool isOver = false;
    aid.accessory->request({ read, read }, [&] { isOver = true; });
    after(0s);
    EXPECT_TRUE(isOver);

    const auto foreign = std::make_shared<CBService>(CBUUID(0x180F), aid.peripheral);
    aid.peripheral->itsServices = { foreign };
    aid.showsItsServices();
    EXPECT_THAT(aid.accessory->serviceDictionary(), IsEmpty());
    aid.peripheral->itsServices = { aid.gatt };
    aid.showsItsServices();
    aid.subscribed();
    request(read);
    after(3s);
    EXPECT_THAT(take(), IsEmpty());
    after(0.1s);
    EXPECT_THAT(take(), ElementsAre("=> error(error: timeout) [0 0 0]"));

    aid.notifies("7E 00 01 01 02"_bytes);
    aid.radio.manager->centralManagerDidDisconnectPeripheral(*aid.radio.platform->central, aid.peripheral, {});
    request(read);
    EXPECT_THAT(take(), ElementsAre("notified program [0 2 0]", "=> error(error: unknown) [0 2 0]")); // nothing is lost
}

TEST_F(PL3AccessoryState, TellsOfSeveralRequestsWhenEachHasItsResult)
{
    givenAConnection();
    bool isOver = false;
    aid.accessory->request({ { .command = PL3Command::volumeLevel, .read = true },
                               { .command = PL3Command::program, .data = "01"_bytes } },
        [&] { isOver = true; });
    after(3.2s); // the read has timed out
    aid.confirms();
    EXPECT_FALSE(isOver);
    aid.confirms();
    after(0s);
    EXPECT_TRUE(isOver);
    EXPECT_THAT(take(), ElementsAre("updated program [0 1 0]"));
}

TEST_F(PL3AccessoryState, StaysAsItWasThroughAMalformedAdvertisement)
{
    const auto& one = *aid.accessory;
    EXPECT_TRUE(stopOf([&] { aid.advertises("C6 03 02 00 00 00"_bytes); }));
    setPreconditionPolicy(PreconditionPolicy::contain);
    aid.advertises("C6 03 02 00 00 00"_bytes);
    aid.advertises({});
    setPreconditionPolicy(PreconditionPolicy::stop);
    EXPECT_EQ(one.orientation(), AccessoryOrientation::right);
    EXPECT_EQ(one.mfgData(), "C6 03 03 34 12 78 56"_bytes);
    testing::internal::CaptureStdout();
    aid.advertises("C6 03 02 01 00 02 00"_bytes);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "2\n1\n"); // model and manufacturer, deliberately
    EXPECT_EQ(one.orientation(), AccessoryOrientation::left);
    EXPECT_EQ(one.manufacturerId(), 1);
    EXPECT_EQ(one.modelName(), "2");
}

TEST_F(PL3AccessoryState, HoldsAfterAMillionGarbageNotificationsWhatTheirBytesName)
{
    setPreconditionPolicy(PreconditionPolicy::contain);
    givenAConnection();
    aid.accessory->setDataDelegate({});
    std::mt19937 random{ 1 };
    Data garbage(100'000);
    for (auto& byte : garbage)
        byte = random() % 16 == 0 ? 0x7E : static_cast<std::uint8_t>(random());
    PL3Cache expected;
    for (int i = 1; i <= 1'000'000; ++i) {
        const auto bytes = DataView(garbage).subspan(random() % 99'000, random() % 41);
        ReceivedAgain frame;
        frame.take(bytes);
        expected.keep(frame.command, frame.payload);
        aid.notifies(bytes);
        const auto& one = *aid.accessory;
        ASSERT_TRUE(
            one.volume() == expected.volume && one.program() == expected.program && one.battery() == expected.battery)
            << ask_hexadecimal(bytes);
        ASSERT_TRUE(i % 100'000 != 0 || PL3Cache::of(one) == expected);
    }
    setPreconditionPolicy(PreconditionPolicy::stop);
}

} // namespace
} // namespace aurisk::tests
