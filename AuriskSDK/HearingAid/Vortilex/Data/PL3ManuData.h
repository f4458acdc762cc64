#pragma once

#include "AuriskSDK/HearingAid/AccessoryOrientation.h"
#include "AuriskSDK/Platform/Data.h"

#include <cstdint>
#include <string>

namespace aurisk {

/// What the manufacturer data of a PL3 advertisement says about a device. Numbers are little-endian.
///
///     C6 03  ear: 2 left, 3 right  manufacturer (2)  model (2)
struct PL3ManuData {
    AccessoryOrientation orientation = AccessoryOrientation::unassigned;
    std::string modelName = {}; ///< the model's number in decimal digits
    std::uint16_t manufacturerId = 0;

    /// Fewer than seven bytes are a broken precondition; what follows them is ignored.
    explicit PL3ManuData(DataView mfgData);

    friend bool operator==(const PL3ManuData&, const PL3ManuData&) = default;
};

} // namespace aurisk
