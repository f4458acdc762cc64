#include "Tests/Support/AuriskScenario.h"

#include "AuriskSDK/Shared/Utils/HexToData.h"
#include "AuriskSDK/Shared/Utils/PreconditionPolicy.h"

#include <numeric>

namespace aurisk::tests {
namespace {

/// What happened at the edge of the library: what it sent, what reached it, and what it answered.
struct Event {
    enum class Kind { sent, frame, battery, completed } kind;
    std::optional<AuriskRequest> request = {};
    Data bytes = {};
    bool success = false;
};

/// Hears a peripheral in the accessory's place, writes down what arrives, and passes everything on.
class Tap final : public CBPeripheralDelegate {
public:
    Tap(std::shared_ptr<CBPeripheralDelegate> next, std::vector<Event>& events)
        : _next(std::move(next))
        , _events(events)
    {
    }
    void peripheralDidDiscoverServices(CBPeripheral& peripheral, const MaybeError& error) override
    {
        _next->peripheralDidDiscoverServices(peripheral, error);
    }
    void peripheralDidDiscoverCharacteristicsFor(
        CBPeripheral& peripheral, const std::shared_ptr<CBService>& service, const MaybeError& error) override
    {
        _next->peripheralDidDiscoverCharacteristicsFor(peripheral, service, error);
    }
    void peripheralDidUpdateValueFor(CBPeripheral& peripheral, const std::shared_ptr<CBCharacteristic>& characteristic,
        const MaybeError& error) override
    {
        note(*characteristic);
        _next->peripheralDidUpdateValueFor(peripheral, characteristic, error);
    }
    void peripheralDidWriteValueFor(CBPeripheral& peripheral, const std::shared_ptr<CBCharacteristic>& characteristic,
        const MaybeError& error) override
    {
        _next->peripheralDidWriteValueFor(peripheral, characteristic, error);
    }
    void peripheralDidUpdateNotificationStateFor(CBPeripheral& peripheral,
        const std::shared_ptr<CBCharacteristic>& characteristic, const MaybeError& error) override
    {
        if (characteristic->uuid() == CBUUID(0x2A19)) // the battery reads what a confirmed subscription holds
            note(*characteristic);
        _next->peripheralDidUpdateNotificationStateFor(peripheral, characteristic, error);
    }

private:
    void note(const CBCharacteristic& characteristic)
    {
        const bool isBattery = characteristic.uuid() == CBUUID(0x2A19);
        _events.push_back({ .kind = isBattery ? Event::Kind::battery : Event::Kind::frame,
            .bytes = characteristic.value().value_or(Data{}) });
    }

    std::shared_ptr<CBPeripheralDelegate> _next;
    std::vector<Event>& _events;
};

/// What a host may know of an aid.
struct Knowledge {
    std::optional<int> program = {};
    std::map<int, int> volumes = {};
    std::optional<int> transparency = {}, battery = {};
    std::optional<bool> brEdr = {};
    bool brEdrContinuous = false, hearingTest = false;

    friend bool operator==(const Knowledge&, const Knowledge&) = default;
    friend void PrintTo(const Knowledge& known, std::ostream* out)
    {
        *out << "program " << description(known.program) << ", volumes";
        for (const auto& [number, level] : known.volumes)
            *out << " " << number << ":" << level;
        *out << ", transparency " << description(known.transparency) << ", battery " << description(known.battery)
             << ", BR/EDR " << description(known.brEdr) << known.brEdrContinuous << ", test " << known.hearingTest;
    }
};

/// Follows the bytes that arrived, by the drawing of the frame alone, and says what may be known after them: the
/// oracle.
class Oracle {
public:
    Knowledge known;

    void follow(const Event& event)
    {
        switch (event.kind) {
        case Event::Kind::sent: _onTheAir = event.request; break;
        case Event::Kind::completed: _onTheAir.reset(); break;
        case Event::Kind::battery:
            if (!event.bytes.empty())
                known.battery = event.bytes[0];
            break;
        case Event::Kind::frame:
            if (isFrame(event.bytes))
                followFrame(event.bytes);
            break;
        }
    }

private:
    static bool isFrame(const Data& b)
    {
        if (b.size() < 9 || b[1] != 0xFE || b[2] != 0x68 || b.back() != 0x16 || b.size() != b[4] + 7U)
            return false;
        return std::accumulate(b.begin() + 2, b.end() - 2, 0) % 256 == b[b.size() - 2];
    }

    void followFrame(const Data& b) // b[3] command, b[5] and b[6] identifiers, payload from b[7] on
    {
        if (b[3] == 0x9F) {
            const int program = b[5] - 1, volume = b[6 + std::size_t(program)];
            if (known.program == program)
                known.volumes[program] = volume;
            known.program = program;
            return;
        }
        const auto request = std::exchange(_onTheAir, std::nullopt);
        if (!request)
            return; // nobody waits for an answer
        if (b[3] == 0x91 && b[6] == 0x04)
            followVolumes(b);
        else if (b[3] == 0x9D && b[5] == 0xBE)
            known.transparency = b[7];
        else if (b[3] == 0x9D && b[5] == 0xBF)
            std::tie(known.brEdr, known.brEdrContinuous) = std::pair(b[7] != 0, b[7] == 1);
        else if (b[3] == 0x9D && b[5] == 0x39 && b[6] == 0x05)
            known.hearingTest = true;
        else if (b[3] < 0xA0)
            followAcknowledgement(*request);
    }

    void followVolumes(const Data& b)
    {
        known.program = b[5] == 0xFF ? b[7] - 1 : b[5] - 1;
        known.volumes[*known.program] = b[5] == 0xFF ? b[7 + std::size_t(b[7])] : b[7];
    }

    void followAcknowledgement(const AuriskRequest& request)
    {
        if (const auto* volume = request.as<AuriskRequest::controlVolume>())
            known.volumes[volume->program] = volume->volume;
        if (const auto* program = request.as<AuriskRequest::controlProgram>())
            known.program = program->program;
        if (const auto* level = request.as<AuriskRequest::setTransparency>())
            known.transparency = level->level;
        if (const auto* brEdr = request.as<AuriskRequest::setBrEdr>())
            std::tie(known.brEdr, known.brEdrContinuous) = std::pair(brEdr->enable, brEdr->continuousIfEnable);
    }

    std::optional<AuriskRequest> _onTheAir;
};

const std::vector<AuriskRequest> storyRequests = {
    AuriskRequest::readProgramVolume{},
    AuriskRequest::readVolume{ .program = 1 },
    AuriskRequest::controlVolume{ .volume = 3, .program = 0 },
    AuriskRequest::controlProgram{ .program = 2 },
    AuriskRequest::setTransparency{ .level = 5 },
    AuriskRequest::getTransparencyLevel{},
    AuriskRequest::setBrEdr{ .enable = true, .continuousIfEnable = false },
    AuriskRequest::readBrEdr{},
    AuriskRequest::readOrientation{},
    AuriskRequest::hearingSupported{},
};

class FaultSweep : public AuriskScenario {
protected:
    FaultSweep() { setPreconditionPolicy(PreconditionPolicy::contain); }
    ~FaultSweep() override { setPreconditionPolicy(PreconditionPolicy::stop); }

    /// The whole story over a link with these faults; returns how many messages the link carried.
    int play(const LinkFaults& withFaults)
    {
        faults() = withFaults;
        manager->startScan(1s);
        after(1.5s);
        accessory = std::dynamic_pointer_cast<AuriskAccessory>(manager->accessories().at(0));
        app->onConnect = [this](const std::shared_ptr<Accessory>& connected) {
            tap = std::make_shared<Tap>(connected, events);
            connected->peripheral()->setDelegate(tap);
        };
        accessory->connect(app, 5s, "left");
        after(0.5s);
        for (const auto& request : storyRequests)
            ask(request);
        after(0.35s);
        wearer("volume 6");
        after(0.25s);
        wearer("program 1");
        accessory->readBattery();
        wearer("battery 77");
        after(0.3s);
        wearer("volume 9");
        ask(AuriskRequest::readVolume{ .program = 3 });
        after(60s); // more than all time-outs together
        accessory->disconnect();
        after(5s);
        return simulator->radio().messageCount(aidName);
    }

    void ask(const AuriskRequest& request)
    {
        const auto number = asked++;
        const bool mayBeLost = accessory->state() == AccessoryState::connected && !accessory->dataService();
        lost += mayBeLost ? 1 : 0;
        accessory->request(request, [this, number, request](const AuriskResult& result) {
            ++completions[number];
            events.push_back({ .kind = Event::Kind::completed, .request = request, .success = result.isSuccess() });
        });
    }

    /// The application hears of a sending inside it, so the lines of the application are the order of things.
    void followSendings()
    {
        app->onSend = [this](const AuriskRequest& request) {
            events.push_back({ .kind = Event::Kind::sent, .request = request });
        };
    }

    Knowledge knownByAccessory() const
    {
        return { .program = accessory->program(),
            .volumes = accessory->volumeDic(),
            .transparency = accessory->transLevel(),
            .battery = accessory->bat(),
            .brEdr = accessory->brEdr(),
            .brEdrContinuous = accessory->brEdrContinuousIfEnable(),
            .hearingTest = accessory->hearingSupported() };
    }

    void expectNothingLostAndNothingInvented()
    {
        Oracle oracle;
        int sent = 0;
        for (const auto& event : events) {
            oracle.follow(event);
            sent += event.kind == Event::Kind::sent ? 1 : 0;
        }
        EXPECT_EQ(knownByAccessory(), oracle.known);

        int completed = 0;
        for (const auto& [number, times] : completions) {
            EXPECT_EQ(times, 1) << "request " << number;
            completed += times;
        }
        const bool isEverSent
            = sent > 0; // if not, the subscription was never confirmed: what waits for it waits for ever
        EXPECT_EQ(completed, isEverSent ? asked - lost : completed);
        EXPECT_EQ(accessory->state(), AccessoryState::disconnected);
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

    std::vector<Event> events;
    std::shared_ptr<Tap> tap;
    int asked = 0, lost = 0;
    std::map<int, int> completions;
};

TEST_F(FaultSweep, TheStoryWithoutAFaultKnowsEverything)
{
    followSendings();
    const auto messages = play({});
    expectNothingLostAndNothingInvented();
    EXPECT_GE(messages, 6 + 2 * 11 + 4); // set-up; requests and replies; what the wearer did, and the battery
    EXPECT_EQ(knownByAccessory(),
        (Knowledge{ .program = 3,
            .volumes = { { 0, 3 }, { 1, 9 }, { 3, 2 } },
            .transparency = 5,
            .battery = 77,
            .brEdr = true,
            .brEdrContinuous = false,
            .hearingTest = true }));
}

struct NamedFault {
    const char* name;
    Kind kind;
    Seconds by = Seconds(0);
};

/// One fault at every message of the story: a test a kind of fault.
class FaultAtEveryMessage : public testing::TestWithParam<NamedFault> { };

TEST_P(FaultAtEveryMessage, LosesNoCompletionAndInventsNoKnowledge)
{
    class OneRun : public FaultSweep {
    public:
        void TestBody() override { }
        int run(const LinkFaults& withFaults)
        {
            followSendings();
            const auto messages = play(withFaults);
            expectNothingLostAndNothingInvented();
            expectTheNextConnectionToWork();
            return messages;
        }
    };
    const auto& fault = GetParam();
    const auto messages = OneRun().run({});
    for (int message = 1; message <= messages; ++message) {
        SCOPED_TRACE("message " + std::to_string(message));
        OneRun().run({ .faults = { { .kind = fault.kind, .message = message, .by = fault.by } } });
    }
    // The same at every message from one on: a link that goes bad and stays so.
    for (int first = 1; first <= messages; first += 3) {
        SCOPED_TRACE("every message from " + std::to_string(first));
        LinkFaults bad;
        for (int message = first; message <= 3 * messages; ++message)
            bad.faults.push_back({ .kind = fault.kind, .message = message, .by = fault.by });
        OneRun().run(bad);
    }
}

const NamedFault allFaults[] = {
    { "DropLinkBefore", Kind::dropLinkBefore },
    { "DropLinkAfter", Kind::dropLinkAfter },
    { "Lose", Kind::lose },
    { "Duplicate", Kind::duplicate },
    { "Corrupt", Kind::corrupt },
    { "Refuse", Kind::refuse },
    { "DelayALittle", Kind::delay, 0.15s },
    { "DelayBeyondTheTimeOut", Kind::delay, 3.05s },
};
INSTANTIATE_TEST_SUITE_P(Each, FaultAtEveryMessage, testing::ValuesIn(allFaults),
    [](const testing::TestParamInfo<NamedFault>& fault) { return fault.param.name; });

} // namespace
} // namespace aurisk::tests
