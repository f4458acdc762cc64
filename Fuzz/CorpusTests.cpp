// Runs every fuzz target over its corpus, and over a few thousand inputs made from it: the same ones each time.

#include "AuriskSDK/Shared/Utils/HexToData.h"
#include "Fuzz/FuzzTargets.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace aurisk;

constexpr int madeInputs = 4000;

struct NamedTarget {
    const char* name;
    fuzz::Target target;
};
constexpr NamedTarget targets[] = {
    { "frame", fuzz::frame },
    { "payload", fuzz::payload },
    { "advertisement", fuzz::advertisement },
    { "hexadecimal", fuzz::hexadecimal },
    { "accessory", fuzz::accessory },
    { "block", fuzz::block },
    { "profile", fuzz::profile },
    { "update", fuzz::update },
    { "pl3", fuzz::pl3 },
    { "world", fuzz::world },
};

struct Input {
    std::string name;
    Data bytes;
};

std::vector<Input> corpusIn(const std::filesystem::path& folder)
{
    std::vector<Input> corpus;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        std::ifstream file(entry.path(), std::ios::binary);
        corpus.push_back({ entry.path().filename().string(), Data(std::istreambuf_iterator<char>(file), {}) });
    }
    std::ranges::sort(corpus, {}, &Input::name);
    return corpus;
}

/// A corpus file with a few bytes changed, removed and inserted, or bytes that have never seen the corpus.
class Maker {
public:
    Data make(const std::vector<Input>& corpus)
    {
        if (below(8) == 0) {
            Data bytes(below(64));
            for (auto& byte : bytes)
                byte = std::uint8_t(below(256));
            return bytes;
        }
        auto bytes = corpus[below(corpus.size())].bytes;
        for (auto changes = below(6); changes > 0; --changes)
            change(bytes);
        return bytes;
    }

private:
    /// The generator's numbers are the standard's; its distributions are each library's own.
    std::size_t below(std::size_t limit) { return _random() % limit; }

    void change(Data& bytes)
    {
        const auto place = bytes.begin() + std::ptrdiff_t(below(bytes.size() + 1));
        const auto rest = std::size_t(bytes.end() - place);
        switch (below(3)) {
        case 0:
            if (rest > 0)
                *place ^= std::uint8_t(1U << below(8));
            break;
        case 1: bytes.erase(place, place + std::ptrdiff_t(below(rest + 1) % 8)); break;
        default: bytes.insert(place, std::uint8_t(below(256)));
        }
    }

    std::mt19937 _random{ 1 };
};

struct Trial {
    const NamedTarget* target;
    const Input* input;
};
Trial current{}; // for the signal handler

void printCurrent()
{
    if (!current.input)
        return;
    const auto& [name, bytes] = *current.input;
    std::fprintf(stderr, "%s, %s: %s\n", current.target->name, name.c_str(), ask_hexadecimal(bytes).c_str());
}

/// A broken precondition stops the process; at least it is said which input did it.
void stopped(int) { printCurrent(); }

/// False where the target does not hold for this input, which is printed then.
bool holds(const NamedTarget& target, const Input& input)
{
    bool does = true;
    current = { &target, &input };
    try {
        target.target(input.bytes);
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "%s\n", problem.what());
        printCurrent();
        does = false;
    }
    current = {};
    return does;
}

/// Stops at the first input for which it does not hold: those that follow are seldom news.
bool holdsThroughout(const NamedTarget& target, const std::vector<Input>& corpus)
{
    for (const auto& input : corpus)
        if (!holds(target, input))
            return false;
    Maker maker;
    for (int i = 0; i < madeInputs; ++i)
        if (!holds(target, { "made input " + std::to_string(i), maker.make(corpus) }))
            return false;
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s CORPUS\n", argv[0]);
        return 2;
    }
    std::signal(SIGABRT, stopped);
    bool allHold = true;
    for (const auto& target : targets) {
        const auto corpus = corpusIn(std::filesystem::path(argv[1]) / target.name);
        if (corpus.empty()) {
            std::fprintf(stderr, "%s has no corpus\n", target.name);
            return 2;
        }
        const bool does = holdsThroughout(target, corpus);
        std::printf(
            "%s: %zu files, %d made inputs: %s\n", target.name, corpus.size(), madeInputs, does ? "holds" : "fails");
        allHold &= does;
    }
    return allHold ? 0 : 1;
}
