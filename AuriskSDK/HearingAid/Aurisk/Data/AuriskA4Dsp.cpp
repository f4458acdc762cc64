#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskA4Dsp.h"

#include "AuriskSDK/Shared/Utils/BitCodec.h"

namespace aurisk {

namespace {

using namespace AuriskA4DspEnum;

struct Preset {
    AuriskDirection direction;
    PreampGain mic1, mic2;
    EqualizerGain band0, band1;
};

constexpr Preset presets[] = {
    { AuriskDirection::normal, PreampGain::db27, PreampGain::db12, EqualizerGain::dbMinus28, EqualizerGain::dbMinus18 },
    { AuriskDirection::tv, PreampGain::db27, PreampGain::db12, EqualizerGain::dbMinus22, EqualizerGain::dbMinus12 },
    { AuriskDirection::meeting, PreampGain::db27, PreampGain::db24, EqualizerGain::dbMinus28,
        EqualizerGain::dbMinus14 },
    { AuriskDirection::face, PreampGain::db27, PreampGain::db27, EqualizerGain::dbMinus28, EqualizerGain::dbMinus12 },
};

} // namespace

AuriskA4Dsp::AuriskA4Dsp(DataView bytes)
    : AuriskA4Dsp(bits::decoded<AuriskA4Dsp>(bytes))
{
}

AuriskDirection AuriskA4Dsp::direction() const
{
    for (const auto& preset : presets)
        if (preset.mic1 == preGainMic1 && preset.mic2 == preGainMic2 && preset.band0 == equalizerArray[0]
            && preset.band1 == equalizerArray[1])
            return preset.direction;
    return AuriskDirection::unknown;
}

void AuriskA4Dsp::setDirection(AuriskDirection direction)
{
    for (const auto& preset : presets)
        if (preset.direction == direction) {
            preGainMic1 = preset.mic1;
            preGainMic2 = preset.mic2;
            equalizerArray[0] = preset.band0;
            equalizerArray[1] = preset.band1;
        }
}

AuriskNoise AuriskA4Dsp::noise() const { return static_cast<AuriskNoise>(noiseReduction); }

void AuriskA4Dsp::setNoise(AuriskNoise noise) { noiseReduction = static_cast<NoiseReduction>(noise); }

std::string description(const AuriskA4Dsp& dsp)
{
    return "AuriskA4Dsp:\n- Input Mode: " + displayName(dsp.inputMode) + //
        "\n- PreGain Mic1: " + displayName(dsp.preGainMic1) + //
        "\n- PreGain Mic2: " + displayName(dsp.preGainMic2) + //
        "\n- Matrix Gain: " + dsp.matrixGainDisplayValue() + //
        "\n- Feedback Canceler: " + displayName(dsp.feedbackCanceler) + //
        "\n- Noise Reduction: " + displayName(dsp.noiseReduction) + //
        "\n- Low Cut: " + displayName(dsp.lowCutFilter) + //
        "\n- High Cut: " + displayName(dsp.highCutFilter) + //
        "\n- Compression Threshold: " + displayName(dsp.compressionThreshold) + //
        "\n- Maximum Power Output: " + displayName(dsp.maximumPowerOutput);
}

} // namespace aurisk
