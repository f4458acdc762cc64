#pragma once

#include "AuriskSDK/HearingAid/Aurisk/AuriskAccessory.h"

namespace aurisk {

/// A hearing aid on the H01 chip.
class AuriskH01Accessory final : public AuriskAccessory {
public:
    static std::shared_ptr<AuriskH01Accessory> create(
        std::shared_ptr<CBPeripheral> peripheral, DataView mfgData, std::weak_ptr<AccessoryManager> manager);
    using AuriskAccessory::AuriskAccessory;

    std::string_view className() const override { return "AuriskH01Accessory"; }

    using AuriskAccessory::request;

    /// As that of AuriskAccessory. On this chip an acknowledged write of a program's block is followed by the switch to
    /// that program: `complete` gets the outcome of the switch, or the error of the write. A program that cannot be
    /// switched to, outside 0 to 254, is a broken precondition before anything is sent.
    void request(const AuriskRequest& request, Complete complete = {}) override;
};

} // namespace aurisk
