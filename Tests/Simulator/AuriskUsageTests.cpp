#include "Tests/Simulator/AnAuriskAid.h"

#include <nlohmann/json.hpp>

namespace aurisk::simulatortests {
namespace {

using namespace std::chrono_literals;
using Words = std::vector<std::int64_t>;

/// One that is worn, on a clock of its own.
struct AWornAid : AnAuriskAid {
    AWornAid()
    {
        aid.keepTime([this] { return now; });
    }

    void after(Seconds span) { now += span; }
    void wearer(const char* action) { EXPECT_TRUE(aid.perform(*WearerAction::fromString(action))) << action; }
    std::string readLog(int block) { return ask(0x11, block, 0x06); }

    /// The 57 words of the summary, which comes in four blocks of 57 bytes.
    Words summary()
    {
        Data bytes;
        for (int block = 0; block < 4; ++block) {
            const auto part = *ask_hexadecimal(readLog(block).substr(3));
            EXPECT_EQ(part.size(), 57u);
            bytes.insert(bytes.end(), part.begin(), part.end());
        }
        Words words;
        for (std::size_t i = 0; i + 4 <= bytes.size(); i += 4)
            words.push_back(bytes[i] + 0x100 * bytes[i + 1] + 0x10000 * bytes[i + 2] + 0x1000000ll * bytes[i + 3]);
        EXPECT_EQ(words.size(), 57u);
        EXPECT_EQ(std::accumulate(words.begin(), words.end() - 1, 0ll) % 0x100000000, words.back());
        return words;
    }
    Words summary(std::size_t first, std::size_t count)
    {
        const auto all = summary();
        return { all.begin() + std::ptrdiff_t(first), all.begin() + std::ptrdiff_t(first + count) };
    }

    Seconds now{ 1000 };
};

TEST_F(AWornAid, CountsItsTimeByProgramAndLoudness)
{
    after(90s); // in its second program, at volume 5
    EXPECT_EQ(ask(0x1C, 0x02, 0x03), "9c");
    EXPECT_EQ(ask(0x1C, 0x01, 0x34), "9c"); // the third, at volume 4
    after(29.4s);
    wearer("program 0");
    after(0.6s); // what is left of a second counts with the next one
    EXPECT_THAT(summary(0, 5), ElementsAre(120, 120, 0, 0, 0));
    EXPECT_THAT(summary(5, 7), ElementsAre(1, 8, 1, 0, 0, 0, 0));
    EXPECT_THAT(summary(12, 7), ElementsAre(90, 5, 24, 42, 15, 7, 2)); // a minute of 12 24 15 7 2, and 12 18
    EXPECT_THAT(summary(19, 7), ElementsAre(29, 4, 12, 17, 0, 0, 0));
    EXPECT_THAT(summary(33, 7), ElementsAre(0, 0, 0, 0, 0, 0, 0)) << "it has four programs";
    EXPECT_THAT(summary(0, 1), ElementsAre(120)) << "to look takes no time";
}

TEST_F(AWornAid, SortsTheTimesThatItWasOn)
{
    const auto wearFor = [this](Seconds span) {
        after(span);
        wearer("power 0");
        after(3h); // in its case
        wearer("power 0");
        wearer("power 1");
        wearer("power 1");
    };
    for (const Seconds span : { 0s, 1799s, 1800s, 7200s, 4 * 3600s, 8 * 3600s, 12 * 3600s, 16 * 3600s, 71999s, 72000s })
        wearFor(span);
    after(5s);
    const auto total = 0 + 1799 + 1800 + 7200 + (4 + 8 + 12 + 16) * 3600 + 71999 + 72000 + 5;
    EXPECT_THAT(summary(0, 2), ElementsAre(total, 5));
    EXPECT_THAT(summary(47, 8), ElementsAre(2, 1, 1, 1, 1, 1, 2, 1));

    EXPECT_EQ(ask(0xCC, 0xC3, 0x49), "4c") << "packed for shipping";
    after(24h);
    wearer("power 1");
    EXPECT_THAT(summary(0, 2), ElementsAre(total, 0));
    EXPECT_THAT(summary(47, 1), ElementsAre(3));
}

TEST_F(AWornAid, DrainsItsBatteryAndTellsWhoLooks)
{
    const auto level = [this] { return int(aid.read(batteryLevel)->front()); };
    after(719s);
    EXPECT_EQ(level(), 77);
    after(1s);
    EXPECT_EQ(level(), 76);
    EXPECT_EQ(aid.state().battery, 76);
    EXPECT_THAT(answersTo("fe681c0205008b16"), ElementsAre("2A19 4c", "AE02 00fe689c0205000b16"));
    EXPECT_THAT(answersTo("fe681c0205008b16"), ElementsAre("AE02 00fe689c0205000b16")) << "it is told once";
    wearer("power 0");
    after(24h);
    wearer("power 1");
    EXPECT_EQ(level(), 76) << "off, it drains nothing";
    after(66 * 720s);
    EXPECT_EQ(level(), 10);
    EXPECT_THAT(summary(2, 3), ElementsAre(0, 13, 1)); // 67 times 12 minutes, and low
    after(24h);
    EXPECT_EQ(level(), 1) << "not empty by itself";

    wearer("battery 0");
    after(1h);
    EXPECT_EQ(level(), 0);
    wearer("battery 90");
    after(720s);
    EXPECT_EQ(level(), 89);
    wearer("battery 50"); // the same one, some time later
    EXPECT_THAT(summary(2, 3), ElementsAre(1, 0, 0));
}

TEST_F(AWornAid, WritesDownWhatItsWearerDoesAndHowItsLoopIs)
{
    const std::string empty(2 * 57, 'f');
    EXPECT_EQ(readLog(0x10), "91 " + empty);
    EXPECT_EQ(readLog(0x73), "91 " + empty);
    after(1800s); // two percent of the battery: 75, 4B
    wearer("volume 3");
    after(1s);
    wearer("program 2");
    wearer("mute 1");
    wearer("battery 90");
    wearer("battery 89");
    wearer("power 0");
    wearer("power 1");
    const std::string records = "080700000203014b" // volume 3, in program 1
                                "090700000102024b"
                                "090700000401024b"
                                "09070000035a025a" // a battery of 90 percent
                                "0907000000000259"
                                "0907000000010259";
    EXPECT_EQ(readLog(0x10), "91 " + records + empty.substr(records.size()));
    EXPECT_EQ(readLog(0x11), "91 " + empty);
    // At 1800 s, program 1, volume 5: 12 16 22 28 25 19, and five more each.
    EXPECT_EQ(readLog(0x60), "91 08070000010511151b211e18" + empty.substr(24));

    for (int i = 0; i < 285; ++i) // as many as there is room for
        wearer(i % 2 == 0 ? "mute 1" : "mute 0");
    after(100 * 1800s);
    EXPECT_EQ(readLog(0x10).substr(3, 16), "0907000004010259");
    EXPECT_EQ(readLog(0x37).substr(3 + 2 * 49), "0907000004010259");
    EXPECT_EQ(readLog(0x60).substr(3, 8), "38310000"); // the seventh, as 101 were measured and 95 are kept: 12600 s
    EXPECT_EQ(readLog(0x73).substr(3 + 2 * 45, 8), "28c60200"); // the last: 181800 s
}

TEST_F(AWornAid, HasLogsOnAnA16AloneAndRefusesOtherBlocks)
{
    for (const int block : { 0x04, 0x0F, 0x38, 0x5F, 0x74, 0x80, 0xFF })
        EXPECT_EQ(readLog(block), "d1") << block;
    EXPECT_EQ(ask(0x11, 0x00, 0x06, "00"), "d1");
    EXPECT_EQ(ask(0x14, 0x00, 0x06, "00"), "d4");
    for (const auto chip : { std::uint8_t(0x00), std::uint8_t(0x01), std::uint8_t(0x07) }) {
        become(chip, { 8 });
        EXPECT_EQ(readLog(0x00) + readLog(0x10) + readLog(0x60), "d1d1d1") << int(chip);
    }
}

TEST_F(AWornAid, IsSavedAsItIsUnlessNothingHappenedInThatMinute)
{
    const auto before = aid.toJson();
    after(59s);
    EXPECT_TRUE(aid.toJson() == before);
    after(1s);
    EXPECT_EQ(aid.toJson()["usage"]["totalRunTime"], 60);
    aid.keepTime(nullptr); // its radio is gone
    after(1h);
    EXPECT_EQ(aid.state().usage.totalRunTime, 60);
    aid.setState(aid.state());
    EXPECT_EQ(aid.toJson()["usage"]["totalRunTime"], 60);

    auto state = aid.state();
    state.usage.totalRunTime = state.usage.programRunTimes[1] = 0xFFFFFFFE;
    aid.setState(state);
    aid.keepTime([this] { return now; });
    after(1h);
    EXPECT_THAT(summary(0, 1), ElementsAre(0xFFFFFFFF)) << "it counts no further";
    EXPECT_THAT(summary(12, 1), ElementsAre(0xFFFFFFFF));
}

} // namespace
} // namespace aurisk::simulatortests
