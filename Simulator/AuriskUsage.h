#pragma once

#include "AuriskSDK/Platform/Data.h"

#include <array>
#include <cstdint>
#include <optional>

namespace aurisk {

struct AuriskAidState;

/// What an aid counts and writes down while it is worn. Times are in seconds of being on.
struct AuriskUsage {
    std::int64_t totalRunTime = 0;
    std::int64_t runTimeSincePowerUp = 0;
    std::int64_t batteryRunTime = 0; ///< since a battery was put in
    std::int64_t numberOfBatteryChanges = 0;
    std::array<std::int64_t, 6> programRunTimes = {}; ///< of the first six
    std::array<std::int64_t, 8> runTimeHistory = {}; ///< how often it was on for 0, 0.5, 2, 4, 8, 12, 16, 20 h or more
    Data userEvents = {}; ///< records of 8 bytes, the oldest first (docs/simulator.md)
    Data loopGains = {}; ///< the same, of 12 bytes

    friend bool operator==(const AuriskUsage&, const AuriskUsage&) = default;
};

/// What a record of a user event is about. Its value is that of the wearer's action.
enum class AuriskUserEvent : std::uint8_t { power = 0, program = 1, volume = 2, battery = 3, mute = 4 };

/// What the counters and the lists of records can hold.
constexpr std::int64_t mostCounted = 0xFFFFFFFF;
constexpr std::size_t userEventSize = 8, mostUserEventBytes = 40 * 57;
constexpr std::size_t loopGainSize = 12, mostLoopGainBytes = 20 * 57;

/// Time goes by for an aid that is on: it counts, and its battery drains, one percent in 12 minutes, down to 1.
void letPass(AuriskAidState& state, std::int64_t seconds);

/// The wearer has done something, which shows in the state already.
void noteUserEvent(AuriskAidState& state, AuriskUserEvent event, int value);

/// Counts a battery that was put in.
void noteNewBattery(AuriskUsage& usage);

/// Counts the time since power-up, which ends here.
void notePowerDown(AuriskUsage& usage);

/// One block of a log, by the number that requests give it; none where the aid keeps no such log.
std::optional<Data> readLog(const AuriskAidState& state, std::uint8_t block);

} // namespace aurisk
