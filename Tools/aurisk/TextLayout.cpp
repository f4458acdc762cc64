#include "Tools/aurisk/TextLayout.h"

#include <fmt/format.h>

#include <algorithm>

namespace aurisk::tool {

std::vector<std::string> aligned(const Table& rows)
{
    std::vector<std::size_t> widths;
    for (const auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], row[i].size());
    }
    std::vector<std::string> lines;
    for (const auto& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            const bool isNumber = !row[i].empty() && row[i].find_first_not_of("0123456789") == std::string::npos;
            line += isNumber ? fmt::format("  {:>{}}", row[i], widths[i]) : fmt::format("  {:<{}}", row[i], widths[i]);
        }
        lines.push_back(withoutTrailingBlanks(std::move(line)));
    }
    return lines;
}

std::string times(std::string_view character, std::size_t count)
{
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += character;
    return text;
}

std::string withoutTrailingBlanks(std::string text)
{
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

} // namespace aurisk::tool
