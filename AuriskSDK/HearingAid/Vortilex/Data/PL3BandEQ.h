#pragma once

#include "AuriskSDK/HearingAid/Vortilex/Data/PL3SettingsBlock.h"

namespace aurisk {

/// The gains of the equaliser by frequency in Hz. What the numbers stand for is up to the device.
struct PL3BandEQ {
    std::uint8_t dc = 0, eq500 = 0, eq1000 = 0, eq1500 = 0, eq2000 = 0, eq2500 = 0, eq3000 = 0, eq3500 = 0;
    std::uint8_t eq4000 = 0, eq4500 = 0, eq5000 = 0, eq5500 = 0, eq6000 = 0, eq6500 = 0, eq7000 = 0, eq7500 = 0;

    static constexpr auto fields = labelled("PL3BandEQ", label("dc", &PL3BandEQ::dc), label("eq500", &PL3BandEQ::eq500),
        label("eq1000", &PL3BandEQ::eq1000), label("eq1500", &PL3BandEQ::eq1500), label("eq2000", &PL3BandEQ::eq2000),
        label("eq2500", &PL3BandEQ::eq2500), label("eq3000", &PL3BandEQ::eq3000), label("eq3500", &PL3BandEQ::eq3500),
        label("eq4000", &PL3BandEQ::eq4000), label("eq4500", &PL3BandEQ::eq4500), label("eq5000", &PL3BandEQ::eq5000),
        label("eq5500", &PL3BandEQ::eq5500), label("eq6000", &PL3BandEQ::eq6000), label("eq6500", &PL3BandEQ::eq6500),
        label("eq7000", &PL3BandEQ::eq7000), label("eq7500", &PL3BandEQ::eq7500));

    PL3BandEQ() = default;
    explicit PL3BandEQ(DataView data) { fillPL3Block(*this, data); }
    Data toData() const { return pl3BlockData(*this); }

    friend bool operator==(const PL3BandEQ&, const PL3BandEQ&) = default;
};

} // namespace aurisk
