#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskA16Dsp.h"

#include "AuriskSDK/Shared/Utils/BitCodec.h"

namespace aurisk {

namespace {

using namespace AuriskA16DspEnum;

struct Preset {
    AuriskDirection direction;
    InputMode inputMode;
};

constexpr Preset presets[] = {
    { AuriskDirection::normal, InputMode::ai1Mic1 },
    { AuriskDirection::tv, InputMode::fixedCardioid },
    { AuriskDirection::meeting, InputMode::adaptiveSuperCardioid },
    { AuriskDirection::face, InputMode::adaptiveHyperCardioid },
};

} // namespace

AuriskA16Dsp::AuriskA16Dsp(DataView bytes)
    : AuriskA16Dsp(bits::decoded<AuriskA16Dsp>(bytes))
{
}

AuriskDirection AuriskA16Dsp::direction() const
{
    for (const auto& preset : presets)
        if (preset.inputMode == inputMode)
            return preset.direction;
    return AuriskDirection::unknown;
}

void AuriskA16Dsp::setDirection(AuriskDirection direction)
{
    for (const auto& preset : presets)
        if (preset.direction == direction)
            inputMode = preset.inputMode;
}

AuriskNoise AuriskA16Dsp::noise() const
{
    switch (noiseReduction) {
    case NoiseReduction::low: return AuriskNoise::weak;
    case NoiseReduction::high: return AuriskNoise::medium;
    case NoiseReduction::max: return AuriskNoise::strong;
    default: return AuriskNoise::off;
    }
}

void AuriskA16Dsp::setNoise(AuriskNoise noise)
{
    switch (noise) {
    case AuriskNoise::off: noiseReduction = NoiseReduction::off; break;
    case AuriskNoise::weak: noiseReduction = NoiseReduction::low; break;
    case AuriskNoise::medium: noiseReduction = NoiseReduction::high; break;
    case AuriskNoise::strong: noiseReduction = NoiseReduction::max; break;
    }
}

std::string description(const AuriskA16Dsp& dsp)
{
    return "AuriskA16Dsp:\n- Input Mode: " + displayName(dsp.inputMode) + //
        "\n- Analog PreGain P0: " + displayName(dsp.analogPreGainP0) + //
        "\n- Analog PreGain P1: " + displayName(dsp.analogPreGainP1) + //
        "\n- Digital PreGain P1: " + displayName(dsp.digitalPreGainP1) + //
        "\n- Digital PreGain P2: " + displayName(dsp.digitalPreGainP2) + //
        "\n- Matrix Gain: " + dsp.matrixGainDisplayValue() + //
        "\n- Feedback Canceler: " + displayName(dsp.feedbackCanceler) + //
        "\n- Noise Reduction: " + displayName(dsp.noiseReduction) + //
        "\n- Low Level Expansion: " + displayName(dsp.lowLevelExpansion) + //
        "\n- Wind Noise Reduction: " + displayName(dsp.windNoiseReduction) + //
        "\n- Low Cut Filter: " + displayName(dsp.lowCutInputFilter) + //
        "\n- Remote Mix Ratio: " + displayName(dsp.remoteMixRatio) + //
        "\n- MPO Attack Time: " + displayName(dsp.mpoAttackTime) + //
        "\n- MPO Release Time: " + displayName(dsp.mpoReleaseTime);
}

} // namespace aurisk
