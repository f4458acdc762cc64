#pragma once

#include "AuriskSDK/HearingAid/AccessoryOrientation.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskChip.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskDsp.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskGlobalDsp.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskProfileType.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskRawData.h"
#include "AuriskSDK/Shared/Utils/LabelledCase.h"

#include <concepts>
#include <cstdint>
#include <string>
#include <utility>
#include <variant>

namespace aurisk {

/// What a host can ask of a hearing aid. Built with labels: `AuriskRequest::readVolume{ .program = 0 }`.
/// Programs count from 0 everywhere here, whatever the device counts from.
class AuriskRequest {
public:
    /// Program: counted from 0.
    struct readVolume {
        int program = 0;
        static constexpr auto labels = labelled("readVolume", label("program", &readVolume::program));
        friend bool operator==(const readVolume&, const readVolume&) = default;
    };
    struct readDsp {
        int program = 0;
        static constexpr auto labels = labelled("readDsp", label("program", &readDsp::program));
        friend bool operator==(const readDsp&, const readDsp&) = default;
    };
    struct readGlobalDsp {
        AuriskChip chip = AuriskChip::a4;
        static constexpr auto labels = labelled("readGlobalDsp", label("chip", &readGlobalDsp::chip));
        friend bool operator==(const readGlobalDsp&, const readGlobalDsp&) = default;
    };
    struct readProfile {
        AuriskProfileType type = AuriskProfileType::unknown;
        static constexpr auto labels = labelled("readProfile", label("type", &readProfile::type));
        friend bool operator==(const readProfile&, const readProfile&) = default;
    };
    /// Without a response the device is asked not to answer.
    struct writeDsp {
        AuriskDsp dsp = AuriskA4Dsp();
        int program = 0;
        bool withResponse = false;
        static constexpr auto labels = labelled("writeDsp", label("dsp", &writeDsp::dsp),
            label("program", &writeDsp::program), label("withResponse", &writeDsp::withResponse));
        friend bool operator==(const writeDsp&, const writeDsp&) = default;
    };
    /// The same, as bytes.
    struct writeDspData {
        Data data = {};
        int program = 0;
        bool withResponse = false;
        static constexpr auto labels = labelled("writeDspData", label("data", &writeDspData::data),
            label("program", &writeDspData::program), label("withResponse", &writeDspData::withResponse));
        friend bool operator==(const writeDspData&, const writeDspData&) = default;
    };
    struct writeGlobalDsp {
        AuriskGlobalDsp global = AuriskA4GlobalDsp();
        AuriskChip chip = AuriskChip::a4;
        bool withResponse = false;
        static constexpr auto labels = labelled("writeGlobalDsp", label("global", &writeGlobalDsp::global),
            label("chip", &writeGlobalDsp::chip), label("withResponse", &writeGlobalDsp::withResponse));
        friend bool operator==(const writeGlobalDsp&, const writeGlobalDsp&) = default;
    };
    struct writeGlobalDspData {
        Data data = {};
        AuriskChip chip = AuriskChip::a4;
        bool withResponse = false;
        static constexpr auto labels = labelled("writeGlobalDspData", label("data", &writeGlobalDspData::data),
            label("chip", &writeGlobalDspData::chip), label("withResponse", &writeGlobalDspData::withResponse));
        friend bool operator==(const writeGlobalDspData&, const writeGlobalDspData&) = default;
    };
    struct writeProfile {
        Data data = {};
        AuriskProfileType type = AuriskProfileType::unknown;
        static constexpr auto labels
            = labelled("writeProfile", label("data", &writeProfile::data), label("type", &writeProfile::type));
        friend bool operator==(const writeProfile&, const writeProfile&) = default;
    };
    /// `unassigned` is written as right.
    struct writeOrientation {
        AccessoryOrientation orientation = AccessoryOrientation::unassigned;
        static constexpr auto labels
            = labelled("writeOrientation", label("orientation", &writeOrientation::orientation));
        friend bool operator==(const writeOrientation&, const writeOrientation&) = default;
    };
    /// Volume: 0 to 15; more spills into the program, deliberately unguarded.
    struct controlVolume {
        int volume = 0;
        int program = 0;
        static constexpr auto labels = labelled(
            "controlVolume", label("volume", &controlVolume::volume), label("program", &controlVolume::program));
        friend bool operator==(const controlVolume&, const controlVolume&) = default;
    };
    struct controlProgram {
        int program = 0;
        static constexpr auto labels = labelled("controlProgram", label("program", &controlProgram::program));
        friend bool operator==(const controlProgram&, const controlProgram&) = default;
    };
    struct controlMute {
        bool mute = false;
        static constexpr auto labels = labelled("controlMute", label("mute", &controlMute::mute));
        friend bool operator==(const controlMute&, const controlMute&) = default;
    };
    /// Value: 0 to 255, passed through.
    struct controlBeep {
        int value = 0;
        static constexpr auto labels = labelled("controlBeep", label("value", &controlBeep::value));
        friend bool operator==(const controlBeep&, const controlBeep&) = default;
    };
    /// Level: 0 to 255.
    struct setTransparency {
        int level = 0;
        static constexpr auto labels = labelled("setTransparency", label("level", &setTransparency::level));
        friend bool operator==(const setTransparency&, const setTransparency&) = default;
    };
    /// Classic Bluetooth; continuous: it stays on.
    struct setBrEdr {
        bool enable = false;
        bool continuousIfEnable = false;
        static constexpr auto labels = labelled(
            "setBrEdr", label("enable", &setBrEdr::enable), label("continuousIfEnable", &setBrEdr::continuousIfEnable));
        friend bool operator==(const setBrEdr&, const setBrEdr&) = default;
    };
    /// The in-situ hearing test; false leaves it.
    struct enterHearingMode {
        bool enter = false;
        static constexpr auto labels = labelled("enterHearingMode", label("enter", &enterHearingMode::enter));
        friend bool operator==(const enterHearingMode&, const enterHearingMode&) = default;
    };
    /// Freq: Hz; amp: 0 and up.
    struct setBaseAmplitude {
        std::uint16_t freq = 0;
        std::int16_t amp = 0;
        static constexpr auto labels = labelled(
            "setBaseAmplitude", label("freq", &setBaseAmplitude::freq), label("amp", &setBaseAmplitude::amp));
        friend bool operator==(const setBaseAmplitude&, const setBaseAmplitude&) = default;
    };
    /// Freq: Hz; timestamp: 0 and up, passed through.
    struct playSine {
        std::uint16_t freq = 0;
        std::uint8_t dB = 0;
        std::int32_t timestamp = 0;
        static constexpr auto labels = labelled("playSine", label("freq", &playSine::freq), label("dB", &playSine::dB),
            label("timestamp", &playSine::timestamp));
        friend bool operator==(const playSine&, const playSine&) = default;
    };
    /// Freq: Hz; amp, timestamp: 0 and up.
    struct playSineAmplitude {
        std::uint16_t freq = 0;
        std::int16_t amp = 0;
        std::int32_t timestamp = 0;
        static constexpr auto labels = labelled("playSineAmplitude", label("freq", &playSineAmplitude::freq),
            label("amp", &playSineAmplitude::amp), label("timestamp", &playSineAmplitude::timestamp));
        friend bool operator==(const playSineAmplitude&, const playSineAmplitude&) = default;
    };
    /// Any frame, as it is.
    struct writeProtocolData {
        AuriskRawData data = {};
        static constexpr auto labels = labelled("writeProtocolData", label("data", &writeProtocolData::data));
        friend bool operator==(const writeProtocolData&, const writeProtocolData&) = default;
    };
    /// The current program and its volume.
    struct readProgramVolume {
        static constexpr auto labels = labelled("readProgramVolume");
        friend bool operator==(const readProgramVolume&, const readProgramVolume&) = default;
    };
    struct readOrientation {
        static constexpr auto labels = labelled("readOrientation");
        friend bool operator==(const readOrientation&, const readOrientation&) = default;
    };
    struct controlLockChip {
        static constexpr auto labels = labelled("controlLockChip");
        friend bool operator==(const controlLockChip&, const controlLockChip&) = default;
    };
    /// Puts the device into its shipping state.
    struct controlShip {
        static constexpr auto labels = labelled("controlShip");
        friend bool operator==(const controlShip&, const controlShip&) = default;
    };
    /// The radio's test mode.
    struct enterDUT {
        static constexpr auto labels = labelled("enterDUT");
        friend bool operator==(const enterDUT&, const enterDUT&) = default;
    };
    struct readBrEdr {
        static constexpr auto labels = labelled("readBrEdr");
        friend bool operator==(const readBrEdr&, const readBrEdr&) = default;
    };
    struct getTransparencyLevel {
        static constexpr auto labels = labelled("getTransparencyLevel");
        friend bool operator==(const getTransparencyLevel&, const getTransparencyLevel&) = default;
    };
    /// Makes the device audible, to find it.
    struct beginFind {
        static constexpr auto labels = labelled("beginFind");
        friend bool operator==(const beginFind&, const beginFind&) = default;
    };
    struct endFind {
        static constexpr auto labels = labelled("endFind");
        friend bool operator==(const endFind&, const endFind&) = default;
    };
    struct resetFactory {
        static constexpr auto labels = labelled("resetFactory");
        friend bool operator==(const resetFactory&, const resetFactory&) = default;
    };
    /// Whether the device has the hearing test.
    struct hearingSupported {
        static constexpr auto labels = labelled("hearingSupported");
        friend bool operator==(const hearingSupported&, const hearingSupported&) = default;
    };
    struct stopPlaySine {
        static constexpr auto labels = labelled("stopPlaySine");
        friend bool operator==(const stopPlaySine&, const stopPlaySine&) = default;
    };

    using Case = std::variant<readVolume, readDsp, readGlobalDsp, readProfile, writeDsp, writeDspData, writeGlobalDsp,
        writeGlobalDspData, writeProfile, writeOrientation, controlVolume, controlProgram, controlMute, controlBeep,
        setTransparency, setBrEdr, enterHearingMode, setBaseAmplitude, playSine, playSineAmplitude, writeProtocolData,
        readProgramVolume, readOrientation, controlLockChip, controlShip, enterDUT, readBrEdr, getTransparencyLevel,
        beginFind, endFind, resetFactory, hearingSupported, stopPlaySine>;

    template <LabelledCase C>
    requires std::constructible_from<Case, C> AuriskRequest(C one)
        : _case(std::move(one))
    {
    }

    const Case& value() const { return _case; }

    /// The request if it is a `C`, else null.
    template <typename C> const C* as() const { return std::get_if<C>(&_case); }

    /// The frame that asks for it. A number that does not fit its byte in the frame, and a negative amplitude or time
    /// stamp, are broken preconditions.
    AuriskRawData requestRawData() const;

    friend bool operator==(const AuriskRequest&, const AuriskRequest&) = default;

private:
    Case _case;
};

std::string description(const AuriskRequest& request);

} // namespace aurisk
