#pragma once

#include "AuriskSDK/Shared/Accessory/AccessoryManager.h"
#include "Tools/aurisk/DeviceChoice.h"

#include <functional>
#include <memory>
#include <variant>
#include <vector>

namespace aurisk::tool {

/// Scans for the devices that the arguments ask for, and no longer than it takes to be sure. Used on the main queue.
class DeviceFinder final : public AccessoryManagerScanningDelegate, public std::enable_shared_from_this<DeviceFinder> {
    struct Key {
        explicit Key() = default;
    };

public:
    using Result = std::variant<std::vector<std::shared_ptr<Accessory>>, Failure>;

    /// How long others may take to be heard once one candidate has been: some advertising intervals.
    static constexpr Seconds settling{ 1 };

    /// Scans on `manager`, whose radio is on. `found` is called once, unless the finder is stopped or let go.
    static std::shared_ptr<DeviceFinder> start(
        std::shared_ptr<AccessoryManager> manager, const Options& options, std::function<void(Result)> found);
    DeviceFinder(
        Key, std::shared_ptr<AccessoryManager> manager, const Options& options, std::function<void(Result)> found);

    /// Ends the scan; nothing is found any more.
    void stop();

    void accessoryManagerIsScanning(const std::shared_ptr<AccessoryManager>&, bool) override { }
    void accessoryManagerDidDiscover(const std::shared_ptr<AccessoryManager>& manager,
        const std::shared_ptr<Accessory>& accessory, std::optional<int> rssi) override;
    void accessoryManagerDidUpdate(
        const std::shared_ptr<AccessoryManager>&, const std::shared_ptr<Accessory>&, std::optional<int>) override
    {
    }

private:
    void consider(Search search);
    std::shared_ptr<DispatchTimer> after(Seconds span, Search search);

    std::shared_ptr<AccessoryManager> _manager;
    Options _options;
    std::function<void(Result)> _found;
    std::shared_ptr<DispatchTimer> _settling;
    std::shared_ptr<DispatchTimer> _limit;
};

} // namespace aurisk::tool
