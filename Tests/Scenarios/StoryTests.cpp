#include "Tests/Support/AuriskScenario.h"

namespace aurisk::tests {
namespace {

class Story : public AuriskScenario { };

TEST_F(Story, GoesFromAnAdvertisementToAChangedVolume)
{
    manager->startScan(); // the radio is not there yet: the scan waits for it
    EXPECT_THAT(app->take(), IsEmpty());
    after(1s);
    EXPECT_THAT(app->take(), ElementsAre("available", "scanning", "discovered X1-L"));
    EXPECT_EQ(app->lastRssi, -48);

    manager->stopScan();
    accessory = std::dynamic_pointer_cast<AuriskAccessory>(manager->accessories().front());
    ASSERT_TRUE(accessory);
    EXPECT_EQ(accessory->className(), "AuriskA16Accessory");
    EXPECT_EQ(accessory->address(), "0A:1B:2C:3D:4E:5F");
    EXPECT_EQ(accessory->orientation(), AccessoryOrientation::left);
    EXPECT_EQ(accessory->description(), "<AuriskA16Accessory " + accessory->deviceId() + " \"X1-L\">");
    EXPECT_TRUE(accessory->connect(app, 5s, "left"));
    after(0.1s);
    EXPECT_THAT(app->take(),
        ElementsAre("not scanning", "state connecting", "state connected", "did connect", "services 180F AE30 AE3A"));

    whenRequesting(AuriskRequest::readProgramVolume{});
    whenRequesting(AuriskRequest::controlVolume{ .volume = 3, .program = 0 });
    whenRequesting(AuriskRequest::controlProgram{ .program = 2 });
    after(1s);
    EXPECT_THAT(app->take(),
        ElementsAre( //
            "sent readProgramVolume", "updated readProgramVolume",
            "readProgramVolume => success(data: didReadProgram(program: 0, volume: 8))",
            "sent controlVolume(volume: 3, program: 0)", "updated controlVolume(volume: 3, program: 0)",
            "updated controlVolume(volume: 3, program: 0)",
            "controlVolume(volume: 3, program: 0) => success(data: didRequest(data: AuriskRawData(cmd: 0x9C, "
            "dataSize: 2, di0: 1, di1: 19, data: 0 bytes)))",
            "sent controlProgram(program: 2)", "updated controlProgram(program: 2)",
            "updated controlProgram(program: 2)",
            "controlProgram(program: 2) => success(data: didRequest(data: AuriskRawData(cmd: 0x9C, dataSize: 2, "
            "di0: 2, di1: 3, data: 0 bytes)))"));
    EXPECT_EQ(aid().program, 2);
    EXPECT_THAT(aid().volumes, ElementsAre(3, 5, 7, 2));
    EXPECT_EQ(accessory->program(), 2);
    EXPECT_EQ(accessory->volume(), std::nullopt); // nobody has told the volume of program 2 yet
    EXPECT_THAT(accessory->volumeDic(), ElementsAre(testing::Pair(0, 3)));

    wearer("volume 9");
    after(0.1s);
    EXPECT_THAT(app->take(), ElementsAre("volume 9 to 9"));
    wearer("volume 10");
    wearer("program 1");
    after(0.1s);
    EXPECT_THAT(app->take(), ElementsAre("volume 9 to 10", "program 2 to 1"));

    accessory->readBattery();
    after(0.1s);
    EXPECT_THAT(app->take(), ElementsAre("battery 80"));

    EXPECT_TRUE(accessory->disconnect());
    after(0.1s);
    EXPECT_THAT(app->take(), ElementsAre("state disconnecting", "state disconnected", "did disconnect"));
    EXPECT_FALSE(simulator->radio().isConnected(aidName));
}

TEST_F(Story, TakesAPauseAndTheLinkForEachRequestAndNothingElse)
{
    givenAConnectedAid();
    const auto begin = queue.now();
    std::optional<Seconds> end;
    accessory->request(std::vector<AuriskRequest>{ AuriskRequest::readVolume{ .program = 0 },
                           AuriskRequest::readVolume{ .program = 1 } },
        [&] { end = queue.now(); });
    after(1s);
    ASSERT_TRUE(end);
    EXPECT_NEAR((*end - begin).count(), 2 * (0.1 + 0.005 + 0.005), 1e-9);
    EXPECT_THAT(accessory->volumeDic(), ElementsAre(testing::Pair(0, 8), testing::Pair(1, 5)));
}

TEST_F(Story, HearsTheFirstProgramAsItsOwnPredecessorAndKeepsTheVolumes)
{
    givenAConnectedAid();
    wearer("program 3");
    after(0.1s);
    EXPECT_THAT(app->take(), ElementsAre("program 3 to 3"));
    EXPECT_EQ(accessory->program(), 3);
    EXPECT_TRUE(accessory->volumeDic().empty());
    wearer("volume 2"); // as it is already: told once, since the host does not know it
    wearer("volume 2");
    after(0.1s);
    EXPECT_THAT(app->take(), ElementsAre("volume 2 to 2"));
}

TEST_F(Story, ServesTwoManagersOnOneRadioEachWithItsOwnAccessories)
{
    const auto other = std::make_shared<Application>();
    const auto second = AccessoryManager::create(simulator->platform());
    second->setScanningDelegate(other);
    givenAFoundAid();
    EXPECT_TRUE(second->accessories().empty());
    second->startScan(1s);
    after(2s);
    EXPECT_EQ(second->accessories().size(), 1U);
    EXPECT_NE(second->accessories().front(), manager->accessories().front());
}

} // namespace
} // namespace aurisk::tests
