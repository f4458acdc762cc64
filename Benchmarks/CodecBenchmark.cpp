#include "Benchmarks/Measure.h"

#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace aurisk::benchmarks {

namespace {

constexpr int lineCount = 200'000;

const char* const lines[] = {
    R"({"op":"request.encode","request":{"readVolume":{"program":0}}})",
    R"({"op":"result.decode","bytes":"00fe6891030104060716"})",
    R"({"op":"frame.decode","bytes":"00fe68110201048016"})",
    R"({"op":"a4.getEq","bytes":"0100ffffffffffff00000000","frequency":250})",
    R"({"op":"a4.edit","bytes":"0100ffffffffffff00000000","set":[["noise","weak"]]})",
    R"({"op":"hex.toBytes","text":"fe 68"})",
};

/// A file of its own that goes with it.
class TemporaryFile {
public:
    TemporaryFile() { close(mkstemp(_path.data())); }
    ~TemporaryFile() { unlink(_path.c_str()); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    const std::string& path() const { return _path; }

private:
    std::string _path = "/tmp/aurisk-benchmark-XXXXXX";
};

/// How long a program takes to turn one file into another; none where it fails.
std::optional<Seconds> run(std::vector<std::string> words, const std::string& input, const std::string& output)
{
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, input.c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(), O_WRONLY | O_TRUNC, 0);
    std::vector<char*> arguments;
    for (auto& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);

    const auto begin = std::chrono::steady_clock::now();
    pid_t child = 0;
    int status = 0;
    const bool hasRun = posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ) == 0
        && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    const Seconds took = std::chrono::steady_clock::now() - begin;
    posix_spawn_file_actions_destroy(&actions);
    return hasRun ? std::optional(took) : std::nullopt;
}

void streamCodec(benchmark::State& state)
{
    state.SetLabel("baseline: cat with the same lines; target: 100,000 lines a second");
    const TemporaryFile input, output;
    {
        std::ofstream file(input.path());
        for (int i = 0; i < lineCount; ++i)
            file << lines[static_cast<std::size_t>(i) % std::size(lines)] << '\n';
    }
    Seconds own{ 0 }, reference{ 0 };
    int runs = 0;
    for (auto _ : state) {
        const auto copied = run({ "cat" }, input.path(), output.path());
        const auto answered = run({ AURISK_TOOL, "codec" }, input.path(), output.path());
        if (!copied || !answered) {
            state.SkipWithError("a program does not run");
            return;
        }
        state.SetIterationTime(answered->count());
        own += *answered;
        reference += *copied;
        ++runs;
    }
    state.counters["x_baseline"] = own / reference;
    state.counters["lines_per_second"] = lineCount * runs / own.count();
}

BENCHMARK(streamCodec)
    ->Name("aurisk codec, 200,000 small lines")
    ->UseManualTime()
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);

} // namespace

} // namespace aurisk::benchmarks
