#pragma once

#include "AuriskSDK/Platform/Bluetooth.h"

#include <memory>

namespace aurisk {

class Accessory;
class AccessoryManager;

/// Decides which peripherals become accessories, and of which class. Called on the main queue.
class AccessorySelectorDelegate {
public:
    virtual ~AccessorySelectorDelegate() = default;

    /// An accessory for a peripheral that is heard for the first time, or none: then it is asked about again at its
    /// next advertisement. `mfgData` begins with the company identifier, little-endian.
    virtual std::shared_ptr<Accessory> select(const std::shared_ptr<CBPeripheral>& peripheral, DataView mfgData,
        const std::shared_ptr<AccessoryManager>& manager)
        = 0;
};

/// The selector that a manager starts with; it knows the families of this library by their manufacturer data.
/// (The spelling is part of the interface.)
class DefaultAccesorySelector final : public AccessorySelectorDelegate {
public:
    /// Manufacturer data of less than 2 bytes is a broken precondition; under PreconditionPolicy::contain it yields
    /// none.
    std::shared_ptr<Accessory> select(const std::shared_ptr<CBPeripheral>& peripheral, DataView mfgData,
        const std::shared_ptr<AccessoryManager>& manager) override;
};

} // namespace aurisk
