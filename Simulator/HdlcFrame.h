#pragma once

#include "AuriskSDK/Platform/Data.h"

#include <vector>

namespace aurisk {

/// One frame of the PL3 protocol, as an aid reads and writes it.
///
///     7E length(2) command payload…       big-endian; behind the 7E, 7D and 7E stand as 7D 5D and 7D 5E
///
/// The length counts the payload, and in what a host writes the command, too.
struct HdlcFrame {
    std::uint8_t command = 0; ///< with the bit 0x80 in a host's reads, and in what answers them
    Data payload = {}; ///< at most 65535 bytes

    /// The frame as one notification.
    Data notified() const;
};

/// Puts together what a host writes piece by piece. A frame begins with each 7E and ends where its length says;
/// whatever stands between two frames is skipped.
class HdlcReceiver {
public:
    /// The frames that end in this piece.
    std::vector<HdlcFrame> receive(DataView piece);

private:
    Data _content; ///< of the frame so far, from its length on
    bool _hasBegun = false;
    bool _isEscaped = false; ///< the next byte is
};

} // namespace aurisk
