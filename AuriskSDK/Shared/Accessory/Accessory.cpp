#include "AuriskSDK/Shared/Accessory/Accessory.h"

#include "AuriskSDK/Shared/Accessory/AccessoryManager.h"
#include "AuriskSDK/Shared/Utils/AuriskLog.h"
#include "AuriskSDK/Shared/Utils/Precondition.h"

#include <fmt/core.h>

namespace aurisk {

Accessory::Accessory(
    Key, std::shared_ptr<CBPeripheral> peripheral, DataView mfgData, std::weak_ptr<AccessoryManager> manager)
    : _manager(std::move(manager))
    , _peripheral(std::move(peripheral))
    , _mfgData(mfgData.begin(), mfgData.end())
{
}

std::shared_ptr<Accessory> Accessory::create(
    std::shared_ptr<CBPeripheral> peripheral, DataView mfgData, std::weak_ptr<AccessoryManager> manager)
{
    return std::make_shared<Accessory>(Key{}, std::move(peripheral), mfgData, std::move(manager));
}

std::string Accessory::name() const { return _peripheral->name().value_or("peripheral name not found"); }

std::string Accessory::deviceId() const { return _peripheral->identifier().uuidString(); }

std::string Accessory::description() const { return fmt::format("<{} {} \"{}\">", className(), deviceId(), name()); }

void Accessory::log(std::string_view message) const { AuriskLog::log(fmt::format("[{}] {}\n", _tag, message)); }

std::shared_ptr<AccessoryManager> Accessory::availableManager() const
{
    auto manager = _manager.lock();
    return manager && manager->isAvailable() ? manager : nullptr;
}

bool Accessory::connect(std::weak_ptr<AccessoryDelegate> delegate, std::optional<std::string> tag)
{
    expectMainQueue();
    const auto self = shared_from_this(); // a delegate may let go of the last reference from outside
    const auto manager = availableManager();
    if (!manager) {
        log("bluetooth manager is unavailable");
        return false;
    }
    if (_state == AccessoryState::connecting || _state == AccessoryState::connected)
        return false;
    setTag(std::move(tag).value_or(""));
    setDelegate(std::move(delegate));
    manager->connectToPeripheral(_peripheral);
    setState(AccessoryState::connecting);
    log("Connecting to " + description());
    return true;
}

bool Accessory::connect(std::weak_ptr<AccessoryDelegate> delegate, Seconds duration, std::optional<std::string> tag)
{
    const auto self = shared_from_this();
    if (!connect(std::move(delegate), std::move(tag)))
        return false;
    if (duration > Seconds(0))
        DispatchQueue::main().asyncAfter(duration, [self] {
            if (self->_state != AccessoryState::connected)
                self->didFailToConnect(std::nullopt);
        });
    return true;
}

bool Accessory::disconnect()
{
    expectMainQueue();
    const auto self = shared_from_this();
    const auto manager = availableManager();
    if (!manager) {
        didDisconnect(std::nullopt);
        log("bluetooth manager is unavailable");
        return true;
    }
    if (_state != AccessoryState::connecting && _state != AccessoryState::connected)
        return false;
    log("Disconnecting from " + description());
    manager->disconnectFromPerpheral(_peripheral);
    setState(AccessoryState::disconnecting);
    return true;
}

void Accessory::setState(AccessoryState state)
{
    _state = state;
    if (const auto delegate = _delegate.lock())
        delegate->deviceDidUpdate(shared_from_this(), state);
}

void Accessory::updateManufacturerData(std::shared_ptr<CBPeripheral> peripheral, DataView mfgData)
{
    _peripheral = std::move(peripheral);
    _mfgData.assign(mfgData.begin(), mfgData.end());
}

void Accessory::didConnect()
{
    log("Initializing " + description());
    setState(AccessoryState::connected);
    _peripheral->setDelegate(weak_from_this());
    _peripheral->discoverServices();
    if (const auto delegate = _delegate.lock())
        delegate->deviceDidConnect(shared_from_this(), std::nullopt);
}

void Accessory::didFailToConnect(const MaybeError& error)
{
    log("Failed to connect to " + description());
    if (error)
        log(error->localizedDescription);
    setState(AccessoryState::disconnected);
    if (const auto delegate = _delegate.lock())
        delegate->deviceDidFailToConnect(shared_from_this(), error);
}

void Accessory::didDisconnect(const MaybeError& error)
{
    log("Disconnected from " + description());
    if (error)
        log(error->localizedDescription);
    _peripheral->setDelegate(
        weak_from_this()); // deliberately again: the next connection's callbacks are to arrive here
    setState(AccessoryState::disconnected);
    if (const auto delegate = _delegate.lock())
        delegate->deviceDidDisconnect(shared_from_this(), error);
}

std::shared_ptr<AccessoryService> Accessory::initial(const std::shared_ptr<CBService>&) { return nullptr; }

void Accessory::peripheralDidDiscoverServices(CBPeripheral& peripheral, const MaybeError& error)
{
    if (error) {
        log(error->localizedDescription);
        return;
    }
    log("Accessory " + description() + ": didDiscoverServices");
    for (const auto& service : peripheral.services())
        if (auto handled = initial(service))
            _serviceDictionary[service->uuid().uuidString()] = std::move(handled);

    std::vector<std::shared_ptr<AccessoryService>> services;
    for (const auto& [uuid, service] : _serviceDictionary)
        services.push_back(service);
    if (const auto delegate = _delegate.lock())
        delegate->deviceDidDiscoverServices(shared_from_this(), services);
    if (const auto alpha = _alphaDelegate.lock())
        alpha->peripheralDidDiscoverServices(peripheral, std::nullopt);
}

std::shared_ptr<AccessoryService> Accessory::serviceFor(const std::shared_ptr<CBService>& service) const
{
    if (!service)
        return nullptr;
    const auto found = _serviceDictionary.find(service->uuid().uuidString());
    return found == _serviceDictionary.end() ? nullptr : found->second;
}

void Accessory::peripheralDidDiscoverCharacteristicsFor(
    CBPeripheral& peripheral, const std::shared_ptr<CBService>& service, const MaybeError& error)
{
    if (const auto owner = serviceFor(service))
        owner->didDiscoverCharacteristics(service->characteristics(), error);
    else if (const auto alpha = _alphaDelegate.lock())
        alpha->peripheralDidDiscoverCharacteristicsFor(peripheral, service, error);
}

void Accessory::peripheralDidUpdateValueFor(
    CBPeripheral& peripheral, const std::shared_ptr<CBCharacteristic>& characteristic, const MaybeError& error)
{
    if (const auto owner = serviceFor(characteristic->service()))
        owner->didUpdateValueForCharacteristic(characteristic, peripheral, error);
    else if (const auto alpha = _alphaDelegate.lock())
        alpha->peripheralDidUpdateValueFor(peripheral, characteristic, error);
}

void Accessory::peripheralDidWriteValueFor(
    CBPeripheral& peripheral, const std::shared_ptr<CBCharacteristic>& characteristic, const MaybeError& error)
{
    if (const auto owner = serviceFor(characteristic->service()))
        owner->didWriteValueForCharacteristic(characteristic, error);
    else if (const auto alpha = _alphaDelegate.lock())
        alpha->peripheralDidWriteValueFor(peripheral, characteristic, error);
}

void Accessory::peripheralDidUpdateNotificationStateFor(
    CBPeripheral& peripheral, const std::shared_ptr<CBCharacteristic>& characteristic, const MaybeError& error)
{
    if (const auto owner = serviceFor(characteristic->service()))
        owner->didUpdateNotificationStateForCharacteristic(characteristic, error);
    else if (const auto alpha = _alphaDelegate.lock())
        alpha->peripheralDidUpdateNotificationStateFor(peripheral, characteristic, error);
}

} // namespace aurisk
