#include "Tools/aurisk/InputLines.h"

#include "AuriskSDK/Platform/Asio/MainQueue.h"
#include "Tests/Tool/TemporaryPath.h"

#include <gmock/gmock.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace aurisk::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Reads a descriptor on the main queue, in real time.
struct Input {
    explicit Input(int descriptor)
        : lines(tool::InputLines::start(descriptor,
            { .line = [this](const std::string& line) { heard.push_back(line); },
                .ended = [this] { isEnded = true; } }))
    {
    }

    void pumpUntil(const std::function<bool()>& condition) const
    {
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (!condition() && std::chrono::steady_clock::now() < limit)
            pollMainQueue();
    }

    std::vector<std::string> heard;
    bool isEnded = false;
    std::shared_ptr<tool::InputLines> lines;
};

TEST(InputLines, ComeWholeFromAPipeWhichStaysAsItIs)
{
    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe2(pipe.data(), O_CLOEXEC), 0);
    const auto write
        = [&](std::string_view text) { ASSERT_EQ(::write(pipe[1], text.data(), text.size()), ssize_t(text.size())); };
    Input input(pipe[0]);
    pollMainQueue();
    EXPECT_THAT(input.heard, IsEmpty());
    write("volume 9\n\ndr");
    input.pumpUntil([&] { return input.heard.size() == 2; });
    write("op\nlast");
    input.pumpUntil([&] { return input.heard.size() == 3; });
    EXPECT_THAT(input.heard, ElementsAre("volume 9", "", "drop"));
    EXPECT_FALSE(input.isEnded);
    EXPECT_EQ(::fcntl(pipe[0], F_GETFL) & O_NONBLOCK, 0) << "others may have the descriptor, too";
    ::close(pipe[1]);
    input.pumpUntil([&] { return input.isEnded; });
    EXPECT_TRUE(input.isEnded);
    EXPECT_EQ(input.heard.back(), "last");
    ::close(pipe[0]);
}

TEST(InputLines, ComeFromAFileAndFromNowhere)
{
    const auto path = temporaryPath("input-lines");
    std::ofstream(path) << "volume 9\n" << std::string(10000, 'x') << '\n';
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    Input input(file);
    input.pumpUntil([&] { return input.isEnded; });
    EXPECT_THAT(input.heard, ElementsAre("volume 9", std::string(10000, 'x')));
    ::close(file);
    std::filesystem::remove(path);

    const int nowhere = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    Input nothing(nowhere);
    nothing.pumpUntil([&] { return nothing.isEnded; });
    EXPECT_TRUE(nothing.isEnded);
    EXPECT_THAT(nothing.heard, IsEmpty());
    ::close(nowhere);
}

} // namespace
} // namespace aurisk::tests
