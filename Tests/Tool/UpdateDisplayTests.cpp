#include "Tests/Tool/ToolUpdate.h"
#include "Tools/aurisk/ProgressBar.h"

#include <algorithm>

namespace aurisk::tests {
namespace {

using testing::Contains;
using testing::Each;
using testing::MatchesRegex;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

/// What a terminal shows, row by row, after `written`. Knows what the tool uses of a terminal.
Lines screenOf(const std::string& written)
{
    Lines rows(1);
    std::size_t row = 0;
    for (std::size_t i = 0; i < written.size(); ++i) {
        const auto rest = std::string_view(written).substr(i);
        if (rest.starts_with("\n")) {
            rows.resize(std::max(rows.size(), ++row + 1));
        } else if (rest.starts_with("\033[A")) {
            EXPECT_GT(row--, 0U) << "above the first row";
            i += 2;
        } else if (rest.starts_with("\033[J")) {
            rows.resize(row + 1);
            rows[row].clear();
            i += 2;
        } else if (rest.starts_with("\033[?7"))
            i += 4;
        else if (!rest.starts_with("\r"))
            rows[row] += written[i];
    }
    if (rows.back().empty())
        rows.pop_back();
    return rows;
}

TEST_F(ToolUpdate, ABarFillsOnATerminalAndNothingGarblesIt)
{
    style = { .drawing = true, .redrawing = true };
    write("version 2.4.0\n", 23400);
    setFirmware("X1-R", { .fails = FirmwareFailure::sequence, .failsAt = 60 });
    begin(update("X1") + " --both");
    untilTold("41 %");
    EXPECT_THAT(screenOf(sink.terminal),
        ElementsAre(
            "X1-L  ████████████░░░░░░░░░░░░░░░░░░   41 %  23.4 kB/s, 0:00 gone, 0:01 left", StartsWith("X1-R  █")));
    const auto redraws = std::size_t(std::count(sink.terminal.begin(), sink.terminal.end(), '\r'));
    EXPECT_LT(redraws, 20U); // of two bars in half a second

    const std::string failure
        = "aurisk: X1-R missed a packet after 59 % of the image; move closer and start the update again";
    untilTold(failure);
    EXPECT_THAT(screenOf(sink.terminal), ElementsAre(failure, MatchesRegex("X1-L  .*41 %  23.4 kB/s, .*")));
    untilTold("checks the image");
    untilTold("starts anew");
    EXPECT_THAT(
        screenOf(sink.terminal), ElementsAre(failure, "X1-L  ██████████████████████████████  100 %  starts anew"));
    EXPECT_EQ(end(), ExitCode::failed);
    EXPECT_THAT(screenOf(sink.terminal),
        ElementsAre(failure, MatchesRegex("X1-L  updated in 2.. s, firmware 2.3.1 -> 2.4.0"),
            "aurisk: X1-L was updated and X1-R was not: their firmware may differ now"));
    EXPECT_THAT(sink.output, SizeIs(1)); // beside the bars

    // With a log between them there are lines instead.
    EXPECT_EQ(aurisk(update("X1-L") + " --log"), ExitCode::done);
    EXPECT_THAT(sink.output, Contains("X1-L  10 %, 23.4 kB/s, 0:01 left"));
    EXPECT_THAT(sink.terminal, Not(HasSubstr("\033")));
}

TEST(ProgressBar, FitsIntoARow)
{
    EXPECT_EQ(tool::progressBar("X1-L", 50, "21.3 kB/s, 0:03 gone, 0:05 left", {}),
        "X1-L  ###############...............   50 %  21.3 kB/s, 0:03 gone, 0:05 left");
    EXPECT_EQ(tool::progressBar("X1-L", 0, "", { .drawing = true }), "X1-L  ░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░    0 %");
    // A name of 26 characters becomes one of 20, and the bar shorter: 79 columns.
    EXPECT_EQ(tool::progressBar("The aid with the long name", 100, "21.3 kB/s, 1:00:03 gone, 0:05 left", {}),
        "The aid with the lon  ##############  100 %  21.3 kB/s, 1:00:03 gone, 0:05 left");
    EXPECT_EQ(tool::progressBar("Hörgerät\033[J", 0, "x", {}).substr(0, 16), "Hörgerät?[J  .");
    EXPECT_EQ(tool::progressBar("X1-L", 50, "21.3 kB/s, 0:03 gone", { .columns = 50 }),
        "X1-L  #######.......   50 %  21.3 kB/s, 0:03 gone");
    EXPECT_EQ(tool::progressBar("X1-L", 50, "21.3 kB/s, 0:03 gone", { .columns = 40 }),
        "X1-L     50 %  21.3 kB/s, 0:03 gone");
    EXPECT_EQ(tool::clockText(Seconds(3599.9)), "59:59");
    EXPECT_EQ(tool::clockText(Seconds(3661)), "1:01:01");
}

TEST_F(ToolUpdate, AnInterruptionEndsItAtOnceAndSaysHowFarItCame)
{
    begin(update("X1-L"));
    untilTold("70 %");
    run->interrupt();
    after(0.02);
    EXPECT_EQ(code, ExitCode::interrupted);
    EXPECT_EQ(end(), ExitCode::interrupted);
    EXPECT_THAT(sink.errors,
        ElementsAre("aurisk: the update of X1-L was broken off after 70 % of the image; the next one begins anew"));
    EXPECT_EQ(aid("X1-L").state().firmware.updates, 0);

    begin(update("X1-L"));
    untilTold("100 %");
    after(0.5);
    run->interrupt();
    EXPECT_EQ(end(), ExitCode::interrupted);
    EXPECT_THAT(sink.errors,
        ElementsAre("aurisk: X1-L took the whole image, and has not told its versions since; aurisk profile show X1-L "
                    "tells which versions it has"));
    EXPECT_EQ(aid("X1-L").state().firmware.updates, 1);

    style.redrawing = true;
    for (double when = 0; when < 2.5; when += 0.01) { // at any moment, two seconds after the aid has left, too
        begin(update("X1") + " --both");
        after(when);
        const bool wasOver = code.has_value();
        run->interrupt();
        EXPECT_EQ(end(), wasOver ? ExitCode::done : ExitCode::interrupted) << when;
        EXPECT_THAT(screenOf(sink.terminal), Each(Not(HasSubstr("#")))) << when; // no bar is left behind
        after(2);
    }
}

} // namespace
} // namespace aurisk::tests
