#include "Tools/aurisk/ProgressBar.h"

#include "Tools/aurisk/TextLayout.h"
#include "Tools/aurisk/Values.h"

#include <fmt/format.h>

#include <algorithm>

namespace aurisk::tool {

namespace {

bool beginsCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }

std::size_t characterCount(const std::string& text)
{
    return std::size_t(std::count_if(text.begin(), text.end(), beginsCharacter));
}

std::string firstCharacters(const std::string& text, std::size_t count)
{
    std::size_t end = 0;
    for (; end < text.size(); ++end)
        if (beginsCharacter(text[end]) && count-- == 0)
            break;
    return text.substr(0, end);
}

} // namespace

std::string progressBar(const std::string& name, int percent, const std::string& text, const Style& style)
{
    constexpr std::size_t longestName = 20, shortestBar = 10, longestBar = 30;
    const auto head = firstCharacters(printable(name), longestName) + "  ";
    const auto tail = fmt::format("  {:3} %  {}", percent, text);
    const auto taken = characterCount(head) + characterCount(tail) + 1; // the last column stays free
    const auto room = std::min(style.columns - std::min(taken, style.columns), longestBar);
    const auto width = room < shortestBar ? 0 : room;
    const auto full = width * std::size_t(std::clamp(percent, 0, 100)) / 100;
    const auto bar = times(style.drawing ? "█" : "#", full) + times(style.drawing ? "░" : ".", width - full);
    return withoutTrailingBlanks(head + bar + tail);
}

std::string clockText(Seconds span)
{
    constexpr long perMinute = 60, perHour = 3600;
    const auto seconds = long(span.count());
    if (seconds < perHour)
        return fmt::format("{}:{:02}", seconds / perMinute, seconds % perMinute);
    return fmt::format("{}:{:02}:{:02}", seconds / perHour, seconds % perHour / perMinute, seconds % perMinute);
}

} // namespace aurisk::tool
