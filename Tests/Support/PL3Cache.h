#pragma once

#include "AuriskSDK/HearingAid/Vortilex/PL3Accessory.h"

#include <map>
#include <utility>

namespace aurisk::tests {

/// What an accessory holds of its device, or what it ought to hold.
struct PL3Cache {
    int volume = 0, program = 0, battery = 0;
    std::map<std::pair<unsigned, int>, Data> blocks = {}; ///< by command and program

    friend bool operator==(const PL3Cache&, const PL3Cache&) = default;

    static PL3Cache of(const PL3Accessory& one)
    {
        PL3Cache held{ .volume = one.volume(), .program = one.program(), .battery = one.battery() };
        const auto add = [&](unsigned command, const auto& ofPrograms) {
            for (const auto& [itsProgram, block] : ofPrograms)
                held.blocks[{ command, itsProgram }] = block.toData();
        };
        add(6, one.bandEQ());
        add(7, one.compRatio());
        add(8, one.compTime());
        add(9, one.compThreshold());
        add(10, one.mpoConfig());
        add(11, one.inputSetting());
        return held;
    }

    /// The device says so, or has taken it.
    void keep(unsigned command, Data payload)
    {
        const int first = payload.empty() ? 0 : payload[0];
        if (command == 0)
            volume = first;
        if (command == 1)
            program = first;
        if (command == 3)
            battery = first;
        payload.resize(16);
        if (command >= 6 && command <= 11)
            blocks[{ command, program }] = payload;
    }
};

} // namespace aurisk::tests
