#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskDsp.h"

#include "AuriskSDK/Shared/Utils/LabelledCase.h"
#include "AuriskSDK/Shared/Utils/Precondition.h"

#include <algorithm>

namespace aurisk {

template <std::size_t Size> SettingsBlock<Size>::SettingsBlock(DataView bytes)
{
    precondition(bytes.size() >= Size, "a block of {} bytes was given {}", Size, bytes.size());
    std::copy_n(bytes.begin(), Size, _bytes.begin());
}

template class SettingsBlock<9>;
template class SettingsBlock<12>;
template class SettingsBlock<56>;

Data AuriskDsp::toBytes() const
{
    return std::visit([](const auto& block) { return block.toBytes(); }, _block);
}

Data AuriskGlobalDsp::toData() const
{
    return std::visit([](const auto& block) { return block.toData(); }, _block);
}

std::string description(const AuriskDsp& dsp) { return description(dsp.toBytes()); }

std::string description(const AuriskGlobalDsp& global) { return description(global.toData()); }

} // namespace aurisk
