#include "AuriskSDK/Platform/BlueZ/BlueZGattServer.h"

#include "AuriskSDK/Platform/BlueZ/BusAnswer.h"
#include "AuriskSDK/Shared/Utils/AuriskLog.h"

namespace aurisk::bluez {

namespace {

constexpr Seconds retryInterval{ 5 };

} // namespace

std::shared_ptr<BlueZGattServer> BlueZGattServer::create(std::shared_ptr<BlueZObjects> objects, std::string root,
    GattServerOptions options, std::weak_ptr<GattServerDelegate> delegate)
{
    auto server = std::make_shared<BlueZGattServer>(
        Key{}, std::move(objects), std::move(root), std::move(options), std::move(delegate));
    const auto weak = server->weak_from_this();
    server->_advertiser = std::make_shared<Advertiser>(server->_objects, server->_root + "/advertisement",
        Advertiser::Handlers{ .started =
                                  [weak] {
                                      if (const auto self = weak.lock())
                                          self->tell(&GattServerDelegate::gattServerDidStartAdvertising);
                                  },
            .failed =
                [weak](const BusError& error) {
                    if (const auto self = weak.lock())
                        self->tell(&GattServerDelegate::gattServerDidStop,
                            self->adapter() + " does not advertise: " + error.message);
                } });
    server->_objects->add(server);
    server->beginSoon();
    return server;
}

BlueZGattServer::BlueZGattServer(Key, std::shared_ptr<BlueZObjects> objects, std::string root,
    GattServerOptions options, std::weak_ptr<GattServerDelegate> delegate)
    : _objects(std::move(objects))
    , _root(std::move(root))
    , _options(std::move(options))
    , _delegate(std::move(delegate))
    , _table(_root, _options.services)
{
    if (!_options.adapter.empty())
        _adapter = std::string(daemonPath) + "/" + _options.adapter;
}

BlueZGattServer::~BlueZGattServer()
{
    if (!_isEnding)
        stop([] {});
}

std::string BlueZGattServer::adapter() const { return nameOf(_adapter); }

std::string BlueZGattServer::address() const
{
    const auto* address = _objects->property<std::string>(_adapter, interface::adapter, "Address");
    return address ? *address : "";
}

// Serving, and what is in its way

void BlueZGattServer::daemonDidChange()
{
    if (_objects->daemon() == DaemonState::present)
        _daemonBegan = DispatchQueue::main().now();
    isForgotten();
    begin();
}

void BlueZGattServer::didAppear(const std::string& path, const std::string& interface)
{
    // The daemon may announce these one by one, and its adapter serves once it has all of them.
    for (const auto* needed : { interface::adapter, interface::gattManager, interface::advertisingManager })
        if (interface == needed && (_adapter.empty() || path == _adapter))
            beginSoon();
    if (interface == interface::device)
        lookAt(path);
}

void BlueZGattServer::didChange(const std::string& path, const std::string& interface, const BusDictionary& changed)
{
    if (interface == interface::adapter && path == _adapter && changed.contains("Alias"))
        noteAlias();
    if (interface == interface::adapter && path == _adapter && changed.contains("Powered"))
        begin();
    if (interface == interface::device && changed.contains("Connected"))
        lookAt(path);
}

void BlueZGattServer::didVanish(const std::string& path, const std::string& interface)
{
    if (interface == interface::adapter && path == _adapter) {
        isForgotten();
        begin();
    }
    if (interface == interface::device)
        disconnected(path);
}

/// The daemon knows nothing of the server any more.
void BlueZGattServer::isForgotten()
{
    _isRegistered = _mayBeRegistered = false;
    _maySwitchOn = true;
    _advertiser->radioIs("");
    _advertiser->isForgotten();
    for (const auto& one : std::exchange(_subscribed, {}))
        tell(&GattServerDelegate::gattServerDidSubscribe, one, false);
}

void BlueZGattServer::beginSoon()
{
    ++_spell;
    beginLater(Seconds(0));
}

void BlueZGattServer::beginLater(Seconds delay)
{
    DispatchQueue::main().asyncAfter(delay, [weak = weak_from_this(), spell = _spell] {
        if (const auto self = weak.lock(); self && self->_spell == spell)
            self->begin();
    });
}

void BlueZGattServer::begin()
{
    if (_isEnding || _objects->daemon() == DaemonState::unknown)
        return;
    ++_spell;
    if (const auto why = obstacle(); why && isDaemonStarting())
        beginLater(startLimit);
    else if (why)
        pause(*why);
    else if (!_objects->isTrue(_adapter, interface::adapter, "Powered"))
        switchOn();
    else
        takeName();
}

/// Whether what is not there may come in a moment.
bool BlueZGattServer::isDaemonStarting() const
{
    return _objects->daemon() == DaemonState::present && DispatchQueue::main().now() - _daemonBegan < startLimit;
}

/// Why it cannot serve whatever it does; none where it can.
std::optional<std::string> BlueZGattServer::obstacle()
{
    if (_objects->daemon() != DaemonState::present)
        return _objects->whyNot();
    const auto adapters = _objects->below(daemonPath, interface::adapter);
    if (_adapter.empty() && !adapters.empty())
        _adapter = adapters.front();
    if (_adapter.empty())
        return "there is no Bluetooth adapter";
    if (!_objects->propertiesOf(_adapter, interface::adapter))
        return "there is no Bluetooth adapter " + adapter();
    if (!_objects->propertiesOf(_adapter, interface::gattManager)
        || !_objects->propertiesOf(_adapter, interface::advertisingManager))
        return adapter() + " cannot advertise";
    return std::nullopt;
}

void BlueZGattServer::switchOn()
{
    if (!std::exchange(_maySwitchOn, false))
        return pause(adapter() + " is switched off");
    set("Powered", true, [](BlueZGattServer& self, const BusReply& reply) {
        if (reply.error)
            self.pause(self.adapter() + " is switched off, and cannot be switched on: " + reply.error->message);
    });
}

/// Set whatever the alias seems to be: the daemon tells of a change a while after it has made it, and may be about to
/// give up the same name, which another server had.
void BlueZGattServer::takeName()
{
    if (!_previousAlias)
        _previousAlias = "";
    noteAlias();
    set("Alias", _options.name, [](BlueZGattServer& self, const BusReply&) { self.registerTable(); });
}

/// Keeps what somebody else has called the adapter last.
void BlueZGattServer::noteAlias()
{
    const auto* alias = _objects->property<std::string>(_adapter, interface::adapter, "Alias");
    const auto* name = _objects->property<std::string>(_adapter, interface::adapter, "Name");
    if (!alias || !_previousAlias || *alias == _options.name)
        return;
    const bool isLikeTheComputer = name && *name == *alias;
    _previousAlias = isLikeTheComputer ? "" : *alias;
}

void BlueZGattServer::registerTable()
{
    if (_isRegistered)
        return start();
    _objects->bus().serve(_root, [weak = weak_from_this()](const BusRequest& request) {
        if (const auto self = weak.lock())
            self->called(request);
    });
    _mayBeRegistered = true;
    call(interface::gattManager, "RegisterApplication", { ObjectPath{ _root }, BusDictionary() },
        [](BlueZGattServer& self, const BusReply& reply) {
            if (reply.error && !reply.error->name.ends_with(".AlreadyExists"))
                return self.tryLater(self.adapter() + " does not take the services: " + reply.error->message);
            self._isRegistered = true;
            self.start();
        });
}

void BlueZGattServer::start()
{
    _obstacle.reset();
    _maySwitchOn = false; // whoever switches it off from now on means it
    if (!std::exchange(_isServing, true))
        tell(&GattServerDelegate::gattServerDidStart);
    _advertiser->radioIs(_adapter);
}

void BlueZGattServer::pause(const std::string& why)
{
    _isServing = false;
    _advertiser->radioIs("");
    for (const auto& [path, address] : std::exchange(_centrals, {}))
        tell(&GattServerDelegate::gattServerDidDisconnect, address);
    if (std::exchange(_obstacle, why) != why)
        tell(&GattServerDelegate::gattServerDidStop, why);
}

void BlueZGattServer::tryLater(const std::string& why)
{
    pause(why);
    beginLater(retryInterval);
}

void BlueZGattServer::stop(std::function<void()> stopped)
{
    if (!std::exchange(_isEnding, true)) {
        _end->enter();
        end();
    }
    _end->notify(DispatchQueue::main(), std::move(stopped));
}

/// The links go before the services. A central that still has one is told of each service that goes, and asks for those
/// that are left; where its link ends with a question open, the daemon (5.66) may crash at any time after it.
void BlueZGattServer::end()
{
    ++_spell;
    _objects->bus().stopServing(_root);
    const auto links = std::make_shared<DispatchGroup>();
    links->enter();
    _advertiser->stop([links] { links->leave(); });
    for (const auto& [path, address] : std::exchange(_centrals, {})) {
        links->enter();
        _objects->call(
            path, interface::device, "Disconnect", {}, disconnectLimit, [links](const BusReply&) { links->leave(); });
    }
    links->notify(DispatchQueue::main(),
        [objects = _objects, adapter = _adapter, root = _root, isRegistered = _mayBeRegistered, alias = _previousAlias,
            ended = _end] {
            const auto call = [&](const char* interface, const char* member, BusValues arguments) {
                ended->enter();
                objects->call(adapter, interface, member, std::move(arguments), daemonLimit,
                    [ended](const BusReply&) { ended->leave(); });
            };
            if (isRegistered)
                call(interface::gattManager, "UnregisterApplication", { ObjectPath{ root } });
            if (alias)
                call(interface::properties, "Set", { interface::adapter, "Alias", BusVariant(*alias) });
            ended->leave();
        });
}

// Centrals

void BlueZGattServer::advertise(std::optional<CBAdvertisementData> advertisement)
{
    _advertiser->want(std::move(advertisement));
}

void BlueZGattServer::notify(const CBUUID& characteristic, DataView value)
{
    const auto* path = _table.pathOf(characteristic);
    if (!path || !_subscribed.contains(characteristic))
        return;
    const BusDictionary changed = { { "Value", Data(value.begin(), value.end()) } };
    _objects->bus().emit({ *path, interface::properties, "PropertiesChanged",
        { interface::characteristic, changed, std::vector<std::string>() } });
}

void BlueZGattServer::disconnectCentral(const std::string& central)
{
    for (const auto& [path, address] : _centrals)
        if (address == central)
            _objects->call(path, interface::device, "Disconnect", {}, daemonLimit, nullptr);
}

/// The adapter may have connections that are none of ours. So only what comes while we can be heard is a central, and
/// nothing with a class of device, which belongs to BR/EDR: a telephone that has one is known by what it asks for.
void BlueZGattServer::lookAt(const std::string& device)
{
    if (!_isServing || !device.starts_with(_adapter + "/"))
        return;
    if (!_objects->isTrue(device, interface::device, "Connected"))
        disconnected(device);
    else if (_advertiser->mayBeHeard() && !_objects->property<std::uint32_t>(device, interface::device, "Class"))
        connected(device);
}

/// Its address.
std::string BlueZGattServer::connected(const std::string& device)
{
    const auto* known = _objects->property<std::string>(device, interface::device, "Address");
    const auto [central, isNew] = _centrals.emplace(device, known ? *known : nameOf(device));
    const auto address = central->second;
    if (isNew)
        tell(&GattServerDelegate::gattServerDidConnect, address);
    return address;
}

void BlueZGattServer::disconnected(const std::string& device)
{
    if (const auto gone = _centrals.extract(device))
        tell(&GattServerDelegate::gattServerDidDisconnect, gone.mapped());
}

// Calls

void BlueZGattServer::set(
    const char* property, BusValue value, std::function<void(BlueZGattServer&, const BusReply&)> answered)
{
    call(interface::properties, "Set", { interface::adapter, property, BusVariant(std::move(value)) },
        std::move(answered));
}

/// An answer that comes after something else has changed is nobody's.
void BlueZGattServer::call(const char* interface, const char* member, BusValues arguments,
    std::function<void(BlueZGattServer&, const BusReply&)> answered)
{
    _objects->call(_adapter, interface, member, std::move(arguments), daemonLimit,
        [weak = weak_from_this(), spell = _spell, answered = std::move(answered)](const BusReply& reply) {
            if (const auto self = weak.lock(); self && self->_spell == spell)
                answered(*self, reply);
        });
}

} // namespace aurisk::bluez
