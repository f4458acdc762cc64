#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskGlobalDsp.h"

#include "AuriskSDK/Shared/Utils/LabelledCase.h"

#include <fmt/format.h>

namespace aurisk {

std::optional<AuriskGlobalDsp> AuriskGlobalDsp::decode(AuriskChip chip, DataView data)
{
    switch (chip) {
    case AuriskChip::h01:
    case AuriskChip::a4: return AuriskA4GlobalDsp::decode(data);
    case AuriskChip::a16: return AuriskA16GlobalDsp::decode(data);
    case AuriskChip::unassigned: break;
    }
    return std::nullopt;
}

int AuriskGlobalDsp::numberOfPrograms() const
{
    return std::visit(overloaded{ [](const AuriskA4GlobalDsp& block) { return block.numberOfPrograms(); },
                          [](const AuriskA16GlobalDsp& block) { return block.numberOfPrograms; } },
        _block);
}

void AuriskGlobalDsp::setNumberOfPrograms(int number)
{
    std::visit(overloaded{ [&](AuriskA4GlobalDsp& block) { block.setNumberOfPrograms(number); },
                   [&](AuriskA16GlobalDsp& block) { block.numberOfPrograms = number; } },
        _block);
}

Data AuriskGlobalDsp::toData() const
{
    return std::visit([](const auto& block) { return block.toData(); }, _block);
}

std::string description(const AuriskGlobalDsp& global)
{
    return std::visit([]<typename Block>(const Block&) { return fmt::format("{} bytes", bits::bitCount<Block>() / 8); },
        global.block());
}

} // namespace aurisk
