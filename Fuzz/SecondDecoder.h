#pragma once

#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskResult.h"

#include <optional>

namespace aurisk::fuzz {

/// The rules of what a hearing aid sends, written a second time, so that an error in the library's decoder cannot hide
/// behind itself.
struct SecondDecoding {
    enum class Kind { noFrame, stop, result };

    Kind kind = Kind::noFrame; ///< stop: taking the value apart breaks a precondition
    std::optional<AuriskRawData> frame = {}; ///< there where the value is one, also where its contents stop
    std::optional<AuriskResult> result = {};
};

SecondDecoding decodeAgain(DataView received);

/// A received value that is a valid frame: the byte in front, FE 68, command, size, `body`, sum, 16.
Data frameAround(std::uint8_t command, DataView body);

} // namespace aurisk::fuzz
