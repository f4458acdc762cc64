#include "Tests/Tool/OddAid.h"
#include "Tests/Tool/TemporaryPath.h"
#include "Tests/Tool/ToolScenario.h"
#include "Tools/aurisk/ProgressBar.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>

namespace aurisk::tests {
namespace {

using testing::AnyOf;
using testing::Contains;
using testing::Each;
using testing::EndsWith;
using testing::IsSupersetOf;
using testing::MatchesRegex;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;
using Kind = Fault::Kind;

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

/// Says the same to every frame of an update, whatever it holds, and does nothing.
class StubbornAid final : public OddAid {
public:
    /// The status to start, packet and validation, as many as it says to each.
    using Answers = std::map<std::uint8_t, Data>;

    StubbornAid(std::vector<SimulatedService> services, Answers answers)
        : OddAid(std::move(services))
        , _answers(std::move(answers))
    {
    }
    void didReceive(const CBUUID&, DataView value) override
    {
        const std::uint8_t opcode = value[5];
        for (const auto status : _answers[opcode]) {
            const auto sum = std::uint8_t(0x68 + 0x9D + 0x03 + 0x91 + opcode + status);
            send(CBUUID(0xAE3C), { 0x00, 0xFE, 0x68, 0x9D, 0x03, 0x91, opcode, status, sum, 0x16 });
        }
    }

private:
    Answers _answers;
};

/// The image has ten packets of 234 bytes (a write carries 244), of which the device takes one in 10 ms.
class ToolUpdate : public ToolScenario {
protected:
    void SetUp() override { write("version 2.4.0\n", 2340); }
    void TearDown() override { std::filesystem::remove(path); }

    void write(std::string text, std::size_t size)
    {
        text.resize(size, '.');
        image.assign(text.begin(), text.end());
        std::ofstream(path, std::ios::binary) << text;
    }

    std::string update(const std::string& device) const { return "update " + device + " " + path; }

    void setFirmware(const std::string& name, AuriskFirmware firmware)
    {
        auto state = aid(name).state();
        state.firmware = std::move(firmware);
        aid(name).setState(state);
    }

    /// Until the line has been told, or drawn.
    void untilTold(const std::string& text)
    {
        for (int i = 0; i < 10000 && sink.terminal.find(text) == std::string::npos; ++i)
            after(0.001);
        EXPECT_THAT(sink.terminal, HasSubstr(text));
    }

    std::string path = temporaryPath("image.bin");
    Data image;
};

TEST_F(ToolUpdate, TellsHowFarItIsAndTheVersionsThatChanged)
{
    EXPECT_EQ(aurisk(update("X1-L")), ExitCode::done);
    EXPECT_THAT(sink.errors, IsEmpty());
    ASSERT_THAT(sink.output, SizeIs(12));
    EXPECT_EQ(sink.output.front(), "X1-L  0 %");
    EXPECT_EQ(sink.output[4], "X1-L  40 %, 23.4 kB/s, 0:01 left");
    EXPECT_EQ(sink.output[10], "X1-L  100 %, 23.4 kB/s");
    EXPECT_EQ(sink.output.back(), "X1-L  updated in 1.4 s, firmware 2.3.1 -> 2.4.0");
    EXPECT_EQ(aid("X1-L").firmwareImage(), image);

    EXPECT_EQ(aurisk(update("X1-L")), ExitCode::done);
    EXPECT_EQ(sink.output.back(), "X1-L  updated in 1.4 s, reports the versions it had before");
    write("version 9.9\n", 100);
    EXPECT_EQ(aurisk(update("X1-L") + " --type 1"), ExitCode::done);
    EXPECT_THAT(sink.output,
        ElementsAre("X1-L  0 %", "X1-L  100 %, 10.0 kB/s", "X1-L  updated in 1.4 s, radio firmware 3.0.4 -> 9.9"));
    EXPECT_EQ(aurisk(update("X1-L") + " --type 2"), ExitCode::done);
    EXPECT_THAT(sink.output.back(), EndsWith("update version 1.1 -> 9.9"));
    EXPECT_EQ(aid("X1-L").state().firmware.updates, 4);
}

/// The library tells that an image is started a tenth of a second after the aid has said so.
TEST_F(ToolUpdate, AnAidThatLeavesBeforeItsLastWordIsToldIsUpdatedAllTheSame)
{
    begin(update("X1-L"));
    untilTold("100 %");
    after(0.05);
    simulator->radio().dropLink("X1-L");
    EXPECT_EQ(end(), ExitCode::done);
    EXPECT_THAT(sink.errors, IsEmpty());
    EXPECT_EQ(sink.output.back(), "X1-L  updated in 1.4 s, firmware 2.3.1 -> 2.4.0");
}

TEST_F(ToolUpdate, TellsAProgramEachReportAndEachState)
{
    write("version 2.4.0\n", 468);
    EXPECT_EQ(aurisk(update("X1-L") + " --json"), ExitCode::done);
    Lines told;
    for (auto& object : objects()) {
        EXPECT_EQ(object["identifier"], "5A1D0000-A1D5-4000-8000-0A1B2C3D4E5F");
        EXPECT_EQ(object["name"], "X1-L");
        for (const auto* key : { "identifier", "name", "elapsed", "seconds" })
            object.erase(key);
        told.push_back(object.dump());
    }
    const std::string rest = R"("bswVersion":"3.0.4","otaVersion":"1.1","swVersion":)";
    EXPECT_THAT(told,
        ElementsAre(R"({"state":"Starting"})", R"({"state":"Enabling DFU Mode"})",
            R"({"progress":0,"remaining":null,"speed":null,"state":"Uploading"})",
            R"({"progress":50,"remaining":0.01,"speed":23400,"state":"Uploading"})",
            R"({"progress":100,"remaining":0.0,"speed":23400,"state":"Uploading"})", R"({"state":"Validating"})",
            R"({"state":"Validated"})", R"({"state":"Completed"})",
            R"({"after":{)" + rest + R"("2.4.0"},"before":{)" + rest + R"("2.3.1"},"updated":true})"));
    EXPECT_THAT(sink.output[3], HasSubstr(R"("state":"Uploading","progress":50,"speed":23400,"elapsed":0.03,)"));
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

TEST_F(ToolUpdate, BothOfAPairAreUpdatedAtTheSameTime)
{
    begin(update("X1") + " --both");
    untilTold("X1-R  50 %");
    EXPECT_THAT(sink.output, Contains(StartsWith("X1-L  40 %")));
    EXPECT_EQ(end(), ExitCode::done);
    EXPECT_THAT(Lines(sink.output.end() - 2, sink.output.end()), Each(EndsWith("firmware 2.3.1 -> 2.4.0")));
    EXPECT_EQ(aid("X1-L").firmwareImage(), image);
    EXPECT_EQ(aid("X1-R").firmwareImage(), image);

    // Neither is touched where one of them cannot be reached.
    faults("X1-R").isSilent = true;
    EXPECT_EQ(aurisk(update("X1") + " --both"), ExitCode::failed);
    EXPECT_THAT(sink.errors, Contains("aurisk: X1-L was left as it is, since the other one cannot go on"));
    EXPECT_EQ(aid("X1-L").state().firmware.updates, 1);
}

TEST_F(ToolUpdate, EachFailureOfAnAidHasASentence)
{
    const std::string file = "\"" + path + "\"";
    const struct {
        AuriskFirmware firmware;
        std::string sentence;
    } cases[] = {
        { { .fails = FirmwareFailure::init },
            "refused to begin an update; charge it, switch it off and on, and try again" },
        { { .diskSize = 2339 },
            "has no room for the 2340 bytes of the image; is " + file
                + " the right file for it, and --type 0 the right one?" },
        { { .fails = FirmwareFailure::sequence, .failsAt = 4 },
            "missed a packet after 30 % of the image; move closer and start the update again" },
        { { .fails = FirmwareFailure::crc },
            "did not receive the image as it was sent; move closer and start the update again" },
        { { .fails = FirmwareFailure::boot },
            "received the image and could not start it; is " + file
                + " the right file for it? aurisk profile show X1-L tells which versions it has" },
        { { .fails = FirmwareFailure::bootError },
            "received the image and could not start it; is " + file
                + " the right file for it? aurisk profile show X1-L tells which versions it has" },
    };
    for (const auto& [firmware, sentence] : cases) {
        setFirmware("X1-L", firmware);
        EXPECT_EQ(aurisk(update("X1-L")), ExitCode::failed);
        EXPECT_THAT(sink.errors, ElementsAre("aurisk: X1-L " + sentence));
        EXPECT_THAT(aid("X1-L").firmwareImage(), IsEmpty());
    }
    setFirmware("X1-L", {});
    const int first = simulator->radio().messageCount("X1-L");
    faults("X1-L").faults // of AE3A: the discovery that comes with the link, and the second one, by the update
        = { { .kind = Kind::refuse, .message = first + 5 }, { .kind = Kind::refuse, .message = first + 14 } };
    EXPECT_EQ(aurisk(update("X1-L")), ExitCode::failed);
    EXPECT_THAT(sink.errors,
        ElementsAre("aurisk: X1-L did not tell what its service for firmware updates holds; switch it off and on, and "
                    "start the update again"));
    EXPECT_EQ(aurisk(update("X1-L")), ExitCode::done);
}

TEST_F(ToolUpdate, AnAidThatIsNotAsItShouldBeHasASentenceToo)
{
    using Properties = CBCharacteristicProperties;
    const SimulatedService whole{ CBUUID(0xAE3A),
        { { CBUUID(0xAE3B), Properties::writeWithoutResponse }, { CBUUID(0xAE3C), Properties::notify } } };
    const SimulatedService deaf{ CBUUID(0xAE3A), { { CBUUID(0xAE3C), Properties::notify } } };
    const struct {
        std::vector<SimulatedService> services;
        StubbornAid::Answers answers;
        std::string sentence;
    } cases[] = {
        { {}, {}, "Odd-L has no service for firmware updates (AE3A)" },
        { { deaf }, {},
            "Odd-L cannot be updated: its service for firmware updates lacks AE3B to write to, or AE3C to answer; "
            "nothing was sent to it" },
        // 68 + 9D + 03 + 91 + 01 + 42 = 1DC
        { { whole }, { { 1, { 0x42 } } },
            "Odd-L gave an answer that stands for nothing (0x00fe689d03910142dc16); move closer and start the update "
            "again" },
        // 68 + 9D + 03 + 91 + 03 + 42 = 1DE, and nobody knows what the device makes of the image that it has
        { { whole }, { { 1, { 0x13 } }, { 2, { 0x15 } }, { 3, { 0x17, 0x42 } } },
            "Odd-L gave an answer that stands for nothing (0x00fe689d03910342de16); aurisk profile show Odd-L tells "
            "which versions it has" },
        { { whole }, { { 1, { 0x11, 0x13 } }, { 2, { 0x15 } }, { 3, { 0x17 } } },
            "Odd-L fell silent when it was about to start the image (nothing for 30 s); aurisk profile show Odd-L "
            "tells "
            "which "
            "versions it has" },
    };
    for (const auto& [services, answers, sentence] : cases) {
        SimulatedWorld world;
        world.aids = { { .aid = std::make_shared<StubbornAid>(services, answers) } };
        simulator = Simulator::create(world);
        EXPECT_EQ(aurisk(update("Odd-L")), ExitCode::failed);
        EXPECT_THAT(sink.errors, ElementsAre("aurisk: " + sentence));
    }

    // One that starts the image and does not leave is disconnected, and found as it was.
    SimulatedWorld world;
    world.aids = { { .aid = std::make_shared<StubbornAid>(std::vector{ whole },
                         StubbornAid::Answers{ { 1, { 0x11, 0x13 } }, { 2, { 0x15 } }, { 3, { 0x17, 0x19 } } }) } };
    simulator = Simulator::create(world);
    EXPECT_EQ(aurisk(update("Odd-L")), ExitCode::done);
    EXPECT_THAT(sink.output.back(), MatchesRegex("Odd-L  updated in 5.. s, tells no versions"));
}

TEST_F(ToolUpdate, AnAidThatFallsSilentIsNotWaitedForForever)
{
    begin(update("X1-L"));
    untilTold("30 %");
    faults("X1-L").isSilent = true;
    const auto began = queue.now();
    EXPECT_EQ(end(), ExitCode::failed);
    EXPECT_NEAR((queue.now() - began).count(), 5, 0.05);
    EXPECT_THAT(sink.errors,
        ElementsAre("aurisk: X1-L fell silent after 30 % of the image (nothing for 5 s); switch it off and on, and "
                    "start the update again"));

    faults("X1-L").isSilent = false;
    begin(update("X1-L") + " --timeout 0.5");
    untilTold("70 %");
    faults("X1-L").latency = Seconds(0.2); // three packets take 1.2 s, and each less than 0.5 s
    untilTold("100 %");
    faults("X1-L").latency = Seconds(0.005);
    EXPECT_EQ(end(), ExitCode::done);
    EXPECT_THAT(sink.errors, IsEmpty());
}

TEST_F(ToolUpdate, ALinkThatIsLostIsSaidOnce)
{
    begin(update("X1") + " --both");
    untilTold("X1-R  50 %");
    simulator->radio().dropLink("X1-L");
    EXPECT_EQ(end(), ExitCode::failed);
    EXPECT_THAT(sink.errors,
        ElementsAre("aurisk: the link to X1-L was lost after 50 % of the image; move closer and start the update again",
            "aurisk: X1-R was updated and X1-L was not: their firmware may differ now"));
    EXPECT_EQ(sink.output.back(), "X1-R  updated in 1.4 s, firmware 2.3.1 -> 2.4.0");

    begin(update("X1-L"));
    untilTold("50 %");
    simulator->radio().setState(CBManagerState::poweredOff);
    EXPECT_EQ(end(), ExitCode::bluetoothUnavailable);
    EXPECT_THAT(sink.errors,
        ElementsAre("aurisk: Bluetooth was switched off while X1-L was connected",
            "aurisk: the update of X1-L was broken off after 50 % of the image; the next one begins anew"));
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

TEST_F(ToolUpdate, AnAidThatDoesNotComeBackIsSaid)
{
    begin(update("X1-L"));
    untilTold("100 %");
    faults("X1-L").ignoresConnections = true;
    EXPECT_EQ(end(), ExitCode::failed);
    EXPECT_THAT(sink.errors,
        ElementsAre("aurisk: X1-L took the whole image, and has not been heard since (30 s); switch it off and on, and "
                    "aurisk profile show X1-L tells which versions it has"));

    // It comes back, and says nothing.
    faults("X1-L").ignoresConnections = false;
    begin(update("X1-L"));
    untilTold("100 %");
    after(0.5);
    faults("X1-L").isSilent = true;
    EXPECT_EQ(end(), ExitCode::failed);
    EXPECT_THAT(sink.errors,
        ElementsAre("aurisk: X1-L did not answer within 3 s when asked to tell its swVersion",
            "aurisk: X1-L took the whole image, and has not told its versions since; aurisk profile show X1-L tells "
            "which versions it has"));
}

TEST_F(ToolUpdate, AFileThatCannotBeSentIsRefusedBeforeARadioIsAsked)
{
    simulator->radio().setState(CBManagerState::poweredOff);
    const auto refused = [&](const std::string& file, const std::string& sentence) {
        EXPECT_EQ(aurisk("update X1-L " + file), ExitCode::usage) << sentence;
        EXPECT_THAT(sink.errors, ElementsAre("aurisk: " + sentence));
    };
    refused(path + ".none",
        path
            + ".none cannot be read: No such file or directory (a hearing aid is named before the file: aurisk update "
              "X1-L FILE)");
    refused("/dev/zero", "/dev/zero is no file that firmware could be read from");
    refused(testing::TempDir(), testing::TempDir() + " is no file that firmware could be read from");
    write("", 0);
    refused(path, path + " is empty");
    std::filesystem::resize_file(path, 42949673); // of which no block is on the disk
    refused(path, path + " has 42949673 bytes, and a firmware image has 42949672 at most");

    const auto wrong = [](const Lines& words) -> std::string {
        try {
            tool::parseArguments(words);
        } catch (const std::exception& error) {
            return error.what();
        }
        return {};
    };
    EXPECT_EQ(wrong({ "update", "X1-L", path, "--type", "3" }), "--type: 3 is outside 0 to 2");
    EXPECT_EQ(wrong({ "update", "X1-L", path, "--type", "one" }), "--type: \"one\" is no whole number");
    EXPECT_EQ(wrong({ "update" }), "update: the file with the firmware is missing");
    EXPECT_EQ(wrong({ "update", path, "--world", path }), "\"" + path + "\" is the file of the world");
}

/// Each kind of fault at each message of the link, with an image of three packets.
TEST_F(ToolUpdate, WhateverGoesWrongOnTheLinkTheUpdateEndsAndIsSaidToBeDoneOnlyWhereItIs)
{
    write("version 2.4.0\n", 600);
    int first = simulator->radio().messageCount("X1-L");
    ASSERT_EQ(aurisk(update("X1-L")), ExitCode::done);
    const int messages = simulator->radio().messageCount("X1-L") - first;
    ASSERT_GT(messages, 30);
    std::set<std::string> sentences;
    for (const auto kind : { Kind::dropLinkBefore, Kind::dropLinkAfter, Kind::lose, Kind::duplicate, Kind::delay,
             Kind::corrupt, Kind::refuse })
        for (int n = 1; n <= messages; ++n) {
            const auto what = "fault " + std::to_string(int(kind)) + " at message " + std::to_string(n);
            setFirmware("X1-L", {});
            first = simulator->radio().messageCount("X1-L");
            faults("X1-L").faults = { { .kind = kind, .message = first + n, .by = Seconds(1) } };
            const auto ended = aurisk(update("X1-L") + " --json");
            EXPECT_THAT(ended, AnyOf(ExitCode::done, ExitCode::failed)) << what;
            EXPECT_EQ(ended == ExitCode::failed, !sink.errors.empty()) << what;
            objects();
            if (ended == ExitCode::done) {
                EXPECT_EQ(aid("X1-L").firmwareImage(), image) << what;
            }
            for (const auto& error : sink.errors)
                sentences.insert(error.substr(0, error.find(';')));
            after(5); // whatever it was, the aid is back
        }
    EXPECT_THAT(sentences,
        IsSupersetOf({ std::string("aurisk: X1-L did not agree to answer an update (AE3C)"),
            std::string("aurisk: the link to X1-L was lost after 0 % of the image"),
            std::string("aurisk: the link to X1-L was lost while it checked the image"),
            std::string("aurisk: X1-L fell silent while it checked the image (nothing for 30 s)") }));
}

} // namespace
} // namespace aurisk::tests
