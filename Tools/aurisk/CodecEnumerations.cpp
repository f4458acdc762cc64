#include "Tools/aurisk/CodecOperations.h"

#include "AuriskSDK/HearingAid/AccessoryOrientation.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskChip.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskDsp.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskProfileType.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskProgram.h"
#include "AuriskSDK/HearingAid/Vortilex/Data/PL3DeviceSettings.h"
#include "AuriskSDK/HearingAid/Vortilex/PL3Command.h"

namespace aurisk::codec {

namespace {

template <TabledEnum E> Answer cases()
{
    auto list = Answer::array();
    for (const auto& row : enumCases<E>)
        list.push_back(Answer::object({ { "case", row.name }, { "rawValue", rawValue(row.value) } }));
    return list;
}

/// The number of a case, as its type has it: ratios are fractions, everything else whole.
template <TabledEnum E> Answer numberOf(const EnumCase<E>& row)
{
    const auto number = numberInName(row.name);
    if (!number)
        return {};
    if (std::same_as<E, AuriskA16DspEnum::CompressionRatio>)
        return *number;
    return static_cast<int>(*number);
}

/// The same for the values of the A16 chip, which have a display name and some a number.
template <TabledEnum E> Answer displayedCases()
{
    auto list = cases<E>();
    for (std::size_t i = 0; i < list.size(); ++i) {
        const auto& row = enumCases<E>[i];
        list[i].emplace("displayName", displayName(row.value));
        if (!numericProperty<E>.empty())
            list[i].emplace(numericProperty<E>, numberOf(row));
    }
    return list;
}

struct Enumeration {
    std::string_view name;
    Answer (*cases)();
};

constexpr Enumeration enumerations[] = {
    { "AuriskChip", cases<AuriskChip> },
    { "AuriskBLEChip", cases<AuriskBLEChip> },
    { "AuriskProgram", cases<AuriskProgram> },
    { "AuriskDirection", cases<AuriskDirection> },
    { "AuriskNoise", cases<AuriskNoise> },
    { "AuriskProfileType", cases<AuriskProfileType> },
    { "AccessoryOrientation", cases<AccessoryOrientation> },
    { "PL3Command", cases<PL3Command> },
    { "PL3DeviceSettings", cases<PL3DeviceSettings> },
    { "AuriskA4DspEnum.InputMode", cases<AuriskA4DspEnum::InputMode> },
    { "AuriskA4DspEnum.PreampGain", cases<AuriskA4DspEnum::PreampGain> },
    { "AuriskA4DspEnum.FeedbackCanceler", cases<AuriskA4DspEnum::FeedbackCanceler> },
    { "AuriskA4DspEnum.Expansion", cases<AuriskA4DspEnum::Expansion> },
    { "AuriskA4DspEnum.NoiseReduction", cases<AuriskA4DspEnum::NoiseReduction> },
    { "AuriskA4DspEnum.LowCutFilter", cases<AuriskA4DspEnum::LowCutFilter> },
    { "AuriskA4DspEnum.HighCutFilter", cases<AuriskA4DspEnum::HighCutFilter> },
    { "AuriskA4DspEnum.CompressionRatio", cases<AuriskA4DspEnum::CompressionRatio> },
    { "AuriskA4DspEnum.CompressionThreshold", cases<AuriskA4DspEnum::CompressionThreshold> },
    { "AuriskA4DspEnum.MaximumPowerOutput", cases<AuriskA4DspEnum::MaximumPowerOutput> },
    { "AuriskA4DspEnum.EqualizerGain", cases<AuriskA4DspEnum::EqualizerGain> },
    { "AuriskA4DspEnum.FrequencyBand", cases<AuriskA4DspEnum::FrequencyBand> },
    { "AuriskA16DspEnum.InputMode", displayedCases<AuriskA16DspEnum::InputMode> },
    { "AuriskA16DspEnum.AnalogPreGain", displayedCases<AuriskA16DspEnum::AnalogPreGain> },
    { "AuriskA16DspEnum.DigitalPreGain", displayedCases<AuriskA16DspEnum::DigitalPreGain> },
    { "AuriskA16DspEnum.MatrixGain", displayedCases<AuriskA16DspEnum::MatrixGain> },
    { "AuriskA16DspEnum.FeedbackCanceler", displayedCases<AuriskA16DspEnum::FeedbackCanceler> },
    { "AuriskA16DspEnum.NoiseReduction", displayedCases<AuriskA16DspEnum::NoiseReduction> },
    { "AuriskA16DspEnum.SwitchState", displayedCases<AuriskA16DspEnum::SwitchState> },
    { "AuriskA16DspEnum.LowCutFilter", displayedCases<AuriskA16DspEnum::LowCutFilter> },
    { "AuriskA16DspEnum.RemoteMixRatio", displayedCases<AuriskA16DspEnum::RemoteMixRatio> },
    { "AuriskA16DspEnum.MPOAttackTime", displayedCases<AuriskA16DspEnum::MPOAttackTime> },
    { "AuriskA16DspEnum.MPOReleaseTime", displayedCases<AuriskA16DspEnum::MPOReleaseTime> },
    { "AuriskA16DspEnum.CompressionRatio", displayedCases<AuriskA16DspEnum::CompressionRatio> },
    { "AuriskA16DspEnum.CompressionThreshold", displayedCases<AuriskA16DspEnum::CompressionThreshold> },
    { "AuriskA16DspEnum.CompressionConstant", displayedCases<AuriskA16DspEnum::CompressionConstant> },
    { "AuriskA16DspEnum.MaximumPowerOutput", displayedCases<AuriskA16DspEnum::MaximumPowerOutput> },
    { "AuriskA16DspEnum.EqualizerGain", displayedCases<AuriskA16DspEnum::EqualizerGain> },
    { "AuriskA16DspEnum.FrequencyBand", displayedCases<AuriskA16DspEnum::FrequencyBand> },
};

} // namespace

Answer listEnumeration(const Members& line)
{
    const auto name = line.get<std::string>("name");
    for (const auto& row : enumerations)
        if (row.name == name)
            return row.cases();
    throw Unusable(Place{ "name" }, shown(name) + " is the name of no enumeration");
}

} // namespace aurisk::codec
