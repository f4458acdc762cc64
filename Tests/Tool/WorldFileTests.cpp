#include "Tools/aurisk/WorldFile.h"

#include "Tests/Support/Refusal.h"
#include "Tests/Tool/TemporaryPath.h"
#include "Tests/Tool/ToolScenario.h"
#include "Tools/aurisk/Values.h"

#include <filesystem>
#include <fstream>

namespace aurisk::tests {
namespace {

class ToolWorld : public ToolScenario {
protected:
    ToolWorld()
    {
        std::filesystem::remove_all(folder);
        std::filesystem::create_directories(folder);
    }
    ~ToolWorld() override { std::filesystem::remove_all(folder); }

    /// One run of the tool, from reading the file to keeping it.
    ExitCode runOn(const std::string& commandLine, bool begin = false)
    {
        tool::WorldFile file(path, begin);
        simulator = Simulator::create(file.world());
        const auto ended = aurisk(commandLine);
        file.keep(simulator->world());
        return ended;
    }

    std::string refusal(bool begin = false) const
    {
        return refusalOf([&] { tool::WorldFile(path, begin); });
    }

    std::string content() const
    {
        std::ifstream file(path);
        return { std::istreambuf_iterator<char>(file), {} };
    }

    std::filesystem::path folder = temporaryPath("world");
    std::string path = folder / "world.json";
};

TEST_F(ToolWorld, OneCommandFindsWhatTheOneBeforeItDid)
{
    EXPECT_EQ(runOn("volume set X1-L 3", true), ExitCode::done);
    EXPECT_EQ(runOn("program set X1-L 1"), ExitCode::done);
    EXPECT_EQ(runOn("info X1-L --json"), ExitCode::done);
    EXPECT_EQ(objects().front()["program"], 1);
    EXPECT_EQ(objects().front()["volumes"], nlohmann::json::parse("[3, 6, 7, 5]"));
}

TEST_F(ToolWorld, ARunThatFailedKeepsWhatItDidChange)
{
    EXPECT_EQ(runOn("scan --duration 0.1", true), ExitCode::done);
    EXPECT_EQ(runOn("program set X1 3 --both"), ExitCode::done);
    EXPECT_EQ(runOn("program set X1-L 4"), ExitCode::failed);
    EXPECT_EQ(runOn("program X1-R"), ExitCode::done);
    EXPECT_THAT(sink.output, ElementsAre("X1-R  program 3"));
}

TEST_F(ToolWorld, AFileWhoseWorldDidNotChangeIsLeftAsItWasWritten)
{
    std::ofstream(path) << R"({ "aids": [{"kind": "aurisk", "name": "X1-L", "address": "0A:1B:2C:3D:4E:5F"}] })";
    const auto before = content();
    EXPECT_EQ(runOn("volume X1-L"), ExitCode::done);
    EXPECT_EQ(content(), before);
    EXPECT_EQ(runOn("volume set X1-L 3"), ExitCode::done);
    EXPECT_NE(content(), before);
}

TEST_F(ToolWorld, AFileThatCannotBeUsedIsNamed)
{
    EXPECT_EQ(refusal(), path + " does not exist (--new-world begins it with the default world)");
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_EQ(refusal(true), "accepted");
    EXPECT_EQ(refusal(true), path + " exists already (without --new-world it is used as it is)");
    std::ofstream(path) << "{ \"aids\": 3 }";
    EXPECT_EQ(refusal(), path + ": aids: must be a list");
    path = folder / "nowhere" / "world.json";
    EXPECT_THAT(refusal(true), testing::StartsWith(path + ": cannot be written: "));
}

} // namespace
} // namespace aurisk::tests
