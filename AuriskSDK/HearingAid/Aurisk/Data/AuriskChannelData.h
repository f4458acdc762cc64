#pragma once

namespace aurisk {

/// One band as plain numbers, to show it.
struct AuriskChannelData {
    int freq = 0; ///< Hz
    int eq = 0; ///< raw value of the band's equaliser gain; so are the others of theirs
    int compressThreshold = 0;
    int compressRatio = 0;
    int mpo = 0;

    friend bool operator==(const AuriskChannelData&, const AuriskChannelData&) = default;
};

} // namespace aurisk
