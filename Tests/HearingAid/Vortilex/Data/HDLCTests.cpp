#include "AuriskSDK/HearingAid/Vortilex/Data/HDLC.h"

#include "AuriskSDK/Shared/Utils/HexToData.h"
#include "Tests/Support/Bytes.h"
#include "Tests/Support/Stops.h"

#include <gmock/gmock.h>

namespace aurisk::tests {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Optional;
using testing::SizeIs;

std::vector<Data> piecesOf(CHDLC& frame)
{
    std::vector<Data> pieces;
    while (frame.moreData())
        pieces.push_back(frame.getHDLC());
    return pieces;
}

Data joined(const std::vector<Data>& pieces)
{
    Data all;
    for (const auto& piece : pieces)
        all.insert(all.end(), piece.begin(), piece.end());
    return all;
}

TEST(PL3Frame, IsSentWithALengthThatCountsTheCommand)
{
    const struct {
        std::uint8_t command;
        Data payload;
        bool read;
        Data expected;
    } cases[] = {
        { 0x12, {}, true, "7E 00 01 92"_bytes },
        { 0x12, {}, false, "7E 00 01 12"_bytes },
        { 0x05, "7E"_bytes, false, "7E 00 02 05 7D 5E"_bytes },
        { 0x05, "7D"_bytes, false, "7E 00 02 05 7D 5D"_bytes },
        { 0x05, "7D 7E 00 5D 5E 7F 7C 7E 7D"_bytes, true, "7E 00 0A 85 7D 5D 7D 5E 00 5D 5E 7F 7C 7D 5E 7D 5D"_bytes },
        { 0x7D, {}, false, "7E 00 01 7D 5D"_bytes },
        { 0x7E, {}, false, "7E 00 01 7D 5E"_bytes },
        { 0x7D, {}, true, "7E 00 01 FD"_bytes },
        { 0xFD, "01"_bytes, true, "7E 00 02 FD 01"_bytes },
    };
    for (const auto& [command, payload, read, expected] : cases) {
        CHDLC frame;
        frame.create(command, payload, read);
        EXPECT_EQ(frame.getHDLCAll(), expected);
        EXPECT_EQ(frame.sentPayload(), expected);
        EXPECT_EQ(frame.sentCommand(), command | (read ? 0x80 : 0));
        EXPECT_EQ(frame.sentPayloadLengthHigh(), 0);
        EXPECT_EQ(frame.sentPayloadLengthLow(), payload.size() + 1);
    }
    CHDLC frame;
    frame.create(0x05, Data(124), false); // a length of 7D is escaped like any other byte
    EXPECT_EQ(ask_hexadecimal(DataView(frame.sentPayload()).first(6)), "7e007d5d0500");
    frame.create(0x05, Data(125), false);
    EXPECT_EQ(ask_hexadecimal(DataView(frame.sentPayload()).first(6)), "7e007d5e0500");
}

TEST(PL3Frame, CarriesAtMost254Bytes)
{
    CHDLC frame;
    frame.create(0x05, Data(254, 0x7E), false);
    EXPECT_THAT(frame.getHDLCAll(), SizeIs(4 + 2 * 254));
    EXPECT_EQ(frame.sentPayloadLengthLow(), 255);
    frame.create(0x05, "01"_bytes, false);
    EXPECT_THAT(stopOf([&] { frame.create(0x06, Data(255), false); }), Optional(HasSubstr("256")));
    EXPECT_EQ(frame.getHDLCAll(), "7E 00 02 05 01"_bytes);
}

TEST(PL3Frame, IsHandedOutInPiecesOf20Bytes)
{
    CHDLC frame;
    EXPECT_FALSE(frame.moreData());
    EXPECT_EQ(frame.getHDLC(), Data());
    frame.create(0x05, Data(41, 0x01), false);
    EXPECT_THAT(piecesOf(frame), ElementsAre(SizeIs(20), SizeIs(20), SizeIs(5)));
    EXPECT_EQ(frame.getHDLC(), Data());
    EXPECT_THAT(frame.getHDLCAll(), SizeIs(45));
    frame.create(0x05, Data(16, 0x01), false); // another frame begins at its front
    EXPECT_THAT(piecesOf(frame), ElementsAre(SizeIs(20)));
    EXPECT_FALSE(frame.moreData());
}

/// How a byte travels.
Data onTheWire(std::size_t byte)
{
    return byte == 0x7D ? "7D 5D"_bytes : byte == 0x7E ? "7D 5E"_bytes : Data{ static_cast<std::uint8_t>(byte) };
}

/// What a device that has the same to say sends: its length does not count the command.
Data fromADevice(const Data& sent, std::size_t payloadSize)
{
    const auto itsLength = onTheWire(payloadSize), ourLength = onTheWire(payloadSize + 1);
    Data bytes = "7E 00"_bytes;
    bytes.insert(bytes.end(), itsLength.begin(), itsLength.end());
    bytes.insert(bytes.end(), sent.begin() + 2 + static_cast<std::ptrdiff_t>(ourLength.size()), sent.end());
    return bytes;
}

TEST(PL3Frame, BringsEveryPayloadThroughWhateverItsBytes)
{
    int splitEscapes = 0;
    const auto check = [&](const Data& payload) {
        CHDLC sent, received;
        sent.create(0x05, payload, false);
        const auto pieces = piecesOf(sent);
        ASSERT_EQ(pieces.size(), (sent.getHDLCAll().size() + 19) / 20);
        for (const auto& piece : pieces) {
            ASSERT_TRUE(piece.size() == 20 || &piece == &pieces.back());
            splitEscapes += piece.back() == 0x7D;
        }
        received.parse(fromADevice(joined(pieces), payload.size()));
        ASSERT_EQ(received.rcvdPayload(), payload) << payload.size() << " bytes";
        ASSERT_EQ(received.rcvdLength(), payload.size());
        ASSERT_EQ(received.rcvdCommand(), 0x05);
    };
    for (std::size_t size = 0; size <= CHDLC::longestPayload; ++size) {
        for (std::size_t start = 0; start < 256; start += std::max<std::size_t>(size / 4, 1)) {
            Data payload(size);
            for (std::size_t i = 0; i < size; ++i)
                payload[i] = static_cast<std::uint8_t>(start + i);
            check(payload);
        }
        check(Data(size, 0x7D));
        check(Data(size, 0x7E));
    }
    EXPECT_GT(splitEscapes, 100);
}

TEST(PL3Frame, IsReceivedWithALengthThatDoesNotCountTheCommand)
{
    const struct {
        Data bytes;
        unsigned length, command;
        Data payload;
    } cases[] = {
        { "7E 00 02 85 01 02"_bytes, 2, 0x05, "01 02"_bytes },
        { "7E 00 02 85 01 02 03"_bytes, 2, 0x05, "01 02"_bytes }, // bytes behind it
        { "7E 00 03 05 01 02"_bytes, 3, 0x05, "01 02"_bytes }, // as it would be sent: one is missing
        { "7E 00 03 05 01 02 09"_bytes, 3, 0x05, "01 02 09"_bytes },
        { "7E 00 01 05 7D 5E"_bytes, 1, 0x05, "7E"_bytes },
        { "7E 00 00 05"_bytes, 0, 0x05, {} },
        { "7E 00 00 05 AA BB"_bytes, 0, 0x05, "AA"_bytes }, // a length of 0 takes one byte, too
        { "00 02 85 01 02"_bytes, 2, 0x05, "01 02"_bytes }, // begins with a length, 7E or not
        { "7E 01 02 05 01"_bytes, 0x102, 0x05, "01"_bytes },
        { "7E 7D 5D 7D 5E 7D 5D 01"_bytes, 0x7D7E, 0x7D, "01"_bytes },
        { "7E 7D 5D 7D 5E 7D DE 01"_bytes, 0x7D7E, 0x7E, "01"_bytes },
        { "7E 00 02 05 7D 00 7D 7D FF"_bytes, 2, 0x05, "20 DF"_bytes }, // escapes that nothing needs
        { "7E 00 02 05 01 7D"_bytes, 2, 0x05, "01"_bytes },
        { "7E 00 02 05 7E 00 02 06 BB CC"_bytes, 2, 0x06, "BB CC"_bytes }, // the last of two frames
        // The bytes of the first count for the second: three have been taken, so one more ends it.
        { "7E 00 03 05 01 02 03 7E 00 03 06 04 05 06"_bytes, 3, 0x06, "04"_bytes },
        { "7E 00 02 05 7D 7E 20 02 06 01 02"_bytes, 2, 0x06, "01 02"_bytes }, // the escape outlives the 7E
        { "7E 00 02 05 01 02 7E"_bytes, 0, 0, {} },
        { "7E 00"_bytes, 0, 0, {} },
        { {}, 0, 0, {} },
    };
    for (const auto& [bytes, length, command, payload] : cases) {
        CHDLC frame;
        frame.parse(bytes);
        EXPECT_EQ(frame.rcvdLength(), length) << ask_hexadecimal(bytes);
        EXPECT_EQ(frame.rcvdCommand(), command) << ask_hexadecimal(bytes);
        EXPECT_EQ(frame.rcvdPayload(), payload) << ask_hexadecimal(bytes);
    }
    auto longest = "7E FF FF 05"_bytes; // the count of payload bytes is 16 bits wide
    longest.resize(4 + 65535, 0x5A);
    for (const auto byte : "7E FF FF 06 01 02"_bytes)
        longest.push_back(byte);
    CHDLC frame;
    frame.parse(longest);
    EXPECT_EQ(frame.rcvdPayload(), "01 02"_bytes);
}

TEST(PL3Frame, IsNotPutTogetherFromSeveralNotifications)
{
    CHDLC frame;
    frame.parse("7E 00 04 01 AA"_bytes);
    frame.parse("BB CC DD EE"_bytes); // a length, a command and one byte, put behind the one that was there
    EXPECT_EQ(frame.rcvdPayloadLengthHigh(), 0xBB);
    EXPECT_EQ(frame.rcvdLength(), 0xBBCC);
    EXPECT_EQ(frame.rcvdCommand(), 0x5D);
    EXPECT_EQ(frame.rcvdPayload(), "AA EE"_bytes);
    frame.parse({});
    EXPECT_EQ(frame.rcvdPayload(), "AA EE"_bytes);

    CHDLC inPieces;
    for (const auto byte : "7E 00 01 05 7D 5E"_bytes)
        inPieces.parse(Data{ byte });
    EXPECT_EQ(inPieces.rcvdLength(), 0x5E00);
    EXPECT_EQ(inPieces.rcvdPayload(), Data());
}

TEST(PL3Frame, IsReadFromText)
{
    const auto former = "7E 00 02 7B 55"_bytes;
    const struct {
        const char *command, *payload;
        bool isRead;
        Data expected;
    } cases[] = {
        { "05", "", true, "7E 00 01 05"_bytes },
        { "0x05", "1 0x02,0X7e.ff:7D", true, "7E 00 06 05 01 02 7D 5E FF 7D 5D"_bytes },
        { " ,.:85", " :01, ", true, "7E 00 02 85 01"_bytes }, // sets no read flag, and keeps one
        { "12 34", ".:, ", true, "7E 00 01 12"_bytes },
        { "12zz", "0000000000000000a", true, "7E 00 02 12 0A"_bytes },
        { "7d", "", true, "7E 00 01 7D 5D"_bytes },
        { "05", "01,,02", false, "7E 00 04 05 01"_bytes }, // the empty piece counts, and is no number
        { "05", "01 zz 02", false, "7E 00 04 05 01"_bytes },
        { "05", "01 2z", false, "7E 00 03 05 01"_bytes },
        { "05", "01 0x 02", false, "7E 00 04 05 01"_bytes },
        { "05", "-1", false, "7E 00 02 05"_bytes },
        { "", "01", false, former },
        { ",.", "01", false, former },
        { "zz", "01", false, former },
        { "0x", "01", false, former },
        { "-5", "01", false, former },
        { "+5", "01", false, former },
    };
    for (const auto& [command, payload, isRead, expected] : cases) {
        CHDLC frame;
        frame.create(0x7B, "55"_bytes, false);
        EXPECT_EQ(frame.create(command, payload), isRead) << command << " / " << payload;
        EXPECT_EQ(frame.getHDLCAll(), expected) << command << " / " << payload;
        EXPECT_EQ(joined(piecesOf(frame)), expected) << command << " / " << payload;
    }
    std::string bytes = "01";
    for (int i = 1; i < 254; ++i)
        bytes += ":02";
    CHDLC frame;
    EXPECT_TRUE(frame.create("05", bytes));
    EXPECT_THAT(frame.getHDLCAll(), SizeIs(4 + 254));
    EXPECT_TRUE(stopOf([&] { return frame.create("06", bytes + ":03"); }));
    EXPECT_THAT(stopOf([&] { return frame.create("100", ""); }), Optional(HasSubstr("100")));
    EXPECT_TRUE(stopOf([&] { return frame.create("FFFFFFFFFFFFFFFFF", ""); }));
    EXPECT_EQ(frame.sentCommand(), 0x05);
    EXPECT_THAT(stopOf([&] { return frame.create("06", "01 100"); }), Optional(HasSubstr("100")));
}

TEST(PL3Frame, KeepsItsOddText)
{
    CHDLC frame;
    EXPECT_EQ(frame.getSentDataString() + frame.getRcvdDataString(), "");
    frame.create(0x05, {}, false);
    frame.parse("7E 00 02 05 01 02"_bytes);
    EXPECT_EQ(frame.getSentDataString(), "{0:x2}{0:x2}{0:x2}{0:x2}");
    EXPECT_EQ(frame.getRcvdDataString(), "{0:x2}{0:x2}");
}

TEST(PL3Frame, HasALowLengthOnlyUpTo255)
{
    CHDLC frame;
    frame.parse("7E 00 FF"_bytes);
    EXPECT_EQ(frame.rcvdPayloadLengthLow(), 255);
    frame.parse("7E 01 00"_bytes);
    EXPECT_EQ(frame.rcvdPayloadLengthHigh(), 1);
    EXPECT_THAT(stopOf([&] { return frame.rcvdPayloadLengthLow(); }), Optional(HasSubstr("256")));
}

} // namespace
} // namespace aurisk::tests
