#include "AuriskSDK/Shared/Dfu/Tiny600/Tiny600DFUPacket.h"

#include "AuriskSDK/Platform/Manual/ManualDispatchQueue.h"
#include "AuriskSDK/Shared/Utils/AuriskLog.h"
#include "Tests/Support/Bytes.h"
#include "Tests/Support/Stops.h"
#include "Tests/Support/StubPeripheral.h"

#include <gmock/gmock.h>

#include <chrono>

namespace aurisk::tests {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Optional;
using Properties = CBCharacteristicProperties;

const auto initSuccess = "00 FE 68 9D 03 91 01 11 AB 16"_bytes, spaceEnough = "00 FE 68 9D 03 91 01 13 AD 16"_bytes,
           taken = "00 FE 68 9D 03 91 02 15 B0 16"_bytes, crcSuccess = "00 FE 68 9D 03 91 03 17 B3 16"_bytes,
           bootOk = "00 FE 68 9D 03 91 03 19 B5 16"_bytes;

std::shared_ptr<DFUFirmware> zeros(std::size_t size) { return DFUFirmware::create(Data(size), DFUFirmwareType::type0); }

/// The steps of an update, begun by hand on a device played by hand.
class UpdatePackets : public testing::Test, public DFUProgressDelegate {
protected:
    void dfuProgressDidChange(int to, double current, double average) override
    {
        heard.push_back(fmt(to) + " % " + fmt(current) + " " + fmt(average));
    }
    static std::string fmt(double number) { return std::to_string(std::lround(number)); }

    void givenPackets(std::size_t longestWrite = 20)
    {
        peripheral->longestWrite = longestWrite;
        packets = Tiny600DFUPacket::create(controlPoint, answers);
    }
    auto hears(std::string what)
    {
        return [this, what] { heard.push_back(what); };
    }
    auto error()
    {
        return [this](DFUError number, const std::string& message) {
            heard.push_back("error " + std::to_string(rawValue(number)) + ": " + message);
        };
    }
    void sendStart(const DFUFirmware& firmware) { packets->sendStartDfu(firmware, hears("started"), error()); }
    void sendNext(const DFUFirmware& firmware)
    {
        packets->sendNext(firmware, progress, queue, hears("complete"), hears("taken"), error());
    }
    void arrives(std::optional<Data> value, const MaybeError& failure = std::nullopt)
    {
        answers->setValue(std::move(value));
        packets->peripheralDidUpdateValueFor(*peripheral, answers, failure);
        queue.runUntilIdle();
    }
    std::vector<std::string> take() { return std::exchange(heard, {}); }

    ManualDispatchQueue queue;
    ScopedMainQueue main{ queue };
    std::vector<std::string> heard;
    std::shared_ptr<StubPeripheral> peripheral = std::make_shared<StubPeripheral>();
    std::shared_ptr<CBService> service = std::make_shared<CBService>(CBUUID(0xAE3A), peripheral);
    std::shared_ptr<CBCharacteristic> controlPoint
        = std::make_shared<CBCharacteristic>(CBUUID(0xAE3B), Properties::writeWithoutResponse, service);
    std::shared_ptr<CBCharacteristic> answers
        = std::make_shared<CBCharacteristic>(CBUUID(0xAE3C), Properties::notify, service);
    std::shared_ptr<DFUProgressDelegate> progress{ this, [](auto*) {} };
    std::shared_ptr<Tiny600DFUPacket> packets = Tiny600DFUPacket::create(controlPoint, answers);
};

TEST_F(UpdatePackets, AreAsLongAsAWriteUpToWhatAFrameHolds)
{
    const std::pair<std::size_t, std::uint32_t> sizes[]
        = { { 20, 20 }, { 185, 185 }, { 261, 261 }, { 262, 261 }, { 514, 261 } };
    for (const auto& [offered, expected] : sizes) {
        givenPackets(offered);
        EXPECT_EQ(packets->packetSize(), expected);
    }
    givenPackets(514);
    sendStart(*zeros(300));
    sendNext(*zeros(300));
    const auto written = peripheral->take();
    EXPECT_THAT(written[0], HasSubstr("fb00")); // 251 bytes of the image in a packet
    EXPECT_EQ(written[1].size(), std::string("write AE3B  without response").size() + 2 * 261);
    EXPECT_THAT(stopOf([&] { givenPackets(9), sendStart(*zeros(1)); }), Optional(HasSubstr("9")));
    EXPECT_THAT(stopOf([&] { givenPackets(10), sendNext(*zeros(1)); }), Optional(HasSubstr("carries nothing")));
}

TEST_F(UpdatePackets, CarryTheImageInTurnAndReportEachPercentOnce)
{
    const auto image = zeros(25);
    sendStart(*image);
    EXPECT_THAT(peripheral->take(), ElementsAre("write AE3B fe681d0c910119000000000000000a004616 without response"));
    arrives(initSuccess);
    EXPECT_THAT(take(), IsEmpty());
    arrives(spaceEnough);
    EXPECT_THAT(take(), ElementsAre("started"));

    queue.advance(2s); // counts for no speed: nothing has been sent yet
    for (const auto* written : { "write AE3B fe681d0e91020100000000000000000000002716 without response",
             "write AE3B fe681d0e91020200000000000000000000002816 without response",
             "write AE3B fe681d099102030000000000002416 without response" }) {
        sendNext(*image);
        EXPECT_THAT(peripheral->take(), ElementsAre(written));
        queue.advance(0.5s);
        arrives(taken);
    }
    EXPECT_THAT(
        take(), ElementsAre("0 % 0 0", "taken", "40 % 20 20", "taken", "80 % 20 20", "complete", "100 % 10 17"));

    packets->sendValidateData(*image, hears("booted"), hears("valid"), error());
    EXPECT_THAT(peripheral->take(), ElementsAre("write AE3B fe681d0291031b16 without response"));
    arrives(crcSuccess);
    EXPECT_THAT(take(), ElementsAre("valid"));
    answers->setValue(bootOk);
    packets->peripheralDidUpdateValueFor(*peripheral, answers, std::nullopt);
    EXPECT_TRUE(packets->isDecided());
    queue.advance(0.099s);
    EXPECT_THAT(take(), IsEmpty());
    queue.advance(0.002s);
    EXPECT_THAT(take(), ElementsAre("booted"));
    EXPECT_FALSE(packets->isDecided());
}

TEST_F(UpdatePackets, TellWhatBluetoothFailsAtAndHearNoOtherCharacteristic)
{
    sendStart(*zeros(25));
    const BluetoothError error{ "test", 1, "no" };
    arrives(std::nullopt, error);
    EXPECT_THAT(take(), ElementsAre("error 10: Receiving notification failed"));
    arrives(std::nullopt);
    controlPoint->setValue(taken);
    packets->peripheralDidUpdateValueFor(*peripheral, controlPoint, std::nullopt); // of another characteristic
    EXPECT_THAT(take(), IsEmpty());
    packets->enableNotifications(hears("subscribed"), this->error());
    packets->peripheralDidUpdateNotificationStateFor(*peripheral, answers, error);
    EXPECT_THAT(take(), ElementsAre("error 8: Enabling notifications failed"));
}

TEST_F(UpdatePackets, FailWithoutAPeripheral)
{
    peripheral.reset();
    const auto firmware = zeros(25);
    packets->enableNotifications({}, error());
    sendStart(*firmware);
    sendNext(*firmware);
    packets->sendValidateData(*firmware, {}, {}, error());
    const auto failed = "error 16: Assert characteristic.service?.peripheral != nil failed";
    EXPECT_THAT(take(), ElementsAre(failed, failed, failed, failed));
}

TEST_F(UpdatePackets, LogWhatTheyDo)
{
    testing::internal::CaptureStdout();
    AuriskLog::setEnable(true);
    packets->enableNotifications({}, {});
    sendStart(*zeros(25));
    packets->sendValidateData(*zeros(25), {}, {}, {});
    AuriskLog::setEnable(false);
    const auto log = testing::internal::GetCapturedStdout();
    for (const auto* line : { "Enabling notifications for AE3C...", "peripheral.setNotifyValue(true, for: AE3C)",
             "peripheral.writeValue(0xfe681d0c910119000000000000000a004616, for: AE3B, type: .withoutResponse)",
             "peripheral.writeValue(0xfe681d0291031b16), for: AE3B, type: .withoutResponse)" })
        EXPECT_THAT(log, HasSubstr("[\"" + std::string(line) + "\"]"));
}

TEST(Firmware, IsSentOnlyWhereItsPercentageCanBeCounted)
{
    const auto firmware = DFUFirmware::create({}, DFUFirmwareType::type0);
    EXPECT_EQ(firmware->totalSize, 0);
    for (const int size : { 0, -1, 42'949'673 }) {
        firmware->totalSize = size;
        EXPECT_TRUE(stopOf([&] { Tiny600DFUPacket::expectSendable(*firmware); })) << size;
    }
    for (const int size : { 1, 42'949'672 }) {
        firmware->totalSize = size;
        EXPECT_FALSE(stopOf([&] { Tiny600DFUPacket::expectSendable(*firmware); })) << size;
    }
}

TEST(Firmware, IsReadFromAFileOrTheErrorIsTheSystems)
{
    EXPECT_EQ(DFUFirmware::load("/dev/null", DFUFirmwareType::type1)->totalSize, 0);
    for (const auto& [path, code] : { std::pair("/nowhere/at/all", ENOENT), std::pair("/", EISDIR) })
        try {
            DFUFirmware::load(path, DFUFirmwareType::type0);
            ADD_FAILURE() << path;
        } catch (const std::system_error& error) {
            EXPECT_EQ(error.code(), std::error_code(code, std::generic_category())) << path;
        }
}

} // namespace
} // namespace aurisk::tests
