#include "Tools/aurisk/WearerLine.h"

#include "Tests/Support/Refusal.h"
#include "Tests/Tool/ToolScenario.h"
#include "Tools/aurisk/Values.h"

#include <fmt/format.h>
#include <rapidcheck/gtest.h>

namespace aurisk::tests {
namespace {

using tool::WearerLine;
using Kind = Fault::Kind;

TEST(AWearersLine, NamesWhoseItIsAndWhatIsDone)
{
    using Switch = WearerLine::Switch;
    const struct {
        std::string text;
        WearerLine line;
    } rows[] = {
        { "volume 5", { "", WearerAction{ "volume", 5 } } },
        { "  X1-L\tvolume  5 \r", { "X1-L", WearerAction{ "volume", 5 } } },
        { "My own aid-L volume 5", { "My own aid-L", WearerAction{ "volume", 5 } } },
        { "program 1", { "", WearerAction{ "program", 1 } } },
        { "battery 20", { "", WearerAction{ "battery", 20 } } },
        { "mute 1", { "", WearerAction{ "mute", 1 } } },
        { "X1-L power 0", { "X1-L", WearerAction{ "power", 0 } } },
        { "drop", { "", WearerLine::Drop{} } },
        { "silent 1", { "", Switch{ &LinkFaults::isSilent, true } } },
        { "refuse-connections 0", { "", Switch{ &LinkFaults::refusesConnections, false } } },
        { "ignore-connections 1", { "", Switch{ &LinkFaults::ignoresConnections, true } } },
        { "lose", { "", Fault{ Kind::lose, 1 } } },
        { "X1-L lose 3", { "X1-L", Fault{ Kind::lose, 3 } } },
        { "duplicate", { "", Fault{ Kind::duplicate, 1 } } },
        { "corrupt 2", { "", Fault{ Kind::corrupt, 2 } } },
        { "refuse", { "", Fault{ Kind::refuse, 1 } } },
        { "drop-before 4", { "", Fault{ Kind::dropLinkBefore, 4 } } },
        { "drop-after", { "", Fault{ Kind::dropLinkAfter, 1 } } },
        { "delay 1.5", { "", Fault{ Kind::delay, 1, Seconds(1.5) } } },
        { "X1-L delay 0.25 7", { "X1-L", Fault{ Kind::delay, 7, Seconds(0.25) } } },
        { "help", { "", WearerLine::Help{} } },
    };
    for (const auto& [text, line] : rows)
        EXPECT_EQ(WearerLine::parse(text), line) << text;
    EXPECT_EQ(WearerLine::parse(" \t\r"), std::nullopt);
}

TEST(AWearersLine, ThatSaysNothingKnownIsRefusedInASentence)
{
    const struct {
        std::string text, sentence;
    } rows[] = {
        { "louder", "\"louder\" is nothing that a wearer or a link does (help tells what is)" },
        { "X1-L", "\"X1-L\" is nothing that a wearer or a link does (help tells what is)" },
        { "Volume 5", "\"Volume 5\" is nothing that a wearer or a link does (help tells what is)" },
        { "volume", "volume: a number from 0 to 15 is missing" },
        { "volume 16", "volume: 16 is outside 0 to 15" },
        { "volume 5 6", "volume: \"6\" is one word too many" },
        { "battery full", "battery: \"full\" is no whole number" },
        { "power 2", "power: 2 is outside 0 to 1" },
        { "silent", "silent: a number from 0 to 1 is missing" },
        { "drop 1", "drop: \"1\" is one word too many" },
        { "lose 0", "lose: 0 is outside 1 to 1073741823" },
        { "delay", "delay: the number of seconds is missing" },
        { "delay soon", "delay: \"soon\" is no number of seconds" },
        { "help me", "help: \"me\" is one word too many" },
    };
    for (const auto& [text, sentence] : rows)
        EXPECT_EQ(refusalOf([&, typed = text] { WearerLine::parse(typed); }), sentence) << text;
}

RC_GTEST_PROP(AWearersLine, IsTakenOrRefusedInASentenceWhateverItIs, ())
{
    const auto word = rc::gen::oneOf(rc::gen::element<std::string>("X1-L", "volume", "delay", "lose", "drop", "silent",
                                         "help", "1", "0", "-1", "1e9", "99999999999", ""),
        rc::gen::string<std::string>());
    const auto words = *rc::gen::container<Lines>(word);
    const auto sentence = refusalOf([&] { WearerLine::parse(fmt::format("{}", fmt::join(words, " "))); });
    RC_ASSERT(!sentence.empty());
    RC_ASSERT(sentence.find('\n') == sentence.npos);
}

/// X1-L and X1-R are served, each with programs 0 to 2; Solo-L is not.
class AWearersLineInAWorld : public ToolScenario {
protected:
    void type(const std::string& text) { WearerLine::parse(text)->apply(*simulator, { "X1-L", "X1-R" }); }
};

TEST_F(AWearersLineInAWorld, IsAboutEveryServedHearingAidOrTheOneThatItNames)
{
    type("volume 3");
    type("X1-R volume 4");
    type("silent 1");
    type("X1-L silent 0");
    type("help");
    EXPECT_EQ(aid("X1-L").state().volumes[0], 3);
    EXPECT_EQ(aid("X1-R").state().volumes[0], 4);
    EXPECT_EQ(aid("Solo-L").state().volumes[0], 8);
    EXPECT_FALSE(faults("X1-L").isSilent);
    EXPECT_TRUE(faults("X1-R").isSilent);
    EXPECT_FALSE(faults("Solo-L").isSilent);
}

TEST_F(AWearersLineInAWorld, ChangesNothingWhereOneOfThemCannotDoIt)
{
    auto state = aid("X1-R").state();
    state.volumes = { 8, 8 };
    aid("X1-R").setState(state);
    EXPECT_EQ(refusalOf([&] { type("program 2"); }), "X1-R does not know program 2");
    EXPECT_EQ(aid("X1-L").state().program, 0);
    EXPECT_EQ(refusalOf([&] { type("Solo-L volume 3"); }), "no hearing aid called \"Solo-L\" is served (X1-L, X1-R)");
    EXPECT_EQ(aid("Solo-L").state().volumes[0], 8);
}

/// After the four messages of connection and discovery come two subscriptions, then the request and its reply.
TEST_F(AWearersLineInAWorld, SpoilsTheMessagesThatComeAndEndsTheLinkNow)
{
    ASSERT_EQ(aurisk("volume X1-L"), ExitCode::done);
    type("X1-L refuse " + std::to_string(messagesToConnect + 1));
    EXPECT_EQ(aurisk("volume X1-L"), ExitCode::failed);
    EXPECT_EQ(aurisk("volume X1-L"), ExitCode::done);
    type("X1-L lose 100");
    EXPECT_EQ(faults("X1-L").faults.size(), 1U) << "what is over is forgotten";

    begin("monitor X1-L --duration 30");
    after(3);
    ASSERT_TRUE(simulator->radio().isConnected("X1-L"));
    type("drop");
    after(0.1);
    EXPECT_FALSE(simulator->radio().isConnected("X1-L"));
    end();
}

} // namespace
} // namespace aurisk::tests
