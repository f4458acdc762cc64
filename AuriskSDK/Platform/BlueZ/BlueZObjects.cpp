#include "AuriskSDK/Platform/BlueZ/BlueZObjects.h"

#include "AuriskSDK/Shared/Utils/AuriskLog.h"

#include <algorithm>

namespace aurisk::bluez {

namespace {

constexpr auto daemonName = "org.bluez";
constexpr auto busName = "org.freedesktop.DBus";
constexpr auto busPath = "/org/freedesktop/DBus";

constexpr Seconds reloadInterval{ 5 }, longestUntilReopened{ 60 };

constexpr auto denial = "the system bus does not let this user speak to the Bluetooth daemon";

bool isDenial(const BusError& error) { return error.name == "org.freedesktop.DBus.Error.AccessDenied"; }

/// Whether it is one of those that every object has, and that say nothing.
bool isCommon(std::string_view interface) { return interface.starts_with("org.freedesktop.DBus."); }

/// The daemon may keep to itself that it has connected a device (it does where the link's socket is faster than the
/// kernel's report), but it tells when it knows the services.
bool isOnlySaidToBeResolved(const std::string& interface, const BusDictionary& changed)
{
    const auto* isResolved = find<bool>(changed, "ServicesResolved");
    return interface == interface::device && isResolved && *isResolved && !changed.contains("Connected");
}

} // namespace

std::shared_ptr<BlueZObjects> BlueZObjects::create()
{
    auto objects = std::make_shared<BlueZObjects>(Key());
    objects->openBus();
    return objects;
}

void BlueZObjects::openBus()
{
    const auto weak = weak_from_this();
    _bus = SystemBus::open({
        .heard =
            [weak](const BusSignal& signal) {
                if (const auto self = weak.lock())
                    self->hear(signal);
            },
        .lost =
            [weak](const BusError& error) {
                if (const auto self = weak.lock())
                    self->busIsLost(error);
            },
    });
    const std::string fromDaemon = std::string("type='signal',sender='") + daemonName + "',";
    _bus->hear(
        std::string("type='signal',sender='") + busName + "',member='NameOwnerChanged',arg0='" + daemonName + "'");
    _bus->hear(fromDaemon + "interface='" + interface::objectManager + "'");
    _bus->hear(fromDaemon + "interface='" + interface::properties + "',path_namespace='/org/bluez'");
    _bus->call({ busName, busPath, busName, "GetNameOwner", { daemonName } }, daemonLimit,
        [weak, life = _life](const BusReply& reply) {
            const auto self = weak.lock();
            if (!self || self->_life != life)
                return; // a signal has told since
            const auto* owner = find<std::string>(reply.values, 0);
            self->ownerIs(owner ? *owner : "");
        });
}

void BlueZObjects::busIsLost(const BusError& error)
{
    AuriskLog::log("the system bus cannot be reached: " + error.message);
    ++_life;
    if (isDenial(error))
        become(DaemonState::denied, denial);
    else
        become(DaemonState::absent, "the system bus cannot be reached (" + error.message + ")");
    DispatchQueue::main().asyncAfter(_untilReopened, [weak = weak_from_this()] {
        if (const auto self = weak.lock())
            self->openBus();
    });
    _untilReopened = std::min(_untilReopened * 2, longestUntilReopened);
}

void BlueZObjects::hear(const BusSignal& signal)
{
    if (signal.member == "NameOwnerChanged") {
        if (const auto* owner = find<std::string>(signal.values, 2))
            ownerIs(*owner);
        return;
    }
    if (_daemon != DaemonState::present)
        return; // the objects that are being asked for will be newer
    if (signal.member == "PropertiesChanged") {
        const auto* name = find<std::string>(signal.values, 0);
        const auto* changed = find<BusDictionary>(signal.values, 1);
        const auto* invalidated = find<std::vector<std::string>>(signal.values, 2);
        if (name && changed && invalidated)
            change(signal.path, *name, *changed, *invalidated);
        return;
    }
    const auto* path = find<ObjectPath>(signal.values, 0);
    if (const auto* added = find<BusInterfaces>(signal.values, 1); path && added)
        add(path->text, *added);
    if (const auto* removed = find<std::vector<std::string>>(signal.values, 1); path && removed)
        remove(path->text, *removed);
}

/// The daemon has begun a life, or ended one.
void BlueZObjects::ownerIs(const std::string& owner)
{
    ++_life;
    if (_daemon != DaemonState::unknown || owner.empty())
        become(DaemonState::absent, "bluetoothd is not running");
    if (!owner.empty())
        load();
}

void BlueZObjects::load()
{
    call("/", interface::objectManager, "GetManagedObjects", {}, daemonLimit,
        [weak = weak_from_this(), life = _life](const BusReply& reply) {
            const auto self = weak.lock();
            if (!self || self->_life != life)
                return;
            if (const auto* objects = find<BusObjects>(reply.values, 0)) {
                self->_untilReopened = Seconds(1);
                for (const auto& [path, interfaces] : *objects)
                    self->add(path, interfaces);
                return self->become(DaemonState::present);
            }
            AuriskLog::log("the Bluetooth daemon does not tell its objects"
                + (reply.error ? ": " + reply.error->message : std::string()));
            if (reply.error && isDenial(*reply.error))
                self->become(DaemonState::denied, denial);
            else
                self->become(DaemonState::absent, "bluetoothd does not tell what it has");
            DispatchQueue::main().asyncAfter(reloadInterval, [weak, life] {
                if (const auto later = weak.lock(); later && later->_life == life)
                    later->load();
            });
        });
}

void BlueZObjects::become(DaemonState daemon, std::string whyNot)
{
    _whyNot = std::move(whyNot);
    if (daemon != DaemonState::present)
        _objects.clear();
    if (std::exchange(_daemon, daemon) != daemon)
        tell(&Listener::daemonDidChange);
}

void BlueZObjects::fetch(const std::string& path, const char* interface, const char* name, std::function<void()> done)
{
    call(path, interface::properties, "Get", { interface, name }, daemonLimit,
        [weak = weak_from_this(), life = _life, path, interface, name, done = std::move(done)](const BusReply& reply) {
            const auto self = weak.lock();
            if (!self || self->_life != life)
                return;
            if (!reply.values.empty())
                self->change(path, interface, { { name, reply.values.front() } }, {});
            done();
        });
}

void BlueZObjects::refresh(std::function<void()> done)
{
    call("/", interface::objectManager, "GetManagedObjects", {}, daemonLimit,
        [weak = weak_from_this(), life = _life, done = std::move(done)](const BusReply& reply) {
            const auto self = weak.lock();
            if (!self || self->_life != life)
                return;
            if (const auto* objects = find<BusObjects>(reply.values, 0))
                for (const auto& [path, interfaces] : *objects)
                    self->add(path, interfaces);
            done();
        });
}

void BlueZObjects::add(const std::string& path, const BusInterfaces& interfaces)
{
    auto& object = _objects[path];
    std::vector<std::string> fresh;
    for (const auto& [name, properties] : interfaces) {
        if (isCommon(name))
            continue;
        if (object.insert_or_assign(name, properties).second)
            fresh.push_back(name);
    }
    if (_daemon == DaemonState::present)
        for (const auto& name : fresh)
            tell(&Listener::didAppear, path, name);
}

void BlueZObjects::change(const std::string& path, const std::string& interface, const BusDictionary& changed,
    const std::vector<std::string>& invalidated)
{
    const auto object = _objects.find(path);
    if (object == _objects.end())
        return;
    const auto properties = object->second.find(interface);
    if (properties == object->second.end())
        return;
    if (isOnlySaidToBeResolved(interface, changed) && !isTrue(path, interface, "Connected")) {
        auto whole = changed;
        whole.emplace("Connected", true);
        return change(path, interface, whole, invalidated);
    }
    for (const auto& [name, value] : changed)
        properties->second.insert_or_assign(name, value);
    for (const auto& name : invalidated)
        properties->second.erase(name);
    tell(&Listener::didChange, path, interface, changed);
}

void BlueZObjects::remove(const std::string& path, const std::vector<std::string>& interfaces)
{
    const auto object = _objects.find(path);
    if (object == _objects.end())
        return;
    std::vector<std::string> gone;
    for (const auto& name : interfaces)
        if (object->second.erase(name) > 0)
            gone.push_back(name);
    if (object->second.empty())
        _objects.erase(object);
    for (const auto& name : gone)
        tell(&Listener::didVanish, path, name);
}

const BusDictionary* BlueZObjects::propertiesOf(std::string_view path, std::string_view interface) const
{
    const auto object = _objects.find(path);
    if (object == _objects.end())
        return nullptr;
    const auto properties = object->second.find(interface);
    return properties == object->second.end() ? nullptr : &properties->second;
}

std::vector<std::string> BlueZObjects::below(const std::string& path, std::string_view interface) const
{
    const auto prefix = path + "/";
    std::vector<std::string> paths;
    for (auto object = _objects.lower_bound(prefix); object != _objects.end(); ++object) {
        if (!object->first.starts_with(prefix))
            break;
        if (object->second.contains(interface))
            paths.push_back(object->first);
    }
    return paths;
}

void BlueZObjects::call(const std::string& path, const char* interface, const char* member, BusValues arguments,
    Seconds limit, SystemBus::Answer answered)
{
    _bus->call({ daemonName, path, interface, member, std::move(arguments) }, limit, std::move(answered));
}

} // namespace aurisk::bluez
