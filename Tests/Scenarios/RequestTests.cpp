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

using RequestDeathTest = Request;

TEST_F(RequestDeathTest, StopsTheProcessWithOneLineForBytesThatCannotBe)
{
    givenAConnectedAid();
    EXPECT_DEATH(aidSends({ 0xFE, 0x68, 0x9F, 0x03, 0x00, 0x07, 0x09, 0x1A, 0x16 }),
        "^AuriskSDK: broken precondition: program 0 in a notification of 2 volumes\n$");
    EXPECT_DEATH(aidSends({ 0xFE, 0x68, 0x91, 0xFA, 0x01, 0x16 }),
        "^AuriskSDK: broken precondition: [^\n]*size byte 250[^\n]*\n$");
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
