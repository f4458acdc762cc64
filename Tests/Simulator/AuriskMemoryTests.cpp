#include "Tests/Simulator/AnAuriskAid.h"

namespace aurisk::simulatortests {
namespace {

constexpr std::uint8_t a4 = 0x00, h01 = 0x01, a16 = 0x06;

std::string text(const std::string& characters) { return ask_hexadecimal(Data(characters.begin(), characters.end())); }

/// `block` with `width` bits from `first` on, the lowest first, replaced by those of `value`.
std::string withBits(const std::string& block, std::size_t first, std::size_t width, unsigned value)
{
    auto bytes = *ask_hexadecimal(block);
    for (std::size_t i = first; i < first + width; ++i, value >>= 1)
        bytes[i / 8] = std::uint8_t((bytes[i / 8] & ~(1u << i % 8)) | (value & 1u) << i % 8);
    return ask_hexadecimal(bytes);
}

/// Where the chip says how much of each microphone is heard, the blocks hold the four directions in order.
TEST_F(AnAuriskAid, LeavesTheFactoryFittedForFourDirections)
{
    for (const auto chip : { a4, h01 }) {
        SCOPED_TRACE(int(chip));
        become(chip, { 8, 8, 8 });
        EXPECT_EQ(readBlock(0), "91 71d06198baccedfed1a84012"); // gains 6 and 1, bands 1 and 6
        EXPECT_EQ(readBlock(1), "91 71d094aabbccdced89a44010"); // gains 6 and 1, bands 4 and 9
        EXPECT_EQ(readBlock(2), "91 71d181a9cbddeede1a994114"); // gains 6 and 5, bands 1 and 8
        EXPECT_EQ(readBlock(3), "d1");
        EXPECT_EQ(readBlock(5), "91 8045d9000c2520200b"); // three programs: bits 6 and 7 of D9
        EXPECT_EQ(readBlock(6), "d1");
    }
    become(a16, { 8, 8, 8, 8 });
    const char* heads[] = { "80586849", "84586848", "8858684b", "8958a85c" }; // input modes 0, 4, 8 and 9
    for (int program = 0; program < 4; ++program) {
        EXPECT_EQ(readBlock(program).substr(0, 11), std::string("91 ") + heads[program]);
        EXPECT_EQ(readBlock(program).size(), 3u + 2 * 56);
    }
    EXPECT_EQ(readBlock(4), "d1");
    EXPECT_EQ(readBlock(5), "d1");
    EXPECT_EQ(readBlock(6), "91 358540891342499b6ad60300"); // four programs: bits 5 to 7 of 89

    become(a16, std::vector<int>(7, 8));
    EXPECT_EQ(readBlock(4), "91" + readBlock(0).substr(2)) << "the first one again";
    EXPECT_EQ(readBlock(5), "d1") << "the number of a global block, on other chips";
    become(0x07, { 8 });
    EXPECT_EQ(readBlock(0) + readBlock(5) + readBlock(6) + writeBlock(0, "00") + writeBlock(6, ""), "d1d1d1d4d4");
}

TEST_F(AnAuriskAid, KeepsTheBlocksThatAreWrittenUntilItIsReset)
{
    struct Row {
        std::uint8_t chip;
        int global;
        std::string programBlock, globalBlock;
    };
    for (const auto& row : { Row{ a4, 5, std::string(24, 'f'), std::string(18, 'f') },
             Row{ h01, 5, std::string(24, '7'), std::string(18, '5') },
             Row{ a16, 6, std::string(112, '1'), std::string(24, 'f') } }) {
        SCOPED_TRACE(int(row.chip));
        become(row.chip, { 8, 8, 8 });
        const auto factory = completed(aid.state());
        const auto first = readBlock(0), last = readBlock(2);
        EXPECT_EQ(writeBlock(1, row.programBlock), "94");
        EXPECT_EQ(writeBlock(0x80, row.programBlock), "") << "no answer is wanted";
        EXPECT_EQ(writeBlock(row.global, row.globalBlock), "94");
        for (const int program : { 0, 1 })
            EXPECT_EQ(readBlock(program), "91 " + row.programBlock);
        EXPECT_EQ(readBlock(row.global), "91 " + row.globalBlock);
        EXPECT_EQ(readBlock(2), last);
        EXPECT_EQ(aid.state().program, 0);

        EXPECT_EQ(writeBlock(0x80 | row.global, std::string(row.globalBlock.size(), '2')), "");
        EXPECT_EQ(readBlock(row.global), "91 " + std::string(row.globalBlock.size(), '2'));
        EXPECT_EQ(ask(0x1D, 0x82, 0x00), "9d");
        EXPECT_EQ(readBlock(0), first);
        EXPECT_TRUE(aid.state().globalBlock == factory.globalBlock);
    }
}

TEST_F(AnAuriskAid, RefusesBlocksThatAreNotItsOwnForm)
{
    struct Row {
        std::uint8_t chip;
        int number;
        std::size_t bytes;
    };
    for (const auto& row : { Row{ a4, 0, 11 }, Row{ a4, 0, 13 }, Row{ a4, 0, 56 }, Row{ a4, 3, 12 }, Row{ a4, 5, 8 },
             Row{ a4, 5, 10 }, Row{ a4, 6, 9 }, Row{ a4, 6, 12 }, Row{ h01, 2, 56 }, Row{ h01, 6, 9 },
             Row{ a16, 0, 55 }, Row{ a16, 2, 57 }, Row{ a16, 1, 12 }, Row{ a16, 3, 56 }, Row{ a16, 5, 12 },
             Row{ a16, 6, 9 }, Row{ a16, 6, 13 }, Row{ a16, 0, 0 }, Row{ a16, 0x7F, 56 } }) {
        become(row.chip, { 8, 8, 8 });
        const auto before = aid.state();
        EXPECT_EQ(writeBlock(row.number, std::string(2 * row.bytes, '1')), "d4") << row.number << ", " << row.bytes;
        EXPECT_EQ(writeBlock(0x80 | row.number, std::string(2 * row.bytes, '1')), "");
        EXPECT_TRUE(aid.state() == before);
    }
}

TEST_F(AnAuriskAid, OfTheA16TakesNoBitsThatStandForNothing)
{
    struct Row {
        const char* what;
        std::size_t bit, width;
        unsigned highest;
    };
    const Row rows[] = {
        { "first analog gain", 4, 4, 12 },
        { "second analog gain", 8, 4, 12 },
        { "feedback canceler", 22, 2, 2 },
        { "noise reduction", 24, 3, 4 },
        { "equaliser, band 0", 32, 5, 20 },
        { "band 5", 57, 5, 20 },
        { "band 11", 89, 5, 20 },
        { "band 15", 111, 5, 20 },
        { "compression ratio, band 0", 116, 6, 35 },
        { "band 6", 152, 6, 35 },
        { "band 11", 184, 6, 35 },
        { "band 15", 210, 6, 35 },
        { "compression constant, band 0", 216, 4, 8 },
        { "band 15", 276, 4, 8 },
        { "attack", 432, 3, 3 },
        { "release", 435, 3, 3 },
        { "remote mix", 439, 5, 4 },
        { "low-cut filter", 444, 4, 9 },
    };
    become(a16, { 8 });
    const auto factory = readBlock(0).substr(3);
    for (const auto& row : rows) {
        EXPECT_EQ(writeBlock(0, withBits(factory, row.bit, row.width, row.highest)), "94") << row.what;
        EXPECT_EQ(writeBlock(0, withBits(factory, row.bit, row.width, row.highest + 1)), "d4") << row.what;
    }
    // Where every value stands for something, and where the bits are the aid's own: all of them set.
    auto full = factory;
    for (const auto& [bit, width] : { std::pair<std::size_t, std::size_t>(0, 4), { 12, 10 }, { 27, 5 }, { 62, 2 },
             { 94, 2 }, { 158, 2 }, { 190, 2 }, { 280, 152 }, { 438, 1 } })
        for (std::size_t i = 0; i < width; ++i)
            full = withBits(full, bit + i, 1, 1);
    EXPECT_EQ(writeBlock(0, full), "94");
}

TEST_F(AnAuriskAid, KeepsItsProfile)
{
    EXPECT_EQ(readField(0x00), "91 " + text("X1")) << "its name without the ear";
    EXPECT_EQ(readField(0x13), "91 " + text("X1-L"));
    EXPECT_EQ(readField(0x22), "91 " + text("A16"));
    EXPECT_EQ(readField(0x05), "91 03000200010000060201000000000000113254c0");
    const auto number = [](int field) { return ask_hexadecimal(Data{ std::uint8_t(field) }); };
    const int texts[] = { 0x00, 0x01, 0x02, 0x03, 0x04, 0x06, 0x10, 0x11, 0x12, 0x13, 0x20, 0x22 };
    for (const int field : texts)
        EXPECT_EQ(writeField(field, text("Ö") + number(field)), "94") << field;
    for (const int field : texts)
        EXPECT_EQ(readField(field), "91 c396" + number(field));
    EXPECT_EQ(aid.advertisement().localName, "X1-L") << "a world knows it by this name";

    const std::string twenty = "000102030405060708090a0b0c0d0e0f10111213";
    EXPECT_EQ(writeField(0x05, twenty), "94");
    ask(0x1D, 0x82, 0x00);
    EXPECT_EQ(readField(0x05), "91 " + twenty) << "a factory reset leaves it what it was made as";
}

TEST_F(AnAuriskAid, RefusesProfileFieldsThatDoNotExistOrDoNotFit)
{
    for (const int unknown : { 0x07, 0x0F, 0x14, 0x1F, 0x21, 0x23, 0x80, 0x93, 0xFF }) {
        EXPECT_EQ(readField(unknown), "d1") << unknown;
        EXPECT_EQ(writeField(unknown, "41"), "d4") << unknown;
    }
    EXPECT_EQ(ask(0x11, 0x13, 0x08, "00"), "d1") << "a read with a payload";
    for (const int length : { 0, 19, 21 })
        EXPECT_EQ(writeField(0x05, std::string(std::size_t(2 * length), '1')), "d4") << length;
    EXPECT_EQ(writeField(0x00, text(std::string(248, 'a'))), "d4");
    EXPECT_EQ(writeField(0x00, "41ff"), "d4") << "no text";
    EXPECT_TRUE(aid.state() == completed(someState()));

    EXPECT_EQ(writeField(0x00, text(std::string(247, 'a'))), "94");
    EXPECT_EQ(readField(0x00), "91 " + text(std::string(247, 'a')));
    EXPECT_EQ(writeField(0x00, ""), "94");
    EXPECT_EQ(readField(0x00), "91");
}

} // namespace
} // namespace aurisk::simulatortests
