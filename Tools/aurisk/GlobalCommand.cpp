#include "Tools/aurisk/SettingsTransfer.h"

#include <fmt/format.h>

namespace aurisk::tool {

namespace {

void playShow(Session& session)
{
    readBlock(session, {}, [](Session& self, const SettingsBlock& block) {
        const auto chip = caseName(self.device().hearChip());
        const auto* programs = fieldOf(block, "numberOfPrograms");
        const Fields fields
            = { { .key = "chip", .value = chip }, { .key = "numberOfPrograms", .value = programs->get(block, 0) },
                  { .key = "fields", .value = fieldsToJson(block) } };
        self.picture(
            fmt::format("numberOfPrograms {}, chip {}", programs->get(block, 0), chip), fields, fieldLines(block));
        self.finish();
    });
}

} // namespace

Plan planGlobal(const Options& options)
{
    switch (options.action) {
    case Action::show: return { .play = playShow, .check = whyWithoutSettings };
    case Action::set: return planChange(options, BlockKind::global, fieldEdit);
    case Action::exportFile: return planExport(options, BlockKind::global);
    case Action::importFile: return planImport(options, BlockKind::global);
    }
    return {};
}

} // namespace aurisk::tool
