#pragma once

#include "Tools/aurisk/Session.h"

namespace aurisk::tool {

/// What a command does with one device, once that is connected: asks, tells, and finishes the session.
using Play = void (*)(Session&);

/// None for a command that talks to no device.
Play playOf(Command command);

// Those that have a file of their own.
void playInfo(Session& session);
void playTone(Session& session);
void playMonitor(Session& session);
void playRaw(Session& session);

} // namespace aurisk::tool
