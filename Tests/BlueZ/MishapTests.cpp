#include "Tests/BlueZ/AHost.h"

#include <algorithm>

namespace aurisk::tests {
namespace {

enum class Phase { scanning, connecting, connected, asking, updating };

/// What goes wrong, and how it is mended a second later.
struct Mishap {
    const char* name;
    bool takesTheRadio; ///< of the host, as its application is told
    void (*begin)();
    void (*end)();
};

const Mishap mishaps[] = {
    { "KilledDaemon", true,
        [] {
            ASSERT_TRUE(perform({ "vmctl", "kill" }));
        },
        [] {
            ASSERT_TRUE(perform({ "vmctl", "start" }));
        } },
    { "StoppedDaemon", true,
        [] {
            ASSERT_TRUE(perform({ "vmctl", "stop" }));
        },
        [] {
            ASSERT_TRUE(perform({ "vmctl", "start" }));
        } },
    { "RadioOff", true, [] { setPower(hostAdapter, false); }, [] { setPower(hostAdapter, true); } },
    { "VanishingAid", false,
        [] {
            setInReach(false);
            setPower(aidAdapter, false);
        },
        [] {
            setPower(aidAdapter, true);
            setInReach(true);
        } },
};

struct NamedPhase {
    const char* name;
    Phase phase;
};

const NamedPhase phases[] = {
    { "WhileScanning", Phase::scanning },
    { "WhileConnecting", Phase::connecting },
    { "WhileConnected", Phase::connected },
    { "WhileAsking", Phase::asking },
    { "WhileUpdating", Phase::updating },
};

/// An application in some phase of its work meets a mishap: it hears what has become of everything it asked for, and
/// once the mishap is over it goes on with the same objects.
class AMishap : public AHost, public testing::WithParamInterface<std::tuple<NamedPhase, Mishap>> {
protected:
    Phase phase() const { return std::get<0>(GetParam()).phase; }
    const Mishap& mishap() const { return std::get<1>(GetParam()); }

    void begin()
    {
        givenADiscoveredAid();
        switch (phase()) {
        case Phase::scanning: break;
        case Phase::connecting:
            setInReach(false);
            manager->stopScan();
            ASSERT_TRUE(accessory->connect(app, std::nullopt));
            pass(0.5s);
            break;
        case Phase::connected: givenAConnectedAid(); break;
        case Phase::asking:
            givenAConnectedAid();
            for (int i = 0; i < questions; ++i)
                app->request(*accessory, readVolume);
            ASSERT_TRUE(until([this] { return countOf(volumeIs10) > 0; }, 5s));
            setSilent(true); // or all may be answered before the mishap has come about
            break;
        case Phase::updating:
            givenAConnectedAid();
            startUpdate(64 * 1024);
            ASSERT_TRUE(until([this] { return updates->progress.size() > 5; }, 30s));
            break;
        }
    }

    void setSilent(bool isSilent) { served->simulator().world().aids.front().faults.isSilent = isSilent; }

    static constexpr int questions = 3; ///< each is given up after three seconds, one after the other
};

TEST_P(AMishap, IsToldAndIsOverOnceItIsMended)
{
    begin();
    const bool hasLink = phase() != Phase::scanning && phase() != Phase::connecting;
    const auto updatesBefore = app->updates;
    mishap().begin();

    if (mishap().takesTheRadio)
        expect("unavailable");
    if (hasLink)
        expect("did disconnect with an error");
    if (phase() == Phase::connecting && mishap().takesTheRadio)
        expect("did fail to connect with an error");
    if (phase() == Phase::asking) {
        EXPECT_TRUE(until([this] { return countOfAnswers() == questions; }, 15s))
            << "a request has been lost: " << testing::PrintToString(app->heard);
        EXPECT_LT(countOf(volumeIs10), questions);
    }
    if (phase() == Phase::updating) {
        EXPECT_TRUE(until([this] { return !updates->errors.empty(); }, 10s));
        EXPECT_THAT(updates->errors, ElementsAre("10 Receiving notification failed"));
        accessory->stopOTA();
    }

    pass(1s);
    mishap().end();
    setSilent(false);
    if (phase() == Phase::connecting)
        setInReach(true);
    if (mishap().takesTheRadio)
        expect("available");

    if (phase() == Phase::scanning) { // it goes on by itself
        EXPECT_TRUE(until([&] { return app->updates > updatesBefore + 5; }, 30s)) << "nobody is heard any more";
    }
    if (phase() == Phase::connecting && !mishap().takesTheRadio) { // so does the attempt
        expect("did connect", 30s);
        EXPECT_EQ(accessory->state(), AccessoryState::connected);
        accessory->disconnect();
        expect("did disconnect");
    }
    EXPECT_EQ(accessory->state(), AccessoryState::disconnected);
    const auto answersBefore = countOfAnswers();

    app->take();
    givenAnAidThatIsHeardAgain();
    givenAConnectedAid();
    app->request(*accessory, readVolume);
    expect(volumeIs10);
    EXPECT_EQ(countOfAnswers(), 1) << "an answer has come twice; before there were " << answersBefore;
    if (phase() == Phase::updating) {
        const auto image = startUpdate(2000);
        EXPECT_TRUE(until([this] { return hasUpdated(); }, 30s));
        EXPECT_EQ(served->aid().firmwareImage(), image);
    }
}

INSTANTIATE_TEST_SUITE_P(BlueZ, AMishap, testing::Combine(testing::ValuesIn(phases), testing::ValuesIn(mishaps)),
    [](const auto& one) { return std::string(std::get<1>(one.param).name) + std::get<0>(one.param).name; });

} // namespace
} // namespace aurisk::tests
