#pragma once

#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskRawData.h"
#include "AuriskSDK/Shared/Utils/LabelledCase.h"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace aurisk {

/// The logs that an A16 hearing aid keeps.
enum class AuriskDataLogType { summary, userEvent, feedback, loopGain };

template <>
inline constexpr auto enumCases<AuriskDataLogType> = countingUp<AuriskDataLogType::loopGain>(
    { "summary", "userEvent", "feedback", "loopGain" });

/// The frames that read a log, in the order in which they are sent. No frames read `feedback`: asking for them is a
/// broken precondition, deliberately.
std::vector<AuriskRawData> rawDataArray(AuriskDataLogType type);

// The records of the summary, each a run of 32-bit numbers in the order of their declaration.

/// How one program was used.
struct AuriskProgramRunDataLog {
    std::uint32_t totalRunTime = 0;
    std::uint32_t vcIndex = 0; ///< of the volume control
    std::uint32_t lessThan50 = 0; ///< run time by the level of the sound around, in dB
    std::uint32_t between50And60 = 0;
    std::uint32_t between60And70 = 0;
    std::uint32_t between70And80 = 0;
    std::uint32_t greaterThan80 = 0;

    static constexpr auto fields = labelled("AuriskProgramRunDataLog",
        label("totalRunTime", &AuriskProgramRunDataLog::totalRunTime),
        label("vcIndex", &AuriskProgramRunDataLog::vcIndex), label("lessThan50", &AuriskProgramRunDataLog::lessThan50),
        label("between50And60", &AuriskProgramRunDataLog::between50And60),
        label("between60And70", &AuriskProgramRunDataLog::between60And70),
        label("between70And80", &AuriskProgramRunDataLog::between70And80),
        label("greaterThan80", &AuriskProgramRunDataLog::greaterThan80));
    friend bool operator==(const AuriskProgramRunDataLog&, const AuriskProgramRunDataLog&) = default;
};

/// How often the device was worn how long at a stretch, in hours.
struct AuriskRunTimeHistory {
    std::uint32_t lessHalfAnHour = 0;
    std::uint32_t between05And2 = 0;
    std::uint32_t between2And4 = 0;
    std::uint32_t between4And8 = 0;
    std::uint32_t between8And12 = 0;
    std::uint32_t between12And16 = 0;
    std::uint32_t between16And20 = 0;
    std::uint32_t greaterThan20 = 0;

    static constexpr auto fields
        = labelled("AuriskRunTimeHistory", label("lessHalfAnHour", &AuriskRunTimeHistory::lessHalfAnHour),
            label("between05And2", &AuriskRunTimeHistory::between05And2),
            label("between2And4", &AuriskRunTimeHistory::between2And4),
            label("between4And8", &AuriskRunTimeHistory::between4And8),
            label("between8And12", &AuriskRunTimeHistory::between8And12),
            label("between12And16", &AuriskRunTimeHistory::between12And16),
            label("between16And20", &AuriskRunTimeHistory::between16And20),
            label("greaterThan20", &AuriskRunTimeHistory::greaterThan20));
    friend bool operator==(const AuriskRunTimeHistory&, const AuriskRunTimeHistory&) = default;
};

/// Run times and battery changes: 228 bytes, little-endian.
struct AuriskSummaryDataLog {
    std::uint32_t totalRunTime = 0;
    std::uint32_t runTimeSincePowerUp = 0;
    std::uint32_t numberOfBatteryChanges = 0;
    std::uint32_t batteryChangeHours = 0;
    std::uint32_t lowBatteryFlag = 0;
    std::array<AuriskProgramRunDataLog, 6> program = {}; ///< programs counted from 0
    AuriskRunTimeHistory runTimeHistory = {};
    std::uint32_t unUsedWord = 0;
    std::uint32_t CRC = 0; ///< as received, not checked

    static constexpr auto fields
        = labelled("AuriskSummaryDataLog", label("totalRunTime", &AuriskSummaryDataLog::totalRunTime),
            label("runTimeSincePowerUp", &AuriskSummaryDataLog::runTimeSincePowerUp),
            label("numberOfBatteryChanges", &AuriskSummaryDataLog::numberOfBatteryChanges),
            label("batteryChangeHours", &AuriskSummaryDataLog::batteryChangeHours),
            label("lowBatteryFlag", &AuriskSummaryDataLog::lowBatteryFlag),
            label("program", &AuriskSummaryDataLog::program),
            label("runTimeHistory", &AuriskSummaryDataLog::runTimeHistory),
            label("unUsedWord", &AuriskSummaryDataLog::unUsedWord), label("CRC", &AuriskSummaryDataLog::CRC));

    /// Decodes the first 228 bytes. None for fewer, with a line on standard output.
    static std::optional<AuriskSummaryDataLog> decode(DataView data);

    friend bool operator==(const AuriskSummaryDataLog&, const AuriskSummaryDataLog&) = default;
};

} // namespace aurisk
