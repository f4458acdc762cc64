#include "AuriskSDK/HearingAid/Vortilex/PL3DataService.h"

#include "AuriskSDK/Platform/Manual/ManualDispatchQueue.h"
#include "AuriskSDK/Shared/Utils/AuriskLog.h"
#include "Tests/Support/Bytes.h"
#include "Tests/Support/Stops.h"
#include "Tests/Support/StubPeripheral.h"

#include <gmock/gmock.h>

#include <chrono>
#include <cmath>

namespace aurisk::tests {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Optional;
using Properties = CBCharacteristicProperties;
using Lines = std::vector<std::string>;

const BluetoothError anError{ "test", 1, "no" };

/// The service on a device played by hand; what happens is written down with its time in milliseconds.
class PL3Service : public testing::Test, public PL3DataServiceDelegate, public LoggerDelegate {
protected:
    void didFinishRequest(const PL3Request& request, const PL3Result&) override
    {
        hear("finished " + std::string(caseName(request.command)));
    }
    void didNotify(PL3Command command, const Data& data) override { hear("notified " + text(command, data)); }
    void logWith(LogLevel, const std::string& message) override { logged.push_back(message); }

    void hear(const std::string& what)
    {
        heard.push_back(std::to_string(std::lround(queue.now().count() * 1000)) + " " + what);
    }
    static std::string text(PL3Command command, const Data& data)
    {
        return std::string(caseName(command)) + " " + ask_hexadecimal(data);
    }
    Lines take() { return std::exchange(heard, {}); }

    /// The frames' pieces written since it was last asked.
    Lines written()
    {
        auto lines = peripheral->take();
        for (auto& line : lines)
            line.erase(0, std::string("write 95E82A96-47B6-C216-A125-403009D6F03E ").size());
        return lines;
    }

    void read(PL3Command command) { request({ .command = command, .read = true }); }
    void write(PL3Command command, const Data& data) { request({ .command = command, .data = data }); }
    void request(const PL3Request& request)
    {
        service->request(request, 3s, [this](const PL3Result& result) {
            const auto* data = result.data();
            hear("=> " + (data ? text(data->command, data->data) : std::string(caseName(*result.error()))));
        });
    }

    void arrives(std::optional<Data> value)
    {
        characteristic->setValue(std::move(value));
        service->didUpdateValueForCharacteristic(characteristic, *peripheral, std::nullopt);
    }
    void confirmed(const MaybeError& error = std::nullopt)
    {
        service->didWriteValueForCharacteristic(characteristic, error);
    }
    void discovered() { service->didDiscoverCharacteristics({ characteristic }, std::nullopt); }
    void subscribed() { service->didUpdateNotificationStateForCharacteristic(characteristic, std::nullopt); }
    void givenASubscription()
    {
        discovered();
        subscribed();
        peripheral->take();
    }
    void after(Seconds span) { queue.advance(span); }

    ManualDispatchQueue queue;
    ScopedMainQueue main{ queue };
    Lines heard, logged;
    std::shared_ptr<StubPeripheral> peripheral = std::make_shared<StubPeripheral>();
    std::shared_ptr<CBService> gatt = std::make_shared<CBService>(PL3DataService::serviceUUID, peripheral);
    std::shared_ptr<CBCharacteristic> characteristic = std::make_shared<CBCharacteristic>(
        PL3DataService::microGattCharactUUID, Properties::notify | Properties::write, gatt);
    std::shared_ptr<PL3DataService> service = PL3DataService::create("aid", peripheral, gatt);
    std::shared_ptr<PL3Service> me{ this, [](auto*) {} };

public:
    PL3Service() { service->setDelegate(me); }
};

TEST_F(PL3Service, AsksForItsCharacteristicsTwiceAndSubscribesWhereItCan)
{
    const auto* const asked = "characteristics 95E81860-47B6-C216-A125-403009D6F03E";
    EXPECT_THAT(peripheral->take(), ElementsAre(asked, asked));
    const auto mute = std::make_shared<CBCharacteristic>(characteristic->uuid(), Properties::write, gatt);
    const auto other = std::make_shared<CBCharacteristic>(CBUUID(0x2A19), Properties::notify, gatt);
    service->didDiscoverCharacteristics({ other, mute }, anError);
    EXPECT_THAT(peripheral->take(), IsEmpty());
    EXPECT_EQ(service->microGattCharact(), mute);
    discovered();
    EXPECT_THAT(peripheral->take(), ElementsAre("subscribe 95E82A96-47B6-C216-A125-403009D6F03E"));
}

TEST_F(PL3Service, HoldsRequestsBackUntilItsSubscriptionChanges)
{
    discovered();
    peripheral->take();
    read(PL3Command::program);
    read(PL3Command::batteryLevel);
    after(5s);
    EXPECT_THAT(written(), IsEmpty());
    service->didUpdateNotificationStateForCharacteristic(characteristic, anError); // any change will do
    after(0.2s);
    EXPECT_THAT(written(), ElementsAre("7e000181"));
    arrives(std::nullopt); // no value: nothing
    arrives("7E 00 01 01 02"_bytes);
    after(0.2s);
    EXPECT_THAT(written(), ElementsAre("7e000183"));
    EXPECT_THAT(take(), ElementsAre("5200 finished program", "5200 => program 02"));
}

TEST_F(PL3Service, WritesAFrameInPiecesOf20BytesBackToBack)
{
    givenASubscription();
    Data data(30);
    for (std::uint8_t i = 0; i < 30; ++i)
        data[i] = i;
    write(PL3Command::bandEQs, data);
    after(0.1s);
    EXPECT_THAT(written(), ElementsAre("7e001f06000102030405060708090a0b0c0d0e0f", "101112131415161718191a1b1c1d"));
    EXPECT_THAT(take(), IsEmpty());
    confirmed(); // the first piece is enough
    after(0.05s);
    EXPECT_THAT(take(),
        ElementsAre(
            "100 finished bandEQs", "100 => bandEQs 000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d"));
    write(PL3Command::program, "7D"_bytes);
    after(0.1s);
    EXPECT_THAT(written(), ElementsAre("7e0002017d5d"));
    confirmed(); // the second piece
    after(0.1s);
    EXPECT_THAT(take(), IsEmpty());
    confirmed();
    confirmed(); // of nothing
    after(4s);
    EXPECT_THAT(take(), ElementsAre("350 finished program", "350 => program 7d"));
}

TEST_F(PL3Service, GivesUpThreeSecondsAfterASending)
{
    AuriskLog::setEnable(true);
    AuriskLog::shared().setLogger(me);
    testing::internal::CaptureStdout();
    subscribed(); // but there is no characteristic to write to
    read(PL3Command::streamingStatus);
    write(PL3Command::program, "01 02"_bytes);
    after(3.1s);
    discovered();
    after(0.2s);
    arrives("7E 00 03 09 01 02 FF"_bytes);
    arrives("7E 00 00 0E"_bytes);
    confirmed();
    after(0s);
    AuriskLog::setEnable(false);
    testing::internal::GetCapturedStdout();
    EXPECT_THAT(take(),
        ElementsAre("3100 finished streamingStatus", "3100 => timeout", "3300 notified compThreshold 0102ff",
            "3300 notified streamingStatus ", "3300 finished program", "3300 => program 0102"));
    EXPECT_THAT(logged,
        ElementsAre("[aid] No uisMicroGatt characteristic found",
            "AccessoryMessageHandler -- request: PL3Request(command: streamingStatus, data: nil, read: true)",
            "AccessoryMessageHandler -- result: timeOut",
            "AccessoryMessageHandler -- request: PL3Request(command: program, data: 2 bytes, read: false)",
            "[aid] Comp Treshold Characteristic >>> [1, 2, 255]", "[aid] Streaming Status  Characteristic >>> []",
            "AccessoryMessageHandler -- result: success(data: PL3Response(command: program, data: 2 bytes))"));
}

TEST_F(PL3Service, StopsAtRequestsThatNoFrameCanCarry)
{
    givenASubscription();
    write(PL3Command::program, Data(255));
    EXPECT_THAT(stopOf([&] { after(0.1s); }), Optional(HasSubstr("256")));
    EXPECT_THAT(written(), IsEmpty());
}

TEST_F(PL3Service, StopsAtTheConfirmationOfAWriteWithoutData)
{
    givenASubscription();
    request({ .command = PL3Command::clearPASList });
    after(0.1s);
    EXPECT_THAT(written(), ElementsAre("7e000110"));
    EXPECT_THAT(stopOf([&] { confirmed(); }), Optional(HasSubstr("clearPASList")));
    after(3s);
    request({ .command = PL3Command::clearPASList });
    after(3.1s);
    confirmed(); // too late to be about anything
}

TEST_F(PL3Service, CompletesItsRequestsEvenWhenItHasGone)
{
    givenASubscription();
    read(PL3Command::program);
    service.reset();
    after(4s);
    EXPECT_THAT(take(), ElementsAre("3100 => timeout"));
    EXPECT_THAT(written(), IsEmpty());
}

} // namespace
} // namespace aurisk::tests
