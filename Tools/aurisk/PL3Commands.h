#pragma once

#include "Tools/aurisk/Session.h"

#include <optional>

/// What commands do with a hearing aid of the PL3 family.

namespace aurisk::tool {

void playPL3Info(Session& session);
void playPL3Program(Session& session);
void playPL3Volume(Session& session);
void playPL3Mute(Session& session);
void playPL3Battery(Session& session);

/// The settings of the running program, which is the only one whose settings such a device tells.
void playPL3Settings(Session& session);

std::optional<Failure> whyWithoutAllPrograms(const Options& options, const PL3Accessory& device);

/// One volume goes for all programs, so `--program` has no meaning.
std::optional<Failure> whyWithoutVolumeOfProgram(const Options& options, const PL3Accessory& device);

/// The number that is the whole of an answer; ends the session where the answer is another one.
void readNumber(Session& session, PL3Command command, Session::ThenWith<int> then);

} // namespace aurisk::tool
