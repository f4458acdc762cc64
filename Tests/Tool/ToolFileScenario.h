#pragma once

#include "Tests/Tool/TemporaryPath.h"
#include "Tests/Tool/ToolScenario.h"
#include "Tools/aurisk/WorldFile.h"

#include <filesystem>
#include <fstream>

namespace aurisk::tests {

/// Commands on four virtual hearing aids that write and read a file.
class ToolFileScenario : public ToolScenario {
protected:
    void SetUp() override { simulator = Simulator::create(fourAids()); }
    void TearDown() override
    {
        std::filesystem::remove(path);
        std::filesystem::remove(worldPath);
    }

    nlohmann::json exported(const std::string& words)
    {
        EXPECT_EQ(aurisk(words + " " + path), ExitCode::done) << words;
        return content();
    }
    nlohmann::json content() const { return nlohmann::json::parse(std::ifstream(path)); }
    void write(const std::string& text) const { std::ofstream(path) << text; }
    void write(const nlohmann::json& value) const { write(value.dump()); }

    /// A run of its own, on the world that the one before it has left in a file.
    void inWorld(const std::string& words)
    {
        tool::WorldFile world(worldPath, !std::filesystem::exists(worldPath));
        simulator = Simulator::create(world.world());
        EXPECT_EQ(aurisk(words), ExitCode::done) << words;
        world.keep(simulator->world());
    }

    std::string path = temporaryPath("file.json"), worldPath = temporaryPath("world.json");
};

} // namespace aurisk::tests
