#include "AuriskSDK/HearingAid/Aurisk/Service/AuriskDFUService.h"

#include "AuriskSDK/Platform/Manual/ManualDispatchQueue.h"
#include "Tests/Support/Bytes.h"
#include "Tests/Support/Stops.h"
#include "Tests/Support/StubPeripheral.h"

#include <gmock/gmock.h>

#include <chrono>

namespace aurisk::tests {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using Properties = CBCharacteristicProperties;

const auto spaceEnough = "00 FE 68 9D 03 91 01 13 AD 16"_bytes, taken = "00 FE 68 9D 03 91 02 15 B0 16"_bytes,
           crcSuccess = "00 FE 68 9D 03 91 03 17 B3 16"_bytes, crcFailure = "00 FE 68 9D 03 91 03 18 B4 16"_bytes,
           bootOk = "00 FE 68 9D 03 91 03 19 B5 16"_bytes;

/// An application and a device, the latter played by hand.
class UpdateService : public testing::Test, public DFUServiceDelegate, public DFUProgressDelegate {
protected:
    void dfuStateDidChange(DFUState to) override { heard.push_back(std::to_string(rawValue(to))); }
    void dfuError(DFUError error, const std::string& message) override
    {
        heard.push_back("error " + std::to_string(rawValue(error)) + " " + message);
        if (onError)
            onError();
    }
    void dfuProgressDidChange(int to, double, double) override { heard.push_back(std::to_string(to) + " %"); }

    std::shared_ptr<CBCharacteristic> characteristic(std::uint16_t uuid, Properties properties) const
    {
        return std::make_shared<CBCharacteristic>(CBUUID(uuid), properties, gatt);
    }
    void givenCharacteristics() { service->didDiscoverCharacteristics({ answers, controlPoint }, std::nullopt); }
    void start()
    {
        auto configure = DFUConfigure::create()->with(DFUFirmware::create(Data(15), DFUFirmwareType::type0));
        configure->delegate = delegate;
        configure->progressDelegate = progressDelegate.lock();
        service->start(configure);
        queue.runUntilIdle();
    }
    void subscribed()
    {
        service->didUpdateNotificationStateForCharacteristic(answers, std::nullopt);
        queue.runUntilIdle();
    }
    void arrives(const Data& value)
    {
        answers->setValue(value);
        service->didUpdateValueForCharacteristic(answers, *peripheral, std::nullopt);
        queue.advance(0s);
    }
    void bootsSoon() { queue.advance(0.11s); }
    std::vector<std::string> take() { return std::exchange(heard, {}); }

    ManualDispatchQueue queue;
    ScopedMainQueue main{ queue };
    std::vector<std::string> heard;
    std::function<void()> onError;
    std::shared_ptr<StubPeripheral> peripheral = std::make_shared<StubPeripheral>();
    std::shared_ptr<CBService> gatt = std::make_shared<CBService>(CBUUID(0xAE3A), peripheral);
    std::shared_ptr<CBCharacteristic> controlPoint = characteristic(0xAE3B, Properties::writeWithoutResponse);
    std::shared_ptr<CBCharacteristic> answers = characteristic(0xAE3C, Properties::notify);
    std::shared_ptr<AuriskDFUService> service = AuriskDFUService::create("AE3A", peripheral, gatt);
    std::shared_ptr<DFUServiceDelegate> delegate{ this, [](auto*) {} };
    std::weak_ptr<DFUProgressDelegate> progressDelegate; ///< whose reports are of interest
};

TEST_F(UpdateService, ChainsTheStepsAndReportsUploadingWithEveryPacket)
{
    const std::shared_ptr<DFUProgressDelegate> progress(this, [](auto*) {});
    progressDelegate = progress;
    EXPECT_THAT(peripheral->take(), ElementsAre("characteristics AE3A"));
    givenCharacteristics();
    EXPECT_TRUE(service->aborted());
    start();
    EXPECT_THAT(take(), ElementsAre("1"));
    EXPECT_THAT(peripheral->take(), ElementsAre("subscribe AE3C"));
    start(); // while one runs
    EXPECT_THAT(peripheral->take(), IsEmpty());
    subscribed();
    arrives(spaceEnough);
    arrives(taken);
    arrives(taken);
    arrives(crcSuccess);
    EXPECT_THAT(take(), ElementsAre("2", "5", "0 %", "66 %", "5", "100 %", "6", "7"));
    EXPECT_EQ(peripheral->take().size(), 4U); // start, two packets, validate
    arrives(bootOk);
    EXPECT_THAT(take(), IsEmpty());
    bootsSoon();
    EXPECT_THAT(take(), ElementsAre("10"));
    EXPECT_FALSE(service->aborted());
    EXPECT_TRUE(service->abort());
    queue.runUntilIdle();
    EXPECT_THAT(take(), ElementsAre("11"));
}

TEST_F(UpdateService, StartedBeforeItKnowsTheCharacteristicsAsksForThemAndGoesOnOnce)
{
    start();
    EXPECT_THAT(peripheral->take(), ElementsAre("characteristics AE3A", "characteristics AE3A"));
    EXPECT_THAT(take(), IsEmpty());
    givenCharacteristics();
    subscribed();
    givenCharacteristics(); // the answer to the other question
    arrives(spaceEnough);
    EXPECT_THAT(take(), ElementsAre("1", "2", "5"));
    EXPECT_THAT(peripheral->take(), testing::SizeIs(3)); // subscribe, start, packet
}

TEST_F(UpdateService, FailsWithoutUsableCharacteristics)
{
    using Found = std::vector<std::shared_ptr<CBCharacteristic>>;
    const BluetoothError error{ "test", 1, "no" };
    const auto noProperties = "error 6 DFU Control Point characteristic does not have the Write and Notify properties";
    const auto notThere = "error 6 DFU packet characteristics does not have the Write and Notify properties";
    const struct {
        Found found;
        MaybeError error;
        const char* expected;
    } rows[] = {
        { {}, error, "error 5 Characteristics discovery failed" },
        { { controlPoint }, {}, notThere },
        { { answers }, {}, notThere },
        { { characteristic(0xAE3B, Properties::write), answers }, {}, noProperties },
        { { controlPoint, characteristic(0xAE3C, Properties::indicate) }, {}, noProperties },
    };
    for (const bool isKnownBefore : { false, true })
        for (const auto& row : rows) {
            service = AuriskDFUService::create("AE3A", peripheral, gatt);
            if (isKnownBefore)
                service->didDiscoverCharacteristics(row.found, row.error);
            start();
            service->didDiscoverCharacteristics(row.found, row.error);
            EXPECT_THAT(take(), ElementsAre(row.expected));
        }

    const auto ofNobody = std::make_shared<CBService>(CBUUID(0xAE3A), std::weak_ptr<CBPeripheral>());
    service = AuriskDFUService::create("AE3A", peripheral, ofNobody);
    start();
    EXPECT_THAT(take(), ElementsAre("error 16 Assert service.peripheral != nil failed"));
}

TEST_F(UpdateService, StartsAgainAfterAFailureOnlyOnceItWasAborted)
{
    givenCharacteristics();
    start();
    arrives("00 FE 68 9D 03 91 01 12 AC 16"_bytes);
    EXPECT_THAT(take(), ElementsAre("1", "error 16 init failure"));
    start();
    EXPECT_THAT(take(), IsEmpty());
    service->abort();
    start();
    EXPECT_THAT(take(), ElementsAre("11", "1"));

    onError = [this] { service->abort(); }; // from within: that is too early
    arrives(crcFailure);
    start();
    EXPECT_THAT(take(), ElementsAre("error 15 crc error", "11"));
    service->abort();
    start();
    EXPECT_THAT(take(), ElementsAre("11", "1"));
}

TEST_F(UpdateService, NeedsAnImage)
{
    EXPECT_TRUE(stopOf([&] { service->start(DFUConfigure::create()); }));
    EXPECT_TRUE(service->aborted());
    const auto empty = DFUFirmware::create({}, DFUFirmwareType::type0);
    EXPECT_TRUE(stopOf([&] { service->start(DFUConfigure::create()->with(empty)); }));
}

} // namespace
} // namespace aurisk::tests
