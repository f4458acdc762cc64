#pragma once

#include "AuriskSDK/Platform/Data.h"
#include "Simulator/AuriskUsage.h"
#include "Simulator/FirmwareAcceptor.h"
#include "Simulator/SimulatedWorldError.h"

#include <cstdint>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

namespace aurisk {

/// A tone that the hearing test asked for: by sound pressure in dB, or by amplitude.
struct AuriskTone {
    int frequency = 0; ///< Hz
    std::optional<int> dB = {};
    std::optional<std::uint32_t> amplitude = {};
    std::uint32_t timestamp = 0; ///< as the host gave it

    friend bool operator==(const AuriskTone&, const AuriskTone&) = default;
};

/// An amplitude that the hearing test measures from.
struct AuriskBaseAmplitude {
    int frequency = 0; ///< Hz
    std::uint32_t amplitude = 0;

    friend bool operator==(const AuriskBaseAmplitude&, const AuriskBaseAmplitude&) = default;
};

/// Everything that an Aurisk aid is and holds. Programs are counted from 0.
struct AuriskAidState {
    // What it was made as. A factory reset leaves it alone.
    std::string name = {};
    std::string address = {};
    std::uint8_t chip = 0x06; ///< hearing-aid chip: a4 0x00, h01 0x01, a16 0x06
    std::uint8_t radioChip = 0x08; ///< u87 7, tiny600 8; at most 0x7F, as the top bit is the transparency flag's
    bool transparencyFlag = false; ///< what its advertisement says of transparency
    bool hearingTestSupported = true;

    // How it is set.
    std::vector<int> volumes = { 8, 8, 8, 8 }; ///< one a program: 1 to 15 programs, volumes 0 to 15
    int program = 0;
    bool muted = false;
    int transparencyLevel = 0;
    bool brEdrEnabled = false;
    bool brEdrContinuous = false; ///< stays on continuously while enabled
    bool isRight = false; ///< the ear that was written to it
    bool locked = false;

    // What it is doing.
    bool finding = false;
    bool inHearingMode = false;
    bool inDeviceTest = false;
    std::optional<AuriskTone> tone = {};
    std::optional<AuriskBaseAmplitude> baseAmplitude = {}; ///< the one set last
    std::optional<int> lastBeep = {};

    int battery = 100; ///< percent
    bool shipped = false; ///< packed for shipping: off the air
    bool switchedOff = false; ///< by its wearer: off the air

    // What it keeps. What is empty or missing here has what the factory gives it (AuriskFactory.h).
    std::vector<Data> programBlocks = {}; ///< of the first five programs, on chips that have blocks
    Data globalBlock = {};
    std::map<std::uint8_t, Data> profile = {}; ///< by the number of the field
    AuriskUsage usage = {};
    AuriskFirmware firmware = {};

    friend bool operator==(const AuriskAidState&, const AuriskAidState&) = default;
};

/// The same with everything that the factory gives it, and without the blocks of programs that it does not have. Throws
/// SimulatedWorldError for a state that cannot be; `place` is what it calls the state.
AuriskAidState completed(AuriskAidState state, const std::string& place = "aid");

nlohmann::json toJson(const AuriskAidState& state);

/// What is missing has its default, name and address apart; the ear's is that of the name's suffix, and that of blocks
/// and profile is the factory's.
AuriskAidState auriskAidStateFromJson(const nlohmann::json& value, const std::string& place);

} // namespace aurisk
