#pragma once

#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskEnums.h"

#include <string>
#include <vector>

namespace aurisk {

/// The texts under which a fitter sees the parameters of the A16 chip, each list indexed by raw value.
class AuriskA16DspParameterLabels {
public:
    using Labels = const std::vector<std::string>&;

    static Labels inputMultiplexerValues() { return labelsOf<AuriskA16DspEnum::InputMode>(); }
    static Labels analogPreAmpGainValues() { return labelsOf<AuriskA16DspEnum::AnalogPreGain>(); }
    static Labels digitalPreAmpGainValues() { return labelsOf<AuriskA16DspEnum::DigitalPreGain>(); }
    static Labels matrixGainValues() { return labelsOf<AuriskA16DspEnum::MatrixGain>(); }
    static Labels feedbackCancelerValues() { return labelsOf<AuriskA16DspEnum::FeedbackCanceler>(); }
    static Labels noiseReductionValues() { return labelsOf<AuriskA16DspEnum::NoiseReduction>(); }
    static Labels lowLevelExpansionValues() { return labelsOf<AuriskA16DspEnum::SwitchState>(); }
    static Labels windValues() { return labelsOf<AuriskA16DspEnum::SwitchState>(); }
    static Labels lowCutValues() { return labelsOf<AuriskA16DspEnum::LowCutFilter>(); }
    static Labels remoteMixValues() { return labelsOf<AuriskA16DspEnum::RemoteMixRatio>(); }
    static Labels mpoAttackConstantsValues() { return labelsOf<AuriskA16DspEnum::MPOAttackTime>(); }
    static Labels mpoReleaseConstantsValues() { return labelsOf<AuriskA16DspEnum::MPOReleaseTime>(); }
    static Labels compressionRatiosValues() { return labelsOf<AuriskA16DspEnum::CompressionRatio>(); }
    static Labels compressionThresholdsValues() { return labelsOf<AuriskA16DspEnum::CompressionThreshold>(); }
    static Labels compressionTimeConstantsValues() { return labelsOf<AuriskA16DspEnum::CompressionConstant>(); }
    static Labels maximumPowerOutputThresholdValues() { return labelsOf<AuriskA16DspEnum::MaximumPowerOutput>(); }
    static Labels compressionBandEQsValues() { return labelsOf<AuriskA16DspEnum::EqualizerGain>(); }
};

} // namespace aurisk
