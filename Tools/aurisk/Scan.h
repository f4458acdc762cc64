#pragma once

#include "AuriskSDK/Shared/Accessory/AccessoryManager.h"
#include "Tools/aurisk/Options.h"
#include "Tools/aurisk/Output.h"

#include <functional>
#include <memory>

namespace aurisk::tool {

/// The command `scan`: a row for each device as it is discovered. Used on the main queue.
class Scan final : public AccessoryManagerScanningDelegate, public std::enable_shared_from_this<Scan> {
    struct Key {
        explicit Key() = default;
    };

public:
    /// Scans on `manager`, whose radio is on. `ended` is called when the time is over, unless the scan is stopped.
    static std::shared_ptr<Scan> start(
        std::shared_ptr<AccessoryManager> manager, const Options& options, Output& output, std::function<void()> ended);
    Scan(Key, std::shared_ptr<AccessoryManager> manager, const Options& options, Output& output,
        std::function<void()> ended);

    void stop();

    void accessoryManagerIsScanning(const std::shared_ptr<AccessoryManager>&, bool isScanning) override;
    void accessoryManagerDidDiscover(const std::shared_ptr<AccessoryManager>&,
        const std::shared_ptr<Accessory>& accessory, std::optional<int> rssi) override;
    void accessoryManagerDidUpdate(const std::shared_ptr<AccessoryManager>&,
        const std::shared_ptr<Accessory>& accessory, std::optional<int> rssi) override;

private:
    std::shared_ptr<AccessoryManager> _manager;
    Options _options;
    Output& _output;
    std::function<void()> _ended;
};

} // namespace aurisk::tool
