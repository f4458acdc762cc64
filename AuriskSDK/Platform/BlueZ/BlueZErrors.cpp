#include "AuriskSDK/Platform/BlueZ/BlueZErrors.h"

#include <fmt/format.h>

#include <optional>

namespace aurisk::bluez {

namespace {

/// One thing that the daemon, or the bus, says. It often says no more than "Failed", and the text tells what.
struct Saying {
    std::string_view name; ///< the end of the error's name; empty: any
    std::string_view text = {}; ///< a part of its text; empty: any
    ErrorCode code = ErrorCode::failed;
    ConnectFailure failure = ConnectFailure::transient;
    std::string_view sentence = {}; ///< for a person; empty: the daemon's own text
};

/// The first that fits counts.
constexpr Saying sayings[] = {
    { ".AlreadyConnected", "", ErrorCode::failed, ConnectFailure::connected },
    { ".InProgress", "", ErrorCode::failed, ConnectFailure::busy, "something else is under way" },
    { ".Failed", "already in progress", ErrorCode::failed, ConnectFailure::busy, "something else is under way" },
    { ".Failed", "Not connected", ErrorCode::linkLost, ConnectFailure::transient, "the link has gone" },
    { ".NotConnected", "", ErrorCode::linkLost, ConnectFailure::transient, "the link has gone" },
    { ".Failed", "limited resources", ErrorCode::noFreeConnection, ConnectFailure::full,
        "the adapter has no free connection" },
    { ".Failed", "connection-limit", ErrorCode::noFreeConnection, ConnectFailure::full,
        "the adapter has no free connection" },
    { ".Failed", "Too many links", ErrorCode::noFreeConnection, ConnectFailure::full,
        "the adapter has no free connection" },
    { ".Failed", "canceled", ErrorCode::failed, ConnectFailure::transient, "it was given up" },
    { ".Failed", "abort-by-local", ErrorCode::failed, ConnectFailure::transient, "it did not answer" },
    { ".Failed", "connection abort", ErrorCode::failed, ConnectFailure::transient, "it did not answer" },
    { ".Failed", "Input/output error", ErrorCode::failed, ConnectFailure::confused,
        "the adapter does not do it, or does it already" },
    { ".NotReady", "", ErrorCode::radioOff, ConnectFailure::transient, "the radio is not powered on" },
    { ".NotPermitted", "Not paired", ErrorCode::unauthorized, ConnectFailure::final, "it wants to be paired with" },
    { ".NotPermitted", "", ErrorCode::notPermitted, ConnectFailure::final, "that is not permitted" },
    { ".NotSupported", "", ErrorCode::notPermitted, ConnectFailure::final, "that is not supported" },
    { ".NotAuthorized", "", ErrorCode::unauthorized, ConnectFailure::final, "it wants to be paired with" },
    { ".AuthenticationFailed", "", ErrorCode::unauthorized, ConnectFailure::final,
        "pairing failed; it may have forgotten this computer: remove it from the paired devices and try again" },
    { ".AuthenticationRejected", "", ErrorCode::unauthorized, ConnectFailure::final, "it refused to be paired with" },
    { ".AuthenticationCanceled", "", ErrorCode::unauthorized, ConnectFailure::final, "pairing was given up" },
    { ".AuthenticationTimeout", "", ErrorCode::unauthorized, ConnectFailure::final, "pairing took too long" },
    { ".InvalidValueLength", "", ErrorCode::tooLong, ConnectFailure::final, "the value has a wrong length" },
    { ".InvalidArguments", "Invalid Length", ErrorCode::tooLong, ConnectFailure::final,
        "the value has a wrong length" },
    { ".UnknownObject", "", ErrorCode::outOfRange, ConnectFailure::gone,
        "the Bluetooth daemon does not know it any more" },
    { ".UnknownMethod", "", ErrorCode::outOfRange, ConnectFailure::gone,
        "the Bluetooth daemon does not know it any more" },
    { ".DoesNotExist", "", ErrorCode::outOfRange, ConnectFailure::gone,
        "the Bluetooth daemon does not know it any more" },
    { ".AccessDenied", "", ErrorCode::unauthorized, ConnectFailure::final, "Bluetooth may not be used from here" },
    { ".NoReply", "", ErrorCode::timedOut, ConnectFailure::transient, "the Bluetooth daemon did not answer in time" },
    { ".TimedOut", "", ErrorCode::timedOut, ConnectFailure::transient, "the Bluetooth daemon did not answer in time" },
    { ".Timeout", "", ErrorCode::timedOut, ConnectFailure::transient, "the Bluetooth daemon did not answer in time" },
    { ".ServiceUnknown", "", ErrorCode::daemonLost, ConnectFailure::transient, "the Bluetooth daemon has gone" },
    { ".NameHasNoOwner", "", ErrorCode::daemonLost, ConnectFailure::transient, "the Bluetooth daemon has gone" },
    { ".Disconnected", "", ErrorCode::daemonLost, ConnectFailure::transient, "the system bus has gone" },
};

const Saying& sayingOf(const BusError& error)
{
    static constexpr Saying anythingElse = { "", "" };
    for (const auto& one : sayings)
        if (error.name.ends_with(one.name) && error.message.find(one.text) != std::string::npos)
            return one;
    return anythingElse;
}

} // namespace

BluetoothError bluezError(ErrorCode code, std::string sentence) { return { "bluez", int(code), std::move(sentence) }; }

BluetoothError bluezError(std::string_view what, const BusError& error)
{
    const auto& saying = sayingOf(error);
    const auto why = saying.sentence.empty() ? std::string_view(error.message) : saying.sentence;
    return { error.name, int(saying.code), fmt::format("{} failed: {}.", what, why.empty() ? error.name : why) };
}

ConnectFailure classify(const BusError& error) { return sayingOf(error).failure; }

} // namespace aurisk::bluez
