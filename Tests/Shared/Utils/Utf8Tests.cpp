#include "AuriskSDK/Shared/Utils/Utf8.h"
#include "Tests/Support/Bytes.h"

#include <gmock/gmock.h>

namespace aurisk::tests {
namespace {

TEST(Utf8Text, IsAsItCameWhereItIsWellFormed)
{
    const std::pair<Data, std::string> cases[] = {
        { {}, "" },
        { "58 31"_bytes, "X1" },
        { "00 41"_bytes, std::string("\0A", 2) },
        { "7F C2 80 DF BF"_bytes, "\x7F\xC2\x80\xDF\xBF" },
        { "E0 A0 80 ED 9F BF EE 80 80 EF BF BF"_bytes, "\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF" },
        { "F0 90 80 80 F3 BF BF BF F4 8F BF BF"_bytes, "\xF0\x90\x80\x80\xF3\xBF\xBF\xBF\xF4\x8F\xBF\xBF" },
    };
    for (const auto& [bytes, text] : cases)
        EXPECT_EQ(utf8Text(bytes), text) << testing::PrintToString(bytes);
}

TEST(Utf8Text, IsNoneWhereAnyPartIsNot)
{
    const std::pair<const char*, Data> cases[] = {
        { "a continuation alone", "41 80"_bytes },
        { "cut", "41 C3"_bytes },
        { "cut after two of three", "E2 82"_bytes },
        { "cut after three of four", "F0 9F 91"_bytes },
        { "no continuation", "C3 41"_bytes },
        { "third byte no continuation", "E2 82 41"_bytes },
        { "fourth byte no continuation", "F0 9F 91 C2"_bytes },
        { "overlong in two", "C1 BF"_bytes },
        { "overlong in three", "E0 9F BF"_bytes },
        { "overlong in four", "F0 8F BF BF"_bytes },
        { "surrogate", "ED A0 80"_bytes },
        { "beyond the last character", "F4 90 80 80"_bytes },
        { "no such first byte", "F5 80 80 80"_bytes },
        { "no such byte", "FF"_bytes },
    };
    for (const auto& [what, bytes] : cases)
        EXPECT_EQ(utf8Text(bytes), std::nullopt) << what;
}

} // namespace
} // namespace aurisk::tests
