#pragma once

#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskEnums.h"

#include <string>
#include <vector>

namespace aurisk {

/// The texts under which a fitter sees the parameters of the A4 chip, each list indexed by raw value.
class AuriskA4DspParameterLabels {
public:
    using Labels = const std::vector<std::string>&;

    static Labels inputMultiplexerValues() { return labelsOf<AuriskA4DspEnum::InputMode>(); }
    static Labels preampGainValues() { return labelsOf<AuriskA4DspEnum::PreampGain>(); }
    static Labels matrixGainValues() { return labelsOf<AuriskA16DspEnum::MatrixGain>(); }
    static Labels feedbackCancelerValues() { return labelsOf<AuriskA4DspEnum::FeedbackCanceler>(); }
    static Labels expansionValues() { return labelsOf<AuriskA4DspEnum::Expansion>(); }
    static Labels noiseReductionValues() { return labelsOf<AuriskA4DspEnum::NoiseReduction>(); }
    static Labels lowCutValues() { return labelsOf<AuriskA4DspEnum::LowCutFilter>(); }
    static Labels highCutValues() { return labelsOf<AuriskA4DspEnum::HighCutFilter>(); }
    static Labels compressionRatiosValues() { return labelsOf<AuriskA4DspEnum::CompressionRatio>(); }
    static Labels compressionThresholdsValues() { return labelsOf<AuriskA4DspEnum::CompressionThreshold>(); }
    static Labels maximumPowerOutputThresholdValues() { return labelsOf<AuriskA4DspEnum::MaximumPowerOutput>(); }
    static Labels compressionBandEQsValues() { return labelsOf<AuriskA4DspEnum::EqualizerGain>(); }
};

} // namespace aurisk
