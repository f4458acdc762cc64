#include "Simulator/FirmwareAcceptor.h"

#include "Simulator/AidFrame.h"
#include "Tests/Simulator/AnAuriskAid.h"

namespace aurisk::simulatortests {
namespace {

/// Where nothing else is said, the image is the text "123456789", whose CRC-16 is 31C3, in chunks of 4 bytes.
constexpr auto start = "09000000c33100000400", wanted = "11 13";
constexpr auto data1 = "010031323334", data2 = "020035363738", data3 = "030039";
constexpr int starting = 1, carrying = 2, validating = 3;

struct AnAcceptor : testing::Test {
    std::vector<std::string> answersTo(const std::string& frame)
    {
        const auto request = AidFrame::parse(*ask_hexadecimal(frame));
        const auto reaction = refuses ? acceptor.refuse(*request) : acceptor.didReceive(*request, firmware);
        accepted = reaction.accepted;
        std::vector<std::string> values;
        for (const auto& value : reaction.answers)
            values.push_back(ask_hexadecimal(value));
        return values;
    }

    /// The statuses of the answers, "11 13"; "dd1a" is one in an error frame.
    std::string tell(int opcode, const std::string& payload, int first = 0x91)
    {
        std::string statuses;
        const auto size = int(payload.size() / 2) + 2;
        for (const auto& value : answersTo(AnAuriskAid::framed({ 0x1D, size, first, opcode }, payload))) {
            const auto status = value.substr(14, 2);
            const bool isError = value.substr(6, 2) == "dd";
            EXPECT_EQ(value, "00" + AnAuriskAid::framed({ isError ? 0xDD : 0x9D, 3, first, opcode }, status));
            statuses += (statuses.empty() ? "" : " ") + std::string(isError ? "dd" : "") + status;
        }
        return statuses;
    }

    /// What it says to each frame of an update, whatever it said to the one before.
    std::string wholeUpdate(int first = 0x91)
    {
        std::string all = tell(starting, start, first);
        for (const auto* packet : { data1, data2, data3 })
            all += ", " + tell(carrying, packet, first);
        return all + ", " + tell(validating, "", first);
    }

    FirmwareAcceptor acceptor;
    AuriskFirmware firmware;
    bool refuses = false;
    std::optional<FirmwareAcceptor::Image> accepted;
};

TEST_F(AnAcceptor, TakesAnImagePacketByPacket)
{
    EXPECT_THAT(
        answersTo("fe681d0c910109000000c331000004002416"), ElementsAre("00fe689d03910111ab16", "00fe689d03910113ad16"));
    EXPECT_THAT(answersTo("fe681d089102010031323334eb16"), ElementsAre("00fe689d03910215b016"));
    EXPECT_THAT(answersTo("fe681d089102020035363738fc16"), ElementsAre("00fe689d03910215b016"));
    EXPECT_THAT(answersTo("fe681d0591020300395916"), ElementsAre("00fe689d03910215b016"));
    EXPECT_FALSE(accepted);
    EXPECT_THAT(answersTo("fe681d0291031b16"), ElementsAre("00fe689d03910317b316", "00fe689d03910319b516"));
    ASSERT_TRUE(accepted);
    EXPECT_EQ(accepted->type, 0);
    EXPECT_EQ(accepted->bytes, (Data{ '1', '2', '3', '4', '5', '6', '7', '8', '9' }));

    EXPECT_EQ(tell(validating, ""), "18") << "it has it already";
    for (const int type : { 1, 2 }) {
        EXPECT_EQ(wholeUpdate(0x91 + type), "11 13, 15, 15, 15, 17 19");
        EXPECT_EQ(accepted->type, type);
        EXPECT_EQ(accepted->bytes.size(), 9u);
    }
}

TEST_F(AnAcceptor, SaysWhatIsWrongAndTakesNothingUntilTheNextStart)
{
    struct Step {
        int opcode;
        const char* payload;
        const char* says;
        int first = 0x91;
    };
    struct Row {
        const char* what;
        std::vector<Step> steps;
    };
    const Step begun{ starting, start, wanted }, one{ carrying, data1, "15" }, two{ carrying, data2, "15" };
    const Step three{ carrying, data3, "15" };
    const Row rows[] = {
        { "a start that is too short", { { starting, "09000000c331000004", "12" } } },
        { "a start that is too long", { { starting, "09000000c3310000040000", "12" } } },
        { "an empty start", { { starting, "", "12" } } },
        { "an empty image", { { starting, "00000000000000000400", "12" } } },
        { "empty chunks", { { starting, "09000000c33100000000", "12" } } },
        { "a type below the first", { { starting, start, "12", 0x90 } } },
        { "a fourth type", { { starting, start, "12", 0x94 } } },
        { "a byte too many for the disk", { { starting, "01001000c33100000400", "11 14" } } },
        { "an image as large as can be said", { { starting, "ffffffffc33100000400", "11 14" } } },
        { "a wrong start after a right one", { begun, one, { starting, "", "12" } } },
        { "data without a start", { { carrying, data1, "16" } } },
        { "a first packet with number 0", { begun, { carrying, "000031323334", "16" } } },
        { "the second packet first", { begun, { carrying, data2, "16" } } },
        { "a number with its high byte first", { begun, { carrying, "000131323334", "16" } } },
        { "a packet left out", { begun, one, { carrying, data3, "16" } } },
        { "a packet twice", { begun, one, { carrying, data1, "16" } } },
        { "no number", { begun, { carrying, "", "16" } } },
        { "half a number", { begun, { carrying, "01", "16" } } },
        { "no chunk", { begun, { carrying, "0100", "16" } } },
        { "a chunk longer than announced", { begun, { carrying, "01003132333435", "16" } } },
        { "a chunk shorter than announced", { begun, { carrying, "0100313233", "16" } } },
        { "a last chunk beyond the end", { begun, one, two, { carrying, "03003930", "16" } } },
        { "a packet after the last", { begun, one, two, three, { carrying, "040030", "16" } } },
        { "an empty packet after the last", { begun, one, two, three, { carrying, "0400", "16" } } },
        { "a packet of another type", { begun, { carrying, data1, "16", 0x92 } } },
        { "nothing to validate", { { validating, "", "18" } } },
        { "no packet", { begun, { validating, "", "18" } } },
        { "a packet too few", { begun, one, two, { validating, "", "18" } } },
        { "another CRC", { { starting, "09000000c23100000400", wanted }, one, two, three, { validating, "", "18" } } },
        { "another byte", { begun, one, two, { carrying, "030038", "15" }, { validating, "", "18" } } },
        { "an end of another type", { begun, one, two, three, { validating, "", "18", 0x92 } } },
        { "an end with a payload", { begun, one, two, three, { validating, "00", "18" } } },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        for (const auto& step : row.steps) {
            EXPECT_EQ(tell(step.opcode, step.payload, step.first), step.says);
            EXPECT_FALSE(accepted);
        }
        for (const auto* packet : { data1, data2, data3, "040030" })
            EXPECT_EQ(tell(carrying, packet), "16");
        EXPECT_EQ(tell(validating, ""), "18");
        EXPECT_EQ(wholeUpdate(), "11 13, 15, 15, 15, 17 19");
    }
}

TEST_F(AnAcceptor, BeginsAfreshWithEachStart)
{
    EXPECT_EQ(tell(starting, start, 0x93), wanted);
    EXPECT_EQ(tell(carrying, data1, 0x93), "15");
    EXPECT_EQ(wholeUpdate(), "11 13, 15, 15, 15, 17 19");
    EXPECT_EQ(accepted->type, 0);
    EXPECT_EQ(accepted->bytes.size(), 9u);
}

TEST_F(AnAcceptor, TakesAsMuchAsItsDiskHolds)
{
    EXPECT_EQ(tell(starting, "00001000c33100000400"), wanted) << "1,048,576 bytes";
    firmware.diskSize = 9;
    EXPECT_EQ(wholeUpdate(), "11 13, 15, 15, 15, 17 19");
    firmware.diskSize = 8;
    EXPECT_EQ(wholeUpdate(), "11 14, 16, 16, 16, 18");
}

TEST_F(AnAcceptor, CountsOnFromZeroWhereTheSequenceNumberIsFull)
{
    constexpr int size = 0x11170; // zeros, of which the CRC is 0
    EXPECT_EQ(tell(starting, "70110100000000000100"), wanted);
    int taken = 0;
    for (int number = 1; number <= size; ++number) {
        const AidFrame packet{ 0x1D, { 0x91, 2, std::uint8_t(number), std::uint8_t(number >> 8), 0 } };
        const auto answers = acceptor.didReceive(packet, firmware).answers;
        taken += answers.size() == 1 && answers[0][7] == 0x15;
    }
    EXPECT_EQ(taken, size);
    EXPECT_EQ(tell(validating, ""), "17 19");
    EXPECT_EQ(accepted->bytes, Data(size));
}

TEST_F(AnAcceptor, DoesNotAnswerWhatIsNoPartOfAnUpdate)
{
    tell(starting, start);
    for (const int opcode : { 0, 4, 5, 0xFF })
        EXPECT_EQ(tell(opcode, ""), "");
    for (const auto* frame : {
             "fe681d01911716", // half an identifier
             "fe681d008516", // none
             "fe68110291030f16", // an end with a command of another kind
             "fe689d0291039b16",
         })
        EXPECT_THAT(answersTo(frame), IsEmpty()) << frame;
    refuses = true;
    EXPECT_THAT(answersTo("fe68110291030f16"), IsEmpty());
    EXPECT_EQ(tell(4, ""), "");
    refuses = false;
    for (const auto* packet : { data1, data2, data3 })
        EXPECT_EQ(tell(carrying, packet), "15") << "the update is as it was";
}

TEST_F(AnAcceptor, RefusesWithTheFailureOfEachFrame)
{
    const auto refusal = [this](int opcode, const char* payload) {
        refuses = true;
        const auto says = tell(opcode, payload);
        refuses = false;
        return says;
    };
    EXPECT_EQ(refusal(starting, start), "12");
    EXPECT_EQ(tell(carrying, data1), "16");
    tell(starting, start);
    EXPECT_EQ(refusal(carrying, data1), "16");
    EXPECT_EQ(tell(carrying, data1), "16");
    EXPECT_EQ(tell(starting, start), wanted);
    for (const auto* packet : { data1, data2, data3 })
        EXPECT_EQ(tell(carrying, packet), "15");
    EXPECT_EQ(refusal(validating, ""), "18");
    EXPECT_EQ(tell(validating, ""), "18");
}

TEST(AnImage, BringsTheVersionAtItsBeginningOrOneOfItsCrc)
{
    const auto versionIn = [](const std::string& text) { return versionOf(Data(text.begin(), text.end())); };
    EXPECT_EQ(versionIn("version 4.5-beta~\nand whatever follows"), "4.5-beta~");
    EXPECT_EQ(versionIn("version " + std::string(32, '!') + "\n"), std::string(32, '!'));
    EXPECT_EQ(versionIn("123456789"), "0.49.195"); // 31C3
    EXPECT_EQ(versionIn("\x01"), "0.16.33"); // 1021, the polynomial
    EXPECT_EQ(versionIn(""), "0.0.0");
    for (const auto& text : { std::string("version 4.5"), std::string("version \n"), std::string("version 4 5\n"),
             std::string("version 4.5\r\n"), std::string("version 4\x7f\n"), std::string("version 4\x80\n"),
             std::string("version  4.5\n"), std::string("Version 4.5\n"), std::string(" version 4.5\n"),
             std::string("version "), "version " + std::string(33, '1') + "\n" })
        EXPECT_THAT(versionIn(text), testing::MatchesRegex("0\\.[0-9]+\\.[0-9]+")) << text;
}

} // namespace
} // namespace aurisk::simulatortests
