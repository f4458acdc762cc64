#include "Tests/Support/Refusal.h"
#include "Tests/Tool/ToolUpdate.h"

namespace aurisk::tests {
namespace {

using testing::Contains;
using testing::Each;
using testing::EndsWith;
using testing::SizeIs;
using testing::StartsWith;

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

    const auto wrong = [](const Lines& words) { return refusalOf([&] { tool::parseArguments(words); }); };
    EXPECT_EQ(wrong({ "update", "X1-L", path, "--type", "3" }), "--type: 3 is outside 0 to 2");
    EXPECT_EQ(wrong({ "update", "X1-L", path, "--type", "one" }), "--type: \"one\" is no whole number");
    EXPECT_EQ(wrong({ "update" }), "update: the file with the firmware is missing");
    EXPECT_EQ(wrong({ "update", path, "--world", path }), "\"" + path + "\" is the file of the world");
}

} // namespace
} // namespace aurisk::tests
