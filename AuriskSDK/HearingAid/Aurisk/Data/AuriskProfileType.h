#pragma once

#include "AuriskSDK/Shared/Utils/EnumTable.h"

#include <cstdint>

namespace aurisk {

/// The fields of a device's profile, as requests name them.
enum class AuriskProfileType : std::uint8_t {
    productSeries = 0x00,
    productPattern = 0x01,
    productHard = 0x02,
    productSoft = 0x03,
    productSku = 0x04,
    productReserved = 0x05,
    productSeriesCode = 0x06,
    bluetoothHardPattern = 0x10,
    bluetoothHard = 0x11,
    bluetoothSoft = 0x12,
    advertisementName = 0x13,
    hearingAidChip = 0x22,
    ota = 0x20,
    unknown = 0x21,
};

template <>
inline constexpr auto enumCases<AuriskProfileType> = std::to_array<EnumCase<AuriskProfileType>>({
    { AuriskProfileType::productSeries, "productSeries" },
    { AuriskProfileType::productPattern, "productPattern" },
    { AuriskProfileType::productHard, "productHard" },
    { AuriskProfileType::productSoft, "productSoft" },
    { AuriskProfileType::productSku, "productSku" },
    { AuriskProfileType::productReserved, "productReserved" },
    { AuriskProfileType::productSeriesCode, "productSeriesCode" },
    { AuriskProfileType::bluetoothHardPattern, "bluetoothHardPattern" },
    { AuriskProfileType::bluetoothHard, "bluetoothHard" },
    { AuriskProfileType::bluetoothSoft, "bluetoothSoft" },
    { AuriskProfileType::advertisementName, "advertisementName" },
    { AuriskProfileType::hearingAidChip, "hearingAidChip" },
    { AuriskProfileType::ota, "ota" },
    { AuriskProfileType::unknown, "unknown" },
});

} // namespace aurisk
