#pragma once

#include "AuriskSDK/Shared/Utils/EnumTable.h"

#include <cstdint>

namespace aurisk {

/// The values of the A4 chip's block.
namespace AuriskA4DspEnum {

/// What a program listens to.
enum class InputMode : std::uint8_t { ai0TC, ai1Mic1, ai2DAIAUX, ai3Mic2, fixedHyperCardioid, ai1Ai2, ai0Ai3 };

/// The gain of a microphone's preamplifier.
enum class PreampGain : std::uint8_t { db0, db12, db15, db18, db21, db24, db27, db30 };

enum class FeedbackCanceler : std::uint8_t { off, on };

enum class Expansion : std::uint8_t { off, on };

enum class NoiseReduction : std::uint8_t { off, low, medium, high };

enum class LowCutFilter : std::uint8_t { hz200, hz500, hz750, hz1000, hz1500, hz2000, hz3000 };

/// 8000 Hz, the highest, stands for no filter at all.
enum class HighCutFilter : std::uint8_t { hz8000, hz4000, hz3150, hz2500, hz2000, hz1600, hz1250 };

enum class CompressionRatio : std::uint8_t { ratio1_0, ratio1_14, ratio1_33, ratio1_60, ratio2_0, ratio2_56, ratio4_0 };

enum class CompressionThreshold : std::uint8_t { db40, db45, db50, db55, db60, db65, db70 };

enum class MaximumPowerOutput : std::uint8_t { muo, dbMinus4, dbMinus8, dbMinus12, dbMinus16, dbMinus20, dbMinus24 };

enum class EqualizerGain : std::uint8_t {
    dbMinus30,
    dbMinus28,
    dbMinus26,
    dbMinus24,
    dbMinus22,
    dbMinus20,
    dbMinus18,
    dbMinus16,
    dbMinus14,
    dbMinus12,
    dbMinus10,
    dbMinus8,
    dbMinus6,
    dbMinus4,
    dbMinus2,
    db0
};

/// A band of the equaliser, by its centre.
enum class FrequencyBand : std::uint8_t {
    hz250,
    hz500,
    hz1000,
    hz1500,
    hz2000,
    hz2500,
    hz3000,
    hz3500,
    hz4000,
    hz5000,
    hz6000,
    hz7000
};

} // namespace AuriskA4DspEnum

template <>
inline constexpr auto enumCases<AuriskA4DspEnum::InputMode> = countingUp<AuriskA4DspEnum::InputMode::ai0Ai3>(
    { { "ai0TC", "AI0 (TC)" }, { "ai1Mic1", "AI1 (Mic1)" }, { "ai2DAIAUX", "AI2 (DAI/AUX)" },
        { "ai3Mic2", "AI3 (Mic2)" }, { "fixedHyperCardioid", "Fixed Hyper Cardioid(Mic1+Mic2)" },
        { "ai1Ai2", "AI1+AI2(Mic1+DAI)" }, { "ai0Ai3", "AI0+AI3(TC+MIC2)" } });
template <>
inline constexpr auto enumCases<AuriskA4DspEnum::PreampGain> = countingUp<AuriskA4DspEnum::PreampGain::db30>(
    { "db0", "db12", "db15", "db18", "db21", "db24", "db27", "db30" });
template <>
inline constexpr auto enumCases<AuriskA4DspEnum::FeedbackCanceler> = countingUp<AuriskA4DspEnum::FeedbackCanceler::on>(
    { { "off", "OFF" }, { "on", "On" } });
template <>
inline constexpr auto enumCases<AuriskA4DspEnum::Expansion> = countingUp<AuriskA4DspEnum::Expansion::on>(
    { { "off", "OFF" }, { "on", "On" } });
template <>
inline constexpr auto enumCases<AuriskA4DspEnum::NoiseReduction> = countingUp<AuriskA4DspEnum::NoiseReduction::high>(
    { { "off", "Off" }, { "low", "Low(-7dB)" }, { "medium", "Medium(-10dB)" }, { "high", "High(-13dB)" } });
template <>
inline constexpr auto enumCases<AuriskA4DspEnum::LowCutFilter> = countingUp<AuriskA4DspEnum::LowCutFilter::hz3000>(
    { "hz200", "hz500", "hz750", "hz1000", "hz1500", "hz2000", "hz3000" });
template <>
inline constexpr auto enumCases<AuriskA4DspEnum::HighCutFilter> = countingUp<AuriskA4DspEnum::HighCutFilter::hz1250>(
    { { "hz8000", "8000(off)" }, "hz4000", "hz3150", "hz2500", "hz2000", "hz1600", "hz1250" });
template <>
inline constexpr auto enumCases<AuriskA4DspEnum::CompressionRatio> = countingUp<
    AuriskA4DspEnum::CompressionRatio::ratio4_0>(
    { "ratio1_0", "ratio1_14", "ratio1_33", "ratio1_60", "ratio2_0", "ratio2_56", "ratio4_0" });
template <>
inline constexpr auto enumCases<AuriskA4DspEnum::CompressionThreshold> = countingUp<
    AuriskA4DspEnum::CompressionThreshold::db70>({ "db40", "db45", "db50", "db55", "db60", "db65", "db70" });
template <>
inline constexpr auto enumCases<AuriskA4DspEnum::MaximumPowerOutput> = countingUp<
    AuriskA4DspEnum::MaximumPowerOutput::dbMinus24>({ { "muo", "Max Undistorted Output (MUO)" }, "dbMinus4", "dbMinus8",
    "dbMinus12", "dbMinus16", "dbMinus20", "dbMinus24" });
template <>
inline constexpr auto enumCases<AuriskA4DspEnum::EqualizerGain> = countingUp<AuriskA4DspEnum::EqualizerGain::db0>(
    { "dbMinus30", "dbMinus28", "dbMinus26", "dbMinus24", "dbMinus22", "dbMinus20", "dbMinus18", "dbMinus16",
        "dbMinus14", "dbMinus12", "dbMinus10", "dbMinus8", "dbMinus6", "dbMinus4", "dbMinus2", "db0" });
template <>
inline constexpr auto enumCases<AuriskA4DspEnum::FrequencyBand> = countingUp<AuriskA4DspEnum::FrequencyBand::hz7000>(
    { "hz250", "hz500", "hz1000", "hz1500", "hz2000", "hz2500", "hz3000", "hz3500", "hz4000", "hz5000", "hz6000",
        "hz7000" });

} // namespace aurisk
