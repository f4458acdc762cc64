#include "AuriskSDK/HearingAid/Aurisk/Repository/AuriskResourceBundle.h"
#include "Tests/Support/AuriskScenario.h"
#include "Tests/Support/Bytes.h"
#include "Tests/Support/PlayedAid.h"

#include <map>

namespace aurisk::tests {
namespace {

using Type = AuriskProfileType;

/// An aid whose profile is read and written, and which answers as the test says.
class Profile : public testing::Test {
protected:
    void givenAConnectedAid(const std::string& name)
    {
        peripheral = PlayedAid::create(CBUUID(0x0001), name);
        CBAdvertisementData advertisement;
        advertisement.manufacturerData = "FE FE 0A 1B 2C 3D 4E 5F 08 06"_bytes;
        advertisement.localName = "advertised";
        radio.hear(peripheral, advertisement);
        accessory = std::dynamic_pointer_cast<AuriskAccessory>(radio.manager->accessories().at(0));
        radio.connect(peripheral, *accessory, app);
        peripheral->onWrite = [this](DataView value) {
            const auto reply = answers.find(Data(value.begin(), value.end()));
            ASSERT_NE(reply, answers.end()) << testing::PrintToString(value);
            DispatchQueue::main().async(
                [this, bytes = reply->second] { peripheral->notify(peripheral->replies, bytes); });
        };
        queue.advance(1s);
        app->take();
    }
    void reads(Type type)
    {
        app->request(*accessory, AuriskRequest::readProfile{ .type = type });
        queue.advance(1s);
    }
    void writes(Type type, Data data)
    {
        app->request(*accessory, AuriskRequest::writeProfile{ .data = std::move(data), .type = type });
        queue.advance(1s);
    }

    ManualDispatchQueue queue;
    ScopedMainQueue main{ queue };
    std::shared_ptr<Application> app = std::make_shared<Application>();
    PlayedRadio radio;
    std::shared_ptr<PlayedAid> peripheral;
    std::shared_ptr<AuriskAccessory> accessory;
    std::map<Data, Data> answers; ///< by request
};

TEST_F(Profile, TakesTheDefaultDataOfItsModelOnceThatIsKnown)
{
    AuriskResourceBundle bundle;
    for (const char* shape : { "any", "power 2" })
        bundle.entries.push_back({ .skuCode = "S7", .shape = shape });
    bundle.entries[1].hornPowerCode = 2;
    answers = {
        { "FE 68 11 02 04 08 87 16"_bytes, "00 FE 68 91 04 04 08 53 37 93 16"_bytes }, // S7
        { "FE 68 11 02 05 08 88 16"_bytes,
            "00 FE 68 91 16 05 08 00 00 00 00 00 00 00 00 02 00 00 00 00 00 00 00 00 00 00 00 1E 16"_bytes },
    };
    givenAConnectedAid("X1-L");
    EXPECT_FALSE(accessory->takeRepository(bundle));
    reads(Type::productSku);
    EXPECT_TRUE(accessory->takeRepository(bundle));
    EXPECT_EQ(accessory->profile().repository.shape, "any");
    reads(Type::productReserved); // the ninth byte is the power of the receiver
    EXPECT_TRUE(accessory->takeRepository(bundle));
    EXPECT_EQ(accessory->profile().repository.shape, "power 2");
    EXPECT_FALSE(accessory->takeRepository({}));
    EXPECT_EQ(accessory->profile().repository.shape, "power 2");
}

TEST_F(Profile, OfTheDeviceGivesItItsName)
{
    answers = {
        { "FE 68 11 02 00 08 83 16"_bytes, "00 FE 68 91 04 00 08 58 31 8E 16"_bytes },
        { "FE 68 14 02 00 08 86 16"_bytes, "00 FE 68 94 02 00 08 06 16"_bytes },
    };
    for (const auto& [advertised, name] : { std::pair("X-L", "X1-L"), std::pair("X-R", "X1-R") }) {
        givenAConnectedAid(advertised);
        EXPECT_EQ(accessory->name(), "advertised");
        reads(Type::productSeries);
        EXPECT_EQ(accessory->name(), name);
        writes(Type::productSeries, {});
        EXPECT_EQ(accessory->name(), "advertised");
        radio = PlayedRadio();
    }
}

TEST_F(Profile, TellsTheScenesOfThePrograms)
{
    const auto request = "FE 68 11 02 05 08 88 16"_bytes;
    const auto scenes = [&](Data reply) {
        answers = { { request, std::move(reply) } };
        accessory->readScenesOfProgram({});
        queue.advance(1s);
        return accessory->scenesOfProgram();
    };
    using P = AuriskProgram;
    givenAConnectedAid("X1-L");
    EXPECT_THAT(accessory->scenesOfProgram(), ElementsAre(P::normal, P::restaurant, P::outdoor, P::music));
    // Byte 16 of the field is 04: the first mode is 2.
    const auto outdoors
        = "00 FE 68 91 16 05 08 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 04 00 00 9E BE 16"_bytes;
    EXPECT_THAT(scenes(outdoors), testing::Each(P::outdoor));
    EXPECT_EQ(accessory->profile().reservedField->ageConfig, (AuriskAgeConfig{ .age = 30, .sex = 1 }));
    // One byte less: nothing changes, and the reader is told that the reading succeeded.
    app->take();
    const auto tooFew = "00 FE 68 91 15 05 08 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 06 00 00 21 16"_bytes;
    EXPECT_THAT(scenes(tooFew), testing::Each(P::outdoor));
    EXPECT_THAT(app->take(), testing::Contains("updated readProfile(type: productReserved)"));
}

} // namespace
} // namespace aurisk::tests
