#pragma once

#include "AuriskSDK/Platform/Manual/ManualDispatchQueue.h"
#include "Simulator/SimulatedAuriskAid.h"
#include "Simulator/Simulator.h"
#include "Tools/aurisk/Arguments.h"
#include "Tools/aurisk/Run.h"

#include <gmock/gmock.h>

#include <functional>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace aurisk::tests {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using tool::ExitCode;
using Lines = std::vector<std::string>;

inline Lines wordsOf(const std::string& line)
{
    std::istringstream stream(line);
    return { std::istream_iterator<std::string>(stream), {} };
}

inline tool::Options optionsOf(const std::string& line)
{
    return std::get<tool::Options>(tool::parseArguments(wordsOf(line)));
}

/// Keeps what a run writes.
class RecordingSink final : public tool::Sink {
public:
    void out(const std::string& line) override
    {
        output.push_back(line);
        terminal += line + '\n';
    }
    void err(const std::string& line) override
    {
        errors.push_back(line);
        terminal += line + '\n';
    }
    void draw(const std::string& text) override { terminal += text; }

    Lines output, errors;
    std::string terminal; ///< all of it, where both outputs are one
};

/// Commands on three virtual hearing aids, the pair X1-L and X1-R and a Solo-L, in virtual time.
class ToolScenario : public testing::Test {
protected:
    static PlacedAid placed(const std::string& name, const std::string& address, std::uint8_t chip)
    {
        AuriskAidState state;
        state.name = name;
        state.address = address;
        state.chip = chip;
        state.volumes = { 8, 5, 7 };
        state.battery = 84;
        state.isRight = isRightByName(name);
        return { .aid = std::make_shared<SimulatedAuriskAid>(std::move(state)), .rssi = -48 };
    }

    static SimulatedWorld threeAids()
    {
        SimulatedWorld world;
        world.aids = { placed("X1-L", "0A:1B:2C:3D:4E:5F", 0x06), placed("X1-R", "0A:1B:2C:3D:4E:60", 0x06),
            placed("Solo-L", "0A:1B:2C:00:11:22", 0x00) };
        return world;
    }

    /// With an Uno-R, so that there is one of each chip.
    static SimulatedWorld fourAids()
    {
        auto world = threeAids();
        world.aids.push_back(placed("Uno-R", "0A:1B:2C:00:33:44", 0x01));
        return world;
    }

    void begin(const std::string& commandLine) { beginWords(wordsOf(commandLine)); }

    void beginWords(const Lines& words)
    {
        const auto options = std::get<tool::Options>(tool::parseArguments(words));
        sink = {};
        code.reset();
        style.json = options.json;
        output.emplace(sink, style);
        run = tool::Run::start(options, simulator->platform(), *output, [this](ExitCode ended) { code = ended; });
    }

    /// Lets time pass until the run ends; a minute must do.
    ExitCode end()
    {
        constexpr int steps = 6000;
        for (int i = 0; i < steps && !code; ++i)
            queue.advance(Seconds(0.01));
        EXPECT_TRUE(code) << "the run did not end";
        run.reset();
        queue.runUntilIdle();
        EXPECT_EQ(simulator->radio().linkCount(), 0) << "the run left a connection behind";
        return code.value_or(ExitCode::interrupted);
    }

    ExitCode aurisk(const std::string& commandLine)
    {
        begin(commandLine);
        return end();
    }

    ExitCode auriskWords(const Lines& words)
    {
        beginWords(words);
        return end();
    }

    /// A command line, what it says after the name of the hearing aid, and in JSON after its identity.
    struct Said {
        std::string commandLine, text, json;
    };
    void expectToSay(const std::string& name, const std::string& identity, const std::vector<Said>& rows)
    {
        for (const auto& [commandLine, text, json] : rows) {
            EXPECT_EQ(aurisk(commandLine), ExitCode::done) << commandLine;
            EXPECT_THAT(sink.output, ElementsAre(name + "  " + text));
            EXPECT_THAT(sink.errors, IsEmpty());
            EXPECT_EQ(aurisk(commandLine + " --json"), ExitCode::done) << commandLine;
            EXPECT_THAT(sink.output, ElementsAre(identity + json));
        }
    }

    void after(double seconds) { queue.advance(Seconds(seconds)); }

    SimulatedAuriskAid& aid(const std::string& name)
    {
        return dynamic_cast<SimulatedAuriskAid&>(*simulator->aid(name));
    }
    /// Connection, services, the characteristics of three of them and two subscriptions; what comes then is a request.
    static constexpr int messagesToConnect = 7;

    /// A command, without a fault and then with each kind of fault at each message of the link to `name`, each time on
    /// what `restore` brings back; it ends in every case, says so where it fails, and `check` judges what it left.
    void withEachFault(const std::string& name, const std::string& command, std::initializer_list<Fault::Kind> kinds,
        const std::function<void()>& restore, const std::function<void(ExitCode)>& check)
    {
        const auto messages = [&] { return simulator->radio().messageCount(name); };
        const int first = messages();
        ASSERT_EQ(aurisk(command), ExitCode::done);
        const int count = messages() - first;
        check(ExitCode::done);
        ASSERT_GT(count, 5);
        for (const auto kind : kinds)
            for (int n = 1; n <= count; ++n) {
                SCOPED_TRACE(command + ", fault " + std::to_string(int(kind)) + " at message " + std::to_string(n));
                restore();
                faults(name).faults = { { .kind = kind, .message = messages() + n, .by = Seconds(1) } };
                const auto ended = aurisk(command);
                EXPECT_THAT(ended, testing::AnyOf(ExitCode::done, ExitCode::failed, ExitCode::usage));
                EXPECT_EQ(ended != ExitCode::done, !sink.errors.empty());
                check(ended);
            }
        faults(name).faults.clear();
    }

    LinkFaults& faults(const std::string& name) { return simulator->world().placed(name).faults; }
    void wearer(const std::string& name, const std::string& action)
    {
        ASSERT_TRUE(simulator->radio().perform(name, *WearerAction::fromString(action)));
    }

    /// The lines of standard output as JSON; each has to be an object by itself.
    std::vector<nlohmann::json> objects() const
    {
        std::vector<nlohmann::json> all;
        for (const auto& line : sink.output) {
            all.push_back(nlohmann::json::parse(line, nullptr, false));
            EXPECT_TRUE(all.back().is_object()) << line;
        }
        return all;
    }

    ManualDispatchQueue queue;
    ScopedMainQueue main{ queue };
    std::shared_ptr<Simulator> simulator = Simulator::create(threeAids());
    RecordingSink sink;
    tool::Style style;
    std::optional<tool::Output> output;
    std::shared_ptr<tool::Run> run;
    std::optional<ExitCode> code;
};

} // namespace aurisk::tests
