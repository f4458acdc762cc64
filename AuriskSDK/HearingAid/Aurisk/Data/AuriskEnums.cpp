#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskEnums.h"

#include <fmt/format.h>

namespace aurisk {

std::string caseLabel(std::string_view name, std::string_view text)
{
    const auto number = numberInName(name).value_or(0);
    if (!text.empty())
        return std::string(text);
    if (name.starts_with("ratio"))
        return fmt::format("{:.2f} : 1", number);
    for (const auto& [prefix, unit] : { std::pair("db", "dB"), std::pair("hz", "Hz"), std::pair("ms", "ms") })
        if (name.starts_with(prefix))
            return fmt::format("{:.0f} {}", number, unit);
    return {};
}

} // namespace aurisk
