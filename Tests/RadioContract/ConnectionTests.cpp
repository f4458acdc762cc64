#include "Tests/RadioContract/RadioContract.h"

namespace aurisk::tests {
namespace {

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

} // namespace
} // namespace aurisk::tests
