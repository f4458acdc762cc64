#pragma once

#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskA16Dsp.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskA4Dsp.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskChip.h"

#include <string>
#include <variant>

namespace aurisk {

/// The parameters of one program, whatever its chip.
class AuriskDsp {
public:
    using Block = std::variant<AuriskA4Dsp, AuriskA16Dsp>;

    AuriskDsp(AuriskA4Dsp block)
        : _block(block)
    {
    }
    AuriskDsp(AuriskA16Dsp block)
        : _block(block)
    {
    }

    /// The block that `bytes` hold on that chip. None where they hold none, and for a chip that is unassigned.
    static std::optional<AuriskDsp> decode(AuriskChip chip, DataView bytes);

    const Block& block() const { return _block; }
    Block& block() { return _block; }

    // What the blocks of both chips have; see there.
    AuriskDirection direction() const;
    void setDirection(AuriskDirection direction);
    AuriskNoise noise() const;
    void setNoise(AuriskNoise noise);
    std::vector<int> frequences() const; ///< Hz
    int minEQValue() const;
    int maxEQValue() const; ///< one past the largest value
    void setEq(int eq, int frequency);
    std::optional<int> getEq(int frequency) const;

    /// The bytes that travel. A value that does not fit its field is a broken precondition.
    Data toBytes() const;

    friend bool operator==(const AuriskDsp&, const AuriskDsp&) = default;

private:
    Block _block;
};

std::string description(const AuriskDsp& dsp);

} // namespace aurisk
