#include "AuriskSDK/HearingAid/Vortilex/Data/PL3SettingsBlock.h"

#include "AuriskSDK/Shared/Utils/Precondition.h"

namespace aurisk {

std::string_view pl3Description(std::span<const std::string_view> table, std::uint8_t index, std::string_view what)
{
    precondition(index < table.size(), "{}: {} is outside 0 to {}", what, index, table.size() - 1);
    return table[index];
}

} // namespace aurisk
