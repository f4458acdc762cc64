#include "Tools/aurisk/SimCommand.h"

#include "Tests/Support/FakeAir.h"
#include "Tests/Support/Refusal.h"
#include "Tests/Tool/ToolScenario.h"
#include "Tools/aurisk/Values.h"

namespace aurisk::tests {
namespace {

class SimCommand : public ToolScenario {
protected:
    void serve(const std::string& words, SimulatedWorld world = threeAids())
    {
        const auto options = optionsOf("sim " + words);
        style.json = options.json;
        output.emplace(sink, style);
        serving = tool::Serving::start(
            options, std::move(world), fakeAir, *output, [this](ExitCode ended) { code = ended; });
        after(1);
    }

    FakeGattServer& air(const std::string& name) { return *fakeAir->servers.at(name); }

    std::shared_ptr<FakeAir> fakeAir = std::make_shared<FakeAir>();
    std::shared_ptr<tool::Serving> serving;
};

TEST_F(SimCommand, ServesTheFirstHearingAidsAndOfTwoAPair)
{
    SimulatedWorld world;
    world.aids = { placed("Solo-L", "00:00:00:00:00:01", 0x06), placed("X1-R", "00:00:00:00:00:02", 0x06),
        placed("X1-L", "00:00:00:00:00:03", 0x06) };
    const struct {
        std::string words;
        Lines names;
    } rows[] = {
        { "", { "Solo-L" } },
        { "--adapter hci1", { "Solo-L" } },
        { "--adapter hci1 --adapter hci0", { "X1-L", "X1-R" } },
        { "--adapter hci1 --adapter hci0 --adapter hci2", { "Solo-L", "X1-R", "X1-L" } },
        { "--aid x1-r", { "X1-R" } },
        { "--aid X1-R --aid Solo-L --adapter hci0 --adapter hci1", { "X1-R", "Solo-L" } },
    };
    const auto servedBy = [&](const std::string& words) { return tool::servedAids(optionsOf("sim " + words), world); };
    for (const auto& [words, names] : rows)
        EXPECT_EQ(servedBy(words), names) << words;

    const std::string two = "--adapter hci0 --adapter hci1";
    EXPECT_EQ(refusalOf([&] { servedBy("--aid X2-L"); }),
        "sim: the world has no hearing aid called \"X2-L\" (Solo-L, X1-R, X1-L)");
    world.aids.pop_back();
    EXPECT_EQ(servedBy(two).front(), "Solo-L") << "no pair: the first two";
    world.aids.pop_back();
    EXPECT_EQ(refusalOf([&] { servedBy(two); }), "sim: the world has 1 hearing aid(s) for 2 adapter(s)");
}

TEST_F(SimCommand, SaysWhoCanBeHeardAndWhoIsConnected)
{
    serve("--adapter hci1 --adapter hci2 --aid X1-L --aid Solo-L");
    EXPECT_EQ(air("Solo-L").adapter(), "hci2");
    EXPECT_THAT(sink.output, IsEmpty());
    air("X1-L").starts();
    air("X1-L").connects("A");
    air("X1-L").disconnects("A");
    air("X1-L").starts();
    for (const auto* why : { "bluetoothd is not running", "there is no Bluetooth adapter hci1" })
        for (int i = 0; i < 2; ++i)
            air("X1-L").stops(why);
    air("X1-L").starts();
    EXPECT_THAT(sink.output,
        ElementsAre("X1-L is on the air as hci1 00:AA:01:01:00:01", "X1-L is connected to A",
            "X1-L is disconnected from A", "X1-L is off the air: bluetoothd is not running",
            "X1-L is off the air: there is no Bluetooth adapter hci1", "X1-L is on the air as hci1 00:AA:01:01:00:01"));
    sink.output.clear();
    serving->take("x1-l power 0");
    after(3);
    EXPECT_THAT(sink.output, ElementsAre("X1-L is off the air: it does not advertise"));
    serving->take("X1-L power 1");
    after(3);
    air("X1-L").starts();
    EXPECT_EQ(sink.output.back(), "X1-L is on the air as hci1 00:AA:01:01:00:01");
    serving->interrupt();
    after(1);
    EXPECT_EQ(code, ExitCode::done);
    for (const auto* name : { "X1-L", "Solo-L" })
        EXPECT_THAT(air(name).take(), ElementsAre("stopped"));
}

TEST_F(SimCommand, SaysTheSameInJSON)
{
    serve("--json");
    air("X1-L").starts();
    air("X1-L").connects("A");
    EXPECT_THAT(sink.output,
        ElementsAre(R"({"event":"onAir","name":"X1-L","adapter":"","address":"00:AA:01:01:00:01"})",
            R"({"event":"connected","name":"X1-L","central":"A"})"));
}

TEST_F(SimCommand, EndsWhereAnAidNeverGetsOnTheAir)
{
    serve("--adapter hci1 --adapter hci7");
    air("X1-L").starts();
    air("X1-R").stops("there is no Bluetooth adapter hci7");
    air("X1-R").stops("the Bluetooth daemon is not running");
    after(1);
    EXPECT_EQ(code, ExitCode::bluetoothUnavailable);
    EXPECT_THAT(sink.errors, ElementsAre("aurisk: there is no Bluetooth adapter hci7"));
    EXPECT_THAT(air("X1-L").take(), ElementsAre("stopped"));
}

TEST_F(SimCommand, RefusesAWorldInWhichNobodyCouldBeHeard)
{
    auto world = threeAids();
    world.radioState = CBManagerState::poweredOff;
    EXPECT_THROW(serve("", std::move(world)), tool::UsageError);
}

TEST_F(SimCommand, DoesWhatIsTyped)
{
    serve("--adapter hci1 --adapter hci2");
    serving->take("X1-R volume 3");
    serving->take("");
    serving->take("dance");
    serving->take("Solo-L volume 3");
    serving->take("help");
    const auto world = serving->world();
    const auto volumeOf = [&](const char* name) {
        return dynamic_cast<const SimulatedAuriskAid&>(*world.aid(name)).state().volumes.front();
    };
    EXPECT_EQ(volumeOf("X1-L"), 8);
    EXPECT_EQ(volumeOf("X1-R"), 3);
    EXPECT_THAT(sink.errors, ElementsAre(HasSubstr("dance"), HasSubstr("Solo-L")));
    EXPECT_THAT(sink.output, ElementsAre(HasSubstr("the wearer turns the volume")));
}

TEST_F(SimCommand, LeavesLatencyAndMtuToTheAirAndKeepsTheLinksOfTheWorldAsTheyAre)
{
    auto world = threeAids();
    world.placed("X1-R").faults.latency = Seconds(0.2);
    world.placed("X1-L").mtu = 23;
    const auto before = world.toJson();
    serve("--adapter hci1 --adapter hci2", std::move(world));
    EXPECT_EQ(serving->world().toJson(), before);
    for (const auto* name : { "X1-L", "X1-R" }) {
        air(name).connects("A");
        air(name).reads("A", CBUUID(0x2A19));
    }
    queue.runUntilIdle();
    EXPECT_THAT(air("X1-L").take(), ElementsAre("read 2A19 54"));
    EXPECT_THAT(air("X1-R").take(), IsEmpty());
    after(2);
    EXPECT_THAT(air("X1-R").take(), ElementsAre("read 2A19 54"));

    air("X1-L").writes("A", CBUUID(0xAE01), std::string(2 * 261, '0'));
    serving->take("X1-L silent 1");
    after(1);
    EXPECT_THAT(air("X1-L").take(), ElementsAre("confirmed AE01")) << "it is not too long for the air";
    EXPECT_EQ(serving->world().toJson(), before);
}

} // namespace
} // namespace aurisk::tests
