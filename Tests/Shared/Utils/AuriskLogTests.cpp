#include "AuriskSDK/Shared/Utils/AuriskLog.h"

#include <gmock/gmock.h>

#include <sstream>
#include <thread>
#include <utility>
#include <vector>

namespace aurisk::tests {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Pair;

/// What `work` writes to standard output.
template <typename Work> std::string outputOf(Work&& work)
{
    testing::internal::CaptureStdout();
    work();
    return testing::internal::GetCapturedStdout();
}

/// The log is on.
class AuriskLogRecord : public testing::Test {
protected:
    AuriskLogRecord() { AuriskLog::setEnable(true); }
    ~AuriskLogRecord() override { AuriskLog::setEnable(false); }

    static constexpr auto timeStamp = "^\\[[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3}\\] ";

    /// The record without its time stamp.
    static std::string recordOf(std::initializer_list<LogItem> items, std::string_view terminator = "\n")
    {
        const auto record = outputOf([&] { AuriskLog::log(items, ", ", terminator); });
        constexpr std::size_t length = std::string_view("[2026-03-01 08:15:30.042] ").size();
        return record.size() < length ? record : record.substr(length);
    }
};

TEST_F(AuriskLogRecord, IsTheTimeAndTheListOfItsItems)
{
    EXPECT_THAT(outputOf([] { AuriskLog::log("[X1-L] Connecting"); }),
        MatchesRegex(timeStamp + "\\[\"\\[X1-L\\] Connecting\"\\]\n$"s));
}

TEST_F(AuriskLogRecord, ShowsTextsQuotedAndEverythingElsePlainly)
{
    EXPECT_EQ(recordOf({ "a", "b c"s, std::string_view("d") }), "[\"a\", \"b c\", \"d\"]\n");
    EXPECT_EQ(recordOf({ -1, std::uint8_t{ 200 }, 18446744073709551615ULL, true, false, 2.5, 3.0 }),
        "[-1, 200, 18446744073709551615, true, false, 2.5, 3.0]\n");
    EXPECT_EQ(recordOf({}), "[]\n");
    EXPECT_EQ(recordOf({ "a" }, "!"), "[\"a\"]!");
    EXPECT_EQ(recordOf({ "a" }, ""), "[\"a\"]");
}

TEST_F(AuriskLogRecord, KeepsToOneLineWhateverTheTextHolds)
{
    EXPECT_EQ(recordOf({ "sent\n" }), "[\"sent\\n\"]\n");
    EXPECT_EQ(recordOf({ "\r\n\t\0\\\"'"s }), "[\"\\r\\n\\t\\0\\\\\\\"'\"]\n");
    EXPECT_EQ(recordOf({ "\x01\x1B\x1F\x7F~" }), "[\"\\u{01}\\u{1B}\\u{1F}\\u{7F}~\"]\n");
    EXPECT_EQ(recordOf({ "gr\xC3\xBC\xC3\x9F" }), "[\"gr\xC3\xBC\xC3\x9F\"]\n");
}

TEST_F(AuriskLogRecord, OfAnErrorIsItsCodeAndItsDescription)
{
    EXPECT_THAT(
        outputOf([] { AuriskLog::e({ .domain = "radio", .code = 7, .localizedDescription = "out of range" }); }),
        MatchesRegex(timeStamp + "\\[\"Error 7: out of range\"\\]\n$"s));
}

TEST_F(AuriskLogRecord, StaysWholeWhenSeveralThreadsLog)
{
    const auto output = outputOf([] {
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i)
            threads.emplace_back([] {
                for (int n = 0; n < 50; ++n)
                    AuriskLog::log(std::string(200, 'x'));
            });
        for (auto& thread : threads)
            thread.join();
    });
    std::istringstream lines(output);
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count)
        ASSERT_THAT(line, MatchesRegex(timeStamp + "\\[\"x{200}\"\\]$"s));
    EXPECT_EQ(count, 200);
}

class HeardLog final : public LoggerDelegate {
public:
    void logWith(LogLevel level, const std::string& message) override { heard.emplace_back(level, message); }
    std::vector<std::pair<LogLevel, std::string>> heard;
};

TEST_F(AuriskLogRecord, IsToldToTheHostsLoggerBare)
{
    auto logger = std::make_shared<HeardLog>();
    AuriskLog::shared().setLogger(logger);
    recordOf({ "line\n" });
    recordOf({ "a", 1, true });
    AuriskLog::setEnable(false);
    recordOf({ "while off" });
    EXPECT_THAT(logger->heard, ElementsAre(Pair(LogLevel::debug, "line\n"), Pair(LogLevel::debug, "a 1 true")));

    AuriskLog::setEnable(true);
    logger.reset();
    EXPECT_EQ(recordOf({ "nobody hears it" }), "[\"nobody hears it\"]\n");
}

TEST(AuriskLog, IsSilentUntilItIsSwitchedOn)
{
    EXPECT_FALSE(AuriskLog::enable());
    EXPECT_THAT(outputOf([] {
        AuriskLog::log("text");
        AuriskLog::e({});
    }),
        IsEmpty());
}

TEST(AuriskLog, PrintsLinesWhetherItIsOnOrOff)
{
    EXPECT_EQ(outputOf([] { printLine("Observers for value: 0"); }), "Observers for value: 0\n");
}

} // namespace
} // namespace aurisk::tests
