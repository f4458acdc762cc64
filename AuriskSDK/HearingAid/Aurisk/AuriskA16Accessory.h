#pragma once

#include "AuriskSDK/HearingAid/Aurisk/AuriskAccessory.h"

namespace aurisk {

/// A hearing aid on the A16 chip.
class AuriskA16Accessory final : public AuriskAccessory {
public:
    static std::shared_ptr<AuriskA16Accessory> create(
        std::shared_ptr<CBPeripheral> peripheral, DataView mfgData, std::weak_ptr<AccessoryManager> manager);
    using AuriskAccessory::AuriskAccessory;

    std::string_view className() const override { return "AuriskA16Accessory"; }
};

} // namespace aurisk
