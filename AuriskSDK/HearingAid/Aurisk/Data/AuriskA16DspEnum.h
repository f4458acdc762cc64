#pragma once

#include "AuriskSDK/Shared/Utils/EnumTable.h"

#include <cstdint>

namespace aurisk {

/// The values of the A16 chip's block.
namespace AuriskA16DspEnum {

/// What a program listens to.
enum class InputMode : std::uint8_t {
    ai1Mic1,
    ai2DAIStreaming,
    ai0TC,
    ai3Mic2,
    fixedCardioid,
    fixedSuperCardioid,
    fixedHyperCardioid,
    adaptiveCardioid,
    adaptiveSuperCardioid,
    adaptiveHyperCardioid,
    noiseGenerator,
    mic1TC,
    mic1DAI,
    mic1NoiseGenerator,
    fixedCardioidStreaming,
    adaptiveCardioidStreaming
};

enum class AnalogPreGain : std::uint8_t { db0, db3, db6, db9, db12, db15, db18, db21, db24, db27, db30, db33, db36 };

enum class DigitalPreGain : std::uint8_t { db0, db6, db12, db18 };

/// The matrix gain as a fitter sees it. A block holds it as mantissa and exponent.
enum class MatrixGain : std::uint8_t {
    db0,
    dbMinus1,
    dbMinus2,
    dbMinus3,
    dbMinus4,
    dbMinus5,
    dbMinus6,
    dbMinus7,
    dbMinus8,
    dbMinus9,
    dbMinus10,
    dbMinus11,
    dbMinus12,
    dbMinus13,
    dbMinus14,
    dbMinus15,
    dbMinus16,
    dbMinus17,
    dbMinus18,
    dbMinus19,
    dbMinus20,
    dbMinus21,
    dbMinus22,
    dbMinus23,
    dbMinus24,
    dbMinus25,
    dbMinus26,
    dbMinus27,
    dbMinus28,
    dbMinus29,
    dbMinus30,
    dbMinus31,
    dbMinus32,
    dbMinus33,
    dbMinus34,
    dbMinus35,
    dbMinus36,
    dbMinus37,
    dbMinus38,
    dbMinus39,
    dbMinus40,
    dbMinus41,
    dbMinus42,
    dbMinus43,
    dbMinus44,
    dbMinus45,
    dbMinus46,
    dbMinus47
};

enum class FeedbackCanceler : std::uint8_t { off, normal, aggressive };

enum class NoiseReduction : std::uint8_t { off, low, medium, high, max };

enum class SwitchState : std::uint8_t { off, on };

enum class LowCutFilter : std::uint8_t { off, hz250, hz500, hz750, hz1000, hz1250, hz1500, hz2000, hz2500, hz3000 };

enum class RemoteMixRatio : std::uint8_t { db0, dbMinus3, dbMinus6, dbMinus9, dbMinus12 };

enum class MPOAttackTime : std::uint8_t { ms10, ms20, ms30, ms40 };

enum class MPOReleaseTime : std::uint8_t { ms40, ms80, ms150, ms350 };

enum class CompressionRatio : std::uint8_t {
    ratio1_00,
    ratio1_03,
    ratio1_05,
    ratio1_08,
    ratio1_11,
    ratio1_14,
    ratio1_18,
    ratio1_21,
    ratio1_25,
    ratio1_29,
    ratio1_33,
    ratio1_38,
    ratio1_43,
    ratio1_48,
    ratio1_54,
    ratio1_60,
    ratio1_67,
    ratio1_74,
    ratio1_82,
    ratio1_90,
    ratio2_00,
    ratio2_11,
    ratio2_22,
    ratio2_35,
    ratio2_50,
    ratio2_67,
    ratio2_86,
    ratio3_08,
    ratio3_33,
    ratio3_64,
    ratio4_00,
    ratio4_44,
    ratio5_00,
    ratio5_71,
    ratio6_67,
    ratio8_00
};

enum class CompressionThreshold : std::uint8_t {
    db20,
    db22,
    db24,
    db26,
    db28,
    db30,
    db32,
    db34,
    db36,
    db38,
    db40,
    db42,
    db44,
    db46,
    db48,
    db50,
    db52,
    db54,
    db56,
    db58,
    db60,
    db62,
    db64,
    db66,
    db68,
    db70,
    db72,
    db74,
    db76,
    db78,
    db80,
    db82
};

/// Attack and release times of the compressor, with adaptive second and third stages.
enum class CompressionConstant : std::uint8_t {
    constant0,
    constant1,
    constant2,
    constant3,
    constant4,
    constant5,
    constant6,
    constant7,
    constant8
};

enum class MaximumPowerOutput : std::uint8_t {
    off,
    muo,
    dbMinus2,
    dbMinus4,
    dbMinus6,
    dbMinus8,
    dbMinus10,
    dbMinus12,
    dbMinus14,
    dbMinus16,
    dbMinus18,
    dbMinus20,
    dbMinus22,
    dbMinus24,
    dbMinus26,
    dbMinus28
};

enum class EqualizerGain : std::uint8_t {
    dbMinus40,
    dbMinus38,
    dbMinus36,
    dbMinus34,
    dbMinus32,
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
    hz4500,
    hz5000,
    hz5500,
    hz6000,
    hz6500,
    hz7000,
    hz7500
};

} // namespace AuriskA16DspEnum

template <>
inline constexpr auto enumCases<AuriskA16DspEnum::InputMode> = countingUp<
    AuriskA16DspEnum::InputMode::adaptiveCardioidStreaming>({ { "ai1Mic1", "AI1 (Mic1)" },
    { "ai2DAIStreaming", "AI2 (DAI or Streaming)" }, { "ai0TC", "AI0 (TC)" }, { "ai3Mic2", "AI3 (Mic2)" },
    { "fixedCardioid", "Fixed Cardioid (AI1-AI3)" }, { "fixedSuperCardioid", "Fixed SuperCardioid" },
    { "fixedHyperCardioid", "Fixed HyperCardioid" }, { "adaptiveCardioid", "Adaptive Cardioid" },
    { "adaptiveSuperCardioid", "Adaptive SuperCardioid" }, { "adaptiveHyperCardioid", "Adaptive HyperCardioid" },
    { "noiseGenerator", "Noise Generator" }, { "mic1TC", "MIC1 + TC" }, { "mic1DAI", "Mic1 + (DAI or Streaming)" },
    { "mic1NoiseGenerator", "MIC1 + Noise Generator" }, { "fixedCardioidStreaming", "Fixed Cardioid + Streaming" },
    { "adaptiveCardioidStreaming", "Adaptive Cardioid + Streaming" } });
template <>
inline constexpr auto enumCases<AuriskA16DspEnum::AnalogPreGain> = countingUp<AuriskA16DspEnum::AnalogPreGain::db36>(
    { "db0", "db3", "db6", "db9", "db12", "db15", "db18", "db21", "db24", "db27", "db30", "db33", "db36" });
template <>
inline constexpr auto enumCases<AuriskA16DspEnum::DigitalPreGain> = countingUp<AuriskA16DspEnum::DigitalPreGain::db18>(
    { "db0", "db6", "db12", "db18" });
template <>
inline constexpr auto enumCases<AuriskA16DspEnum::MatrixGain> = countingUp<AuriskA16DspEnum::MatrixGain::dbMinus47>(
    { "db0", "dbMinus1", "dbMinus2", "dbMinus3", "dbMinus4", "dbMinus5", "dbMinus6", "dbMinus7", "dbMinus8", "dbMinus9",
        "dbMinus10", "dbMinus11", "dbMinus12", "dbMinus13", "dbMinus14", "dbMinus15", "dbMinus16", "dbMinus17",
        "dbMinus18", "dbMinus19", "dbMinus20", "dbMinus21", "dbMinus22", "dbMinus23", "dbMinus24", "dbMinus25",
        "dbMinus26", "dbMinus27", "dbMinus28", "dbMinus29", "dbMinus30", "dbMinus31", "dbMinus32", "dbMinus33",
        "dbMinus34", "dbMinus35", "dbMinus36", "dbMinus37", "dbMinus38", "dbMinus39", "dbMinus40", "dbMinus41",
        "dbMinus42", "dbMinus43", "dbMinus44", "dbMinus45", "dbMinus46", "dbMinus47" });
template <>
inline constexpr auto enumCases<AuriskA16DspEnum::FeedbackCanceler> = countingUp<
    AuriskA16DspEnum::FeedbackCanceler::aggressive>(
    { { "off", "OFF" }, { "normal", "Normal" }, { "aggressive", "Aggressive" } });
template <>
inline constexpr auto enumCases<AuriskA16DspEnum::NoiseReduction> = countingUp<AuriskA16DspEnum::NoiseReduction::max>(
    { { "off", "Off" }, { "low", "Low" }, { "medium", "Medium" }, { "high", "High" }, { "max", "Max" } });
template <>
inline constexpr auto enumCases<AuriskA16DspEnum::SwitchState> = countingUp<AuriskA16DspEnum::SwitchState::on>(
    { { "off", "Off" }, { "on", "On" } });
template <>
inline constexpr auto enumCases<AuriskA16DspEnum::LowCutFilter> = countingUp<AuriskA16DspEnum::LowCutFilter::hz3000>(
    { { "off", "Off" }, "hz250", "hz500", "hz750", "hz1000", "hz1250", "hz1500", "hz2000", "hz2500", "hz3000" });
template <>
inline constexpr auto enumCases<AuriskA16DspEnum::RemoteMixRatio> = countingUp<
    AuriskA16DspEnum::RemoteMixRatio::dbMinus12>({ "db0", "dbMinus3", "dbMinus6", "dbMinus9", "dbMinus12" });
template <>
inline constexpr auto enumCases<AuriskA16DspEnum::MPOAttackTime> = countingUp<AuriskA16DspEnum::MPOAttackTime::ms40>(
    { "ms10", "ms20", "ms30", "ms40" });
template <>
inline constexpr auto enumCases<AuriskA16DspEnum::MPOReleaseTime> = countingUp<AuriskA16DspEnum::MPOReleaseTime::ms350>(
    { "ms40", "ms80", "ms150", "ms350" });
template <>
inline constexpr auto enumCases<AuriskA16DspEnum::CompressionRatio> = countingUp<
    AuriskA16DspEnum::CompressionRatio::ratio8_00>({ "ratio1_00", "ratio1_03", "ratio1_05", "ratio1_08", "ratio1_11",
    "ratio1_14", "ratio1_18", "ratio1_21", "ratio1_25", "ratio1_29", "ratio1_33", "ratio1_38", "ratio1_43", "ratio1_48",
    "ratio1_54", "ratio1_60", "ratio1_67", "ratio1_74", "ratio1_82", "ratio1_90", "ratio2_00", "ratio2_11", "ratio2_22",
    "ratio2_35", "ratio2_50", "ratio2_67", "ratio2_86", "ratio3_08", "ratio3_33", "ratio3_64", "ratio4_00", "ratio4_44",
    "ratio5_00", "ratio5_71", "ratio6_67", "ratio8_00" });
template <>
inline constexpr auto enumCases<AuriskA16DspEnum::CompressionThreshold> = countingUp<
    AuriskA16DspEnum::CompressionThreshold::db82>({ "db20", "db22", "db24", "db26", "db28", "db30", "db32", "db34",
    "db36", "db38", "db40", "db42", "db44", "db46", "db48", "db50", "db52", "db54", "db56", "db58", "db60", "db62",
    "db64", "db66", "db68", "db70", "db72", "db74", "db76", "db78", "db80", "db82" });
template <>
inline constexpr auto enumCases<AuriskA16DspEnum::CompressionConstant> = countingUp<
    AuriskA16DspEnum::CompressionConstant::constant8>({ { "constant0", "3 ms / 120 ms" },
    { "constant1", "3 ms / 300 ms" }, { "constant2", "3 ms / 800 ms" }, { "constant3", "50 ms / 300 ms; 3 ms / 50 ms" },
    { "constant4", "100 ms / 800 ms; 3 ms / 100 ms" }, { "constant5", "100 ms / 2000 ms; 3 ms / 100 ms" },
    { "constant6", "400 ms / 15000 ms; 3 ms / 100 ms; 12 dB / 600 ms" },
    { "constant7", "400 ms / 15000 ms; 3 ms / 100 ms; 18 dB / 600 ms" },
    { "constant8", "400 ms / 15000 ms; 3 ms / 100 ms; 24 dB / 600 ms" } });
template <>
inline constexpr auto enumCases<AuriskA16DspEnum::MaximumPowerOutput> = countingUp<
    AuriskA16DspEnum::MaximumPowerOutput::dbMinus28>({ { "off", "Off" }, { "muo", "Max Undistorted Output (MUO)" },
    "dbMinus2", "dbMinus4", "dbMinus6", "dbMinus8", "dbMinus10", "dbMinus12", "dbMinus14", "dbMinus16", "dbMinus18",
    "dbMinus20", "dbMinus22", "dbMinus24", "dbMinus26", "dbMinus28" });
template <>
inline constexpr auto enumCases<AuriskA16DspEnum::EqualizerGain> = countingUp<AuriskA16DspEnum::EqualizerGain::db0>(
    { "dbMinus40", "dbMinus38", "dbMinus36", "dbMinus34", "dbMinus32", "dbMinus30", "dbMinus28", "dbMinus26",
        "dbMinus24", "dbMinus22", "dbMinus20", "dbMinus18", "dbMinus16", "dbMinus14", "dbMinus12", "dbMinus10",
        "dbMinus8", "dbMinus6", "dbMinus4", "dbMinus2", "db0" });
template <>
inline constexpr auto enumCases<AuriskA16DspEnum::FrequencyBand> = countingUp<AuriskA16DspEnum::FrequencyBand::hz7500>(
    { "hz250", "hz500", "hz1000", "hz1500", "hz2000", "hz2500", "hz3000", "hz3500", "hz4000", "hz4500", "hz5000",
        "hz5500", "hz6000", "hz6500", "hz7000", "hz7500" });

} // namespace aurisk
