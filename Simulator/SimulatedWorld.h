#pragma once

#include "AuriskSDK/Platform/Bluetooth.h"
#include "AuriskSDK/Platform/Dispatch.h"
#include "Simulator/LinkFaults.h"
#include "Simulator/SimulatedAid.h"
#include "Simulator/SimulatedWorldError.h"

#include <filesystem>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace aurisk {

/// One aid and how the radio hears it.
struct PlacedAid {
    std::shared_ptr<SimulatedAid> aid = {};
    int rssi = -60; ///< dBm, -127 to 20
    Seconds advertisingInterval{ 0.2 }; ///< 0.02 s to 10.24 s
    int mtu = 247; ///< ATT_MTU of a connection, 23 to 517; a value carries three bytes less
    LinkFaults faults = {};
};

/// One line of a script: what the wearer of one aid does, and when.
struct ScriptedAction {
    Seconds at{ 0 }; ///< from the start of the run, or of the script's current repetition
    std::string aid = {}; ///< its name
    WearerAction action = {};

    friend bool operator==(const ScriptedAction&, const ScriptedAction&) = default;
};

/// Everything that a simulated radio can hear, and what happens by itself. Saved, it holds the aids as they are by
/// then, so that the next run finds what this one left; the script begins anew with each run.
///
/// A copy shares its aids. Neither aids nor script are to be added or removed once a simulator runs the world.
struct SimulatedWorld {
    CBManagerState radioState = CBManagerState::poweredOn;
    std::vector<PlacedAid> aids = {}; ///< no two of one name or one address
    std::vector<ScriptedAction> script = {}; ///< in the order of time
    std::optional<Seconds> scriptPeriod = {}; ///< starts the script again after so long; none: it runs once

    /// A pair X1-L and X1-R (a16), a single Solo-L (a4), a single Uno-R (h01) and a pair P3-L and P3-R (PL3), and
    /// wearers who touch their aids every few seconds.
    static SimulatedWorld makeDefault();

    /// Throws SimulatedWorldError for anything wrong: an unknown key, a wrong type, a number out of range, two aids of
    /// one name or address, a script that cannot be played. What is missing has its default.
    static SimulatedWorld fromJson(const nlohmann::json& value);
    nlohmann::json toJson() const;

    /// Throws SimulatedWorldError, with the path in front, also where the file cannot be read or is no JSON.
    static SimulatedWorld load(const std::filesystem::path& path);

    /// Replaces the file whole or leaves it as it was. Throws SimulatedWorldError where it cannot be written.
    void save(const std::filesystem::path& path) const;

    /// The aid of that name; none where there is none.
    std::shared_ptr<SimulatedAid> aid(std::string_view name) const;

    /// The same with its place; throws std::out_of_range where there is none.
    PlacedAid& placed(std::string_view name);
    const PlacedAid& placed(std::string_view name) const;
};

} // namespace aurisk
