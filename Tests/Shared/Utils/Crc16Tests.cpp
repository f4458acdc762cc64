#include "AuriskSDK/Shared/Utils/Crc16.h"

#include "Tests/Support/Bytes.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace aurisk::tests {
namespace {

/// The division, a bit at a time.
std::uint16_t bitByBit(DataView data, std::uint16_t polynomial, std::uint16_t crc)
{
    for (const auto byte : data)
        for (int bit = 7; bit >= 0; --bit) {
            const bool isOdd = ((crc >> 15) ^ (byte >> bit & 1)) != 0;
            crc = static_cast<std::uint16_t>(crc << 1);
            if (isOdd)
                crc ^= polynomial;
        }
    return crc;
}

/// The check values of the public catalogues: each of the text 123456789.
TEST(Crc16, IsThatOfTheCatalogues)
{
    const auto text = "31 32 33 34 35 36 37 38 39"_bytes;
    struct {
        const char* name;
        std::uint16_t polynomial, initial, final, check;
    } const rows[] = {
        { "XMODEM", 0x1021, 0x0000, 0x0000, 0x31C3 },
        { "IBM-3740", 0x1021, 0xFFFF, 0x0000, 0x29B1 },
        { "GENIBUS", 0x1021, 0xFFFF, 0xFFFF, 0xD64E },
        { "UMTS", 0x8005, 0x0000, 0x0000, 0xFEE8 },
        { "T10-DIF", 0x8BB7, 0x0000, 0x0000, 0xD0DB },
        { "EN-13757", 0x3D65, 0x0000, 0xFFFF, 0xC2B7 },
        { "DECT-X", 0x0589, 0x0000, 0x0000, 0x007F },
    };
    for (const auto& row : rows)
        EXPECT_EQ(Crc16::crc16(text, row.polynomial, row.initial, row.final, false, true), row.check) << row.name;
}

TEST(Crc16, ReversesOnlyTheOrderOfBytesAndAppliesTheFinalValueOnlyWithTheReversedOutput)
{
    const auto backwards = "39 38 37 36 35 34 33 32 31"_bytes;
    EXPECT_EQ(Crc16::crc16(backwards, 0x1021, 0, 0, true, false), 0x31C3);
    EXPECT_EQ(Crc16::crc16(backwards, 0x1021, 0, 0xFFFF, true, false), 0x31C3);
    EXPECT_EQ(Crc16::crc16(backwards, 0x1021, 0, 0xFFFF, true, true), 0xCE3C);
    EXPECT_EQ(Crc16::crc16({}, 0x1021, 0x1D0F, 0, true, true), 0x1D0F);
}

TEST(Crc16, TableHoldsTheRemainderOfEachByte)
{
    const auto table = Crc16::generateCRCTable(0x1021);
    ASSERT_EQ(table.size(), 256U);
    EXPECT_EQ(table[0], 0);
    EXPECT_EQ(table[1], 0x1021);
    EXPECT_EQ(table[2], 0x2042);
    EXPECT_EQ(table[16], 0x1231); // 10 followed by zeros is 1021 sixteen times, and 1231 once more
    EXPECT_EQ(table[255], 0x1EF0);
}

RC_GTEST_PROP(Crc16, AgreesWithTheDivisionBitByBit, (std::vector<std::uint8_t> bytes, std::uint16_t initial))
{
    const auto polynomial = *rc::gen::element<std::uint16_t>(0x1021, 0x8005, 0, 0xFFFF, 0x0001);
    bytes.resize(bytes.size() + *rc::gen::inRange<std::size_t>(0, 40), 0x5A);
    RC_ASSERT(Crc16::crc16(bytes, polynomial, initial, 0, false, false) == bitByBit(bytes, polynomial, initial));
    const auto reversed = Crc16::crc16(bytes, polynomial, initial, 0, true, false);
    RC_ASSERT(reversed == bitByBit(Data(bytes.rbegin(), bytes.rend()), polynomial, initial));
}

} // namespace
} // namespace aurisk::tests
