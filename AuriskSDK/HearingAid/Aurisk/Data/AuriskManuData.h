#pragma once

#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskChip.h"
#include "AuriskSDK/Platform/Data.h"

#include <string>
#include <string_view>

namespace aurisk {

/// What the manufacturer data of an advertisement says about a device.
///
///     FE FE  address (6)  radio chip, bit 7: transparency  hearing-aid chip
///
/// The flag and the radio chip share a byte: with the flag set, the chip reads as `u87`.
struct AuriskManuData {
    std::string address = {}; ///< "0A:1B:2C:3D:4E:5F"
    AuriskChip hearChip = AuriskChip::a4;
    AuriskBLEChip bleChip = AuriskBLEChip::u87;
    bool transEnable = false;

    /// Never fails: what is not there, or names no chip, takes the defaults above; a cut address gives the bytes it
    /// has.
    explicit AuriskManuData(DataView mfgData);

    friend bool operator==(const AuriskManuData&, const AuriskManuData&) = default;
};

/// Two upper-case digits a byte, joined by `separator`.
std::string manuDataToMac(DataView data, std::string_view separator);

} // namespace aurisk
