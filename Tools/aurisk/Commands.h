#pragma once

#include "Tools/aurisk/Session.h"

#include <functional>
#include <optional>

namespace aurisk::tool {

/// How a command is carried out.
struct Plan {
    /// With each device, once that is connected: asks, tells, and finishes the session. Empty for a command that talks
    /// to no device.
    std::function<void(Session&)> play = nullptr;

    /// Says of each device, before any is connected, why the command cannot be done with it. May throw a UsageError.
    std::function<std::optional<Failure>(const AuriskAccessory&)> check = nullptr;

    /// The same two for a hearing aid of the PL3 family. Without `playPL3` the command is not for those.
    std::function<void(Session&)> playPL3 = nullptr;
    std::function<std::optional<Failure>(const PL3Accessory&)> checkPL3 = nullptr;

    /// Once, after all devices are done with and disconnected. May throw a UsageError.
    std::function<void(Output&)> conclude = nullptr;
};

/// Reads the files that the arguments name and checks all that can be without a device. Throws a UsageError.
Plan planOf(const Options& options);

// Those that have a file of their own.
void playInfo(Session& session);
void playTone(Session& session);
Plan planMonitor();
Plan planRaw(const Options& options);
Plan planDsp(const Options& options);
Plan planEq(const Options& options);
Plan planNoise(const Options& options);
Plan planDirection(const Options& options);
Plan planGlobal(const Options& options);
Plan planProfile(const Options& options);
Plan planLogs(const Options& options);
Plan planUpdate(const Options& options);

} // namespace aurisk::tool
