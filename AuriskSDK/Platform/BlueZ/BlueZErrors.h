#pragma once

#include "AuriskSDK/Platform/BlueZ/SystemBus.h"
#include "AuriskSDK/Platform/Bluetooth.h"

#include <string_view>

namespace aurisk::bluez {

/// The numbers of the errors that applications get from this backend. Their domain is "bluez", or the daemon's own name
/// for the error where it has told one.
enum class ErrorCode : int {
    failed = 1, ///< the daemon says no, for a reason of its own
    linkLost = 2,
    radioOff = 3,
    daemonLost = 4,
    timedOut = 5,
    notPermitted = 6, ///< the characteristic, or the device, does not permit it
    tooLong = 7,
    foreignPeripheral = 8,
    unauthorized = 9, ///< the device wants to be paired with, or the bus denies access
    outOfRange = 10, ///< the daemon does not know the device any more
    noFreeConnection = 11, ///< the adapter has as many connections as it can have
};

/// An error of this backend, with a sentence for a person.
BluetoothError bluezError(ErrorCode code, std::string sentence);

/// What the daemon said; `what` failed: "connecting to X1-L".
BluetoothError bluezError(std::string_view what, const BusError& error);

/// What a failed `Connect` means for the attempt.
enum class ConnectFailure {
    transient, ///< set-up fails on the air now and then: try again
    busy, ///< somebody else's attempt is under way: try again later
    full, ///< the adapter has no free connection: try again much later
    connected, ///< there is a connection already, which is as good
    confused, ///< the daemon is at odds with itself about the device: it may have to be made to forget it
    gone, ///< the daemon has forgotten the device: it has to be heard again
    final, ///< trying again would not help
};
ConnectFailure classify(const BusError& error);

} // namespace aurisk::bluez
