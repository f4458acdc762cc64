#include "Tests/Scenarios/FaultSweep.h"

#include "AuriskSDK/HearingAid/Aurisk/AuriskA16Accessory.h"
#include "AuriskSDK/HearingAid/Aurisk/AuriskH01Accessory.h"
#include "AuriskSDK/Shared/Utils/PreconditionPolicy.h"

namespace aurisk::tests {
namespace {

/// A story on a link with faults: everything is asked for at once, so that each fault meets what waits behind it.
class FaultSweep : public AuriskScenario {
public:
    using Story = void (*)(FaultSweep&);

    FaultSweep() { setPreconditionPolicy(PreconditionPolicy::contain); }
    ~FaultSweep() override { setPreconditionPolicy(PreconditionPolicy::stop); }
    void TestBody() override { }

    /// The whole story on an aid with that chip; returns how many messages the link carried.
    int play(Story story, std::uint8_t chip, const LinkFaults& withFaults)
    {
        auto state = aidState();
        state.chip = chip;
        dynamic_cast<SimulatedAuriskAid&>(*simulator->aid(aidName)).setState(std::move(state));
        faults() = withFaults;
        app->onSend = [this](const AuriskRequest& request) {
            events.push_back({ .kind = Event::Kind::sent, .at = queue.now(), .request = request });
        };
        app->onConnect = [this](const std::shared_ptr<Accessory>& connected) {
            tap = std::make_shared<Tap>(connected, events);
            connected->peripheral()->setDelegate(tap);
        };
        manager->startScan(1s);
        after(1.5s);
        accessory = std::dynamic_pointer_cast<AuriskAccessory>(manager->accessories().at(0));
        accessory->connect(app, 5s, "left");
        after(0.5s);
        story(*this);
        after(600s); // more than all time-outs together
        accessory->disconnect();
        after(5s);
        return simulator->radio().messageCount(aidName);
    }

    // What a story is made of.
    using AuriskScenario::after;
    using AuriskScenario::wearer;
    void readBattery() { accessory->readBattery(); }
    void ask(const AuriskRequest& request)
    {
        accessory->request(request, [done = begun()](const AuriskResult&) { done(); });
    }
    void writeNumberOfProgram(int number)
    {
        accessory->writeNumberOfProgram(number, [done = begun()](const AuriskResult&) { done(); });
    }
    void fetchLog(AuriskDataLogType type)
    {
        isFetchPossible = accessory->state() == AccessoryState::connected;
        dynamic_cast<AuriskA16Accessory&>(*accessory)
            .requestDataLog(type, [this, done = begun()](const std::optional<Data>& bytes) {
                done();
                fetched = bytes;
            });
    }

    void expectNothingLostAndNothingInvented()
    {
        Oracle oracle(accessory->hearChip());
        bool isEverSent = false; // if not, the subscription was never confirmed: what waits for it waits for ever
        for (const auto& event : events) {
            oracle.follow(event);
            isEverSent |= event.kind == Event::Kind::sent;
        }
        oracle.giveUp();
        EXPECT_EQ(known(), oracle.known);
        EXPECT_EQ(accessory->orientation(), AccessoryOrientation::left); // by its name, whatever it takes and tells
        EXPECT_FALSE(oracle.hasSwitchedUnasked && dynamic_cast<AuriskH01Accessory*>(accessory.get()));

        int completed = 0;
        for (const auto& [number, times] : completions) {
            EXPECT_EQ(times, 1) << "request " << number;
            completed += times;
        }
        EXPECT_EQ(completed, isEverSent ? asked - lost : completed);
        EXPECT_EQ(accessory->state(), AccessoryState::disconnected);
        const auto expected = isFetchPossible ? oracle.log : std::nullopt;
        EXPECT_EQ(fetched.value_or(expected), expected);
    }

    /// Whatever happened: without faults the next connection works.
    void expectTheNextConnectionToWork()
    {
        faults() = {};
        ASSERT_TRUE(accessory->connect(app, 5s, "left"));
        after(1s);
        std::optional<AuriskResult> answer;
        accessory->request(
            AuriskRequest::readVolume{ .program = 3 }, [&](const AuriskResult& result) { answer = result; });
        after(1s);
        ASSERT_TRUE(answer);
        EXPECT_EQ(*answer, AuriskResult::success(AuriskResponse::didReadProgram{ .program = 3, .volume = 2 }));
    }

    AuriskCache known() const { return AuriskCache::of(*accessory); }

    std::optional<std::optional<Data>> fetched; ///< what the fetch of a log brought; none before it has ended

private:
    /// Counts something that is to complete once.
    std::function<void()> begun()
    {
        const auto number = asked++;
        const bool mayBeLost = accessory->state() == AccessoryState::connected && !accessory->dataService();
        lost += mayBeLost ? 1 : 0;
        return [this, number] { ++completions[number]; };
    }

    std::vector<Event> events;
    std::shared_ptr<Tap> tap;
    int asked = 0, lost = 0;
    bool isFetchPossible = false;
    std::map<int, int> completions;
};

constexpr std::uint8_t a4 = 0x00, h01 = 0x01, a16 = 0x06;

void wearersStory(FaultSweep& aid)
{
    for (const AuriskRequest& request :
        { AuriskRequest(AuriskRequest::readProgramVolume{}), AuriskRequest(AuriskRequest::readVolume{ .program = 1 }),
            AuriskRequest(AuriskRequest::controlVolume{ .volume = 3, .program = 0 }),
            AuriskRequest(AuriskRequest::controlProgram{ .program = 2 }),
            AuriskRequest(AuriskRequest::setTransparency{ .level = 5 }),
            AuriskRequest(AuriskRequest::getTransparencyLevel{}),
            AuriskRequest(AuriskRequest::setBrEdr{ .enable = true, .continuousIfEnable = false }),
            AuriskRequest(AuriskRequest::readBrEdr{}), AuriskRequest(AuriskRequest::readOrientation{}),
            AuriskRequest(AuriskRequest::writeOrientation{ .orientation = AccessoryOrientation::right }),
            AuriskRequest(AuriskRequest::hearingSupported{}) })
        aid.ask(request);
    aid.after(0.35s);
    aid.wearer("volume 6");
    aid.after(0.25s);
    aid.wearer("program 1");
    aid.readBattery();
    aid.wearer("battery 77");
    aid.after(0.3s);
    aid.wearer("volume 9");
    aid.ask(AuriskRequest::readVolume{ .program = 3 });
}

void fittersStory(FaultSweep& aid)
{
    AuriskA4Dsp block;
    block.setDirection(AuriskDirection::meeting);
    AuriskA4GlobalDsp global;
    global.toneLevel = 2;
    for (const AuriskRequest& request : { AuriskRequest(AuriskRequest::readDsp{ .program = 0 }),
             AuriskRequest(AuriskRequest::writeDsp{ .dsp = block, .program = 1, .withResponse = true }),
             AuriskRequest(
                 AuriskRequest::writeDspData{ .data = AuriskA4Dsp().toBytes(), .program = 2, .withResponse = true }),
             AuriskRequest(AuriskRequest::readDsp{ .program = 2 }),
             AuriskRequest(AuriskRequest::readGlobalDsp{ .chip = AuriskChip::a4 }),
             AuriskRequest(
                 AuriskRequest::writeGlobalDsp{ .global = global, .chip = AuriskChip::a4, .withResponse = true }),
             AuriskRequest(AuriskRequest::readDsp{ .program = 1 }),
             AuriskRequest(AuriskRequest::readProfile{ .type = AuriskProfileType::productSku }),
             AuriskRequest(AuriskRequest::readProfile{ .type = AuriskProfileType::productReserved }),
             AuriskRequest(
                 AuriskRequest::writeProfile{ .data = { 'S', '2' }, .type = AuriskProfileType::productSeriesCode }) })
        aid.ask(request);
}

void logStory(FaultSweep& aid)
{
    aid.ask(AuriskRequest::readDsp{ .program = 0 });
    aid.fetchLog(AuriskDataLogType::summary);
    aid.ask(AuriskRequest::readVolume{ .program = 1 });
}

void programStory(FaultSweep& aid)
{
    aid.writeNumberOfProgram(2); // reads first
    aid.after(1s);
    aid.writeNumberOfProgram(1); // knows the block by now
    aid.ask(AuriskRequest::readGlobalDsp{ .chip = AuriskChip::a16 });
}

void switchStory(FaultSweep& aid)
{
    aid.ask(AuriskRequest::writeDsp{ .dsp = AuriskA4Dsp(), .program = 1, .withResponse = true });
    aid.ask(AuriskRequest::writeDspData{ .data = AuriskA4Dsp().toBytes(), .program = 2, .withResponse = true });
    aid.ask(AuriskRequest::readVolume{ .program = 0 });
    aid.after(0.5s);
    aid.wearer("program 3");
}

TEST(FaultSweep, TheStoriesWithoutAFaultKnowEverything)
{
    FaultSweep wearer;
    const auto messages = wearer.play(wearersStory, a16, {});
    wearer.expectNothingLostAndNothingInvented();
    EXPECT_GE(messages, 6 + 2 * 12 + 4); // set-up; requests and replies; what the wearer did, and the battery
    EXPECT_EQ(wearer.known(),
        (AuriskCache{ .bat = 77,
            .program = 3,
            .volumes = { { 0, 3 }, { 1, 9 }, { 3, 2 } },
            .brEdr = true,
            .transLevel = 5,
            .hearingSupported = true }));

    FaultSweep fitter;
    fitter.play(fittersStory, a4, {});
    EXPECT_THAT(fitter.known().blocks, testing::SizeIs(3));
    EXPECT_EQ(fitter.known().blocks[2], AuriskA4Dsp().toBytes());
    EXPECT_TRUE(fitter.known().global);
    EXPECT_EQ(fitter.known().profile.skuCode, "X1-A4");
    EXPECT_TRUE(fitter.known().profile.reservedField);
    EXPECT_EQ(fitter.known().profile.seriesCode, "S2");

    FaultSweep log;
    log.play(logStory, a16, {});
    EXPECT_THAT(log.fetched, testing::Optional(testing::Optional(testing::SizeIs(228))));
}

struct SweptStory {
    const char* name;
    FaultSweep::Story story;
    std::uint8_t chip;
};

/// One fault at every message of a story: a test a story and kind of fault.
class FaultAtEveryMessage : public testing::TestWithParam<std::tuple<SweptStory, NamedFault>> { };

TEST_P(FaultAtEveryMessage, LosesNoCompletionAndInventsNoKnowledge)
{
    const auto& [story, fault] = GetParam();
    const auto run = [&story = story](const LinkFaults& faults) {
        FaultSweep sweep;
        const auto messages = sweep.play(story.story, story.chip, faults);
        sweep.expectNothingLostAndNothingInvented();
        sweep.expectTheNextConnectionToWork();
        return messages;
    };
    playWithFaults(fault, run({}), run);
}

const SweptStory allStories[] = {
    { "Wearer", wearersStory, a16 },
    { "Fitter", fittersStory, a4 },
    { "Log", logStory, a16 },
    { "NumberOfProgram", programStory, a16 },
    { "WriteThenSwitch", switchStory, h01 },
};
const auto allFaults = everyFault({
    { "DelayALittle", Kind::delay, 0.15s },
    { "DelayBeyondTheTimeOut", Kind::delay, 3.05s },
});
INSTANTIATE_TEST_SUITE_P(Each, FaultAtEveryMessage,
    testing::Combine(testing::ValuesIn(allStories), testing::ValuesIn(allFaults)),
    [](const auto& swept) { return std::get<0>(swept.param).name + std::string(std::get<1>(swept.param).name); });

} // namespace
} // namespace aurisk::tests
