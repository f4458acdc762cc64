#pragma once

#include "AuriskSDK/HearingAid/Aurisk/AuriskAccessory.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskDataLog.h"

namespace aurisk {

/// A hearing aid on the A16 chip.
class AuriskA16Accessory final : public AuriskAccessory {
public:
    static std::shared_ptr<AuriskA16Accessory> create(
        std::shared_ptr<CBPeripheral> peripheral, DataView mfgData, std::weak_ptr<AccessoryManager> manager);
    using AuriskAccessory::AuriskAccessory;

    std::string_view className() const override { return "AuriskA16Accessory"; }

    using SummaryComplete = std::function<void(const std::optional<AuriskSummaryDataLog>&)>;
    using DataLogComplete = std::function<void(const std::optional<Data>&)>;

    // Both call `complete`, which may be empty, once on the main queue, never inside the call: with none where a frame
    // was refused or not answered, or the accessory is not connected. Before the first discovery of its services
    // nothing is sent and nobody is called, as for `request`. All frames of a log are sent even after one has failed,
    // and one that is not answered takes 3.1 s: 12 s for a silent device's summary, two minutes for its user events.
    // The answers are joined in the order in which they come; they do not say which block they are.

    /// Reads the summary. None also where what came is too short.
    void requestSummaryDataLog(SummaryComplete complete);

    /// Reads the bytes of a log. `feedback` is a broken precondition.
    void requestDataLog(AuriskDataLogType logType, DataLogComplete complete);
};

} // namespace aurisk
