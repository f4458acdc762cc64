#pragma once

#include "AuriskSDK/Platform/Bluetooth.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// The peripheral role: a table of services that others connect to, and an advertisement by which they find it. As in
/// the central role every call returns at once, and what becomes of it arrives at the delegate on the main queue.

namespace aurisk::bluez {

struct GattCharacteristic {
    CBUUID uuid;
    CBCharacteristicProperties properties = CBCharacteristicProperties::none;
};

struct GattService {
    CBUUID uuid;
    std::vector<GattCharacteristic> characteristics = {};
};

struct GattServerOptions {
    std::string adapter = {}; ///< "hci1"; empty: the first that there is
    std::string name = {}; ///< how the adapter is called while it serves; whoever connects can read it
    std::vector<GattService> services = {}; ///< at least one, and no two characteristics of one UUID
};

/// Why a central does not get what it asked for.
enum class GattError { failed, notPermitted, invalidLength, notSupported };

/// To be called once; a central whose answer is dropped instead hears that it failed.
using WriteAnswer = std::function<void(std::optional<GattError>)>;
using ReadAnswer = std::function<void(const Data& value)>;

class GattServer;

/// Hears what becomes of a server and what centrals do. A central is known by its address.
class GattServerDelegate {
public:
    virtual ~GattServerDelegate() = default;

    /// Centrals can use the table from now on. Told anew after each `gattServerDidStop`.
    virtual void gattServerDidStart(GattServer& server) = 0;

    /// The server cannot serve, or not advertise, at present: `why` is a sentence without a full stop. It goes on by
    /// itself as soon as it can.
    virtual void gattServerDidStop(GattServer& server, const std::string& why) = 0;

    /// The advertisement that was asked for is on the air.
    virtual void gattServerDidStartAdvertising(GattServer& server) = 0;

    virtual void gattServerDidConnect(GattServer& server, const std::string& central) = 0;
    virtual void gattServerDidDisconnect(GattServer& server, const std::string& central) = 0;

    /// Somebody wants to be notified, or nobody does any more. Told apart from connections: the subscription of a
    /// central that is paired with outlasts them.
    virtual void gattServerDidSubscribe(GattServer& server, const CBUUID& characteristic, bool isSubscribed) = 0;

    /// A write has arrived. One without response has no use for the answer.
    virtual void gattServerDidReceiveWrite(GattServer& server, const std::string& central, const CBUUID& characteristic,
        const Data& value, CBCharacteristicWriteType type, WriteAnswer answer)
        = 0;
    virtual void gattServerDidReceiveRead(
        GattServer& server, const std::string& central, const CBUUID& characteristic, ReadAnswer answer)
        = 0;
};

/// A table on the air. Dropping it ends it as `stop` does, and nobody hears when that is done.
class GattServer {
public:
    GattServer() = default;
    GattServer(const GattServer&) = delete;
    GattServer& operator=(const GattServer&) = delete;
    virtual ~GattServer() = default;

    /// "hci1", and "00:AA:01:01:00:01"; empty until it has started.
    virtual std::string adapter() const = 0;
    virtual std::string address() const = 0;

    /// From now on it advertises this, whenever it can, or nothing.
    virtual void advertise(std::optional<CBAdvertisementData> advertisement) = 0;

    /// Tells everybody who has subscribed.
    virtual void notify(const CBUUID& characteristic, DataView value) = 0;

    /// The link to this central is to go, which takes the daemon two seconds.
    virtual void disconnectCentral(const std::string& central) = 0;

    /// Ends everything, links first, and gives the adapter the name back that it had before. `stopped` runs once on the
    /// main queue, also where it had been stopped before: in a moment, after two seconds where somebody is connected,
    /// and within 15 s where the daemon does not answer. The delegate hears nothing any more.
    virtual void stop(std::function<void()> stopped) = 0;
};

/// Where servers come from.
class GattServerPlatform {
public:
    virtual ~GattServerPlatform() = default;

    /// A server that starts as soon as it can. It asks once for an adapter that is off to be switched on.
    virtual std::shared_ptr<GattServer> makeGattServer(
        GattServerOptions options, std::weak_ptr<GattServerDelegate> delegate)
        = 0;
};

/// Servers on the adapters of the Bluetooth daemon of this computer.
std::shared_ptr<GattServerPlatform> makeGattServerPlatform();

} // namespace aurisk::bluez
