#include "Tools/aurisk/PL3Commands.h"
#include "Tools/aurisk/SettingsTransfer.h"
#include "Tools/aurisk/TextLayout.h"
#include "Tools/aurisk/Values.h"

#include <fmt/format.h>

#include <algorithm>

namespace aurisk::tool {

namespace {

/// `-28 dB   6` for each band, below the name of the field.
std::vector<std::string> columnOf(const SettingsBlock& block, const BlockField& field)
{
    Table cells;
    for (std::size_t i = 0; i < field.size; ++i) {
        const int raw = field.get(block, i);
        cells.push_back({ field.label(raw), std::to_string(raw) });
    }
    std::vector<std::string> column = { std::string(field.name) };
    for (const auto& cell : aligned(cells))
        column.push_back(cell.substr(2));
    return column;
}

/// `table` with a column more.
Table wider(Table table, const std::vector<std::string>& column)
{
    for (std::size_t i = 0; i < column.size(); ++i)
        table[i].push_back(column[i]);
    return table;
}

bool isTooWide(const Table& table)
{
    const auto lines = aligned(table);
    return std::any_of(lines.begin(), lines.end(), [](const auto& line) { return line.size() > widestLine; });
}

/// A band a row. What is too wide for one table goes on in a second one.
std::vector<std::string> bands(const SettingsBlock& block)
{
    Table frequencies = { { "HZ" } };
    for (const int frequency : frequenciesOf(block))
        frequencies.push_back({ std::to_string(frequency) });
    std::vector<Table> tables;
    for (const auto& field : fieldsOf(block)) {
        if (!field.isList)
            continue;
        const auto column = columnOf(block, field);
        if (tables.empty() || isTooWide(wider(tables.back(), column)))
            tables.push_back(frequencies);
        tables.back() = wider(tables.back(), column);
    }
    std::vector<std::string> lines;
    for (const auto& table : tables) {
        lines.emplace_back();
        for (auto& line : aligned(table))
            lines.push_back(std::move(line));
    }
    return lines;
}

void show(Session& session, int program, const SettingsBlock& block)
{
    const auto chip = caseName(session.device().hearChip());
    Fields fields = { { .key = "program", .value = program }, { .key = "chip", .value = chip },
        { .key = "fields", .value = fieldsToJson(block) } };
    for (const auto& derived : derivedOf(block))
        fields.push_back({ .key = std::string(derived.name), .value = derived.value });
    auto lines = fieldLines(block);
    for (auto& line : bands(block))
        lines.push_back(std::move(line));
    session.picture(fmt::format("program {}, chip {}", program, chip), fields, lines);
}

void playShow(Session& session)
{
    readPrograms(session, [](Session& self, const ProgramBlocks& blocks) {
        for (const auto& [program, block] : blocks)
            show(self, program, block);
        self.finish();
    });
}

/// The settings of which programs can be asked for, differs from family to family.
void expectProgramWithBlock(const Options& options)
{
    if (options.program)
        wholeNumber("--program", std::to_string(*options.program), blockPrograms);
}

Plan planShow(const Options& options)
{
    return { .play = playShow,
        .check =
            [=](const AuriskAccessory& device) {
                expectProgramWithBlock(options);
                return whyWithoutSettings(device);
            },
        .playPL3 = playPL3Settings,
        .checkPL3 = [=](const PL3Accessory& device) { return whyWithoutAllPrograms(options, device); } };
}

} // namespace

std::vector<std::string> fieldLines(const SettingsBlock& block)
{
    const auto& fields = fieldsOf(block);
    const bool hasLabels
        = std::any_of(fields.begin(), fields.end(), [](const auto& field) { return !field.cases.empty(); });
    Table rows = { hasLabels ? std::vector<std::string>{ "FIELD", "VALUE", "RAW" }
                             : std::vector<std::string>{ "FIELD", "RAW" } };
    for (const auto& derived : derivedOf(block))
        rows.push_back({ std::string(derived.name), derived.text });
    for (const auto& field : fields) {
        if (field.isList)
            continue;
        const int raw = field.get(block, 0);
        rows.push_back({ std::string(field.name) });
        if (hasLabels)
            rows.back().push_back(field.cases.empty() ? "" : field.label(raw));
        rows.back().push_back(std::to_string(raw));
    }
    return aligned(rows);
}

Plan planDsp(const Options& options)
{
    if (options.action == Action::show)
        return planShow(options);
    expectProgramWithBlock(options);
    switch (options.action) {
    case Action::show: break;
    case Action::set: return planChange(options, BlockKind::program, fieldEdit);
    case Action::exportFile: return planExport(options, BlockKind::program);
    case Action::importFile: return planImport(options, BlockKind::program);
    }
    return {};
}

} // namespace aurisk::tool
