#pragma once

#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskDirection.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskDspBlock.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskEnums.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskNoise.h"
#include "AuriskSDK/Shared/Utils/BitLayout.h"

#include <array>
#include <string>

namespace aurisk {

/// The parameters of one program on the A16 chip: 56 bytes on the wire. Element `i` of an array belongs to the band
/// whose FrequencyBand has raw value `i`. `em0` ... `em9` are bits of no meaning here, written back as they were read.
struct AuriskA16Dsp : AuriskDspBlock<AuriskA16Dsp> {
    using InputMode = AuriskA16DspEnum::InputMode;
    using AnalogPreGain = AuriskA16DspEnum::AnalogPreGain;
    using DigitalPreGain = AuriskA16DspEnum::DigitalPreGain;
    using FeedbackCanceler = AuriskA16DspEnum::FeedbackCanceler;
    using NoiseReduction = AuriskA16DspEnum::NoiseReduction;
    using SwitchState = AuriskA16DspEnum::SwitchState;
    using EqualizerGain = AuriskA16DspEnum::EqualizerGain;
    using CompressionRatio = AuriskA16DspEnum::CompressionRatio;
    using CompressionConstant = AuriskA16DspEnum::CompressionConstant;
    using CompressionThreshold = AuriskA16DspEnum::CompressionThreshold;
    using MaximumPowerOutput = AuriskA16DspEnum::MaximumPowerOutput;
    using MPOAttackTime = AuriskA16DspEnum::MPOAttackTime;
    using MPOReleaseTime = AuriskA16DspEnum::MPOReleaseTime;
    using RemoteMixRatio = AuriskA16DspEnum::RemoteMixRatio;
    using LowCutFilter = AuriskA16DspEnum::LowCutFilter;
    using FrequencyBand = AuriskA16DspEnum::FrequencyBand;
    template <typename Value> using EachBand = std::array<Value, 16>;

    InputMode inputMode = InputMode::ai1Mic1;
    AnalogPreGain analogPreGainP0 = AnalogPreGain::db0;
    AnalogPreGain analogPreGainP1 = AnalogPreGain::db0;
    DigitalPreGain digitalPreGainP1 = DigitalPreGain::db0;
    DigitalPreGain digitalPreGainP2 = DigitalPreGain::db0;
    int matrixGainMantissa = 0; ///< 0 to 7 on the wire; setMatrixGain keeps it to 5
    int matrixGainExponent = 0; ///< 0 to 7
    FeedbackCanceler feedbackCanceler = FeedbackCanceler::off;
    NoiseReduction noiseReduction = NoiseReduction::off;
    SwitchState lowLevelExpansion = SwitchState::off;
    SwitchState windNoiseReduction = SwitchState::off;
    int em0 = 0; ///< 0 to 7
    EachBand<EqualizerGain> equalizerArray = everywhere(EqualizerGain::db0);
    int em1 = 0; ///< 0 to 3
    int em2 = 0; ///< 0 to 3
    EachBand<CompressionRatio> compressionRatioArray = everywhere(CompressionRatio::ratio1_00);
    int em3 = 0; ///< 0 to 3
    int em4 = 0; ///< 0 to 3
    EachBand<CompressionConstant> compressionConstantArray = everywhere(CompressionConstant::constant0);
    EachBand<CompressionThreshold> compressionThresholdArray = everywhere(CompressionThreshold::db40);
    int em5 = 0; ///< 0 to 7
    int em6 = 0; ///< 0 to 3
    int em7 = 0; ///< 0 to 3
    EachBand<MaximumPowerOutput> maximumPowerOutputArray = everywhere(MaximumPowerOutput::muo);
    int em8 = 0; ///< 0 to 1
    MPOAttackTime mpoAttackTime = MPOAttackTime::ms10;
    MPOReleaseTime mpoReleaseTime = MPOReleaseTime::ms40;
    int em9 = 0; ///< 0 to 1
    RemoteMixRatio remoteMixRatio = RemoteMixRatio::db0;
    LowCutFilter lowCutInputFilter = LowCutFilter::off;
    static constexpr auto frequalizerArray = centresOf<FrequencyBand>(); ///< Hz; the spelling is part of the interface

    AuriskA16Dsp() = default;

    /// Decodes the first 56 of `bytes`. Fewer, and bits that name no case of a field's enumeration, are broken
    /// preconditions.
    explicit AuriskA16Dsp(DataView bytes);

    /// The preset that the input mode stands for.
    AuriskDirection direction() const;
    /// Sets the input mode; `unknown` changes nothing.
    void setDirection(AuriskDirection direction);

    /// Of the five steps of `noiseReduction` a fitter has four; `medium` reads as `off` and is never set, deliberately.
    AuriskNoise noise() const;
    void setNoise(AuriskNoise noise);

    // The values of one band. A number that is no band's reads as the default, and sets nothing.
    EqualizerGain getEqualizerGain(FrequencyBand band) const
    {
        return valueAt(equalizerArray, band, EqualizerGain::db0);
    }
    void setEqualizerGain(EqualizerGain gain, FrequencyBand band) { setValueAt(equalizerArray, band, gain); }
    CompressionRatio getCompressionRatio(FrequencyBand band) const
    {
        return valueAt(compressionRatioArray, band, CompressionRatio::ratio1_00);
    }
    void setCompressionRatio(CompressionRatio ratio, FrequencyBand band)
    {
        setValueAt(compressionRatioArray, band, ratio);
    }
    CompressionConstant getCompressionConstant(FrequencyBand band) const
    {
        return valueAt(compressionConstantArray, band, CompressionConstant::constant0);
    }
    void setCompressionConstant(CompressionConstant constant, FrequencyBand band)
    {
        setValueAt(compressionConstantArray, band, constant);
    }
    CompressionThreshold getCompressionThreshold(FrequencyBand band) const
    {
        return valueAt(compressionThresholdArray, band, CompressionThreshold::db40);
    }
    void setCompressionThreshold(CompressionThreshold threshold, FrequencyBand band)
    {
        setValueAt(compressionThresholdArray, band, threshold);
    }
    MaximumPowerOutput getMaximumPowerOutput(FrequencyBand band) const
    {
        return valueAt(maximumPowerOutputArray, band, MaximumPowerOutput::muo);
    }
    void setMaximumPowerOutput(MaximumPowerOutput output, FrequencyBand band)
    {
        setValueAt(maximumPowerOutputArray, band, output);
    }

    friend bool operator==(const AuriskA16Dsp&, const AuriskA16Dsp&) = default;

private:
    template <typename Value> static constexpr EachBand<Value> everywhere(Value value)
    {
        EachBand<Value> values{};
        values.fill(value);
        return values;
    }
};

/// The main parameters under the labels that a fitter sees, one a line.
std::string description(const AuriskA16Dsp& dsp);

namespace bits {

template <>
inline constexpr auto layoutOf<AuriskA16Dsp> = [] {
    using D = AuriskA16Dsp;
    return std::tuple{
        Field<&D::inputMode>{ "inputMode", 4 },
        Field<&D::analogPreGainP0>{ "analogPreGainP0", 4 },
        Field<&D::analogPreGainP1>{ "analogPreGainP1", 4 },
        Field<&D::digitalPreGainP1>{ "digitalPreGainP1", 2 },
        Field<&D::digitalPreGainP2>{ "digitalPreGainP2", 2 },
        Field<&D::matrixGainMantissa>{ "matrixGainMantissa", 3 },
        Field<&D::matrixGainExponent>{ "matrixGainExponent", 3 },
        Field<&D::feedbackCanceler>{ "feedbackCanceler", 2 },
        Field<&D::noiseReduction>{ "noiseReduction", 3 },
        Field<&D::lowLevelExpansion>{ "lowLevelExpansion", 1 },
        Field<&D::windNoiseReduction>{ "windNoiseReduction", 1 },
        Field<&D::em0>{ "em0", 3 },
        Bands<&D::equalizerArray>{ "equalizerArray", 5, 0, 5 },
        Field<&D::em1>{ "em1", 2 },
        Bands<&D::equalizerArray>{ "equalizerArray", 5, 6, 11 },
        Field<&D::em2>{ "em2", 2 },
        Bands<&D::equalizerArray>{ "equalizerArray", 5, 12, 15 },
        Bands<&D::compressionRatioArray>{ "compressionRatioArray", 6, 0, 6 },
        Field<&D::em3>{ "em3", 2 },
        Bands<&D::compressionRatioArray>{ "compressionRatioArray", 6, 7, 11 },
        Field<&D::em4>{ "em4", 2 },
        Bands<&D::compressionRatioArray>{ "compressionRatioArray", 6, 12, 15 },
        Bands<&D::compressionConstantArray>{ "compressionConstantArray", 4, 0, 15 },
        Bands<&D::compressionThresholdArray>{ "compressionThresholdArray", 5, 0, 0 },
        Field<&D::em5>{ "em5", 3 },
        Bands<&D::compressionThresholdArray>{ "compressionThresholdArray", 5, 1, 6 },
        Field<&D::em6>{ "em6", 2 },
        Bands<&D::compressionThresholdArray>{ "compressionThresholdArray", 5, 7, 12 },
        Field<&D::em7>{ "em7", 2 },
        Bands<&D::compressionThresholdArray>{ "compressionThresholdArray", 5, 13, 15 },
        Bands<&D::maximumPowerOutputArray>{ "maximumPowerOutputArray", 4, 0, 3 },
        Field<&D::em8>{ "em8", 1 },
        Bands<&D::maximumPowerOutputArray>{ "maximumPowerOutputArray", 4, 4, 15 },
        Field<&D::mpoAttackTime>{ "mpoAttackTime", 3 },
        Field<&D::mpoReleaseTime>{ "mpoReleaseTime", 3 },
        Field<&D::em9>{ "em9", 1 },
        Field<&D::remoteMixRatio>{ "remoteMixRatio", 5 },
        Field<&D::lowCutInputFilter>{ "lowCutInputFilter", 4 },
    };
}();
static_assert(bitCount<AuriskA16Dsp>() == 56 * 8);
static_assert(bitOf<AuriskA16Dsp>("em1") == 62 && bitOf<AuriskA16Dsp>("em2") == 94);
static_assert(bitOf<AuriskA16Dsp>("em3") == 158 && bitOf<AuriskA16Dsp>("em4") == 190);
static_assert(bitOf<AuriskA16Dsp>("em5") == 285 && bitOf<AuriskA16Dsp>("em6") == 318);
static_assert(bitOf<AuriskA16Dsp>("em7") == 350 && bitOf<AuriskA16Dsp>("em8") == 383);
static_assert(bitOf<AuriskA16Dsp>("em9") == 438 && bitOf<AuriskA16Dsp>("lowCutInputFilter") == 444);

} // namespace bits

} // namespace aurisk
