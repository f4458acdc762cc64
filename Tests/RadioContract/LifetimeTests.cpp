#include "Tests/RadioContract/RadioContract.h"

namespace aurisk::tests {
namespace {

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
