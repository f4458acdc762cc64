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
};

} // namespace aurisk
