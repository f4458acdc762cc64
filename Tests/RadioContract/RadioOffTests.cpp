#include "Tests/RadioContract/RadioContract.h"

namespace aurisk::tests {
namespace {

TEST_P(RadioContract, ARadioThatGoesOffEndsAConnectionButNotTheScan)
{
    givenAConnectedAid();
    scan({ .allowDuplicates = true });
    EXPECT_THAT(recorder->take(), IsEmpty());
    radio->setRadioOn(false);
    EXPECT_THAT(next(2), UnorderedElementsAre("state 4", "disconnected X1-L with error"));
    EXPECT_EQ(central->state(), CBManagerState::poweredOff);
    EXPECT_EQ(aid->state(), CBPeripheralState::disconnected);
    connect();
    EXPECT_THAT(next(), ElementsAre("failed X1-L with error"));
    EXPECT_EQ(aid->state(), CBPeripheralState::disconnected);
    EXPECT_THAT(whatElseComes(), IsEmpty());

    radio->setRadioOn(true);
    EXPECT_THAT(next(2), AllOf(Contains("state 5"), Contains("found X1-L")));
    EXPECT_EQ(recorder->aid, aid);
    stopScan();
    recorder->take();
    connect();
    EXPECT_THAT(nextOfAnAttempt(), ElementsAre("connected X1-L"));
}

TEST_P(RadioContract, ARadioThatGoesOffFailsAnAttemptAndAScanThatBeginsMeanwhileWaits)
{
    givenAFoundAid();
    radio->setAidOnAir(false);
    connect();
    EXPECT_THAT(whatElseComes(), IsEmpty());
    radio->setRadioOn(false);
    EXPECT_THAT(next(2), UnorderedElementsAre("state 4", "failed X1-L with error"));
    radio->setAidOnAir(true);
    scan({ .allowDuplicates = true });
    EXPECT_THAT(whatElseComes(), IsEmpty());
    radio->setRadioOn(true);
    EXPECT_THAT(next(2), AllOf(Contains("state 5"), Contains("found X1-L")));
    EXPECT_EQ(aid->state(), CBPeripheralState::disconnected) << "an attempt that has failed is over";
}

} // namespace
} // namespace aurisk::tests
