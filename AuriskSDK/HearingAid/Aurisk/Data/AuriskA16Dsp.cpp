#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskA16Dsp.h"

#include "AuriskSDK/HearingAid/Aurisk/Data/DspArithmetic.h"

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

std::optional<AuriskA16Dsp> AuriskA16Dsp::decode(DataView bytes) { return bits::decodedIfAny<AuriskA16Dsp>(bytes); }

Data AuriskA16Dsp::toBytes() const { return bits::encode(*this); }

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

void AuriskA16Dsp::setMatrixGain(int gain) { dsp::setMatrixGain(*this, gain); }

int AuriskA16Dsp::getMatrixGain() const { return dsp::matrixGain(matrixGainMantissa, matrixGainExponent); }

std::string AuriskA16Dsp::matrixGainDisplayValue() const { return dsp::matrixGainText(getMatrixGain()); }

void AuriskA16Dsp::setEq(int eq, int frequency) { dsp::setEq(*this, eq, frequency); }

std::optional<int> AuriskA16Dsp::getEq(int frequency) const { return dsp::getEq(*this, frequency); }

void AuriskA16Dsp::testDataConsistency() { dsp::testDataConsistency<AuriskA16Dsp>(); }

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
