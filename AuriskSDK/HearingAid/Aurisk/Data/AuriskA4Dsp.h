#pragma once

#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskDirection.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskDspBlock.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskEnums.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskNoise.h"
#include "AuriskSDK/Shared/Utils/BitLayout.h"

#include <array>
#include <string>

namespace aurisk {

/// The parameters of one program on the A4 chip: 12 bytes on the wire. Band `i` of the equaliser is the one whose
/// FrequencyBand has raw value `i`.
struct AuriskA4Dsp : AuriskDspBlock<AuriskA4Dsp> {
    using InputMode = AuriskA4DspEnum::InputMode;
    using PreampGain = AuriskA4DspEnum::PreampGain;
    using FeedbackCanceler = AuriskA4DspEnum::FeedbackCanceler;
    using Expansion = AuriskA4DspEnum::Expansion;
    using LowCutFilter = AuriskA4DspEnum::LowCutFilter;
    using HighCutFilter = AuriskA4DspEnum::HighCutFilter;
    using MaximumPowerOutput = AuriskA4DspEnum::MaximumPowerOutput;
    using NoiseReduction = AuriskA4DspEnum::NoiseReduction;
    using CompressionRatio = AuriskA4DspEnum::CompressionRatio;
    using CompressionThreshold = AuriskA4DspEnum::CompressionThreshold;
    using EqualizerGain = AuriskA4DspEnum::EqualizerGain;
    using FrequencyBand = AuriskA4DspEnum::FrequencyBand;
    using Equalizer = std::array<EqualizerGain, 12>;

    InputMode inputMode = InputMode::ai1Mic1;
    PreampGain preGainMic1 = PreampGain::db0;
    PreampGain preGainMic2 = PreampGain::db0;
    int matrixGainMantissa = 0; ///< 0 to 7 on the wire; setMatrixGain keeps it to 5
    int matrixGainExponent = 0; ///< 0 to 7
    FeedbackCanceler feedbackCanceler = FeedbackCanceler::off;
    Expansion expansion = Expansion::off;
    LowCutFilter lowCutFilter = LowCutFilter::hz200;
    HighCutFilter highCutFilter = HighCutFilter::hz8000;
    MaximumPowerOutput maximumPowerOutput = MaximumPowerOutput::muo;
    NoiseReduction noiseReduction = NoiseReduction::off;
    int notCare = 0; ///< 0 to 31: bits of no meaning here, written back as they were read
    CompressionRatio compressionRatio1 = CompressionRatio::ratio1_0;
    CompressionRatio compressionRatio2 = CompressionRatio::ratio1_0;
    CompressionRatio compressionRatio3 = CompressionRatio::ratio1_0;
    CompressionRatio compressionRatio4 = CompressionRatio::ratio1_0;
    CompressionThreshold compressionThreshold = CompressionThreshold::db40;
    Equalizer equalizerArray = flat;
    static constexpr auto frequalizerArray = centresOf<FrequencyBand>(); ///< Hz; the spelling is part of the interface

    AuriskA4Dsp() = default;

    /// Decodes the first 12 of `bytes`; fewer are a broken precondition. Bits that name no case of a field's
    /// enumeration give its fallback, which is the default of the field.
    explicit AuriskA4Dsp(DataView bytes);

    /// The preset that the two preamplifier gains and the two lowest bands make up.
    AuriskDirection direction() const;
    /// Sets those four; `unknown` changes nothing.
    void setDirection(AuriskDirection direction);

    AuriskNoise noise() const;
    void setNoise(AuriskNoise noise);

    // The values of one band. A number that is no band's reads as the default, and sets nothing.
    EqualizerGain getEqualizerGain(FrequencyBand band) const
    {
        return valueAt(equalizerArray, band, EqualizerGain::db0);
    }
    void setEqualizerGain(EqualizerGain gain, FrequencyBand band) { setValueAt(equalizerArray, band, gain); }

    friend bool operator==(const AuriskA4Dsp&, const AuriskA4Dsp&) = default;

private:
    static constexpr Equalizer flat = [] {
        Equalizer gains{};
        gains.fill(EqualizerGain::db0);
        return gains;
    }();
};

/// The main parameters under the labels that a fitter sees, one a line.
std::string description(const AuriskA4Dsp& dsp);

namespace bits {

template <>
inline constexpr auto layoutOf<AuriskA4Dsp> = [] {
    using D = AuriskA4Dsp;
    using namespace AuriskA4DspEnum;
    return std::tuple{
        Field<&D::inputMode>{ "inputMode", 3 }.orElse(InputMode::ai1Mic1),
        Field<&D::preGainMic1>{ "preGainMic1", 3 },
        Field<&D::preGainMic2>{ "preGainMic2", 3 },
        Field<&D::matrixGainMantissa>{ "matrixGainMantissa", 3 },
        Field<&D::matrixGainExponent>{ "matrixGainExponent", 3 },
        Field<&D::feedbackCanceler>{ "feedbackCanceler", 1 },
        Bands<&D::equalizerArray>{ "equalizerArray", 4, 0, 11 },
        Field<&D::compressionRatio1>{ "compressionRatio1", 3 }.orElse(CompressionRatio::ratio1_0),
        Field<&D::compressionRatio2>{ "compressionRatio2", 3 }.orElse(CompressionRatio::ratio1_0),
        Field<&D::compressionRatio3>{ "compressionRatio3", 3 }.orElse(CompressionRatio::ratio1_0),
        Field<&D::compressionRatio4>{ "compressionRatio4", 3 }.orElse(CompressionRatio::ratio1_0),
        Field<&D::compressionThreshold>{ "compressionThreshold", 3 }.orElse(CompressionThreshold::db40),
        Field<&D::expansion>{ "expansion", 1 },
        Field<&D::lowCutFilter>{ "lowCutFilter", 3 }.orElse(LowCutFilter::hz200),
        Field<&D::highCutFilter>{ "highCutFilter", 3 }.orElse(HighCutFilter::hz8000),
        Field<&D::maximumPowerOutput>{ "maximumPowerOutput", 3 }.orElse(MaximumPowerOutput::muo),
        Field<&D::noiseReduction>{ "noiseReduction", 2 },
        Field<&D::notCare>{ "notCare", 5 },
    };
}();
static_assert(bitCount<AuriskA4Dsp>() == 12 * 8);
static_assert(bitOf<AuriskA4Dsp>("feedbackCanceler") == 15 && bitOf<AuriskA4Dsp>("equalizerArray") == 16);
static_assert(bitOf<AuriskA4Dsp>("compressionRatio1") == 64 && bitOf<AuriskA4Dsp>("expansion") == 79);
static_assert(bitOf<AuriskA4Dsp>("lowCutFilter") == 80 && bitOf<AuriskA4Dsp>("notCare") == 91);

} // namespace bits

} // namespace aurisk
