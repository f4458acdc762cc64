#pragma once

#include "AuriskSDK/Platform/Bluetooth.h"
#include "AuriskSDK/Platform/Dispatch.h"

#include <memory>
#include <string>

/// The Bluetooth port over BlueZ, the Bluetooth daemon of Linux: real radios.

namespace aurisk::bluez {

struct PlatformOptions {
    std::string adapter = {}; ///< "hci0"; empty: the first that the daemon has
    Seconds connectionLimit{ 60 }; ///< of an attempt to connect, waiting for others included; it fails then
};

/// A Bluetooth platform that can say what is the matter.
class Platform : public BluetoothPlatform {
public:
    /// Why the radio cannot be used, as a sentence without a full stop that says what is missing; empty while it can,
    /// or while nobody knows yet.
    virtual std::string whyNot() const = 0;
};

/// The daemon's radio, over one connection to the system bus, which is made now and waited for on the loop of the main
/// queue (Platform/Asio/MainQueue.h). It starts no thread and blocks for nothing; everything is called, and told, on
/// the main queue.
///
/// The radio's state is unsupported without a daemon or adapter, for which a daemon that has just begun has 2 s;
/// resetting for up to 5 s after one has gone; unauthorized where the bus denies access; each change is told whenever
/// it happens, so that a host can begin before the daemon does. With `showPowerAlert` an adapter that is off is powered
/// on.
///
/// A device's identifier is made of its address, and the same in every run. It changes with the address where a device
/// that is not bonded uses addresses that change. Its name is the one that the daemon knows; where the device holds
/// another one than it advertises, it changes at the first connection.
///
/// A device that is connected already, by an earlier run or another program, is reported at the start of a scan,
/// without an RSSI; connecting to it takes the link over. Connections are made one at a time, and the scan pauses
/// meanwhile. Disconnecting takes the daemon two seconds.
///
/// Errors have the daemon's name for them as their domain, or "bluez".
std::shared_ptr<Platform> makePlatform(PlatformOptions options = {});

} // namespace aurisk::bluez
