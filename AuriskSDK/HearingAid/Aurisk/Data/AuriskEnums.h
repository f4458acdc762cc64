#pragma once

#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskA16DspEnum.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskA4DspEnum.h"

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

/// The number in the name of a case, where nothing follows it: -28 in dbMinus28, 1.03 in ratio1_03, none in muo or
/// ai1Ai2.
constexpr std::optional<double> numberInName(std::string_view name)
{
    constexpr std::string_view numeric = "0123456789_";
    const auto begin = name.find_first_of(numeric);
    if (begin == std::string_view::npos || name.find_first_not_of(numeric, begin) != std::string_view::npos)
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
