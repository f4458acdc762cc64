#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskEnums.h"

#include <fmt/format.h>

namespace aurisk {

std::string caseLabel(std::string_view name, std::string_view text)
{
    const auto number = numberInName(name);
    if (!text.empty() || !number)
        return std::string(text);
    if (name.starts_with("ratio"))
        return fmt::format("{:.2f} : 1", *number);
    const auto unit = name.starts_with("hz") ? "Hz" : name.starts_with("ms") ? "ms" : "dB";
    return fmt::format("{:.0f} {}", *number, unit);
}

} // namespace aurisk
