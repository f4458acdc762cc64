#pragma once

#include "Simulator/SimulatedWorld.h"
#include "Tools/aurisk/AidOnAir.h"
#include "Tools/aurisk/Options.h"
#include "Tools/aurisk/Output.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace aurisk::tool {

/// Which hearing aids of `world` are to be served, one for each adapter and in their order. Where none is named: the
/// first ones; of two the first pair, if there is one. Throws a UsageError where the world does not have them.
std::vector<std::string> servedAids(const Options& options, const SimulatedWorld& world);

/// These aids on the air, what is said of that, and what their wearers do meanwhile. Used on the main queue.
class Serving final : public AidOnAirDelegate, public std::enable_shared_from_this<Serving> {
    struct Key {
        explicit Key() = default;
    };

public:
    using Servers = std::shared_ptr<bluez::GattServerPlatform>;

    /// Begins. `ended` is called once, when everything has ended; `output` lives until then. The air takes its own
    /// time, so a simulated link takes none unless the world says how much; its MTU counts, not the world's. Throws a
    /// UsageError for a world that cannot be used.
    static std::shared_ptr<Serving> start(const Options& options, SimulatedWorld world, Servers servers, Output& output,
        std::function<void(ExitCode)> ended);
    Serving(Key, Servers servers, Output& output, std::function<void(ExitCode)> ended);

    /// A line has been typed: what wearers and links do (WearerLine.h).
    void take(const std::string& line);

    /// The user wants to end.
    void interrupt() { finish(ExitCode::done); }

    /// The world as it is by now, to be kept: the links as they were, without the faults that were typed.
    SimulatedWorld world() const;

    void aidDidBecomeAudible(const AidOnAir& aid) override;
    void aidDidFallSilent(const AidOnAir& aid) override;
    void aidCannotBeHeard(const AidOnAir& aid, const std::string& why) override;
    void aidDidConnect(const AidOnAir& aid, const std::string& central) override;
    void aidDidDisconnect(const AidOnAir& aid, const std::string& central) override;

private:
    void tellOffAir(const AidOnAir& aid, const std::string& why);
    void tell(const AidOnAir& aid, const std::string& event, const std::string& words, const Json& more);
    void finish(ExitCode code);

    Servers _servers;
    Output& _output;
    std::function<void(ExitCode)> _ended;
    std::vector<std::string> _names; ///< of the aids
    std::shared_ptr<Simulator> _simulator;
    struct Link {
        int mtu = 0;
        LinkFaults faults = {};
    };
    std::map<std::string, Link> _links; ///< as the world has them; the air has its own MTU and takes its own time
    std::vector<std::shared_ptr<AidOnAir>> _aids;
    struct Told {
        bool hasBeenHeard = false;
        std::string whyNot = {}; ///< empty while it can be heard
    };
    std::map<std::string, Told> _told; ///< of each aid, by name
};

} // namespace aurisk::tool
