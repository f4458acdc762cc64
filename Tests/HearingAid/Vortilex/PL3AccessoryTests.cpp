#include "Tests/HearingAid/Vortilex/PlayedPL3.h"

#include "AuriskSDK/Shared/Utils/PreconditionPolicy.h"
#include "Tests/Support/Bytes.h"
#include "Tests/Support/Stops.h"

#include <gmock/gmock.h>

#include <chrono>

namespace aurisk::tests {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
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

} // namespace
} // namespace aurisk::tests
