#pragma once

#include "AuriskSDK/Platform/BlueZ/SystemBus.h"

#include <string_view>

namespace aurisk::bluez {

/// The names of the daemon's interfaces.
namespace interface {
constexpr auto adapter = "org.bluez.Adapter1";
constexpr auto device = "org.bluez.Device1";
constexpr auto service = "org.bluez.GattService1";
constexpr auto characteristic = "org.bluez.GattCharacteristic1";
constexpr auto battery = "org.bluez.Battery1";
constexpr auto gattManager = "org.bluez.GattManager1";
constexpr auto advertisingManager = "org.bluez.LEAdvertisingManager1";
constexpr auto advertisement = "org.bluez.LEAdvertisement1";
constexpr auto agentManager = "org.bluez.AgentManager1";
constexpr auto objectManager = "org.freedesktop.DBus.ObjectManager";
constexpr auto properties = "org.freedesktop.DBus.Properties";
} // namespace interface

constexpr auto daemonPath = "/org/bluez"; ///< adapters are below it

/// The last part of a path: "hci0".
inline std::string nameOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

/// What an object is below: "/org/bluez/hci0" of a device there.
inline std::string parentOf(const std::string& path) { return path.substr(0, path.rfind('/')); }

/// How long a call may take that waits for the daemon alone, and for nothing on the air.
constexpr Seconds daemonLimit{ 5 };

/// The daemon answers `Disconnect` when the link has gone, which takes it two seconds.
constexpr Seconds disconnectLimit{ 10 };

/// A daemon that has just begun may take that long to tell its adapters.
constexpr Seconds startLimit{ 2 };

enum class DaemonState {
    unknown, ///< nobody has said yet
    denied, ///< the bus does not let us
    absent,
    present, ///< and its objects are known
};

/// The Bluetooth daemon as it describes itself: its objects, kept as plain data, and the one connection over which it
/// is spoken to. Objects are asked for once in a daemon's life; from then on its signals keep them true. The daemon,
/// and the bus, may go and come back.
class BlueZObjects final : public std::enable_shared_from_this<BlueZObjects> {
    class Key {
        friend class BlueZObjects;
        Key() = default;
    };

public:
    /// Hears what changes, once it has changed. What is there when the daemon becomes present is not told one by one.
    class Listener {
    public:
        virtual ~Listener() = default;
        virtual void daemonDidChange() { }
        virtual void didAppear(const std::string& /*path*/, const std::string& /*interface*/) { }
        virtual void didChange(
            const std::string& /*path*/, const std::string& /*interface*/, const BusDictionary& /*changed*/)
        {
        }
        virtual void didVanish(const std::string& /*path*/, const std::string& /*interface*/) { }
    };

    static std::shared_ptr<BlueZObjects> create();
    explicit BlueZObjects(Key) { }

    void add(std::weak_ptr<Listener> listener) { _listeners.push_back(std::move(listener)); }

    DaemonState daemon() const { return _daemon; }

    /// Why nothing can be asked of the daemon, as a sentence without a full stop; empty while something can, or while
    /// nobody knows.
    const std::string& whyNot() const { return _whyNot; }

    const BusObjects& all() const { return _objects; }

    /// Null where the object, or that interface of it, is not there. Good until the next turn of the queue.
    const BusDictionary* propertiesOf(std::string_view path, std::string_view interface) const;

    template <typename T>
    const T* property(std::string_view path, std::string_view interface, std::string_view name) const
    {
        const auto* properties = propertiesOf(path, interface);
        return properties ? find<T>(*properties, name) : nullptr;
    }

    /// Whether a property is there and true.
    bool isTrue(std::string_view path, std::string_view interface, std::string_view name) const
    {
        const auto* value = property<bool>(path, interface, name);
        return value && *value;
    }

    /// The paths of the objects below `path` that have this interface, in the order of the tree.
    std::vector<std::string> below(const std::string& path, std::string_view interface) const;

    /// Calls a method of the daemon.
    void call(const std::string& path, const char* interface, const char* member, BusValues arguments, Seconds limit,
        SystemBus::Answer answered);

    /// Asks for one property, of which the daemon does not tell every change; `done` runs once it is there, or cannot
    /// be had. By then everything is there that the daemon told before it answered.
    void fetch(const std::string& path, const char* interface, const char* name, std::function<void()> done);

    /// Asks for all objects again; `done` runs once they are there, or cannot be had, unless the daemon goes.
    void refresh(std::function<void()> done);

    SystemBus& bus() const { return *_bus; }

private:
    void openBus();
    void busIsLost(const BusError& error);
    void hear(const BusSignal& signal);
    void ownerIs(const std::string& owner);
    void load();
    void become(DaemonState daemon, std::string whyNot = {});
    void add(const std::string& path, const BusInterfaces& interfaces);
    void change(const std::string& path, const std::string& interface, const BusDictionary& changed,
        const std::vector<std::string>& invalidated);
    void remove(const std::string& path, const std::vector<std::string>& interfaces);

    template <typename... Declared, typename... Given>
    void tell(void (Listener::*event)(Declared...), const Given&... given)
    {
        for (const auto& weak : std::vector(_listeners))
            if (const auto listener = weak.lock())
                (listener.get()->*event)(given...);
    }

    std::shared_ptr<SystemBus> _bus;
    std::vector<std::weak_ptr<Listener>> _listeners;
    DaemonState _daemon = DaemonState::unknown;
    std::string _whyNot;
    BusObjects _objects;
    int _life = 0; ///< counts the daemon's lives: an answer belongs to one
    Seconds _untilReopened{ 1 };
};

} // namespace aurisk::bluez
