#pragma once

#include "AuriskSDK/Platform/Data.h"
#include "AuriskSDK/Shared/Utils/BitLayout.h"

#include <optional>

namespace aurisk {

/// The settings that all programs of an A16 chip share: 12 bytes on the wire, in the order of the device's registers,
/// which differs from the order here. What the numbers mean is the device's business. `empty` is the rest of the block,
/// written back as it was read.
struct AuriskA16GlobalDsp {
    int swMode = 0;
    int vcMode = 0;
    int vcEnabled = 0;
    int vcPromptMode = 0;
    int pgmPrompt = 0;
    int wrnPrompt = 0;
    int vcStartUp = 0;
    int pgmStartup = 0;
    int vcNumSteps = 0;
    int vcStepSize = 0;
    int vcAnalogRange = 0;
    int numberOfPrograms = 0;
    int toneLevel = 0;
    int toneFrequency = 0;
    int tRef = 0;
    int dirSpacing = 0;
    int dirMicCalibration = 0;
    int calInput = 0;
    int adSens = 0;
    int atc = 0;
    int tapMode = 0;
    int tapSensitivity = 0;
    int powerOnLevel = 0;
    int powerOnDelay = 0;
    int autoSave = 0;
    int noiseLevel = 0;
    int nRef = 0;
    int noiseFlt1Preset = 0;
    int noiseFlt2Preset = 0;
    int outFlt1Index = 0;
    int outFlt2Index = 0;
    int ofEnabled = 0;
    int hpEnabled = 0;
    int l1Enabled = 0;
    int l2Enabled = 0;
    int l3Enabled = 0;
    int l4Enabled = 0;
    int empty = 0;

    AuriskA16GlobalDsp() = default;

    /// Decodes the first 12 of `data`; fewer are a broken precondition.
    explicit AuriskA16GlobalDsp(DataView data);

    /// The same, with none for fewer than 12 bytes.
    static std::optional<AuriskA16GlobalDsp> decode(DataView data);

    /// 12 bytes. A value that does not fit its field is a broken precondition.
    Data toData() const;

    friend bool operator==(const AuriskA16GlobalDsp&, const AuriskA16GlobalDsp&) = default;
};

namespace bits {

template <>
inline constexpr auto layoutOf<AuriskA16GlobalDsp> = [] {
    using D = AuriskA16GlobalDsp;
    return std::tuple{
        Field<&D::swMode>{ "swMode", 2 },
        Field<&D::vcMode>{ "vcMode", 2 },
        Field<&D::vcEnabled>{ "vcEnabled", 1 },
        Field<&D::vcPromptMode>{ "vcPromptMode", 3 },
        Field<&D::pgmPrompt>{ "pgmPrompt", 2 },
        Field<&D::wrnPrompt>{ "wrnPrompt", 2 },
        Field<&D::vcStartUp>{ "vcStartUp", 5 },
        Field<&D::pgmStartup>{ "pgmStartup", 3 },
        Field<&D::vcNumSteps>{ "vcNumSteps", 3 },
        Field<&D::vcStepSize>{ "vcStepSize", 3 },
        Field<&D::vcAnalogRange>{ "vcAnalogRange", 3 },
        Field<&D::numberOfPrograms>{ "numberOfPrograms", 3 },
        Field<&D::toneLevel>{ "toneLevel", 3 },
        Field<&D::toneFrequency>{ "toneFrequency", 3 },
        Field<&D::tRef>{ "tRef", 1 },
        Field<&D::dirSpacing>{ "dirSpacing", 3 },
        Field<&D::dirMicCalibration>{ "dirMicCalibration", 5 },
        Field<&D::calInput>{ "calInput", 1 },
        Field<&D::adSens>{ "adSens", 2 },
        Field<&D::atc>{ "atc", 1 },
        Field<&D::tapMode>{ "tapMode", 2 },
        Field<&D::tapSensitivity>{ "tapSensitivity", 2 },
        Field<&D::powerOnLevel>{ "powerOnLevel", 2 },
        Field<&D::powerOnDelay>{ "powerOnDelay", 2 },
        Field<&D::noiseLevel>{ "noiseLevel", 3 },
        Field<&D::hpEnabled>{ "hpEnabled", 1 },
        Field<&D::autoSave>{ "autoSave", 1 },
        Field<&D::noiseFlt1Preset>{ "noiseFlt1Preset", 3 },
        Field<&D::noiseFlt2Preset>{ "noiseFlt2Preset", 3 },
        Field<&D::outFlt2Index>{ "outFlt2Index", 3 },
        Field<&D::outFlt1Index>{ "outFlt1Index", 3 },
        Field<&D::ofEnabled>{ "ofEnabled", 1 },
        Field<&D::nRef>{ "nRef", 1 },
        Field<&D::l1Enabled>{ "l1Enabled", 1 },
        Field<&D::l2Enabled>{ "l2Enabled", 1 },
        Field<&D::l3Enabled>{ "l3Enabled", 1 },
        Field<&D::l4Enabled>{ "l4Enabled", 1 },
        Field<&D::empty>{ "empty", 14 },
    };
}();
static_assert(bitCount<AuriskA16GlobalDsp>() == 12 * 8);
static_assert(bitOf<AuriskA16GlobalDsp>("pgmPrompt") == 8 && bitOf<AuriskA16GlobalDsp>("vcStartUp") == 12);
static_assert(bitOf<AuriskA16GlobalDsp>("vcStepSize") == 23 && bitOf<AuriskA16GlobalDsp>("numberOfPrograms") == 29);
static_assert(bitOf<AuriskA16GlobalDsp>("dirSpacing") == 39 && bitOf<AuriskA16GlobalDsp>("adSens") == 48);
static_assert(bitOf<AuriskA16GlobalDsp>("powerOnLevel") == 55 && bitOf<AuriskA16GlobalDsp>("noiseLevel") == 59);
static_assert(bitOf<AuriskA16GlobalDsp>("hpEnabled") == 62 && bitOf<AuriskA16GlobalDsp>("autoSave") == 63);
static_assert(bitOf<AuriskA16GlobalDsp>("outFlt2Index") == 70 && bitOf<AuriskA16GlobalDsp>("outFlt1Index") == 73);
static_assert(bitOf<AuriskA16GlobalDsp>("nRef") == 77 && bitOf<AuriskA16GlobalDsp>("l3Enabled") == 80);
static_assert(bitOf<AuriskA16GlobalDsp>("empty") == 82);

} // namespace bits

} // namespace aurisk
