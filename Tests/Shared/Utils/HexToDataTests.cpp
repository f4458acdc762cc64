#include "AuriskSDK/Shared/Utils/HexToData.h"

#include "Tests/Support/Bytes.h"

#include <gmock/gmock.h>

namespace aurisk::tests {
namespace {

using namespace std::string_view_literals;

TEST(HexToData, ReadsEachRunOfDigitsInPairsFromItsLeftEnd)
{
    const struct {
        std::string_view text;
        std::optional<Data> expected;
    } cases[] = {
        { "FE68", "FE 68"_bytes },
        { "fe 68", "FE 68"_bytes },
        { "f, e", "0F 0E"_bytes },
        { "abc", "AB 0C"_bytes },
        { "a b", "0A 0B"_bytes },
        { "abc de f", "AB 0C DE 0F"_bytes },
        { "0x1F", "00 1F"_bytes },
        { "<09 aF>\n", "09 AF"_bytes },
        { "a\0b"sv, "0A 0B"_bytes },
        { "g/:@G`1\xC3\xA9\xFF", "01"_bytes }, // the neighbours of the digits, and what is not ASCII
        { "00", "00"_bytes },
        { "", {} },
        { "xyz", {} },
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(ask_hexadecimal(text), expected) << text;
}

TEST(HexToData, WritesTwoLowerCaseDigitsAByte)
{
    EXPECT_EQ(ask_hexadecimal("0A FF 90"_bytes), "0aff90");
    EXPECT_EQ(ask_hexadecimal(DataView()), "");
}

} // namespace
} // namespace aurisk::tests
