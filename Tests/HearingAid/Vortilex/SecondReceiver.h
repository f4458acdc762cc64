#pragma once

#include "AuriskSDK/Platform/Data.h"

namespace aurisk::tests {

/// The frame that a PL3 device has sent, read byte by byte and by nothing of the library's.
struct ReceivedAgain {
    unsigned length = 0, command = 0;
    Data payload = {};

    /// One notification; what none of its bytes touches stays as it was.
    void take(DataView bytes)
    {
        unsigned place = 0, taken = 0;
        bool isEscaped = false;
        for (const auto byte : bytes) {
            if (byte == 0x7D) {
                isEscaped = true;
            } else if (byte == 0x7E) {
                *this = {};
                place = 0;
            } else {
                put(place, isEscaped ? byte ^ 0x20U : byte, taken);
                isEscaped = false;
            }
        }
    }

private:
    static constexpr unsigned payloadPlace = 3;

    void put(unsigned& place, unsigned value, unsigned& taken)
    {
        if (place == 0)
            length = value * 256;
        else if (place == 1)
            length += value;
        else if (place == 2)
            command = value % 128;
        else if (place == payloadPlace) {
            payload.push_back(static_cast<std::uint8_t>(value));
            taken = (taken + 1) % 65536;
        }
        if (place < payloadPlace || (place == payloadPlace && taken >= length))
            ++place;
    }
};

} // namespace aurisk::tests
