#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskDsp.h"

namespace aurisk {

std::optional<AuriskDsp> AuriskDsp::decode(AuriskChip chip, DataView bytes)
{
    switch (chip) {
    case AuriskChip::h01:
    case AuriskChip::a4: return AuriskA4Dsp::decode(bytes);
    case AuriskChip::a16: return AuriskA16Dsp::decode(bytes);
    case AuriskChip::unassigned: break;
    }
    return std::nullopt;
}

AuriskDirection AuriskDsp::direction() const
{
    return std::visit([&](const auto& block) { return block.direction(); }, _block);
}

AuriskNoise AuriskDsp::noise() const
{
    return std::visit([&](const auto& block) { return block.noise(); }, _block);
}

std::vector<int> AuriskDsp::frequences() const
{
    return std::visit([&](const auto& block) { return block.frequences(); }, _block);
}

int AuriskDsp::minEQValue() const
{
    return std::visit([&](const auto& block) { return block.minEQValue(); }, _block);
}

int AuriskDsp::maxEQValue() const
{
    return std::visit([&](const auto& block) { return block.maxEQValue(); }, _block);
}

std::optional<int> AuriskDsp::getEq(int frequency) const
{
    return std::visit([&](const auto& block) { return block.getEq(frequency); }, _block);
}

Data AuriskDsp::toBytes() const
{
    return std::visit([&](const auto& block) { return block.toBytes(); }, _block);
}

void AuriskDsp::setDirection(AuriskDirection direction)
{
    std::visit([&](auto& block) { block.setDirection(direction); }, _block);
}

void AuriskDsp::setNoise(AuriskNoise noise)
{
    std::visit([&](auto& block) { block.setNoise(noise); }, _block);
}

void AuriskDsp::setEq(int eq, int frequency)
{
    std::visit([&](auto& block) { block.setEq(eq, frequency); }, _block);
}

std::string description(const AuriskDsp& dsp)
{
    return std::visit([](const auto& block) { return description(block); }, dsp.block());
}

} // namespace aurisk
