#pragma once

#include "Tools/aurisk/Commands.h"
#include "Tools/aurisk/FieldEdit.h"

#include <utility>
#include <vector>

/// Reading and writing the settings of a connected device.

namespace aurisk::tool {

using ThenWithBlock = std::function<void(Session&, const SettingsBlock&)>;

/// The failure of a device that does not tell its chip; none for one that does.
std::optional<Failure> whyWithoutChip(const AuriskAccessory& device, std::string_view consequence);

/// The failure of a device that does not tell what form its settings have; none for one that does.
std::optional<Failure> whyWithoutSettings(const AuriskAccessory& device);

AuriskRequest readRequest(const AuriskAccessory& device, const BlockPlace& place);

/// Reads a block. `refused`: what to do where the device has none; empty: that is a failure.
void readBlock(Session& session, const BlockPlace& place, ThenWithBlock then, Session::Then refused = nullptr);

/// Writes a block and waits until that is acknowledged. `running`: the program to go back to at the end.
void writeBlock(Session& session, const BlockPlace& place, const SettingsBlock& block, std::optional<int> running,
    Session::Then then);

/// Goes on with the current program.
void readRunningProgram(Session& session, Session::ThenWith<int> then);

/// Goes on with the program that has to be switched to again once settings of programs have been written: none where
/// writing switches nothing.
void readProgramToRestore(Session& session, Session::ThenWith<std::optional<int>> then);

/// Goes on with the program that the arguments name, else with the current one.
void chooseProgram(Session& session, Session::ThenWith<int> then);

/// What became of values, one a line.
Fields changeFields(const std::vector<Difference>& changes);

/// The settings of programs, by number.
using ProgramBlocks = std::vector<std::pair<int, SettingsBlock>>;
using ThenWithPrograms = std::function<void(Session&, const ProgramBlocks&)>;

/// Reads the settings of the program that the arguments name or of all that the device has, else of the current one.
void readPrograms(Session& session, ThenWithPrograms then);

/// The command that changes a block: a program's or the shared one.
Plan planChange(const Options& options, BlockKind kind, EditReader reader);

} // namespace aurisk::tool
