#pragma once

#include "Tools/aurisk/Options.h"
#include "Tools/aurisk/SettingsBlock.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// Changes to a settings block, as people type them.

namespace aurisk::tool {

using Edit = std::function<void(SettingsBlock&)>;

/// What a change means for blocks of the same type as `form`. Throws a UsageError where it does not fit them.
using EditReader = Edit (*)(const SettingsBlock& form, const Assignment& change);

/// FIELD VALUE: the value is the name of a case, a raw number or a label; of a list all values with commas, or that of
/// one band, as FIELD@HZ. Also direction, noise and matrixGain.
Edit fieldEdit(const SettingsBlock& form, const Assignment& change);

/// HZ=DB: the gain of one band of the equaliser.
Edit equalizerEdit(const SettingsBlock& form, const Assignment& change);

/// The changes to blocks of that kind on that chip. Throws a UsageError where one of them does not fit.
std::vector<Edit> editsFor(BlockKind kind, AuriskChip chip, const std::vector<Assignment>& changes, EditReader reader);

/// Throws a UsageError where one of the changes fits no chip.
void checkForAnyChip(BlockKind kind, const std::vector<Assignment>& changes, EditReader reader);

/// Says that a command knows no such field, or that its value is missing where the value is the name of one.
[[noreturn]] void refuseField(const Assignment& change, std::string_view command, bool isValueAField);

/// One value that became another.
struct Difference {
    std::string name;
    std::optional<int> frequency = {}; ///< of the band in Hz
    std::string before, after; ///< what a fitter sees
    Json from, to; ///< names of cases, or numbers

    std::string place() const; ///< `equalizerArray@1000`
};

/// What `after` has other than `before`, a block of the same type: what a fitter sees first, then fields.
std::vector<Difference> differences(const SettingsBlock& before, const SettingsBlock& after);

} // namespace aurisk::tool
