#include "AuriskSDK/Shared/Accessory/AccessoryManager.h"

#include "AuriskSDK/Shared/Utils/AuriskLog.h"
#include "AuriskSDK/Shared/Utils/Precondition.h"

#include <fmt/format.h>

#include <algorithm>

namespace aurisk {

namespace {

std::string keyOf(const CBPeripheral& peripheral) { return peripheral.identifier().uuidString(); }

} // namespace

std::shared_ptr<AccessoryManager> AccessoryManager::create(std::shared_ptr<BluetoothPlatform> platform)
{
    auto manager = std::make_shared<AccessoryManager>(Key{}, std::move(platform));
    manager->makeCentralManager({});
    return manager;
}

AccessoryManager::AccessoryManager(Key, std::shared_ptr<BluetoothPlatform> platform)
    : _platform(std::move(platform))
{
}

AccessoryManager::~AccessoryManager()
{
    AuriskLog::log(
        fmt::format("<AccessoryManager {}> deinit， Ensure that the AccessoryManager instance remains in memory "
                    "and is not deallocated while using AuriskSDK.",
            fmt::ptr(this)));
}

void AccessoryManager::makeCentralManager(const CBCentralManagerOptions& options)
{
    if (_platform)
        _centralManager = _platform->makeCentralManager(weak_from_this(), options);
}

std::vector<std::shared_ptr<Accessory>> AccessoryManager::accessories() const
{
    std::vector<std::shared_ptr<Accessory>> all;
    all.reserve(_inOrder.size());
    for (const auto& [identifier, accessory] : _inOrder)
        all.push_back(accessory);
    return all;
}

CBManagerState AccessoryManager::blueState() const
{
    return _centralManager ? _centralManager->state() : CBManagerState::unknown;
}

void AccessoryManager::openBluetooth()
{
    expectMainQueue();
    if (blueState() == CBManagerState::poweredOn)
        return;
    const auto self = shared_from_this();
    makeCentralManager({ .showPowerAlert = true });
    if (_isScanning && _centralManager) // the scan outlasts the central that carried it
        _centralManager->scanForPeripherals({ .allowDuplicates = true });
    for (const auto& accessory : accessories()) // their links do not, and the old central tells nobody
        if (accessory->state() != AccessoryState::disconnected)
            accessory->didDisconnect(std::nullopt);
}

void AccessoryManager::startScan(Seconds duration)
{
    expectMainQueue();
    _scanningDuration = duration;
    if (!_isAvailable) {
        _waitingToScan = true;
        return;
    }
    if (_isScanning)
        return;
    _isScanning = true;
    AuriskLog::log("Scanning started");
    const auto self = shared_from_this();
    tellIsScanning();
    if (!_isScanning)
        return; // the delegate has stopped it again
    if (_centralManager)
        _centralManager->scanForPeripherals({ .allowDuplicates = true });
    if (_scanningDuration > Seconds(0))
        _timer = DispatchTimer::scheduledTimer(DispatchQueue::main(), _scanningDuration, [weak = weak_from_this()] {
            if (const auto manager = weak.lock())
                manager->stopScan();
        });
}

void AccessoryManager::stopScan()
{
    expectMainQueue();
    if (!_isScanning)
        return;
    if (const auto timer = std::exchange(_timer, nullptr))
        timer->invalidate();
    if (_centralManager)
        _centralManager->stopScan();
    _isScanning = false;
    AuriskLog::log("Scanning stopped");
    tellIsScanning();
}

void AccessoryManager::tellIsScanning()
{
    if (const auto delegate = _scanningDelegate.lock())
        delegate->accessoryManagerIsScanning(shared_from_this(), _isScanning);
}

void AccessoryManager::clearAccessories(
    const std::function<bool(const std::string&, const std::shared_ptr<Accessory>&)>& where)
{
    expectMainQueue();
    std::vector<std::string> cleared;
    for (const auto& [identifier, accessory] : std::vector(_inOrder))
        if (where(identifier, accessory))
            cleared.push_back(identifier);
    for (const auto& identifier : cleared)
        _accessoryDictionary.erase(identifier);
    std::erase_if(_inOrder, [&](const Entry& entry) { return !_accessoryDictionary.contains(entry.first); });
}

void AccessoryManager::connectToPeripheral(const std::shared_ptr<CBPeripheral>& peripheral)
{
    if (_centralManager)
        _centralManager->connectPeripheral(peripheral);
}

void AccessoryManager::disconnectFromPerpheral(const std::shared_ptr<CBPeripheral>& peripheral)
{
    if (_centralManager)
        _centralManager->cancelPeripheralConnection(peripheral);
}

/// Events that a replaced central still had under way are nobody's.
bool AccessoryManager::isCurrent(const CBCentralManager& central) const { return &central == _centralManager.get(); }

void AccessoryManager::centralManagerDidUpdateState(CBCentralManager& central)
{
    if (!isCurrent(central))
        return;
    AuriskLog::log(fmt::format("CBManager's state = {}", static_cast<int>(central.state())));
    _isAvailable = central.state() == CBManagerState::poweredOn;
    if (const auto delegate = _statusDelegate.lock())
        delegate->accessoryManagerIsAvailable(shared_from_this(), _isAvailable);
    if (_isAvailable && std::exchange(_waitingToScan, false))
        DispatchQueue::main().async([weak = weak_from_this()] {
            if (const auto self = weak.lock())
                self->startScan(self->_scanningDuration);
        });
}

void AccessoryManager::centralManagerDidDiscover(CBCentralManager& central,
    const std::shared_ptr<CBPeripheral>& peripheral, const CBAdvertisementData& advertisementData,
    std::optional<int> rssi)
{
    if (!isCurrent(central) || !peripheral->name() || !advertisementData.manufacturerData)
        return;
    const auto& mfgData = *advertisementData.manufacturerData;
    auto identifier = keyOf(*peripheral);

    if (const auto known = _accessoryDictionary.find(identifier); known != _accessoryDictionary.end()) {
        const auto accessory = known->second;
        accessory->setLocalName(advertisementData.localName);
        accessory->updateManufacturerData(peripheral, mfgData);
        if (const auto delegate = _scanningDelegate.lock())
            delegate->accessoryManagerDidUpdate(shared_from_this(), accessory, rssi);
        return;
    }

    const auto selector = _selector; // it may replace itself
    const auto accessory = selector ? selector->select(peripheral, mfgData, shared_from_this()) : nullptr;
    if (!accessory)
        return;
    accessory->setLocalName(advertisementData.localName);
    _accessoryDictionary.emplace(identifier, accessory);
    _inOrder.emplace_back(std::move(identifier), accessory);
    if (const auto delegate = _scanningDelegate.lock())
        delegate->accessoryManagerDidDiscover(shared_from_this(), accessory, rssi);
    AuriskLog::log("did discovery device: " + accessory->description() + ", " + accessory->name() + "\n");
}

std::shared_ptr<Accessory> AccessoryManager::accessoryFor(
    const CBCentralManager& central, const CBPeripheral& peripheral) const
{
    if (!isCurrent(central))
        return nullptr;
    const auto found = _accessoryDictionary.find(keyOf(peripheral));
    return found == _accessoryDictionary.end() ? nullptr : found->second;
}

void AccessoryManager::centralManagerDidConnect(
    CBCentralManager& central, const std::shared_ptr<CBPeripheral>& peripheral)
{
    if (const auto accessory = accessoryFor(central, *peripheral)) {
        AuriskLog::log("device is now connected. Device UUID: " + keyOf(*peripheral));
        accessory->didConnect();
    }
}

void AccessoryManager::centralManagerDidDisconnectPeripheral(
    CBCentralManager& central, const std::shared_ptr<CBPeripheral>& peripheral, const MaybeError& error)
{
    if (const auto accessory = accessoryFor(central, *peripheral))
        accessory->didDisconnect(error);
}

void AccessoryManager::centralManagerDidFailToConnect(
    CBCentralManager& central, const std::shared_ptr<CBPeripheral>& peripheral, const MaybeError& error)
{
    if (const auto accessory = accessoryFor(central, *peripheral))
        accessory->didFailToConnect(error);
}

} // namespace aurisk
