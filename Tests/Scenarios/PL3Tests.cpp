#include "Tests/Support/PL3Scenario.h"

#include "AuriskSDK/Shared/Utils/PreconditionPolicy.h"
#include "Tests/Support/PL3Cache.h"

namespace aurisk::tests {
namespace {

using Command = PL3Command;

class PL3 : public PL3Scenario { };

const Data sixteen = { 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16 };

TEST_F(PL3, IsFoundAndConnectedLikeAnyHearingAid)
{
    manager->startScan(1s);
    after(2s);
    EXPECT_THAT(app->take(), ElementsAre("scanning", "discovered P3-L", "not scanning"));
    accessory = std::dynamic_pointer_cast<PL3Accessory>(manager->accessories().at(0));
    ASSERT_TRUE(accessory);
    EXPECT_EQ(accessory->orientation(), AccessoryOrientation::left);
    EXPECT_EQ(accessory->modelName(), "1203");
    EXPECT_EQ(accessory->manufacturerId(), 258);
    EXPECT_EQ(accessory->description(), "<PL3Accessory 5A1D0000-A1D5-4000-8000-0A1B2C005566 \"P3-L\">");

    whenRequesting(reading(Command::volumeLevel));
    EXPECT_THAT(app->take(), ElementsAre("read volumeLevel => unknown")); // at once
    EXPECT_TRUE(accessory->connect(app, "left"));
    after(1s);
    EXPECT_THAT(app->take(), ElementsAre("state connecting", "state connected", "did connect", "services left"));
    EXPECT_EQ(messages(), 1 + 1 + 2 + 2); // connection and services, then characteristics and subscription twice
    EXPECT_TRUE(accessory->disconnect());
    after(1s);
    EXPECT_THAT(app->take(), ElementsAre("state disconnecting", "state disconnected", "did disconnect"));
}

TEST_F(PL3, TellsAndTakesWhatItIsAskedFor)
{
    givenAConnectedAid();
    whenRequesting(reading(Command::volumeLevel));
    whenRequesting(writing(Command::volumeLevel, { 9 }));
    whenRequesting(reading(Command::batteryLevel));
    whenRequesting(writing(Command::program, { 2 }));
    whenRequesting(writing(Command::compRatios, sixteen));
    whenRequesting(reading(Command::compRatios));
    whenRequesting(writing(Command::program, { 9 })); // which it has not
    whenRequesting(writing(Command::muteUnmute, { 1 }));
    after(2s);
    EXPECT_THAT(app->take(),
        ElementsAre("updated read volumeLevel", "read volumeLevel => volumeLevel 06", "updated write volumeLevel 09",
            "write volumeLevel 09 => volumeLevel 09", "updated read batteryLevel",
            "read batteryLevel => batteryLevel 50", "updated write program 02", "write program 02 => program 02",
            "updated write compRatios 0102030405060708090a0b0c0d0e0f10",
            "write compRatios 0102030405060708090a0b0c0d0e0f10 => compRatios 0102030405060708090a0b0c0d0e0f10",
            "updated read compRatios", "read compRatios => compRatios 0102030405060708090a0b0c0d0e0f10",
            "write program 09 => unknown", "updated write muteUnmute 01", "write muteUnmute 01 => muteUnmute 01"));
    EXPECT_EQ(aid().state().volume, 9);
    EXPECT_EQ(aid().state().programs[2].compRatios, sixteen);
    EXPECT_TRUE(aid().state().muted);
    EXPECT_EQ(accessory->program(), 2);
    EXPECT_EQ(accessory->battery(), 80);
    EXPECT_EQ(accessory->compRatio(), (std::map<int, PL3CompRatio>{ { 2, PL3CompRatio(sixteen) } }));
}

TEST_F(PL3, AnswersAReadWithTheNextNotificationWhateverThatIsAbout)
{
    givenAConnectedAid();
    whenRequesting(reading(Command::batteryLevel));
    after(0.101s); // on its way
    wearer("volume 3");
    after(1s);
    EXPECT_THAT(app->take(),
        ElementsAre("updated read batteryLevel", "read batteryLevel => volumeLevel 03", "news batteryLevel 50"));
    EXPECT_EQ(accessory->volume(), 3);
    EXPECT_EQ(accessory->battery(), 80);

    // Before it is on its way, nothing answers it.
    whenRequesting(reading(Command::batteryLevel));
    after(0.05s);
    wearer("volume 4");
    after(1s);
    EXPECT_THAT(app->take(),
        ElementsAre("news volumeLevel 04", "updated read batteryLevel", "read batteryLevel => batteryLevel 50"));
}

TEST_F(PL3, TellsWhatTheWearerDoesAlsoWhileAWriteWaits)
{
    givenAConnectedAid();
    faults().latency = 0.5s;
    whenRequesting(writing(Command::volumeLevel, { 5 }));
    after(0.2s); // on its way: it arrives at 0.6 s and is confirmed at 1.1 s
    wearer("program 1");
    after(0.7s);
    EXPECT_THAT(app->take(), ElementsAre("news program 01"));
    after(0.3s);
    EXPECT_THAT(app->take(), ElementsAre("updated write volumeLevel 05", "write volumeLevel 05 => volumeLevel 05"));
    wearer("battery 20");
    wearer("mute 1");
    after(1s);
    EXPECT_THAT(app->take(), ElementsAre("news batteryLevel 14", "news muteUnmute 01"));
    EXPECT_EQ(accessory->program(), 1);
    EXPECT_EQ(accessory->volume(), 5);
    EXPECT_EQ(accessory->battery(), 20);
}

TEST_F(PL3, TakesALongWriteInPiecesAndEndsItWithTheFirst)
{
    givenAConnectedAid();
    const int before = messages();
    const Data escapes(16, 0x7E);
    whenRequesting(writing(Command::bandEQs, escapes)); // 4 + 32 bytes: two pieces
    whenRequesting(writing(Command::volumeLevel, { 16 })); // refused: no confirmation of the second piece ends it
    after(1s);
    EXPECT_EQ(messages() - before, 2 * 2 + 2);
    EXPECT_EQ(app->take().back(), "write volumeLevel 10 => unknown");
    EXPECT_EQ(aid().state().programs[0].bandEQs, escapes);
}

TEST_F(PL3, ThatGoesAwayLeavesWhatWaitsToTheTimeOutsAndAnswersTheNextConnection)
{
    givenAConnectedAid();
    whenRequesting(reading(Command::volumeLevel));
    whenRequesting(writing(Command::volumeLevel, { 2 }));
    after(0.102s);
    simulator->radio().dropLink(aidName);
    after(10s);
    EXPECT_THAT(app->take(),
        ElementsAre("state disconnected", "did disconnect with an error", "read volumeLevel => timeout",
            "write volumeLevel 02 => timeout"));
    EXPECT_TRUE(accessory->connect(app, "left"));
    after(1s);
    app->take();
    whenRequesting(reading(Command::volumeLevel));
    after(1s);
    EXPECT_THAT(app->take(), ElementsAre("updated read volumeLevel", "read volumeLevel => volumeLevel 06"));
}

/// The application lets go of everything, disconnects or asks on inside each callback in turn; the sanitizers see to
/// the rest.
TEST_F(PL3, CompletesItsRequestsWhateverTheApplicationDoesInsideACallback)
{
    enum class Does { letsGo, disconnects, asksOn };
    for (int which = 1; which <= 6; ++which)
        for (const auto does : { Does::letsGo, Does::disconnects, Does::asksOn }) {
            simulator = Simulator::create(world());
            manager = AccessoryManager::create(simulator->platform());
            manager->setScanningDelegate(app);
            givenAConnectedAid();
            whenRequesting(reading(Command::volumeLevel));
            whenRequesting(writing(Command::bandEQs, Data(16, 0x7E)));
            whenRequesting(writing(Command::volumeLevel, { 16 }));
            wearer("battery 40");
            int heard = 0, completed = 0;
            app->onLine = [&](const std::string& line) {
                completed += line.find(" => ") != line.npos ? 1 : 0;
                if (++heard != which)
                    return;
                switch (does) {
                case Does::letsGo: manager.reset(), accessory.reset(); break;
                case Does::disconnects: accessory->disconnect(); break;
                case Does::asksOn: whenRequesting(reading(Command::program)); break;
                }
            };
            after(20s);
            EXPECT_EQ(completed, does == Does::asksOn ? 4 : 3) << which;
            app->onLine = {};
        }
}

// One fault at every message of a story.

class PL3Sweep : public PL3Scenario {
public:
    void TestBody() override { }

    /// Returns how many messages the link carried.
    int play(const LinkFaults& withFaults)
    {
        faults() = withFaults;
        app->onLine = [this](const std::string& line) { follow(line); };
        givenAFoundAid();
        accessory->connect(app, 5s, "left");
        after(0.5s);
        for (const auto& request : { reading(Command::volumeLevel), writing(Command::volumeLevel, { 3 }),
                 reading(Command::program), writing(Command::program, { 2 }), reading(Command::bandEQs),
                 writing(Command::mpoConfig, Data(16, 0x7D)), writing(Command::volumeLevel, { 12 }),
                 reading(Command::batteryLevel), writing(Command::inputSettings, sixteen) })
            ask(request);
        after(0.33s);
        wearer("battery 40");
        after(0.3s);
        wearer("program 1");
        ask(reading(Command::compTimes));
        after(200s); // more than all time-outs together
        accessory->disconnect();
        after(5s);
        return messages();
    }

    void expectNothingLostAndNothingInvented(bool isFaithful) const
    {
        EXPECT_TRUE(open.empty() || !isSubscribed) << "not completed: " << *open.begin();
        EXPECT_EQ(completedTwice, 0);
        if (isFaithful) {
            EXPECT_THAT(falseSuccesses, IsEmpty());
        }
        EXPECT_TRUE(PL3Cache::of(*accessory) == known);
    }

    void expectTheNextConnectionToWork()
    {
        faults() = {};
        ASSERT_TRUE(accessory->connect(app, 5s, "left"));
        after(1s);
        app->take();
        whenRequesting(writing(Command::volumeLevel, { 7 }));
        whenRequesting(reading(Command::volumeLevel));
        after(1s);
        EXPECT_THAT(app->take(), testing::Contains("read volumeLevel => volumeLevel 07"));
    }

private:
    void ask(const PL3Request& request)
    {
        const auto number = asked++;
        open.insert(number);
        accessory->request(request, [this, number, request](const PL3Result& result) {
            completedTwice += open.erase(number) == 0;
            isSubscribed |= result.isSuccess() || *result.error() == PL3Error::timeout;
            if (!result.isSuccess())
                return;
            known.keep(rawValue(result.data()->command), result.data()->data);
            const bool isVolume = !request.read && request.command == Command::volumeLevel;
            if (isVolume && aid().state().volume != request.data->front())
                falseSuccesses.push_back(inShort(request));
        });
    }

    /// What is known follows from what was told, in the order of telling: news, and the outcomes of requests.
    void follow(const std::string& line)
    {
        const auto words = line.substr(line.find(' ') + 1);
        const auto blank = words.find(' ');
        if (line.starts_with("news "))
            known.keep(rawValue(fromCaseName<Command>(words.substr(0, blank)).value()),
                ask_hexadecimal(words.substr(blank + 1)).value_or(Data{}));
    }

    int asked = 0, completedTwice = 0;
    bool isSubscribed = false; ///< if not, what waits for the subscription waits for ever
    std::set<int> open;
    Lines falseSuccesses;
    PL3Cache known;
};

class PL3FaultAtEveryMessage : public testing::TestWithParam<NamedFault> { };

TEST_P(PL3FaultAtEveryMessage, LosesNoCompletionAndInventsNoKnowledge)
{
    setPreconditionPolicy(PreconditionPolicy::contain);
    const auto run = [](const LinkFaults& faults) {
        PL3Sweep sweep;
        const auto messages = sweep.play(faults);
        // A link keeps the order of writes, and their bytes. Where this one does not, no confirmation can be believed.
        const auto kind = faults.faults.empty() ? Kind::lose : faults.faults.front().kind;
        const bool isFaithful = kind != Kind::delay && kind != Kind::corrupt;
        sweep.expectNothingLostAndNothingInvented(isFaithful);
        sweep.expectTheNextConnectionToWork();
        return messages;
    };
    const auto messages = run({});
    ASSERT_GT(messages, 25);
    playWithFaults(GetParam(), messages, run);
    setPreconditionPolicy(PreconditionPolicy::stop);
}

INSTANTIATE_TEST_SUITE_P(Each, PL3FaultAtEveryMessage,
    testing::ValuesIn(
        everyFault({ { "DelayALittle", Kind::delay, 0.15s }, { "DelayBeyondTheTimeOut", Kind::delay, 3.05s } })),
    [](const auto& swept) { return std::string(swept.param.name); });

} // namespace
} // namespace aurisk::tests
