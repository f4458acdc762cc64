#include "Tools/aurisk/LiveLines.h"

namespace aurisk::tool {

void LiveLines::show(const std::string& name, const std::string& line)
{
    const auto clear = cleared();
    _lines[name] = line;
    _sink.draw(clear + drawn());
}

void LiveLines::end(const std::string& name)
{
    const auto clear = cleared();
    if (_lines.erase(name) > 0)
        _sink.draw(clear + drawn());
}

void LiveLines::out(const std::string& line)
{
    if (_lines.empty())
        return _sink.out(line);
    _sink.draw(cleared());
    _sink.out(line);
    _sink.draw(drawn());
}

/// Both outputs may be the same terminal.
void LiveLines::err(const std::string& line)
{
    if (_lines.empty())
        return _sink.err(line);
    _sink.draw(cleared());
    _sink.err(line);
    _sink.draw(drawn());
}

/// From the end of the last line to an empty place where the first one began.
std::string LiveLines::cleared() const
{
    constexpr auto up = "\033[A", toTheEnd = "\033[J";
    if (_lines.empty())
        return {};
    std::string text = "\r";
    for (std::size_t i = 1; i < _lines.size(); ++i)
        text += up;
    return text + toTheEnd;
}

/// A terminal that is too narrow cuts the lines off: one that goes on in the next row could not be cleared.
std::string LiveLines::drawn() const
{
    constexpr auto cutOff = "\033[?7l", wrap = "\033[?7h";
    std::string text;
    for (const auto& [name, line] : _lines)
        text += (text.empty() ? "" : "\n") + (cutOff + line + wrap);
    return text;
}

} // namespace aurisk::tool
