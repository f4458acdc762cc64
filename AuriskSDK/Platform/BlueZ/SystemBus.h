#pragma once

#include "AuriskSDK/Platform/BlueZ/BusValue.h"
#include "AuriskSDK/Platform/Dispatch.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

struct sd_bus_message;

namespace aurisk::bluez {

/// An error as the bus tells it: "org.bluez.Error.Failed" and a text that is not always for a person.
struct BusError {
    std::string name = {};
    std::string message = {};
};

/// A method of somebody else's.
struct BusCall {
    std::string destination = {};
    std::string path = {};
    std::string interface = {};
    std::string member = {};
    BusValues arguments = {};
};

struct BusReply {
    BusValues values = {};
    std::optional<BusError> error = {};
};

struct BusSignal {
    std::string path = {};
    std::string interface = {};
    std::string member = {};
    BusValues values = {};
};

/// A call of a method of ours, which is to be answered once.
struct BusRequest {
    std::string path = {};
    std::string interface = {};
    std::string member = {};
    BusValues arguments = {};
    std::shared_ptr<sd_bus_message> call = {}; ///< what the answer refers to
};

/// One connection to the system bus: the only place that knows the bus library. It waits on the loop of the main queue,
/// has no thread and never blocks. Used on the main queue; everything that it tells comes in a turn of that queue of
/// its own, never within a call, in the order in which it came over the bus. Nothing does any more once it is gone.
class SystemBus final : public std::enable_shared_from_this<SystemBus> {
    class Key {
        friend class SystemBus;
        Key() = default;
    };

public:
    struct Handlers {
        std::function<void(const BusSignal&)> heard = {};
        /// The connection could not be made, or has gone. Nothing else is told after that.
        std::function<void(const BusError&)> lost = {};
    };

    using Answer = std::function<void(const BusReply&)>;

    /// Begins to connect; calls may be made at once.
    static std::shared_ptr<SystemBus> open(Handlers handlers);
    SystemBus(Key, Handlers handlers);
    ~SystemBus();
    SystemBus(const SystemBus&) = delete;
    SystemBus& operator=(const SystemBus&) = delete;

    /// Calls a method. `answered` runs once: with the reply, or with an error, at the latest after `limit`. A service
    /// that is not running is not started by this. Without `answered` no reply is asked for.
    void call(BusCall call, Seconds limit, Answer answered);

    /// From now on signals that fit `rule`, in the bus's own language for that, are heard.
    void hear(const std::string& rule);

    /// From now on calls of methods at `path` and below come to `called`, until `stopServing`.
    void serve(const std::string& path, std::function<void(const BusRequest&)> called);
    void stopServing(const std::string& path);

    void answer(const BusRequest& request, const BusValues& values);
    void refuse(const BusRequest& request, const BusError& error);

    void emit(const BusSignal& signal);

private:
    struct Library; ///< what the bus library and the loop need
    friend struct Library;

    void fail(const BusError& error);

    Handlers _handlers;
    std::map<std::uint64_t, Answer> _answers; ///< by the number of the call
    std::map<std::string, std::function<void(const BusRequest&)>> _served; ///< by path
    bool _isLost = false; ///< which is told soon
    std::unique_ptr<Library> _library; ///< none once the loss has been told
};

} // namespace aurisk::bluez
