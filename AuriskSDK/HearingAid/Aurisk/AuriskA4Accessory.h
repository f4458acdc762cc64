#pragma once

#include "AuriskSDK/HearingAid/Aurisk/AuriskAccessory.h"

namespace aurisk {

/// A hearing aid on the A4 chip.
class AuriskA4Accessory final : public AuriskAccessory {
public:
    static std::shared_ptr<AuriskA4Accessory> create(
        std::shared_ptr<CBPeripheral> peripheral, DataView mfgData, std::weak_ptr<AccessoryManager> manager);
    using AuriskAccessory::AuriskAccessory;

    std::string_view className() const override { return "AuriskA4Accessory"; }
};

} // namespace aurisk
