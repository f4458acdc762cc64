#pragma once

#include "AuriskSDK/Platform/Data.h"
#include "Simulator/SimulatedWorldError.h"

#include <cstddef>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <span>
#include <string>
#include <vector>

namespace aurisk {

/// How one program is fitted: blocks of 16 bytes, most of them one a channel. What is empty has what the factory gives
/// it.
struct PL3AidProgram {
    Data bandEQs = {};
    Data compRatios = {};
    Data compTimes = {};
    Data compThreshold = {};
    Data mpoConfig = {};
    Data inputSettings = {};

    friend bool operator==(const PL3AidProgram&, const PL3AidProgram&) = default;
};

/// One block of a program.
struct PL3AidBlock {
    std::uint8_t command = 0; ///< by which requests name it
    const char* name = nullptr; ///< by which a world names it
    Data PL3AidProgram::*member = nullptr;
};

constexpr std::size_t pl3AidBlockSize = 16;

std::span<const PL3AidBlock> pl3AidBlocks();

/// Of the algorithm that an aid runs.
struct PL3AidVersion {
    std::uint8_t major = 2;
    std::uint8_t minor = 4;
    std::uint8_t build = 19;

    friend bool operator==(const PL3AidVersion&, const PL3AidVersion&) = default;
};

/// Everything that a PL3 aid is and holds. Programs are counted from 0.
struct PL3AidState {
    std::string name = {};
    std::string address = {};
    bool isRight = false;
    std::uint16_t manufacturerId = 258;
    std::uint16_t modelNumber = 1203;
    PL3AidVersion version = {};

    int volume = 8; ///< 0 to 15, the same in each program
    int program = 0;
    bool muted = false;
    int battery = 100; ///< percent
    bool switchedOff = false; ///< by its wearer: off the air

    std::vector<PL3AidProgram> programs = std::vector<PL3AidProgram>(4); ///< 1 to 15

    friend bool operator==(const PL3AidState&, const PL3AidState&) = default;
};

/// The same with everything that the factory gives it. Throws SimulatedWorldError for a state that cannot be; `place`
/// is what it calls the state.
PL3AidState completed(PL3AidState state, const std::string& place = "aid");

nlohmann::json toJson(const PL3AidState& state);

/// What is missing has its default, name and address apart; the ear's is that of the name's suffix, and that of blocks
/// is the factory's.
PL3AidState pl3AidStateFromJson(const nlohmann::json& value, const std::string& place);

} // namespace aurisk
