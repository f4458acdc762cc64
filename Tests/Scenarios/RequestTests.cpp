#include "Tests/Support/AuriskScenario.h"

#include "AuriskSDK/Shared/Utils/PreconditionPolicy.h"

namespace aurisk::tests {
namespace {

const auto readVolume = [](int program) { return AuriskRequest::readVolume{ .program = program }; };

/// Message numbers of the link: 1 connection, 2 services, 3 to 5 characteristics, 6 and 7 subscriptions; then 8 is the
/// first request.
class Request : public AuriskScenario {
protected:
    static constexpr int firstRequest = 8;

    /// Puts a request on the air that the aid does not hear, so that a test can answer in its place.
    void whenRequestingUnheard(const AuriskRequest& request)
    {
        faults().faults = { { .kind = Kind::lose, .message = simulator->radio().messageCount(aidName) + 1 } };
        whenRequesting(request);
        after(0.2s);
    }

    /// A notification that the aid itself would never send: bytes, behind the byte that precedes every frame.
    void aidSends(Data frame)
    {
        frame.insert(frame.begin(), 0x00);
        simulator->aid(aidName)->notify(CBUUID(0xAE02), std::move(frame));
        after(0.01s);
    }
};

TEST_F(Request, WithoutAConnectionFailsAtOnceAndSendsNothing)
{
    givenAFoundAid();
    whenRequesting(readVolume(0));
    EXPECT_THAT(app->take(), ElementsAre("readVolume(program: 0) => error(error: disconnected)"));
    accessory->request(readVolume(0)); // nobody asked to be told
    bool complete = false;
    accessory->request(std::vector<AuriskRequest>{ readVolume(0), readVolume(1) }, [&] { complete = true; });
    EXPECT_FALSE(complete); // on the queue, never inside the call
    after(0s);
    EXPECT_TRUE(complete);
}

TEST_F(Request, ListThatIsEmptyCompletesAtOnce)
{
    givenAConnectedAid();
    int completed = 0;
    accessory->request(std::vector<AuriskRequest>{}, [&] { ++completed; });
    accessory->dataService()->request(std::vector<AuriskRequest>{}, [&] { ++completed; });
    EXPECT_EQ(completed, 0);
    after(0s);
    EXPECT_EQ(completed, 2);
}

TEST_F(Request, MadeBeforeTheSubscriptionIsConfirmedWaitsForIt)
{
    givenAFoundAid();
    faults().faults
        = { { .kind = Kind::delay, .message = 6, .by = 2s }, { .kind = Kind::delay, .message = 7, .by = 2s } };
    accessory->connect(app, "left");
    after(1s);
    whenRequesting(readVolume(0));
    app->take();
    after(0.9s);
    EXPECT_THAT(app->take(), IsEmpty());
    after(1.5s);
    EXPECT_THAT(
        results(), ElementsAre("readVolume(program: 0) => success(data: didReadProgram(program: 0, volume: 8))"));
}

TEST_F(Request, ThatTheAidRefusesFailsWithTheErrorOfItsKindAndChangesNothing)
{
    givenAConnectedAid();
    for (const AuriskRequest& refused : { AuriskRequest(readVolume(9)),
             AuriskRequest(AuriskRequest::writeDspData{ .data = Data(12), .program = 0, .withResponse = true }),
             AuriskRequest(AuriskRequest::controlProgram{ .program = 9 }),
             AuriskRequest(AuriskRequest::playSine{ .freq = 1000, .dB = 200, .timestamp = 7 }) })
        whenRequesting(refused);
    faults().faults = { { .kind = Kind::refuse, .message = firstRequest + 6 } };
    after(5s);
    EXPECT_THAT(results(),
        ElementsAre("readVolume(program: 9) => error(error: readError)",
            "writeDspData(data: 12 bytes, program: 0, withResponse: true) => error(error: writeError)",
            "controlProgram(program: 9) => error(error: controlError)",
            "playSine(freq: 1000, dB: 200, timestamp: 7) => error(error: btError)"));
    EXPECT_EQ(accessory->program(), std::nullopt);
    EXPECT_TRUE(accessory->volumeDic().empty());
}

TEST_F(Request, OfARowKeepsItsOrderAndEachCompletesOnceWhenTheLinkGoes)
{
    givenAConnectedAid();
    for (int program = 0; program < 4; ++program)
        whenRequesting(readVolume(program));
    after(0.3s); // two done, the third waits
    simulator->radio().dropLink(aidName);
    whenRequesting(readVolume(0)); // the host does not know yet
    after(0.1s);
    whenRequesting(readVolume(0));
    after(60s);
    EXPECT_THAT(results(),
        ElementsAre("readVolume(program: 0) => success(data: didReadProgram(program: 0, volume: 8))",
            "readVolume(program: 1) => success(data: didReadProgram(program: 1, volume: 5))", "state disconnected",
            "did disconnect with an error", "readVolume(program: 0) => error(error: disconnected)",
            "readVolume(program: 2) => error(error: timeout)", "readVolume(program: 3) => error(error: timeout)",
            "readVolume(program: 0) => error(error: timeout)"));
}

TEST_F(Request, CompletesAfterItsAccessoryHasGone)
{
    givenAConnectedAid();
    whenRequesting(readVolume(0));
    whenRequesting(readVolume(1));
    const std::weak_ptr<AuriskAccessory> weak = accessory;
    manager->clearAccessories([](const auto&, const auto&) { return true; });
    accessory.reset();
    EXPECT_TRUE(weak.expired());
    after(10s);
    EXPECT_THAT(results(), // nothing is sent any more, and nothing is lost
        ElementsAre(
            "readVolume(program: 0) => error(error: timeout)", "readVolume(program: 1) => error(error: timeout)"));
}

TEST_F(Request, AcknowledgedChangesWhatTheAccessoryKnowsAndIsToldTwice)
{
    givenAConnectedAid();
    const AuriskDsp block = AuriskA16Dsp(Data(56, 0x11));
    const AuriskRequest requests[] = {
        AuriskRequest::writeDsp{ .dsp = block, .program = 1, .withResponse = true },
        AuriskRequest::writeGlobalDsp{
            .global = AuriskA16GlobalDsp(Data(12, 0x22)), .chip = AuriskChip::a16, .withResponse = true },
        AuriskRequest::controlVolume{ .volume = 3, .program = 1 },
        AuriskRequest::controlProgram{ .program = 1 },
        AuriskRequest::setTransparency{ .level = 9 },
        AuriskRequest::setBrEdr{ .enable = true, .continuousIfEnable = true },
        AuriskRequest::writeDspData{ .data = Data(56, 0x33), .program = 2, .withResponse = true },
        AuriskRequest::writeOrientation{ .orientation = AccessoryOrientation::right },
        AuriskRequest::controlMute{ .mute = true },
    };
    for (const auto& request : requests) {
        app->take();
        whenRequestingUnheard(request);
        aidSends({ 0xFE, 0x68, 0x94, 0x02, 0x00, 0x00, 0xFE, 0x16 });
        const auto line = description(request);
        EXPECT_THAT(app->take(),
            ElementsAre("sent " + line, "updated " + line, "updated " + line,
                testing::StartsWith(line + " => success(data: didRequest(")));
    }
    EXPECT_THAT(accessory->dspDic(), ElementsAre(testing::Pair(1, block)));
    EXPECT_EQ(accessory->dsp(), block);
    EXPECT_EQ(accessory->global(), AuriskGlobalDsp(AuriskA16GlobalDsp(Data(12, 0x22))));
    EXPECT_EQ(accessory->volume(), 3);
    EXPECT_EQ(accessory->program(), 1);
    EXPECT_EQ(accessory->transLevel(), 9);
    EXPECT_EQ(accessory->brEdr(), true);
    EXPECT_TRUE(accessory->brEdrContinuousIfEnable());
    EXPECT_EQ(accessory->orientation(), AccessoryOrientation::left);
}

TEST_F(Request, ForgetsAVolumeWhereTheReplyTellsTheProgramAlone)
{
    givenAConnectedAid();
    whenRequesting(readVolume(1));
    after(1s);
    EXPECT_THAT(accessory->volumeDic(), ElementsAre(testing::Pair(1, 5)));
    whenRequestingUnheard(AuriskRequest::readProgramVolume{});
    aidSends({ 0xFE, 0x68, 0x91, 0x03, 0x00, 0x04, 0x01, 0x01, 0x16 });
    EXPECT_EQ(app->take().back(), "readProgramVolume => success(data: didReadProgram(program: 1, volume: nil))");
    EXPECT_EQ(accessory->program(), 1);
    EXPECT_TRUE(accessory->volumeDic().empty());
}

// What a device may send that breaks a precondition: each stops the process by default and is dropped under `contain`.
const Data impossible[] = {
    { 0xFE, 0x68, 0x9F, 0x03, 0x00, 0x07, 0x09, 0x1A, 0x16 }, // program 0 of programs counted from 1
    { 0xFE, 0x68, 0x9F, 0x03, 0x03, 0x07, 0x09, 0x1D, 0x16 }, // program 3 of two volumes
    { 0xFE, 0x68, 0x91, 0x03, 0xFF, 0x04, 0x05, 0x04, 0x16 }, // program 5 of no volume
    { 0xFE, 0x68, 0x91, 0x02, 0x01, 0x04, 0x00, 0x16 }, // a volume without its byte
    { 0xFE, 0x68, 0x91, 0x02, 0x80, 0x05, 0x80, 0x16 }, // an orientation without its byte
    { 0xFE, 0x68, 0x9D, 0x02, 0xBE, 0x00, 0xC5, 0x16 }, // a transparency without its byte
    { 0xFE, 0x68, 0x91, 0xFA, 0x01, 0x16 }, // a size of 250
    {}, // with the byte in front this is one byte: too short, and no frame at all
};

TEST_F(Request, IsLeftWaitingByBytesThatCannotBeUnderContain)
{
    struct Contained {
        Contained() { setPreconditionPolicy(PreconditionPolicy::contain); }
        ~Contained() { setPreconditionPolicy(PreconditionPolicy::stop); }
    } const contained;

    givenAConnectedAid();
    whenRequesting(AuriskRequest::readProgramVolume{});
    after(1s);
    whenRequestingUnheard(readVolume(0));
    app->take();
    for (const auto& bytes : impossible)
        aidSends(bytes);
    simulator->aid(aidName)->notify(CBUUID(0xAE02), {}); // nothing at all
    after(0.1s);
    EXPECT_THAT(app->take(), IsEmpty());
    EXPECT_EQ(accessory->program(), 0);
    EXPECT_THAT(accessory->volumeDic(), ElementsAre(testing::Pair(0, 8)));
    after(5s);
    EXPECT_THAT(results(), ElementsAre("readVolume(program: 0) => error(error: timeout)"));
}

using RequestDeathTest = Request;

TEST_F(RequestDeathTest, StopsTheProcessWithOneLineForBytesThatCannotBe)
{
    givenAConnectedAid();
    EXPECT_DEATH(
        aidSends(impossible[0]), "^AuriskSDK: broken precondition: program 0 in a notification of 2 volumes\n$");
    EXPECT_DEATH(aidSends(impossible[6]), "^AuriskSDK: broken precondition: [^\n]*size byte 250[^\n]*\n$");
}

TEST_F(RequestDeathTest, StopsTheProcessForAnApplicationsMistakeUnderEitherPolicy)
{
    givenAConnectedAid();
    for (const auto policy : { PreconditionPolicy::stop, PreconditionPolicy::contain })
        EXPECT_DEATH(
            {
                setPreconditionPolicy(policy);
                whenRequesting(readVolume(255));
                after(1s);
            },
            "^AuriskSDK: broken precondition: program \\+ 1: 256 does not fit in 1 byte\\(s\\)\n$");
}

} // namespace
} // namespace aurisk::tests
