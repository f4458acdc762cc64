#include "AuriskSDK/Platform/BlueZ/BlueZRadio.h"

#include "AuriskSDK/Platform/BlueZ/BlueZCentral.h"
#include "AuriskSDK/Shared/Utils/AuriskLog.h"

#include <fmt/format.h>

#include <algorithm>

namespace aurisk::bluez {

namespace {

/// How long an adapter or a daemon that has gone may take to come back.
constexpr Seconds absenceLimit{ 5 };

/// "/org/bluez/hci0/dev_00_AA_01_01_00_01" of whatever lies there or below; empty for anything above.
std::string devicePathOf(const std::string& path)
{
    std::size_t end = 0;
    for (int part = 0; part < 4; ++part) {
        end = path.find('/', end);
        if (end == std::string::npos)
            return "";
        ++end;
    }
    return path.substr(0, path.find('/', end));
}

} // namespace

std::shared_ptr<Platform> makePlatform(PlatformOptions options) { return BlueZRadio::create(std::move(options)); }

std::shared_ptr<BlueZRadio> BlueZRadio::create(PlatformOptions options)
{
    auto radio = std::make_shared<BlueZRadio>(Key(), std::move(options));
    radio->_objects->add(std::weak_ptr<Listener>(radio));
    radio->_agent = PairingAgent::create(radio->_objects, [weak = std::weak_ptr(radio)](const std::string& device) {
        const auto self = weak.lock();
        return self && self->_occupied.contains(device);
    });
    return radio;
}

BlueZRadio::BlueZRadio(Key, PlatformOptions options)
    : _options(std::move(options))
{
}

std::shared_ptr<CBCentralManager> BlueZRadio::makeCentralManager(
    std::weak_ptr<CBCentralManagerDelegate> delegate, const CBCentralManagerOptions& options)
{
    const auto central = BlueZCentral::create(shared_from_this(), std::move(delegate));
    std::erase_if(_centrals, [](const auto& one) { return one.expired(); });
    _centrals.push_back(central);
    if (options.showPowerAlert) {
        _isToBePoweredOn = true;
        powerOn();
    }
    return central;
}

/// None is kept meanwhile: one that its delegate destroys is gone at once, and so are those after it that the delegate
/// destroys, too.
template <typename Work> void BlueZRadio::eachCentral(Work work)
{
    for (const auto& weak : std::vector(_centrals))
        if (auto* central = weak.lock().get())
            work(*central);
}

// State

/// The path of the adapter that is to be used: the first, or the one that was named; empty where it is not there.
std::string BlueZRadio::findAdapter() const
{
    const auto adapters = _objects->below(daemonPath, interface::adapter);
    const auto isRight = [this](const std::string& path) {
        return _options.adapter.empty() || path == std::string(daemonPath) + "/" + _options.adapter;
    };
    const auto known = std::find(adapters.begin(), adapters.end(), _adapter);
    const auto found = known != adapters.end() ? known : std::find_if(adapters.begin(), adapters.end(), isRight);
    return found == adapters.end() ? "" : *found;
}

CBManagerState BlueZRadio::stateNow() const
{
    switch (_objects->daemon()) {
    case DaemonState::unknown: return CBManagerState::unknown;
    case DaemonState::denied: return CBManagerState::unauthorized;
    case DaemonState::absent: return CBManagerState::unsupported;
    case DaemonState::present: break;
    }
    const auto adapter = findAdapter();
    if (adapter.empty())
        return CBManagerState::unsupported;
    return _objects->isTrue(adapter, interface::adapter, "Powered") ? CBManagerState::poweredOn
                                                                    : CBManagerState::poweredOff;
}

void BlueZRadio::update()
{
    const auto now = stateNow();
    ++_absence;
    if (now != CBManagerState::unsupported) {
        if (const auto adapter = findAdapter(); !adapter.empty() && adapter != _adapter) {
            if (_state == CBManagerState::poweredOn)
                become(CBManagerState::resetting);
            _adapter = adapter;
        }
        return become(now);
    }
    const bool isFirst = _state == CBManagerState::unknown;
    if (_state == CBManagerState::unsupported || (isFirst && _objects->daemon() != DaemonState::present))
        return become(now);
    if (!isFirst)
        become(CBManagerState::resetting);
    DispatchQueue::main().asyncAfter(
        isFirst ? startLimit : absenceLimit, [weak = weak_from_this(), absence = _absence] {
            if (const auto self = weak.lock(); self && self->_absence == absence)
                self->become(self->stateNow());
        });
}

void BlueZRadio::become(CBManagerState state)
{
    if (std::exchange(_state, state) == state)
        return;
    const bool isOn = state == CBManagerState::poweredOn;
    const auto lost = whyLost();
    _discovery->radioIs(isOn ? _adapter : "");
    eachCentral([&](BlueZCentral& central) { central.radioIs(state, lost); });
    if (!isOn)
        _connector->failAll(lost);
    powerOn();
}

void BlueZRadio::powerOn()
{
    if (_state != CBManagerState::poweredOff || !std::exchange(_isToBePoweredOn, false)) {
        if (_state == CBManagerState::poweredOn)
            _isToBePoweredOn = false;
        return;
    }
    _objects->call(_adapter, interface::properties, "Set", { interface::adapter, "Powered", BusVariant(true) },
        daemonLimit, [](const BusReply& reply) {
            if (reply.error)
                AuriskLog::log("the radio cannot be powered on: " + reply.error->message);
        });
}

BluetoothError BlueZRadio::whyLost() const
{
    if (_state == CBManagerState::poweredOff)
        return bluezError(ErrorCode::radioOff, "The radio is not powered on.");
    return bluezError(ErrorCode::daemonLost, "The Bluetooth daemon, or its adapter, has gone.");
}

std::string BlueZRadio::whyNot() const
{
    if (_objects->daemon() != DaemonState::present)
        return _objects->whyNot();
    if (!findAdapter().empty())
        return _state == CBManagerState::poweredOff ? nameOf(_adapter) + " is powered off" : "";
    std::string others;
    for (const auto& path : _objects->below(daemonPath, interface::adapter))
        others += (others.empty() ? "" : ", ") + nameOf(path);
    if (others.empty())
        return "the Bluetooth daemon has no adapter";
    return fmt::format("the Bluetooth daemon has no adapter {}; it has {}", _options.adapter, others);
}

// What the daemon tells

void BlueZRadio::daemonDidChange()
{
    if (_objects->daemon() != DaemonState::present) {
        _leftBehind.insert(_occupied.begin(), _occupied.end());
        return update();
    }
    _daemonBegan = DispatchQueue::main().now();
    for (const auto& device : std::set(_leftBehind))
        endIfLeftBehind(device);
    update();
}

/// A daemon that was killed leaves its links to the next one, for which they are nobody's, and which may take a moment
/// to tell of them.
void BlueZRadio::endIfLeftBehind(const std::string& device)
{
    if (!_objects->isTrue(device, interface::device, "Connected") || _leftBehind.erase(device) == 0)
        return;
    if (DispatchQueue::main().now() - _daemonBegan < absenceLimit)
        _objects->call(device, interface::device, "Disconnect", {}, daemonLimit, nullptr);
}

void BlueZRadio::didAppear(const std::string& path, const std::string& interface)
{
    if (interface == interface::adapter)
        return update();
    const auto device = devicePathOf(path);
    if (device.empty() || !device.starts_with(_adapter + "/"))
        return;
    if (interface == interface::device) {
        endIfLeftBehind(device);
        _connector->deviceDidAppear(device);
        if (_objects->property<std::int16_t>(device, interface::device, "RSSI"))
            didHear(device);
        else
            eachCentral([&](BlueZCentral& central) { central.didConnect(device); });
    } else if (interface == interface::battery) {
        eachCentral([&](BlueZCentral& central) { central.batteryDidChange(device); });
    }
}

void BlueZRadio::didChange(const std::string& path, const std::string& interface, const BusDictionary& changed)
{
    if (interface == interface::adapter) {
        if (changed.contains("Powered"))
            update();
        return;
    }
    const auto device = devicePathOf(path);
    if (device.empty() || !device.starts_with(_adapter + "/"))
        return;
    if (interface == interface::characteristic) {
        if (const auto* value = find<Data>(changed, "Value"))
            eachCentral([&](BlueZCentral& central) { central.valueDidChange(device, path, *value); });
    } else if (interface == interface::battery) {
        eachCentral([&](BlueZCentral& central) { central.batteryDidChange(device); });
    } else if (interface == interface::device) {
        if (changed.contains("RSSI") || changed.contains("ManufacturerData"))
            didHear(device);
        if (const auto* isResolved = find<bool>(changed, "ServicesResolved"); isResolved && *isResolved)
            _connector->servicesDidResolve(device);
        if (const auto* isConnected = find<bool>(changed, "Connected"); isConnected && *isConnected) {
            endIfLeftBehind(device);
            eachCentral([&](BlueZCentral& central) { central.didConnect(device); });
        } else if (isConnected) {
            linkDidGo(device);
        }
    }
}

void BlueZRadio::didVanish(const std::string& path, const std::string& interface)
{
    if (interface == interface::adapter)
        return update();
    const auto device = devicePathOf(path);
    if (device.empty() || !device.starts_with(_adapter + "/"))
        return;
    if (interface == interface::device)
        linkDidGo(device);
    else if (interface == interface::service || interface == interface::characteristic)
        eachCentral([&](BlueZCentral& central) { central.objectDidVanish(device, path); });
}

void BlueZRadio::didHear(const std::string& devicePath)
{
    _discovery->didHear();
    eachCentral([&](BlueZCentral& central) { central.didHear(devicePath); });
}

void BlueZRadio::linkDidGo(const std::string& devicePath)
{
    _connector->linkDidGo(devicePath);
    eachCentral([&](BlueZCentral& central) { central.linkDidGo(devicePath); });
}

// What centrals do

void BlueZRadio::scanDidChange()
{
    _discovery->want(std::any_of(_centrals.begin(), _centrals.end(), [](const auto& weak) {
        const auto central = weak.lock();
        return central && central->isScanning();
    }));
}

void BlueZRadio::didOccupy(const std::string& devicePath)
{
    _occupied.insert(devicePath);
    _leftBehind.erase(devicePath);
    _agent->need(true);
}

void BlueZRadio::didFree(const std::string& devicePath)
{
    if (const auto one = _occupied.find(devicePath); one != _occupied.end())
        _occupied.erase(one);
    _agent->need(!_occupied.empty());
}

} // namespace aurisk::bluez
