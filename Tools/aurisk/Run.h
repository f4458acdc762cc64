#pragma once

#include "AuriskSDK/Platform/Bluetooth.h"
#include "AuriskSDK/Shared/Accessory/AccessoryManager.h"
#include "Tools/aurisk/Commands.h"
#include "Tools/aurisk/DeviceFinder.h"
#include "Tools/aurisk/Options.h"
#include "Tools/aurisk/Output.h"
#include "Tools/aurisk/Scan.h"
#include "Tools/aurisk/Session.h"

#include <functional>
#include <memory>
#include <vector>

namespace aurisk::tool {

/// One command from the radio's first word to the last disconnection. Used on the main queue.
class Run final : public AccessoryManagerStatusDelegate, public std::enable_shared_from_this<Run> {
    struct Key {
        explicit Key() = default;
    };

public:
    /// Says why the radio cannot be used, where it knows more than its state tells; else it says nothing.
    using Why = std::function<std::string()>;

    /// Begins. `ended` is called once, when everything has ended; `output` lives until then.
    static std::shared_ptr<Run> start(const Options& options, std::shared_ptr<BluetoothPlatform> platform,
        Output& output, std::function<void(ExitCode)> ended, Why whyNot = {});
    Run(Key, const Options& options, Output& output, std::function<void(ExitCode)> ended);

    /// The user wants to end. Scanning, listening and finding are done then, everything else is given up.
    void interrupt();

    void accessoryManagerIsAvailable(const std::shared_ptr<AccessoryManager>&, bool isAvailable) override;

private:
    void begin();
    void open(const std::vector<std::shared_ptr<Accessory>>& devices);
    std::optional<Failure> check(const Accessory& device) const;
    void conclude();
    void sessionEnded(ExitCode code);
    std::optional<std::string> whyUnavailable() const;
    void fail(const Failure& failure);
    void finish(ExitCode code);

    Options _options;
    Plan _plan;
    Output& _output;
    std::function<void(ExitCode)> _ended;
    Why _whyNot;
    Seconds _began;
    std::shared_ptr<AccessoryManager> _manager;
    std::shared_ptr<DispatchTimer> _radioLimit; ///< until the radio is known to be on
    std::shared_ptr<Scan> _scan;
    std::shared_ptr<DeviceFinder> _finder;
    std::vector<std::shared_ptr<Session>> _sessions;
    std::size_t _open = 0;
    ExitCode _worst = ExitCode::done;
};

} // namespace aurisk::tool
