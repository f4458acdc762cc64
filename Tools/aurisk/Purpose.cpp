#include "Tools/aurisk/Purpose.h"

#include "AuriskSDK/Shared/Utils/HexToData.h"
#include "Tools/aurisk/ProfileFields.h"

#include <fmt/format.h>

namespace aurisk::tool {

namespace {

using R = AuriskRequest;

std::string brEdr(const R::setBrEdr& r)
{
    if (!r.enable)
        return "switch BR/EDR off";
    return r.continuousIfEnable ? "switch BR/EDR on continuously" : "switch BR/EDR on";
}

/// The name that a command has in the log, as it stands in a sentence.
std::string inWords(PL3Command command)
{
    switch (command) {
    case PL3Command::volumeLevel: return "volume";
    case PL3Command::program: return "program";
    case PL3Command::batteryLevel: return "battery level";
    case PL3Command::deviceSettings: return "device settings";
    case PL3Command::muteUnmute: return "mute state";
    default: return std::string(caseName(command));
    }
}

} // namespace

std::string purpose(const AuriskRequest& request)
{
    return std::visit(
        overloaded{
            [](const R::readVolume& r) { return fmt::format("tell the volume of program {}", r.program); },
            [](const R::readDsp& r) { return fmt::format("tell the settings of program {}", r.program); },
            [](const R::writeDsp& r) { return fmt::format("take new settings for program {}", r.program); },
            [](const R::readGlobalDsp&) -> std::string { return "tell the settings that all programs share"; },
            [](const R::writeGlobalDsp&) -> std::string { return "take new settings for all programs"; },
            [](const R::readProgramVolume&) -> std::string { return "tell its program and volume"; },
            [](const R::readProfile& r) { return fmt::format("tell its {}", profileField(r.type).name); },
            [](const R::writeProfile& r) { return fmt::format("take a new {}", profileField(r.type).name); },
            [](const R::readOrientation&) -> std::string { return "tell its orientation"; },
            [](const R::writeOrientation& r) {
                return fmt::format("write its orientation: {}", caseName(r.orientation));
            },
            [](const R::controlVolume& r) {
                return fmt::format("set the volume of program {} to {}", r.program, r.volume);
            },
            [](const R::controlProgram& r) { return fmt::format("switch to program {}", r.program); },
            [](const R::controlMute& r) -> std::string { return r.mute ? "mute" : "unmute"; },
            [](const R::getTransparencyLevel&) -> std::string { return "tell its transparency level"; },
            [](const R::setTransparency& r) { return fmt::format("set the transparency level to {}", r.level); },
            [](const R::readBrEdr&) -> std::string { return "tell whether BR/EDR is on"; },
            [](const R::setBrEdr& r) { return brEdr(r); },
            [](const R::beginFind&) -> std::string { return "make itself audible"; },
            [](const R::endFind&) -> std::string { return "be silent again"; },
            [](const R::hearingSupported&) -> std::string { return "tell whether it has the hearing test"; },
            [](const R::enterHearingMode& r) -> std::string {
                return r.enter ? "enter the hearing test" : "leave the hearing test";
            },
            [](const R::setBaseAmplitude& r) {
                return fmt::format("take {} as the base amplitude at {} Hz", r.amp, r.freq);
            },
            [](const R::playSine& r) { return fmt::format("play {} Hz at {} dB", r.freq, r.dB); },
            [](const R::playSineAmplitude& r) {
                return fmt::format("play {} Hz with an amplitude of {}", r.freq, r.amp);
            },
            [](const R::stopPlaySine&) -> std::string { return "stop the tone"; },
            [](const R::writeProtocolData& r) {
                return fmt::format("answer the frame {}", ask_hexadecimal(r.data.toData()));
            },
            [](const auto& r) { return description(r); },
        },
        request.value());
}

std::string purpose(AuriskDataLogType log)
{
    switch (log) {
    case AuriskDataLogType::summary: return "tell the summary of its use";
    case AuriskDataLogType::userEvent: return "tell its log of user events";
    case AuriskDataLogType::loopGain: return "tell its log of loop gains";
    case AuriskDataLogType::feedback: break;
    }
    return "tell a log";
}

std::string advice(const AuriskRequest& request)
{
    const bool isAboutProgram = request.as<R::controlProgram>() || request.as<R::controlVolume>()
        || request.as<R::readVolume>() || request.as<R::readDsp>();
    return isAboutProgram ? " (aurisk info tells which programs it has)" : "";
}

std::string purpose(const PL3Request& request)
{
    const auto what = inWords(request.command);
    if (request.read)
        return fmt::format("tell its {}", what);
    const auto data = request.data.value_or(Data{});
    if (request.command == PL3Command::muteUnmute && data.size() == 1)
        return data.front() != 0 ? "mute" : "unmute";
    if (data.size() == 1)
        return fmt::format("set its {} to {}", what, data.front());
    return fmt::format("take a new {}", what);
}

std::string advice(const PL3Request& request)
{
    return request.command == PL3Command::program ? " (aurisk info tells which programs it has)" : "";
}

} // namespace aurisk::tool
