#pragma once

#include "AuriskSDK/HearingAid/Aurisk/AuriskAccessory.h"

#include <map>
#include <optional>
#include <ostream>

#include <nlohmann/json.hpp>

namespace aurisk::tests {

/// What an accessory holds of its device, or what it ought to hold.
struct AuriskCache {
    std::optional<int> bat = {};
    std::optional<int> program = {};
    std::map<int, int> volumes = {};
    std::optional<bool> brEdr = {};
    bool brEdrContinuousIfEnable = false;
    std::optional<int> transLevel = {};
    bool hearingSupported = false;
    std::map<int, Data> blocks = {};
    std::optional<Data> global = {};
    AuriskProfile profile = {};

    friend bool operator==(const AuriskCache&, const AuriskCache&) = default;
    friend std::ostream& operator<<(std::ostream& out, const AuriskCache& held)
    {
        const auto printed = [](const auto& value) { return nlohmann::json(value).dump(); };
        return out << "program " << description(held.program) << ", volumes " << printed(held.volumes)
                   << ", transparency " << description(held.transLevel) << ", battery " << description(held.bat)
                   << ", BR/EDR " << description(held.brEdr) << held.brEdrContinuousIfEnable << ", test "
                   << held.hearingSupported << ", blocks " << printed(held.blocks) << ", global "
                   << printed(held.global.value_or(Data())) << ", profile " << held.profile.toJson();
    }

    static AuriskCache of(const AuriskAccessory& accessory)
    {
        AuriskCache held{ .bat = accessory.bat(),
            .program = accessory.program(),
            .volumes = accessory.volumeDic(),
            .brEdr = accessory.brEdr(),
            .brEdrContinuousIfEnable = accessory.brEdrContinuousIfEnable(),
            .transLevel = accessory.transLevel(),
            .hearingSupported = accessory.hearingSupported(),
            .profile = accessory.profile() };
        for (const auto& [program, dsp] : accessory.dspDic())
            held.blocks[program] = dsp.toBytes();
        if (accessory.global())
            held.global = accessory.global()->toData();
        return held;
    }

    /// The wearer has changed something.
    void notified(const AuriskResponse::didNotify& now)
    {
        if (program == now.program)
            volumes[now.program] = now.volume;
        program = now.program;
    }

    /// A reply to `request`. It is believed by what it says, not by what was asked. Returns whether it carries no
    /// values: what was asked for holds now.
    bool replied(const AuriskResponse& response, const AuriskRequest& request, AuriskChip chip)
    {
        if (const auto* read = response.as<AuriskResponse::didReadProgram>()) {
            program = read->program;
            volumes.erase(read->program);
            if (read->volume)
                volumes[read->program] = *read->volume;
        } else if (const auto* transparency = response.as<AuriskResponse::didReadTransparency>())
            transLevel = transparency->level;
        else if (const auto* classic = response.as<AuriskResponse::didReadBrEdr>()) {
            brEdr = classic->enable;
            brEdrContinuousIfEnable = classic->continuousIfEnable;
        } else if (response.as<AuriskResponse::didReadHearingTest>())
            hearingSupported = true;
        else if (const auto* block = response.as<AuriskResponse::didReadDsp>()) {
            if (const auto dsp = AuriskDsp::decode(chip, block->data))
                blocks[block->program] = dsp->toBytes();
        } else if (const auto* shared = response.as<AuriskResponse::didReadGlobal>()) {
            if (const auto decoded = AuriskGlobalDsp::decode(chip, shared->data))
                global = decoded->toData();
        } else if (const auto* field = response.as<AuriskResponse::didReadProfile>())
            profile.set(field->type, field->data);
        else {
            acknowledged(request);
            return true;
        }
        return false;
    }

private:
    void acknowledged(const AuriskRequest& request)
    {
        const auto& asked = request.value();
        if (const auto* volume = std::get_if<AuriskRequest::controlVolume>(&asked))
            volumes[volume->program] = volume->volume;
        if (const auto* change = std::get_if<AuriskRequest::controlProgram>(&asked))
            program = change->program;
        if (const auto* block = std::get_if<AuriskRequest::writeDsp>(&asked))
            blocks[block->program] = block->dsp.toBytes();
        if (const auto* block = std::get_if<AuriskRequest::writeGlobalDsp>(&asked))
            global = block->global.toData();
        if (const auto* field = std::get_if<AuriskRequest::writeProfile>(&asked))
            profile.set(field->type, field->data);
        if (const auto* transparency = std::get_if<AuriskRequest::setTransparency>(&asked))
            transLevel = transparency->level;
        if (const auto* classic = std::get_if<AuriskRequest::setBrEdr>(&asked)) {
            brEdr = classic->enable;
            brEdrContinuousIfEnable = classic->continuousIfEnable;
        }
    }
};

} // namespace aurisk::tests
