#include "Tools/aurisk/UsagePicture.h"

#include "Tools/aurisk/TextLayout.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace aurisk::tool {

namespace {

constexpr std::uint64_t barWidth = 40;

struct Level {
    std::uint32_t AuriskProgramRunDataLog::*runTime;
    std::string_view label;
    std::string_view ascii, drawn;
};
constexpr std::array<Level, 5> soundLevels = { {
    { &AuriskProgramRunDataLog::lessThan50, "below 50", ".", "·" },
    { &AuriskProgramRunDataLog::between50And60, "50 to 60", "-", "░" },
    { &AuriskProgramRunDataLog::between60And70, "60 to 70", "=", "▒" },
    { &AuriskProgramRunDataLog::between70And80, "70 to 80", "%", "▓" },
    { &AuriskProgramRunDataLog::greaterThan80, "above 80", "#", "█" },
} };

struct Span {
    std::uint32_t AuriskRunTimeHistory::*count;
    std::string_view label;
};
constexpr std::array<Span, 8> runTimes = { {
    { &AuriskRunTimeHistory::lessHalfAnHour, "under 0.5 h" },
    { &AuriskRunTimeHistory::between05And2, "0.5 to 2 h" },
    { &AuriskRunTimeHistory::between2And4, "2 to 4 h" },
    { &AuriskRunTimeHistory::between4And8, "4 to 8 h" },
    { &AuriskRunTimeHistory::between8And12, "8 to 12 h" },
    { &AuriskRunTimeHistory::between12And16, "12 to 16 h" },
    { &AuriskRunTimeHistory::between16And20, "16 to 20 h" },
    { &AuriskRunTimeHistory::greaterThan20, "over 20 h" },
} };

std::string_view characterOf(const Level& level, bool drawing) { return drawing ? level.drawn : level.ascii; }

/// The length of a part of a bar, which is rounded, but nothing only where the part is.
std::size_t lengthOf(std::uint64_t part, std::uint64_t whole)
{
    if (part == 0)
        return 0;
    return std::size_t(std::max<std::uint64_t>((part * barWidth + whole / 2) / whole, 1));
}

/// The levels of sound one after another. All of it is as long as the bar, but for rounding.
std::string levelBar(const AuriskProgramRunDataLog& program, bool drawing)
{
    std::uint64_t whole = 0;
    for (const auto& level : soundLevels)
        whole += program.*level.runTime;
    std::string bar;
    for (const auto& level : soundLevels)
        bar += times(characterOf(level, drawing), lengthOf(program.*level.runTime, whole));
    return bar;
}

void append(std::vector<std::string>& lines, const Table& rows)
{
    lines.emplace_back();
    for (auto& line : aligned(rows))
        lines.push_back(std::move(line));
}

Table totals(const AuriskSummaryDataLog& log)
{
    return {
        { "run time", std::to_string(log.totalRunTime) },
        { "run time since power-up", std::to_string(log.runTimeSincePowerUp) },
        { "battery changes", std::to_string(log.numberOfBatteryChanges) },
        { "hours of the battery", std::to_string(log.batteryChangeHours) },
        { "low-battery flag", std::to_string(log.lowBatteryFlag) },
    };
}

Table programRows(const AuriskSummaryDataLog& log, bool drawing)
{
    Table rows = { { "PROGRAM", "RUN TIME", "VOLUME INDEX", "LEVELS OF SOUND" } };
    for (std::size_t i = 0; i < log.program.size(); ++i) {
        const auto& program = log.program[i];
        rows.push_back({ std::to_string(i), std::to_string(program.totalRunTime), std::to_string(program.vcIndex),
            levelBar(program, drawing) });
    }
    return rows;
}

std::string legend(bool drawing)
{
    std::string text;
    for (const auto& level : soundLevels)
        text += fmt::format("  {} {}", characterOf(level, drawing), level.label);
    return text;
}

Table historyRows(const AuriskRunTimeHistory& history, bool drawing)
{
    std::uint64_t most = 0;
    for (const auto& span : runTimes)
        most = std::max<std::uint64_t>(most, history.*span.count);
    Table rows = { { "RUN TIME", "TIMES", "" } };
    for (const auto& span : runTimes)
        rows.push_back({ std::string(span.label), std::to_string(history.*span.count),
            times(drawing ? "█" : "#", lengthOf(history.*span.count, most)) });
    return rows;
}

} // namespace

std::vector<std::string> usagePicture(const AuriskSummaryDataLog& log, bool drawing)
{
    auto lines = aligned(totals(log));
    append(lines, programRows(log, drawing));
    lines.push_back(legend(drawing));
    append(lines, historyRows(log.runTimeHistory, drawing));
    return lines;
}

} // namespace aurisk::tool
