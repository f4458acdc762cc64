#include "Tests/Tool/TemporaryPath.h"

#include <nlohmann/json.hpp>

#include <gmock/gmock.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace aurisk::tests {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

struct Ended {
    int code = -1; ///< -1 where a signal ended it
    std::string output, errors;
};

/// The built program, run without a shell. Its two outputs are kept apart.
class Program {
public:
    explicit Program(const std::vector<std::string>& arguments, const std::string& outputPath = {},
        const std::string& inputPath = "/dev/null")
    {
        std::vector<std::string> words = { AURISK_TOOL };
        words.insert(words.end(), arguments.begin(), arguments.end());
        std::vector<char*> pointers;
        for (auto& word : words)
            pointers.push_back(word.data());
        pointers.push_back(nullptr);

        std::array<int, 2> output{}, errors{};
        EXPECT_EQ(::pipe2(output.data(), O_CLOEXEC) + ::pipe2(errors.data(), O_CLOEXEC), 0);
        posix_spawn_file_actions_t actions;
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, inputPath.c_str(), O_RDONLY, 0);
        if (outputPath.empty())
            ::posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
        else
            ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, outputPath.c_str(), O_WRONLY, 0);
        ::posix_spawn_file_actions_adddup2(&actions, errors[1], STDERR_FILENO);
        EXPECT_EQ(::posix_spawn(&_process, AURISK_TOOL, &actions, nullptr, pointers.data(), environ), 0);
        ::posix_spawn_file_actions_destroy(&actions);
        ::close(output[1]);
        ::close(errors[1]);
        _output = output[0];
        _errors = errors[0];
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    ~Program()
    {
        closeOutput();
        ::close(_errors);
    }

    /// Waits for the first bytes of standard output.
    void waitForOutput() { append(_ended.output, _output); }

    void signal(int number) const { ::kill(_process, number); }

    /// Nobody reads standard output any more.
    void closeOutput()
    {
        if (_output >= 0)
            ::close(_output);
        _output = -1;
    }

    Ended end()
    {
        std::array<pollfd, 2> open = { { { _output, POLLIN, 0 }, { _errors, POLLIN, 0 } } };
        while (open[0].fd >= 0 || open[1].fd >= 0) {
            ::poll(open.data(), open.size(), -1);
            if (open[0].revents != 0 && !append(_ended.output, _output))
                open[0].fd = -1;
            if (open[1].revents != 0 && !append(_ended.errors, _errors))
                open[1].fd = -1;
        }
        int status = 0;
        ::waitpid(_process, &status, 0);
        _ended.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        return _ended;
    }

private:
    static bool append(std::string& text, int descriptor)
    {
        std::array<char, 4096> buffer{};
        const auto count = ::read(descriptor, buffer.data(), buffer.size());
        if (count > 0)
            text.append(buffer.data(), static_cast<std::size_t>(count));
        return count > 0;
    }

    pid_t _process = -1;
    int _output = -1, _errors = -1;
    Ended _ended;
};

Ended aurisk(const std::vector<std::string>& arguments) { return Program(arguments).end(); }

TEST(Binary, StandardOutputHoldsNothingButJSONEvenWithTheLogOn)
{
    const auto ended = aurisk({ "volume", "set", "X1-L", "3", "--backend", "sim", "--json", "--log" });
    EXPECT_EQ(ended.code, 0);
    EXPECT_EQ(ended.output,
        R"({"identifier":"5A1D0000-A1D5-4000-8000-0A1B2C3D4E5F","name":"X1-L","volume":3,"program":0})"
        "\n");
    EXPECT_THAT(ended.errors, HasSubstr("request: controlVolume(volume: 3, program: 0)"));
}

/// The library prints how fast an update is, and when it is through.
TEST(Binary, AnUpdateShowsNothingOfWhatTheLibraryPrintsButWithTheLogOn)
{
    const auto image = temporaryPath("update.bin");
    std::ofstream(image) << "version 2.4.0\n";
    const auto ended = aurisk({ "update", "X1-L", image, "--backend", "sim" });
    EXPECT_EQ(ended.code, 0);
    EXPECT_THAT(ended.output, testing::EndsWith(" s, firmware 2.3.1 -> 2.4.0\n"));
    EXPECT_THAT(ended.errors, IsEmpty());
    EXPECT_THAT(
        aurisk({ "update", "X1-L", image, "--backend", "sim", "--log" }).errors, HasSubstr("send data finished..."));
    std::filesystem::remove(image);
}

TEST(Binary, AFailureIsASentenceAndInJSONAnObjectToo)
{
    struct {
        std::vector<std::string> arguments;
        int code;
        std::string sentence;
    } const cases[] = {
        { { "volume", "set", "X1-L", "16" }, 2, "volume: 16 is outside 0 to 15" },
        { { "volume", "X1-L", "--world", "/nowhere.json" }, 2,
            "/nowhere.json does not exist (--new-world begins it with the default world)" },
        { { "scan" }, 3, "there is no Bluetooth radio: " },
        { { "sim", "--world", "/nowhere.json" }, 2, "/nowhere.json does not exist" },
        { { "volume", "Y", "--backend", "sim", "--timeout", "0.01" }, 4, "no hearing aid called \"Y\" within 0.01 s" },
    };
    for (const auto& [arguments, code, sentence] : cases) {
        auto ended = aurisk(arguments);
        EXPECT_EQ(ended.code, code);
        EXPECT_THAT(ended.output, IsEmpty());
        EXPECT_THAT(ended.errors, testing::StartsWith("aurisk: " + sentence));

        auto withJson = arguments;
        withJson.emplace_back("--json");
        ended = aurisk(withJson);
        EXPECT_EQ(ended.code, code);
        EXPECT_THAT(nlohmann::json::parse(ended.output)["error"], testing::StartsWith(sentence));
        EXPECT_THAT(ended.errors, testing::StartsWith("aurisk: " + sentence));
    }
}

TEST(Binary, ServingNeedsAnAdapter)
{
    const auto ended = aurisk({ "sim", "--adapter", "hci99" });
    EXPECT_EQ(ended.code, 3);
    EXPECT_THAT(ended.output, IsEmpty());
    EXPECT_THAT(ended.errors,
        testing::AnyOf("aurisk: there is no Bluetooth adapter hci99\n", "aurisk: bluetoothd is not running\n",
            HasSubstr("the system bus cannot be reached"), HasSubstr("the system bus does not let this user"),
            HasSubstr("this build cannot use the computer's radio")));
}

TEST(Binary, HelpAndVersionGoToStandardOutput)
{
    for (const auto* word : { "--help", "--version" }) {
        const auto ended = aurisk({ word });
        EXPECT_EQ(ended.code, 0);
        EXPECT_THAT(ended.output, HasSubstr("aurisk"));
        EXPECT_THAT(ended.errors, IsEmpty());
    }
}

TEST(Binary, ASignalEndsAScanCleanly)
{
    for (const int number : { SIGINT, SIGTERM }) {
        Program program({ "scan", "--backend", "sim", "--duration", "60" });
        program.waitForOutput();
        program.signal(number);
        const auto ended = program.end();
        EXPECT_EQ(ended.code, 0);
        EXPECT_THAT(ended.errors, IsEmpty());
    }
}

TEST(Binary, OutputThatNobodyReadsEndsTheRun)
{
    Program program({ "scan", "--backend", "sim", "--updates", "--duration", "60" });
    program.waitForOutput();
    program.closeOutput();
    const auto ended = program.end();
    EXPECT_EQ(ended.code, 0);
    EXPECT_THAT(ended.errors, IsEmpty());
}

TEST(Binary, OutputThatCannotBeWrittenIsAFailure)
{
    Program program({ "volume", "X1-L", "--backend", "sim" }, "/dev/full");
    const auto ended = program.end();
    EXPECT_EQ(ended.code, 2);
    EXPECT_EQ(ended.errors, "aurisk: standard output cannot be written: No space left on device\n");
}

TEST(Binary, TheCodecAnswersStandardInputOnStandardOutput)
{
    const auto path = temporaryPath("codec-input");
    std::ofstream(path) << R"({"op":"hex.toBytes","text":"fe 68"})" << '\n';
    const auto ended = Program({ "codec" }, {}, path).end();
    std::filesystem::remove(path);
    EXPECT_EQ(ended.code, 0);
    EXPECT_EQ(ended.output, "{\"ok\":\"fe68\"}\n");
}

} // namespace
} // namespace aurisk::tests
