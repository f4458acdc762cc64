#pragma once

#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskA16Global.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskA4Global.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskChip.h"

#include <string>
#include <variant>

namespace aurisk {

/// The settings that all programs of a device share, whatever its chip.
class AuriskGlobalDsp {
public:
    using Block = std::variant<AuriskA4GlobalDsp, AuriskA16GlobalDsp>;

    AuriskGlobalDsp(AuriskA4GlobalDsp block)
        : _block(block)
    {
    }
    AuriskGlobalDsp(AuriskA16GlobalDsp block)
        : _block(block)
    {
    }

    /// The block that `data` hold on that chip. None where they are too short, and for a chip that is unassigned.
    static std::optional<AuriskGlobalDsp> decode(AuriskChip chip, DataView data);

    const Block& block() const { return _block; }
    Block& block() { return _block; }

    /// As the device counts them: up to 3 fit on an A4 chip, up to 7 on an A16.
    int numberOfPrograms() const;
    void setNumberOfPrograms(int number);

    /// The bytes that travel. A value that does not fit its field is a broken precondition.
    Data toData() const;

    friend bool operator==(const AuriskGlobalDsp&, const AuriskGlobalDsp&) = default;

private:
    Block _block;
};

std::string description(const AuriskGlobalDsp& global);

} // namespace aurisk
