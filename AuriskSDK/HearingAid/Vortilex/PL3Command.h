#pragma once

#include "AuriskSDK/Shared/Utils/EnumTable.h"

#include <cstdint>
#include <string_view>

namespace aurisk {

/// What a frame of the PL3 family is about: its command byte, without the read flag. The label is its name in the log.
enum class PL3Command : std::uint8_t {
    volumeLevel,
    program,
    deviceSettings,
    batteryLevel,
    orientation,
    burnLiveSettings,
    bandEQs,
    compRatios,
    compTimes,
    compThreshold,
    mpoConfig,
    inputSettings,
    rpsCommands,
    updateAdvertising,
    streamingStatus,
    muteUnmute,
    clearPASList,
    clearBLEBondList,
    modelNumber,
    manufacturer,
    unknown,
};

template <>
inline constexpr auto enumCases<PL3Command> = countingUp<PL3Command::unknown>({
    { "volumeLevel", "Volume Level" },
    { "program", "Program" },
    { "deviceSettings", "Device Settings" },
    { "batteryLevel", "Battery Level" },
    { "orientation", "Device Orientation" },
    { "burnLiveSettings", "Burn Live Settings" },
    { "bandEQs", "Band EQ" },
    { "compRatios", "Comp Ratio" },
    { "compTimes", "Comp Time" },
    { "compThreshold", "Comp Treshold" },
    { "mpoConfig", "MPO Config" },
    { "inputSettings", "Input Settings" },
    { "rpsCommands", "RPS Commands" },
    { "updateAdvertising", "Update Advertising" },
    { "streamingStatus", "Streaming Status " },
    { "muteUnmute", "RPS Mute/Unmute" },
    { "clearPASList", "RPS Clear PAS Pair List" },
    { "clearBLEBondList", "Clear BLE Bond List" },
    { "modelNumber", "?????" },
    { "manufacturer", "?????" },
    { "unknown", "?????" },
});

constexpr std::string_view name(PL3Command command) { return enumCase(command)->label; }

} // namespace aurisk
