#include "AuriskSDK/Platform/Bluetooth.h"

#include <gmock/gmock.h>

#include <map>

namespace aurisk::tests {
namespace {

std::string printed(std::string_view text)
{
    const auto uuid = CBUUID::fromString(text);
    return uuid ? uuid->uuidString() : "none";
}

TEST(CBUUID, PrintsInTheFormInWhichServicesAreCompared)
{
    const struct {
        std::string_view text;
        std::string_view expected;
    } cases[] = {
        { "AE30", "AE30" },
        { "ae3c", "AE3C" },
        { "95e81860-47b6-c216-a125-403009d6f03e", "95E81860-47B6-C216-A125-403009D6F03E" },
        { "01234567-89AB-CDEF-0123-456789ABCDEF", "01234567-89AB-CDEF-0123-456789ABCDEF" },
        // On the Bluetooth base: the short form.
        { "0000180f-0000-1000-8000-00805f9b34fb", "180F" },
        { "00000000-0000-1000-8000-00805F9B34FB", "0000" },
        // Nearly on it.
        { "0100180F-0000-1000-8000-00805F9B34FB", "0100180F-0000-1000-8000-00805F9B34FB" },
        { "0001180F-0000-1000-8000-00805F9B34FB", "0001180F-0000-1000-8000-00805F9B34FB" },
        { "0000180F-0000-1000-8000-00805F9B34FC", "0000180F-0000-1000-8000-00805F9B34FC" },
        { "0000180F-0001-1000-8000-00805F9B34FB", "0000180F-0001-1000-8000-00805F9B34FB" },

        { "", "none" },
        { "180", "none" },
        { "180FF", "none" },
        { "18 F", "none" },
        { "G80F", "none" },
        { "0000180F", "none" },
        { "0000180F00001000800000805F9B34FB", "none" },
        { "0000180F-0000-1000-8000-00805F9B34F", "none" },
        { "0000180F-0000-1000-8000-00805F9B34FB ", "none" },
        { "0000180F-0000-1000-800000-805F9B34FB", "none" },
        { "0000180F_0000-1000-8000-00805F9B34FB", "none" },
        { "0000180F-0000-1000-8000-00805F9B34FX", "none" },
        { "-000180F-0000-1000-8000-00805F9B34FB", "none" },
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(printed(text), expected) << text;
}

TEST(CBUUID, IsTheSameInAllItsForms)
{
    const CBUUID battery(0x180F);
    EXPECT_EQ(battery, CBUUID::fromString("180f"));
    EXPECT_EQ(battery, CBUUID::fromString("0000180F-0000-1000-8000-00805F9B34FB"));
    EXPECT_EQ(battery,
        CBUUID(CBUUID::Bytes{
            0x00, 0x00, 0x18, 0x0F, 0x00, 0x00, 0x10, 0x00, 0x80, 0x00, 0x00, 0x80, 0x5F, 0x9B, 0x34, 0xFB }));
    EXPECT_NE(battery, CBUUID(0x0F18));
    EXPECT_NE(battery, CBUUID::fromString("0000180F-0000-1000-8000-00805F9B34FC"));
    EXPECT_EQ((std::map<CBUUID, int>{ { battery, 1 }, { *CBUUID::fromString("180F"), 2 } }.size()), 1U);
}

} // namespace
} // namespace aurisk::tests
