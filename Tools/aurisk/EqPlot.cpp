#include "Tools/aurisk/EqPlot.h"

#include "Tools/aurisk/TextLayout.h"

#include <fmt/format.h>

#include <algorithm>

namespace aurisk::tool {

namespace {

constexpr std::size_t axisWidth = 9, widestBand = 6;

struct Characters {
    std::string_view gain, below, axis, tick, corner, line;
};
constexpr Characters ascii{ "#", ":", "|", "+", "+", "-" };
constexpr Characters drawn{ "█", "░", "│", "┤", "└", "─" };

/// The frequencies below their bands; in two rows by turns where one is too narrow for them.
std::vector<std::string> scale(const std::vector<int>& frequencies, std::size_t bandWidth)
{
    std::size_t longest = 0;
    for (const int frequency : frequencies)
        longest = std::max(longest, std::to_string(frequency).size());
    std::vector<std::string> rows(longest < bandWidth ? 1 : 2);
    for (std::size_t i = 0; i < frequencies.size(); ++i) {
        const auto text = std::to_string(frequencies[i]);
        auto& row = rows[i % rows.size()];
        row.resize(
            std::max(row.size(), axisWidth + i * bandWidth + (bandWidth + 1 - std::min(bandWidth, text.size())) / 2),
            ' ');
        row += text;
    }
    rows.front() += " Hz";
    return rows;
}

} // namespace

std::vector<std::string> eqPlot(const SettingsBlock& program, bool drawing)
{
    const auto& with = drawing ? drawn : ascii;
    const auto& field = *fieldOf(program, "equalizerArray");
    const auto bandWidth = std::min(widestBand, (widestLine - axisWidth) / field.size);

    std::vector<std::string> lines;
    for (int level = field.most; level >= 0; --level) {
        const bool isMarked = (field.most - level) % 2 == 0;
        auto line = fmt::format("{:>7} {}", isMarked ? field.label(level) : "", isMarked ? with.tick : with.axis);
        for (std::size_t band = 0; band < field.size; ++band) {
            const int gain = field.get(program, band);
            line += ' ' + times(level == gain ? with.gain : level < gain ? with.below : " ", bandWidth - 1);
        }
        lines.push_back(withoutTrailingBlanks(std::move(line)));
    }
    lines.push_back(fmt::format("{:8}{}{}", "", with.corner, times(with.line, field.size * bandWidth)));
    for (auto& row : scale(frequenciesOf(program), bandWidth))
        lines.push_back(std::move(row));
    return lines;
}

} // namespace aurisk::tool
