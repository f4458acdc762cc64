#pragma once

#include "AuriskSDK/Platform/Data.h"
#include "AuriskSDK/Shared/Utils/EnumTable.h"

#include <optional>
#include <string>
#include <vector>

namespace aurisk {

/// What the program blocks of both chips have in common; `Dsp` is the block itself.
template <typename Dsp> struct AuriskDspBlock {
    /// The block that the first of `bytes` hold. None where they are too few (12 are needed on the A4, 56 on the A16)
    /// and on the A16 where bits name no case of a field's enumeration.
    static std::optional<Dsp> decode(DataView bytes);

    /// 12 bytes on the A4, 56 on the A16. A value that does not fit its field is a broken precondition.
    Data toBytes() const;

    /// `gain`: the attenuation, 1 to 47 dB. Others are a broken precondition.
    void setMatrixGain(int gain);
    int getMatrixGain() const; ///< the attenuation in dB
    std::string matrixGainDisplayValue() const; ///< "-42 dB"; "Unknown" for what is no gain

    /// The centres of the equaliser's bands in Hz. The spelling is part of the interface.
    static std::vector<int> frequences();

    // The raw values of EqualizerGain.
    static constexpr int minEQValue() { return 0; }
    static constexpr int maxEQValue() ///< one past the largest, deliberately
    {
        return static_cast<int>(enumCases<typename Dsp::EqualizerGain>.size());
    }

    /// `eq`: a raw value of EqualizerGain; others set the lowest gain, deliberately. `frequency`: the centre of a band,
    /// in Hz; others change nothing.
    void setEq(int eq, int frequency);
    /// None where `frequency` is the centre of no band.
    std::optional<int> getEq(int frequency) const;

    /// Decodes and encodes each value of each byte, and prints those that come out different. A value that the strict
    /// constructor stops for is a broken precondition here, too.
    static void testDataConsistency();

    friend bool operator==(const AuriskDspBlock&, const AuriskDspBlock&) = default;

protected:
    /// The value of a band; `otherwise` for a number that is no band's.
    template <typename Values, typename Band>
    static auto valueAt(const Values& values, Band band, typename Values::value_type otherwise)
    {
        return rawValue(band) < values.size() ? values[rawValue(band)] : otherwise;
    }
    /// A number that is no band's changes nothing.
    template <typename Values, typename Band>
    static void setValueAt(Values& values, Band band, typename Values::value_type value)
    {
        if (rawValue(band) < values.size())
            values[rawValue(band)] = value;
    }

private:
    Dsp& dsp() { return static_cast<Dsp&>(*this); }
    const Dsp& dsp() const { return static_cast<const Dsp&>(*this); }
};

} // namespace aurisk
