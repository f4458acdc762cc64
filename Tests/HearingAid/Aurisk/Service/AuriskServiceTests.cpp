#include "AuriskSDK/HearingAid/Aurisk/Service/AuriskBatService.h"
#include "AuriskSDK/HearingAid/Aurisk/Service/AuriskDataService.h"
#include "AuriskSDK/Platform/Manual/ManualDispatchQueue.h"
#include "Tests/Support/StubPeripheral.h"

#include <gmock/gmock.h>

#include <chrono>

namespace aurisk::tests {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using Properties = CBCharacteristicProperties;

std::shared_ptr<CBCharacteristic> characteristic(
    std::uint16_t uuid, const std::shared_ptr<CBService>& service, Properties properties)
{
    return std::make_shared<CBCharacteristic>(CBUUID(uuid), properties, service);
}

class DataService : public testing::Test, public AuriskDataServiceDelegate {
protected:
    void didSendRequest(const AuriskRequest& request) override { heard.push_back("sent " + description(request)); }
    void didFinishRequest(const AuriskRequest& request, const AuriskResult& result) override
    {
        heard.push_back("finished " + description(request) + ": " + description(result));
    }
    void didNotify(int program, int volume) override
    {
        heard.push_back("notified " + std::to_string(program) + " " + std::to_string(volume));
    }
    std::vector<std::string> take() { return std::exchange(heard, {}); }

    /// The service's characteristics are found, the one for requests with these properties.
    void givenCharacteristics(Properties properties)
    {
        service->didDiscoverCharacteristics({ characteristic(0xAE01, gatt, properties), replies }, std::nullopt);
        peripheral->take();
    }
    void request(int program)
    {
        service->request(AuriskRequest::readVolume{ .program = program }, 3s,
            [this](const AuriskResult& result) { heard.push_back("=> " + description(result)); });
    }
    void arrives(std::optional<Data> value)
    {
        replies->setValue(std::move(value));
        service->didUpdateValueForCharacteristic(replies, *peripheral, std::nullopt);
        queue.runUntilIdle();
    }

    ManualDispatchQueue queue;
    ScopedMainQueue main{ queue };
    std::vector<std::string> heard;
    std::shared_ptr<StubPeripheral> peripheral = std::make_shared<StubPeripheral>();
    std::shared_ptr<CBService> gatt = std::make_shared<CBService>(CBUUID(0xAE30), peripheral);
    std::shared_ptr<CBCharacteristic> replies = characteristic(0xAE02, gatt, Properties::notify);
    std::shared_ptr<AuriskDataService> service = AuriskDataService::create("AE30", peripheral, gatt);
    std::shared_ptr<AuriskDataServiceDelegate> delegate{ this, [](auto*) {} };
};

TEST_F(DataService, FindsItsCharacteristicsAndSubscribesToTheReplies)
{
    EXPECT_THAT(peripheral->take(), ElementsAre("characteristics AE30"));
    service->didDiscoverCharacteristics({}, std::nullopt);
    EXPECT_THAT(peripheral->take(), IsEmpty());
    const BluetoothError error{ "test", 1, "an error that does not count" };
    service->didDiscoverCharacteristics(
        { characteristic(0xAE03, gatt, Properties::notify), characteristic(0xAE01, gatt, Properties::write), replies },
        error);
    EXPECT_THAT(peripheral->take(), ElementsAre("subscribe AE02"));
}

TEST_F(DataService, WritesWithoutResponseWhereTheCharacteristicAllowsIt)
{
    const std::pair<Properties, std::string> cases[] = {
        { Properties::write, "" },
        { Properties::writeWithoutResponse, " without response" },
        { Properties::write | Properties::writeWithoutResponse, " without response" },
    };
    service->didUpdateNotificationStateForCharacteristic(replies, std::nullopt);
    for (const auto& [properties, how] : cases) {
        givenCharacteristics(properties);
        request(0);
        queue.advance(4s);
        EXPECT_THAT(peripheral->take(), ElementsAre("write AE01 fe68110201048016" + how));
    }
}

TEST_F(DataService, CompletesByTimeOutWhatItCannotWrite)
{
    service->didUpdateNotificationStateForCharacteristic(replies, std::nullopt);
    request(0); // there is no characteristic to write to
    queue.advance(4s);
    EXPECT_THAT(take(), ElementsAre("=> error(error: timeout)"));
    givenCharacteristics(Properties::write);
    peripheral->itsState = CBPeripheralState::disconnected;
    request(0);
    queue.advance(4s);
    EXPECT_THAT(take(), ElementsAre("=> error(error: timeout)"));
    EXPECT_THAT(peripheral->take(), IsEmpty());
}

TEST_F(DataService, TellsItsDelegateBeforeItTellsTheRequester)
{
    service->setDelegate(delegate);
    givenCharacteristics(Properties::write);
    const BluetoothError error{ "test", 1, "any change of the subscription will do" };
    service->didUpdateNotificationStateForCharacteristic(replies, error);
    request(1);
    queue.advance(0.2s);
    arrives(std::nullopt); // no value: nothing
    arrives(Data{ 0x00, 0xFE, 0x68, 0xD1, 0x02, 0x02, 0x04, 0x41, 0x16 });
    request(1);
    queue.advance(4s);
    EXPECT_THAT(take(),
        ElementsAre("sent readVolume(program: 1)", "finished readVolume(program: 1): error(error: readError)",
            "=> error(error: readError)", "sent readVolume(program: 1)",
            "finished readVolume(program: 1): error(error: timeout)", "=> error(error: timeout)"));
}

class BatteryService : public testing::Test, public AuriskBatServiceDelegate {
protected:
    void didUpdateBattery(int percent) override { levels.push_back(percent); }

    std::vector<int> levels;
    std::shared_ptr<StubPeripheral> peripheral = std::make_shared<StubPeripheral>();
    std::shared_ptr<CBService> gatt = std::make_shared<CBService>(CBUUID(0x180F), peripheral);
    std::shared_ptr<CBCharacteristic> level = characteristic(0x2A19, gatt, Properties::read | Properties::notify);
    std::shared_ptr<CBCharacteristic> other = characteristic(0x2A1A, gatt, Properties::notify);
    std::shared_ptr<AuriskBatService> service = AuriskBatService::create("180F", peripheral, gatt);
    std::shared_ptr<AuriskBatServiceDelegate> delegate{ this, [](auto*) {} };
};

TEST_F(BatteryService, DoesNothingUntilItKnowsItsCharacteristic)
{
    service->read();
    service->enableNotification();
    service->disableNotification();
    EXPECT_THAT(peripheral->take(), IsEmpty());
    service->didDiscoverCharacteristics({ other, level }, std::nullopt);
    service->read();
    service->disableNotification();
    EXPECT_THAT(peripheral->take(), ElementsAre("subscribe 2A19", "read 2A19", "unsubscribe 2A19"));
}

TEST_F(BatteryService, ReportsTheFirstByteOfWhateverArrives)
{
    service->setDelegate(delegate);
    level->setValue(Data{ 0x64, 0x00 });
    service->didUpdateValueForCharacteristic(level, *peripheral, std::nullopt);
    level->setValue(Data{});
    service->didUpdateValueForCharacteristic(level, *peripheral, std::nullopt);
    level->setValue(std::nullopt);
    service->didUpdateValueForCharacteristic(level, *peripheral, std::nullopt);
    other->setValue(Data{ 0xFF });
    service->didUpdateValueForCharacteristic(other, *peripheral, std::nullopt);
    EXPECT_THAT(levels, ElementsAre(100, 255));
}

TEST_F(BatteryService, ReportsTheLevelThatASubscriptionAlreadyHolds)
{
    service->setDelegate(delegate);
    service->didUpdateNotificationStateForCharacteristic(level, std::nullopt);
    EXPECT_THAT(levels, IsEmpty());
    level->setValue(Data{ 55 });
    service->didUpdateNotificationStateForCharacteristic(level, std::nullopt);
    EXPECT_THAT(levels, ElementsAre(55));
}

} // namespace
} // namespace aurisk::tests
