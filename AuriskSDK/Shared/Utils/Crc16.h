#pragma once

#include "AuriskSDK/Platform/Data.h"

#include <cstdint>
#include <vector>

namespace aurisk {

/// Checksums of 16 bits by polynomial division, most significant bit first. Firmware images carry the one that is known
/// as CRC-16/XMODEM: polynomial 0x1021, initial value 0, nothing reversed. May be called from any thread.
class Crc16 {
public:
    Crc16() = delete;

    /// 256 entries: what the division leaves of each byte followed by 16 zero bits.
    static std::vector<std::uint16_t> generateCRCTable(std::uint16_t polynomial);

    /// `reverseInput` takes the bytes, not their bits, from the last to the first. `reverseOutput` applies
    /// `finalXORValue`, which counts for nothing without it; it reverses nothing. Both are so deliberately.
    static std::uint16_t crc16(DataView data, std::uint16_t polynomial, std::uint16_t initialValue,
        std::uint16_t finalXORValue, bool reverseInput, bool reverseOutput);
};

} // namespace aurisk
