#pragma once

#include "Tools/aurisk/AidOnAir.h"
#include "Tools/aurisk/Options.h"
#include "Tools/aurisk/Output.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace aurisk::tool {

/// Some aids of a world on the air, from the first of them to the last, and what is said of that. Used on the main
/// queue.
class Serving final : public AidOnAirDelegate, public std::enable_shared_from_this<Serving> {
    struct Key {
        explicit Key() = default;
    };

public:
    struct Place {
        std::string aid = {}; ///< its name
        std::string adapter = {}; ///< empty: the first that there is
    };

    /// Begins. `ended` is called once, when everything has ended; `output` lives until then.
    static std::shared_ptr<Serving> start(std::shared_ptr<Simulator> simulator,
        std::shared_ptr<bluez::GattServerPlatform> servers, const std::vector<Place>& places, Output& output,
        std::function<void(ExitCode)> ended);
    Serving(Key, std::shared_ptr<bluez::GattServerPlatform> servers, Output& output,
        std::function<void(ExitCode)> ended);

    /// The user wants to end.
    void interrupt() { finish(ExitCode::done); }

    void aidDidBecomeAudible(const AidOnAir& aid) override;
    void aidCannotBeHeard(const AidOnAir& aid, const std::string& why) override;
    void aidDidConnect(const AidOnAir& aid, const std::string& central) override;
    void aidDidDisconnect(const AidOnAir& aid, const std::string& central) override;

private:
    void tell(const AidOnAir& aid, const std::string& event, const std::string& words, const Json& more);
    void finish(ExitCode code);

    std::shared_ptr<bluez::GattServerPlatform> _servers;
    Output& _output;
    std::function<void(ExitCode)> _ended;
    std::vector<std::shared_ptr<AidOnAir>> _aids;
    std::set<std::string> _heard; ///< those that have been on the air
};

} // namespace aurisk::tool
