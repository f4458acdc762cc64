#include "Tests/RadioContract/RadioContract.h"

namespace aurisk::tests {
namespace {

TEST_P(RadioContract, ACentralSaysOnceWhetherItsRadioCanBeUsedAndDoesNotKnowBefore)
{
    central = makeCentral();
    EXPECT_EQ(central->state(), CBManagerState::unknown);
    EXPECT_THAT(next(), ElementsAre("state 5"));
    EXPECT_EQ(central->state(), CBManagerState::poweredOn);
    EXPECT_THAT(whatElseComes(), IsEmpty());
}

TEST_P(RadioContract, AnAidIsFoundOnceAScanAndIsTheSameInEach)
{
    givenACentral();
    scan();
    needs({ "found X1-L" });
    const auto first = recorder->aid;
    EXPECT_THAT(whatElseComes(), IsEmpty());
    scan(); // anew, without having stopped
    ASSERT_THAT(next(), ElementsAre("found X1-L"));
    EXPECT_EQ(recorder->aid, first);
    stopScan();
    EXPECT_THAT(whatElseComes(), IsEmpty());
    scan();
    ASSERT_THAT(next(), ElementsAre("found X1-L"));
    EXPECT_EQ(recorder->aid, first);

    EXPECT_EQ(first->state(), CBPeripheralState::disconnected);
    givenAFoundAid(); // by another central
    EXPECT_EQ(aid->identifier(), first->identifier());
}

TEST_P(RadioContract, EveryAdvertisementIsHeardWholeWhereDuplicatesAreWanted)
{
    auto expected = *ask_hexadecimal("FEFE");
    const auto address = *ask_hexadecimal(radio->aidAddress());
    expected.insert(expected.end(), address.begin(), address.end());
    expected.insert(expected.end(), { 0x08, 0x06 });

    givenACentral();
    scan({ .allowDuplicates = true });
    for (int i = 0; i < 3; ++i) {
        ASSERT_THAT(next(), AllOf(testing::Not(IsEmpty()), Each("found X1-L")));
        EXPECT_EQ(recorder->advertisement.manufacturerData, expected);
        if (recorder->rssi) {
            EXPECT_THAT(*recorder->rssi, AllOf(testing::Ge(-127), testing::Le(20)));
        }
    }
    stopScan();
    EXPECT_THAT(whatElseComes(), IsEmpty());
}

TEST_P(RadioContract, AnAidThatHasLeftTheAirIsNotFoundThoughItIsKnown)
{
    givenAFoundAid();
    radio->setAidOnAir(false);
    EXPECT_THAT(whatElseComes(), IsEmpty());
    scan();
    EXPECT_THAT(whatElseComes(), IsEmpty());
    radio->setAidOnAir(true);
    EXPECT_THAT(next(), ElementsAre("found X1-L"));
}

} // namespace
} // namespace aurisk::tests
