#pragma once

#include "AuriskSDK/Platform/Data.h"

#include <cstdint>
#include <utility>

namespace aurisk {

/// Builds a payload: numbers one after another, little-endian.
class ByteWriter {
public:
    ByteWriter& u8(std::uint8_t value) { return put(value, 1); }
    ByteWriter& u16(std::uint16_t value) { return put(value, 2); }
    ByteWriter& u32(std::uint32_t value) { return put(value, 4); }

    Data take() { return std::move(_bytes); }

private:
    ByteWriter& put(std::uint32_t value, int size)
    {
        for (int i = 0; i < size; ++i)
            _bytes.push_back(static_cast<std::uint8_t>(value >> 8 * i));
        return *this;
    }

    Data _bytes;
};

} // namespace aurisk
