#include "Tools/aurisk/SimCommand.h"

#include "Tests/Tool/ToolScenario.h"
#include "Tools/aurisk/Values.h"

namespace aurisk::tests {
namespace {

class SimCommand : public ToolScenario { };

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
        { "--aid X1-R", { "X1-R" } },
        { "--aid X1-R --aid Solo-L --adapter hci0 --adapter hci1", { "X1-R", "Solo-L" } },
    };
    const auto optionsOf = [](const std::string& words) {
        return std::get<tool::Options>(tool::parseArguments(wordsOf("sim " + words)));
    };
    for (const auto& [words, names] : rows)
        EXPECT_EQ(tool::servedAids(optionsOf(words), world), names) << words;

    const auto refusal = [&](const std::string& words) -> std::string {
        try {
            return tool::servedAids(optionsOf(words), world).front();
        } catch (const tool::UsageError& error) {
            return error.what();
        }
    };
    EXPECT_EQ(refusal("--aid X2-L"), "sim: the world has no hearing aid called \"X2-L\"");
    world.aids.pop_back();
    EXPECT_EQ(refusal("--adapter hci0 --adapter hci1"), "Solo-L") << "no pair: the first two";
    world.aids.pop_back();
    EXPECT_EQ(refusal("--adapter hci0 --adapter hci1"), "sim: the world has 1 hearing aid(s) for 2 adapter(s)");
}

} // namespace
} // namespace aurisk::tests
