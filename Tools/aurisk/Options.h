#pragma once

#include "AuriskSDK/HearingAid/AccessoryOrientation.h"
#include "AuriskSDK/Platform/Data.h"
#include "AuriskSDK/Platform/Dispatch.h"
#include "AuriskSDK/Shared/Dfu/DFUFirmware.h"
#include "AuriskSDK/Shared/Utils/EnumTable.h"

#include <optional>
#include <string>
#include <vector>

namespace aurisk::tool {

/// How a run ends. Of several devices the largest counts.
enum class ExitCode : int {
    done = 0,
    failed = 1, ///< the device refused, or did not answer in time
    usage = 2, ///< wrong arguments, or a file that cannot be used
    bluetoothUnavailable = 3,
    notFound = 4,
    interrupted = 130, ///< by a signal, before the command was done
};

/// Why a run, or one device's part of it, ends without being done.
struct Failure {
    ExitCode code = ExitCode::failed;
    std::string sentence = {}; ///< for a person, without a full stop
    std::string name = {}; ///< of the device that it is about; empty where it is about none
    std::optional<std::vector<std::string>> seen = {}; ///< the names that were heard, where that is the matter
};

enum class Command {
    scan,
    info,
    program,
    volume,
    mute,
    transparency,
    bredr,
    battery,
    find,
    tone,
    orientation,
    monitor,
    raw,
    dsp,
    eq,
    noise,
    direction,
    global,
    profile,
    logs,
    update,
    sim,
    codec
};

/// What is asked of the hearing test.
enum class ToneAction { play, stop, supported, base };

/// What a command does with settings or a profile.
enum class Action { show, set, exportFile, importFile };

/// A change to a setting, as typed.
struct Assignment {
    std::string field;
    std::string value;

    friend bool operator==(const Assignment&, const Assignment&) = default;
};

enum class Backend { bluez, sim };

/// What the arguments ask for. Every value is within its range, those of assignments apart.
struct Options {
    Backend backend = Backend::bluez;
    std::vector<std::string> adapters = {}; ///< at most one, but for `sim`; empty: the first that there is
    std::string world = {}; ///< the path of the simulator's world; empty: the default world, which nobody saves
    bool newWorld = false;
    bool json = false;
    bool log = false;
    bool both = false;
    Seconds timeout{ 5 }; ///< of each wait for the radio or a device

    Command command = Command::scan;
    std::string device = {}; ///< as typed; empty where none is named
    bool set = false; ///< write what `value` or `orientation` holds; else read it
    ToneAction toneAction = ToneAction::play;
    std::optional<int> value = {}; ///< a program, volume, transparency level, or a tone's frequency in Hz
    std::optional<bool> on = {};
    std::optional<AccessoryOrientation> orientation = {};
    Data frame = {}; ///< the bytes of `raw`, as typed
    std::optional<int> program = {}; ///< whose volume or settings it is about; none: the current one
    bool allPrograms = false;
    Action action = Action::show;
    std::vector<Assignment> assignments = {}; ///< for Action::set
    std::string file = {}; ///< to export to or import from ("-": standard output or input), or a firmware image
    DFUFirmwareType firmwareType = DFUFirmwareType::type0;
    std::string events = {}, loopGain = {}; ///< files for the bytes of these logs; empty: not asked for
    bool continuous = false;
    bool updates = false;
    std::optional<Seconds> duration = {}; ///< how long to scan, monitor, find or play
    std::optional<int> dB = {};
    std::optional<int> amp = {};
    int timestamp = 0;
    std::vector<std::string> aids = {}; ///< for `sim`, one for each adapter; empty: the first ones of the world
};

/// Devices are connected one after the other.
inline Seconds connectLimit(const Options& options) { return options.timeout * (options.both ? 2 : 1); }

} // namespace aurisk::tool

namespace aurisk {

template <>
inline constexpr auto enumCases<tool::Command> = std::to_array<EnumCase<tool::Command>>({
    { tool::Command::scan, "scan", "List the hearing aids in range" },
    { tool::Command::info, "info", "Tell everything that a hearing aid says of itself" },
    { tool::Command::program, "program", "Read or change the program" },
    { tool::Command::volume, "volume", "Read or change the volume of a program" },
    { tool::Command::mute, "mute", "Mute or unmute" },
    { tool::Command::transparency, "transparency", "Read or change the transparency level" },
    { tool::Command::bredr, "bredr", "Read or switch classic Bluetooth (BR/EDR)" },
    { tool::Command::battery, "battery", "Read the battery level" },
    { tool::Command::find, "find", "Make a hearing aid audible, to find it" },
    { tool::Command::tone, "tone", "Play a tone of the hearing test, or prepare for one" },
    { tool::Command::orientation, "orientation", "Read or write which ear a hearing aid is for" },
    { tool::Command::monitor, "monitor", "Show what wearers do, as it happens" },
    { tool::Command::raw, "raw", "Send a frame and explain the reply" },
    { tool::Command::dsp, "dsp", "Show, change, export or import the settings of programs" },
    { tool::Command::eq, "eq", "Draw or change the equaliser of a program" },
    { tool::Command::noise, "noise", "Read or change the noise reduction of a program" },
    { tool::Command::direction, "direction", "Read or change where a program listens to" },
    { tool::Command::global, "global", "Show, change, export or import what all programs share" },
    { tool::Command::profile, "profile", "Show, change, export or import what a hearing aid is and was fitted with" },
    { tool::Command::logs, "logs", "Show how a hearing aid was used, or keep its logs" },
    { tool::Command::update, "update", "Give a hearing aid new firmware" },
    { tool::Command::sim, "sim", "Be hearing aids: serve simulated ones on real adapters" },
    { tool::Command::codec, "codec", "Turn bytes into values and back, one JSON object a line" },
});

template <>
inline constexpr auto enumCases<tool::Backend> = std::to_array<EnumCase<tool::Backend>>({
    { tool::Backend::bluez, "bluez" },
    { tool::Backend::sim, "sim" },
});

} // namespace aurisk
