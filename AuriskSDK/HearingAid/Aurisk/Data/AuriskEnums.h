#pragma once

#include "AuriskSDK/Shared/Utils/EnumTable.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The typed values of the settings blocks. Each is stored and sent as its raw value, which counts up from zero. The
/// name of a case says its number where it has one (dbMinus28: -28 dB, ratio1_03: 1.03 to 1); where a fitter sees
/// anything but that number and its unit, the text stands in the table.

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

/// The number in the name of a case: -28 in dbMinus28, 1.03 in ratio1_03, none in muo.
constexpr std::optional<double> numberInName(std::string_view name)
{
    const auto begin = name.find_first_of("0123456789");
    if (begin == std::string_view::npos)
        return std::nullopt;
    int digits = 0, scale = name.starts_with("dbMinus") ? -1 : 1;
    bool isFraction = false;
    for (const char character : name.substr(begin)) {
        if (character == '_')
            isFraction = true;
        else {
            digits = digits * 10 + (character - '0');
            scale *= isFraction ? 10 : 1;
        }
    }
    return static_cast<double>(digits) / scale;
}

/// What the number of an enumeration's cases is called; empty where they have none.
template <typename E> inline constexpr std::string_view numericProperty = {};
template <> inline constexpr std::string_view numericProperty<AuriskA16DspEnum::AnalogPreGain> = "valueInDB";
template <> inline constexpr std::string_view numericProperty<AuriskA16DspEnum::DigitalPreGain> = "valueInDB";
template <> inline constexpr std::string_view numericProperty<AuriskA16DspEnum::MatrixGain> = "valueInDB";
template <> inline constexpr std::string_view numericProperty<AuriskA16DspEnum::RemoteMixRatio> = "valueInDB";
template <> inline constexpr std::string_view numericProperty<AuriskA16DspEnum::EqualizerGain> = "valueInDB";
template <> inline constexpr std::string_view numericProperty<AuriskA16DspEnum::LowCutFilter> = "frequency";
template <> inline constexpr std::string_view numericProperty<AuriskA16DspEnum::FrequencyBand> = "frequency";
template <> inline constexpr std::string_view numericProperty<AuriskA16DspEnum::MPOAttackTime> = "timeInMS";
template <> inline constexpr std::string_view numericProperty<AuriskA16DspEnum::MPOReleaseTime> = "timeInMS";
template <> inline constexpr std::string_view numericProperty<AuriskA16DspEnum::CompressionRatio> = "ratioValue";
template <> inline constexpr std::string_view numericProperty<AuriskA16DspEnum::CompressionThreshold> = "thresholdInDB";

/// dB
template <TabledEnum E>
requires(numericProperty<E> == "valueInDB") constexpr int valueInDB(E value)
{
    return static_cast<int>(*numberInName(caseName(value)));
}

/// Hz
constexpr int frequency(AuriskA16DspEnum::FrequencyBand band)
{
    return static_cast<int>(*numberInName(caseName(band)));
}

/// Hz; none where the filter is off.
constexpr std::optional<int> frequency(AuriskA16DspEnum::LowCutFilter filter)
{
    const auto number = numberInName(caseName(filter));
    return number ? std::optional(static_cast<int>(*number)) : std::nullopt;
}

template <TabledEnum E>
requires(numericProperty<E> == "timeInMS") constexpr int timeInMS(E value)
{
    return static_cast<int>(*numberInName(caseName(value)));
}

/// The compression of 1.03 to 1 is 1.03.
constexpr double ratioValue(AuriskA16DspEnum::CompressionRatio ratio) { return *numberInName(caseName(ratio)); }

/// dB of sound pressure
constexpr int thresholdInDB(AuriskA16DspEnum::CompressionThreshold threshold)
{
    return static_cast<int>(*numberInName(caseName(threshold)));
}

/// The centre frequencies of an enumeration of bands, in Hz.
template <typename Band> constexpr auto centresOf()
{
    std::array<int, enumCases<Band>.size()> centres{};
    for (std::size_t i = 0; i < centres.size(); ++i)
        centres[i] = static_cast<int>(*numberInName(enumCases<Band>[i].name));
    return centres;
}

/// What a fitter sees of a case with that name and that text of its own: the text; without one its number and unit,
/// such as "-28 dB" or "1.03 : 1".
std::string caseLabel(std::string_view name, std::string_view text);

/// What a fitter sees of a value: the label that the tables of labels hold.
template <TabledEnum E> std::string displayName(E value)
{
    const auto* row = enumCase(value);
    return row ? caseLabel(row->name, row->label) : std::string();
}

/// The labels of all cases, indexed by raw value. Made at the first use.
template <TabledEnum E> const std::vector<std::string>& labelsOf()
{
    static_assert(countsUpFromZero<E>());
    static const auto list = [] {
        std::vector<std::string> texts;
        for (const auto& row : enumCases<E>)
            texts.push_back(caseLabel(row.name, row.label));
        return texts;
    }();
    return list;
}

} // namespace aurisk
