#include "AuriskSDK/HearingAid/AccessoryOrientation.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskDsp.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskManuData.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskProfileType.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskProgram.h"
#include "Tests/Support/Bytes.h"

#include <gmock/gmock.h>

#include <map>
#include <string>

namespace aurisk::tests {
namespace {

/// The raw values from -1 to 300 that have a case, with its name.
template <TabledEnum E> std::map<int, std::string> casesByRawValue()
{
    std::map<int, std::string> found;
    for (int raw = -1; raw <= 300; ++raw)
        if (const auto value = fromRawValue<E>(raw))
            found.emplace(raw, caseName(*value));
    return found;
}

TEST(Descriptors, HaveCasesForTheseNumbersAndNoOthers)
{
    using Cases = std::map<int, std::string>;
    EXPECT_EQ(casesByRawValue<AuriskChip>(), (Cases{ { 1, "h01" }, { 0, "a4" }, { 6, "a16" }, { 7, "unassigned" } }));
    EXPECT_EQ(casesByRawValue<AuriskBLEChip>(), (Cases{ { 7, "u87" }, { 8, "tiny600" }, { 9, "unassigned" } }));
    EXPECT_EQ(casesByRawValue<AuriskProgram>(),
        (Cases{ { 0, "normal" }, { 1, "restaurant" }, { 2, "outdoor" }, { 3, "music" } }));
    EXPECT_EQ(casesByRawValue<AuriskDirection>(),
        (Cases{ { 0, "normal" }, { 1, "tv" }, { 2, "meeting" }, { 3, "face" }, { 4, "unknown" } }));
    EXPECT_EQ(casesByRawValue<AuriskNoise>(), (Cases{ { 0, "off" }, { 1, "weak" }, { 2, "medium" }, { 3, "strong" } }));
    EXPECT_EQ(casesByRawValue<AccessoryOrientation>(), (Cases{ { 2, "left" }, { 3, "right" }, { 4, "unassigned" } }));
    EXPECT_EQ(casesByRawValue<AuriskProfileType>(),
        (Cases{ { 0x00, "productSeries" }, { 0x01, "productPattern" }, { 0x02, "productHard" }, { 0x03, "productSoft" },
            { 0x04, "productSku" }, { 0x05, "productReserved" }, { 0x06, "productSeriesCode" },
            { 0x10, "bluetoothHardPattern" }, { 0x11, "bluetoothHard" }, { 0x12, "bluetoothSoft" },
            { 0x13, "advertisementName" }, { 0x22, "hearingAidChip" }, { 0x20, "ota" }, { 0x21, "unknown" } }));
}

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

TEST(AuriskManuData, ReadsTheRadioChipFromItsOwnThreeNumbersAlone)
{
    Data mfgData = "FE FE 0A 1B 2C 3D 4E 5F 00 00"_bytes;
    for (unsigned radio = 0; radio < 256; ++radio) {
        mfgData[8] = static_cast<std::uint8_t>(radio);
        const AuriskManuData decoded(mfgData);
        EXPECT_EQ(decoded.bleChip == AuriskBLEChip::tiny600, radio == 8) << radio;
        EXPECT_EQ(decoded.bleChip == AuriskBLEChip::unassigned, radio == 9) << radio;
        EXPECT_EQ(decoded.transEnable, radio >= 0x80) << radio;
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
