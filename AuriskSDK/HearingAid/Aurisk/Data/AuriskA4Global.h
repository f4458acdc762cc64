#pragma once

#include "AuriskSDK/Platform/Data.h"
#include "AuriskSDK/Shared/Utils/BitLayout.h"

#include <optional>

namespace aurisk {

/// The settings that all programs of an A4 chip share: 9 bytes on the wire. What the numbers mean is the device's
/// business. `nc1`, `nc2` and `nc3` are bits of no meaning here, written back as they were read.
struct AuriskA4GlobalDsp {
    int nc1 = 0;
    int inputCal = 0;
    int swMode = 0;
    int vcMode = 0;
    int vcNumSteps = 0;
    int vcStepSize = 0;
    int toneLevel = 0;
    int toneFreq = 0;
    int programNbr = 0;
    int lcMap = 0;
    int hcMap = 0;
    int tkMap = 0;
    int mpoMap = 0;
    int t1Dir = 0;
    int t2Dir = 0;
    int vcEnable = 0;
    int autoSave = 0;
    int atc = 0;
    int outMode = 0;
    int wbEnable = 0;
    int mbEnable = 0;
    int timeConstants = 0;
    int vcAnalogRange = 0;
    int coilpgm = 0;
    int calInput = 0;
    int dirSpacing = 0;
    int nc2 = 0;
    int pgmStartup = 0;
    int vcStartup = 0;
    int powerOnLevel = 0;
    int powerOnDelay = 0;
    int vcBeep = 0;
    int nc3 = 0;

    AuriskA4GlobalDsp() = default;

    /// Decodes the first 9 of `data`; fewer are a broken precondition.
    explicit AuriskA4GlobalDsp(DataView data);

    /// The same, with none for fewer than 9 bytes.
    static std::optional<AuriskA4GlobalDsp> decode(DataView data);

    /// 9 bytes. A value that does not fit its field is a broken precondition.
    Data toData() const;

    int numberOfPrograms() const { return programNbr; }
    void setNumberOfPrograms(int number) { programNbr = number; }

    friend bool operator==(const AuriskA4GlobalDsp&, const AuriskA4GlobalDsp&) = default;
};

namespace bits {

template <>
inline constexpr auto layoutOf<AuriskA4GlobalDsp> = [] {
    using D = AuriskA4GlobalDsp;
    return std::tuple{
        Field<&D::nc1>{ "nc1", 2 },
        Field<&D::inputCal>{ "inputCal", 6 },
        Field<&D::swMode>{ "swMode", 2 },
        Field<&D::vcMode>{ "vcMode", 2 },
        Field<&D::vcNumSteps>{ "vcNumSteps", 3 },
        Field<&D::vcStepSize>{ "vcStepSize", 3 },
        Field<&D::toneLevel>{ "toneLevel", 2 },
        Field<&D::toneFreq>{ "toneFreq", 2 },
        Field<&D::programNbr>{ "programNbr", 2 },
        Field<&D::lcMap>{ "lcMap", 2 },
        Field<&D::hcMap>{ "hcMap", 2 },
        Field<&D::tkMap>{ "tkMap", 2 },
        Field<&D::mpoMap>{ "mpoMap", 2 },
        Field<&D::t1Dir>{ "t1Dir", 1 },
        Field<&D::t2Dir>{ "t2Dir", 1 },
        Field<&D::vcEnable>{ "vcEnable", 1 },
        Field<&D::autoSave>{ "autoSave", 1 },
        Field<&D::atc>{ "atc", 1 },
        Field<&D::outMode>{ "outMode", 1 },
        Field<&D::wbEnable>{ "wbEnable", 1 },
        Field<&D::mbEnable>{ "mbEnable", 1 },
        Field<&D::timeConstants>{ "timeConstants", 4 },
        Field<&D::vcAnalogRange>{ "vcAnalogRange", 3 },
        Field<&D::coilpgm>{ "coilpgm", 3 },
        Field<&D::calInput>{ "calInput", 1 },
        Field<&D::dirSpacing>{ "dirSpacing", 3 },
        Field<&D::nc2>{ "nc2", 2 },
        Field<&D::pgmStartup>{ "pgmStartup", 2 },
        Field<&D::vcStartup>{ "vcStartup", 5 },
        Field<&D::powerOnLevel>{ "powerOnLevel", 2 },
        Field<&D::powerOnDelay>{ "powerOnDelay", 2 },
        Field<&D::vcBeep>{ "vcBeep", 1 },
        Field<&D::nc3>{ "nc3", 4 },
    };
}();
static_assert(bitCount<AuriskA4GlobalDsp>() == 9 * 8);
static_assert(bitOf<AuriskA4GlobalDsp>("vcNumSteps") == 12 && bitOf<AuriskA4GlobalDsp>("vcStepSize") == 15);
static_assert(bitOf<AuriskA4GlobalDsp>("programNbr") == 22 && bitOf<AuriskA4GlobalDsp>("t1Dir") == 32);
static_assert(bitOf<AuriskA4GlobalDsp>("timeConstants") == 40 && bitOf<AuriskA4GlobalDsp>("coilpgm") == 47);
static_assert(bitOf<AuriskA4GlobalDsp>("vcStartup") == 58 && bitOf<AuriskA4GlobalDsp>("powerOnLevel") == 63);
static_assert(bitOf<AuriskA4GlobalDsp>("vcBeep") == 67 && bitOf<AuriskA4GlobalDsp>("nc3") == 68);

} // namespace bits

} // namespace aurisk
