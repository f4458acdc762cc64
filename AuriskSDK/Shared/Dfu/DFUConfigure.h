#pragma once

#include "AuriskSDK/Platform/Dispatch.h"
#include "AuriskSDK/Shared/Dfu/DFUFirmware.h"
#include "AuriskSDK/Shared/Dfu/DFUServiceDelegate.h"

#include <memory>

namespace aurisk {

/// What an update is made of: the image, and who hears of it where.
///
///     const auto configure = DFUConfigure::create()->with(DFUFirmware::load("a16.bin", DFUFirmwareType::type0));
///     configure->delegate = screen;
///     accessory->startOTA(configure);
class DFUConfigure : public std::enable_shared_from_this<DFUConfigure> {
    struct Key {
        explicit Key() = default;
    };

public:
    /// The queues outlive the configuration.
    static std::shared_ptr<DFUConfigure> create(DispatchQueue& queue = DispatchQueue::main(),
        DispatchQueue& delegateQueue = DispatchQueue::main(), DispatchQueue& progressQueue = DispatchQueue::main());
    DFUConfigure(Key, DispatchQueue& queue, DispatchQueue& delegateQueue, DispatchQueue& progressQueue);

    /// Sets `file`, and returns this object.
    std::shared_ptr<DFUConfigure> with(std::shared_ptr<DFUFirmware> firmware);

    std::shared_ptr<DFUFirmware> file; ///< none until `with`; needed before the update starts
    DispatchQueue& queue; ///< for the application's use: Bluetooth, and so the update, lives on the main queue
    DispatchQueue& delegateQueue; ///< of `delegate`, for states
    DispatchQueue& progressDelegateQueue;
    std::weak_ptr<DFUServiceDelegate> delegate;
    std::weak_ptr<DFUProgressDelegate> progressDelegate; ///< kept alive by the update, until that is aborted
};

} // namespace aurisk
