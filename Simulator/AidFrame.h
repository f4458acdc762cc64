#pragma once

#include "AuriskSDK/Platform/Data.h"

#include <cstddef>
#include <optional>

namespace aurisk {

/// One frame of the Aurisk protocol, as an aid reads and writes it.
///
///     FE 68 command size body… sum 16     sum: of the bytes from 68 to the end of the body, modulo 256
///
/// A body begins with the two identifiers of what the frame is about; its payload is the rest.
struct AidFrame {
    std::uint8_t command = 0;
    Data body = {};

    /// None where `written` is not exactly one frame.
    static std::optional<AidFrame> parse(DataView written);

    /// The frame with the byte of no meaning that aids put in front of everything they notify.
    Data notified() const;

    bool hasIdentifiers() const { return body.size() >= 2; }
    std::uint8_t first() const { return body[0]; }
    std::uint8_t second() const { return body[1]; }
    DataView payload() const { return DataView(body).subspan(2); }
};

/// The number that `bytes`, at most eight of them, hold with the least significant first.
std::uint64_t littleEndian(DataView bytes);

} // namespace aurisk
