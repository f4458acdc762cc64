#pragma once

#include "AuriskSDK/HearingAid/Vortilex/Data/PL3SettingsBlock.h"

namespace aurisk {

/// Where a program listens and how the sound is prepared. What the numbers stand for is up to the device.
struct PL3InputSettings {
    std::uint8_t inputMux = 0, preampGainCh1 = 0, preampGainCh2 = 0, preampGainDigitalCh1 = 0, preampGainDigitalCh2 = 0;
    std::uint8_t matrixGain = 0, matrixGainMantissa = 0, matrixGainExponent = 0, feedbackCanceller = 0,
                 noiseReduction = 0;
    std::uint8_t lowLevelExpansion = 0, windSuppression = 0, lowCutFilter = 0, remoteMixRatio = 0, mpoAttack = 0;
    std::uint8_t mpoRelease = 0;

    static constexpr auto fields = labelled("PL3InputSettings", label("inputMux", &PL3InputSettings::inputMux),
        label("preampGainCh1", &PL3InputSettings::preampGainCh1),
        label("preampGainCh2", &PL3InputSettings::preampGainCh2),
        label("preampGainDigitalCh1", &PL3InputSettings::preampGainDigitalCh1),
        label("preampGainDigitalCh2", &PL3InputSettings::preampGainDigitalCh2),
        label("matrixGain", &PL3InputSettings::matrixGain),
        label("matrixGainMantissa", &PL3InputSettings::matrixGainMantissa),
        label("matrixGainExponent", &PL3InputSettings::matrixGainExponent),
        label("feedbackCanceller", &PL3InputSettings::feedbackCanceller),
        label("noiseReduction", &PL3InputSettings::noiseReduction),
        label("lowLevelExpansion", &PL3InputSettings::lowLevelExpansion),
        label("windSuppression", &PL3InputSettings::windSuppression),
        label("lowCutFilter", &PL3InputSettings::lowCutFilter),
        label("remoteMixRatio", &PL3InputSettings::remoteMixRatio), label("mpoAttack", &PL3InputSettings::mpoAttack),
        label("mpoRelease", &PL3InputSettings::mpoRelease));

    PL3InputSettings() = default;
    explicit PL3InputSettings(DataView data) { fillPL3Block(*this, data); }
    Data toData() const { return pl3BlockData(*this); }

    friend bool operator==(const PL3InputSettings&, const PL3InputSettings&) = default;
};

} // namespace aurisk
