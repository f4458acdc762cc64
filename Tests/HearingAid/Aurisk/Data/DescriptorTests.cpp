#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskManuData.h"
#include "Tests/Support/Bytes.h"

#include <gmock/gmock.h>

namespace aurisk::tests {
namespace {

TEST(AuriskManuData, TakesDefaultsForWhatIsNotThereOrNamesNothing)
{
    using Chip = AuriskChip;
    using Radio = AuriskBLEChip;
    const struct {
        Data mfgData;
        const char* address;
        Chip hearChip;
        Radio bleChip;
        bool transEnable;
    } cases[] = {
        { "FE FE 0A 1B 2C 3D 4E 5F 08 06"_bytes, "0A:1B:2C:3D:4E:5F", Chip::a16, Radio::tiny600, false },
        { "FE FE 0A 1B 2C 3D 4E 5F 09 01"_bytes, "0A:1B:2C:3D:4E:5F", Chip::h01, Radio::unassigned, false },
        { "FE FE 0A 1B 2C 3D 4E 5F 07 00 06 08"_bytes, "0A:1B:2C:3D:4E:5F", Chip::a4, Radio::u87, false },
        // Flag and radio chip share a byte: with the flag the chip reads as u87.
        { "FE FE 00 00 00 00 00 01 88 07"_bytes, "00:00:00:00:00:01", Chip::unassigned, Radio::u87, true },
        { "FE FE FF FF FF FF FF FF 7F 02"_bytes, "FF:FF:FF:FF:FF:FF", Chip::a4, Radio::u87, false },
        { "FE FE 0A 1B 2C 3D 4E 5F FF FF"_bytes, "0A:1B:2C:3D:4E:5F", Chip::a4, Radio::u87, true },
        // A byte too short: the radio chip is not looked at either.
        { "FE FE 0A 1B 2C 3D 4E 5F 88"_bytes, "0A:1B:2C:3D:4E:5F", Chip::a4, Radio::u87, false },
        { "FE FE 0A 1B 2C"_bytes, "0A:1B:2C", Chip::a4, Radio::u87, false },
        { "FE FE"_bytes, "", Chip::a4, Radio::u87, false },
        { "FE"_bytes, "", Chip::a4, Radio::u87, false },
        { {}, "", Chip::a4, Radio::u87, false },
    };
    for (const auto& row : cases) {
        const AuriskManuData decoded(row.mfgData);
        const auto bytes = testing::PrintToString(row.mfgData);
        EXPECT_EQ(decoded.address, row.address) << bytes;
        EXPECT_EQ(decoded.hearChip, row.hearChip) << bytes;
        EXPECT_EQ(decoded.bleChip, row.bleChip) << bytes;
        EXPECT_EQ(decoded.transEnable, row.transEnable) << bytes;
    }
}

TEST(ManuDataToMac, JoinsTwoUpperCaseDigitsAByte)
{
    EXPECT_EQ(manuDataToMac("0A 1B FF 00"_bytes, "-"), "0A-1B-FF-00");
    EXPECT_EQ(manuDataToMac("0A 1B"_bytes, ""), "0A1B");
    EXPECT_EQ(manuDataToMac({}, ":"), "");
}

} // namespace
} // namespace aurisk::tests
