#include "Tools/aurisk/AidOnAir.h"

#include "AuriskSDK/Shared/Utils/AuriskLog.h"
#include "AuriskSDK/Shared/Utils/HexToData.h"

#include <fmt/format.h>

#include <algorithm>

namespace aurisk::tool {

namespace {

constexpr Seconds untilReady{ 10 };
constexpr std::size_t mostWaiting = 64;

std::vector<bluez::GattService> tableOf(const SimulatedAid& aid)
{
    std::vector<bluez::GattService> table;
    for (const auto& service : aid.gattTable()) {
        table.push_back({ service.uuid, {} });
        for (const auto& [uuid, properties] : service.characteristics)
            table.back().characteristics.push_back({ uuid, properties });
    }
    return table;
}

void log(const std::string& name, std::string_view what, const CBUUID& characteristic, DataView value)
{
    if (AuriskLog::enable())
        AuriskLog::log(fmt::format("{} {} {}: {}", name, characteristic.uuidString(), what, ask_hexadecimal(value)));
}

} // namespace

std::shared_ptr<AidOnAir> AidOnAir::create(std::shared_ptr<Simulator> simulator, std::string name,
    bluez::GattServerPlatform& servers, std::string adapter, std::weak_ptr<AidOnAirDelegate> delegate)
{
    auto aid = std::make_shared<AidOnAir>(Key{}, std::move(simulator), std::move(name), std::move(delegate));
    const auto& simulated = *aid->_simulator->aid(aid->_name);
    aid->_server = servers.makeGattServer({ std::move(adapter), aid->_name, tableOf(simulated) }, aid);
    aid->_radio = aid->_simulator->platform()->makeCentralManager(aid, {});
    aid->listen();
    return aid;
}

AidOnAir::AidOnAir(
    Key, std::shared_ptr<Simulator> simulator, std::string name, std::weak_ptr<AidOnAirDelegate> delegate)
    : _simulator(std::move(simulator))
    , _name(std::move(name))
    , _delegate(std::move(delegate))
{
}

// Being heard

void AidOnAir::listen()
{
    if (_central || std::exchange(_isListening, true))
        return;
    _radio->scanForPeripherals({ .allowDuplicates = true });
    watch();
}

/// An aid that is not heard any more has left the air.
void AidOnAir::watch()
{
    const auto patience = std::max(Seconds(1), 3 * _simulator->world().placed(_name).advertisingInterval);
    DispatchQueue::main().asyncAfter(patience, [weak = weak_from_this(), watch = ++_watch, patience] {
        const auto self = weak.lock();
        if (!self || self->_watch != watch || !self->_isListening)
            return;
        if (DispatchQueue::main().now() - self->_lastHeard >= patience)
            self->fallSilent();
        self->watch();
    });
}

void AidOnAir::fallSilent()
{
    _server->advertise(std::nullopt);
    _isAudible = false;
    const auto delegate = _delegate.lock();
    if (!std::exchange(_isSilent, true) && delegate)
        delegate->aidDidFallSilent(*this);
}

void AidOnAir::centralManagerDidDiscover(CBCentralManager&, const std::shared_ptr<CBPeripheral>& peripheral,
    const CBAdvertisementData& advertisement, std::optional<int>)
{
    if (peripheral->identifier() != _simulator->aid(_name)->identifier())
        return;
    _peripheral = peripheral;
    _peripheral->setDelegate(weak_from_this());
    _lastHeard = DispatchQueue::main().now();
    _isSilent = false;
    _server->advertise(advertisement);
}

void AidOnAir::gattServerDidStartAdvertising(bluez::GattServer&)
{
    const auto delegate = _delegate.lock();
    if (!std::exchange(_isAudible, true) && delegate)
        delegate->aidDidBecomeAudible(*this);
}

void AidOnAir::gattServerDidStop(bluez::GattServer&, const std::string& why)
{
    _isAudible = false;
    if (const auto delegate = _delegate.lock())
        delegate->aidCannotBeHeard(*this, why);
}

// Connections

void AidOnAir::gattServerDidConnect(bluez::GattServer& server, const std::string& central)
{
    if (_central)
        return server.disconnectCentral(central);
    _central = central;
    _isListening = false;
    _radio->stopScan();
    server.advertise(std::nullopt);
    if (const auto delegate = _delegate.lock())
        delegate->aidDidConnect(*this, central);
    connectLink();
}

void AidOnAir::gattServerDidDisconnect(bluez::GattServer&, const std::string& central)
{
    if (_central != central)
        return;
    _central.reset();
    _isEnding = false;
    forgetLink();
    if (_peripheral)
        _radio->cancelPeripheralConnection(_peripheral);
    if (const auto delegate = _delegate.lock())
        delegate->aidDidDisconnect(*this, central);
    listen();
}

void AidOnAir::connectLink()
{
    if (!_peripheral)
        return endCentral();
    _radio->connectPeripheral(_peripheral);
    _limit = DispatchTimer::scheduledTimer(DispatchQueue::main(), untilReady, [weak = weak_from_this()] {
        if (const auto self = weak.lock())
            self->endCentral();
    });
}

void AidOnAir::centralManagerDidConnect(CBCentralManager&, const std::shared_ptr<CBPeripheral>& peripheral)
{
    peripheral->discoverServices();
}

void AidOnAir::peripheralDidDiscoverServices(CBPeripheral& peripheral, const MaybeError& error)
{
    if (error)
        return endCentral();
    const auto services = peripheral.services();
    _undiscovered = services.size();
    for (const auto& service : services)
        peripheral.discoverCharacteristics(service);
}

void AidOnAir::peripheralDidDiscoverCharacteristicsFor(
    CBPeripheral&, const std::shared_ptr<CBService>& service, const MaybeError& error)
{
    if (error)
        return endCentral();
    for (const auto& characteristic : service->characteristics())
        _characteristics.emplace(characteristic->uuid(), characteristic);
    if (--_undiscovered == 0)
        linkIsReady();
}

void AidOnAir::linkIsReady()
{
    _limit->invalidate();
    _isReady = true;
    for (const auto& one : _subscribed)
        _peripheral->setNotifyValue(true, _characteristics.at(one));
    for (const auto& step : std::exchange(_waiting, {}))
        step(*this);
}

void AidOnAir::linkDidEnd()
{
    forgetLink();
    endCentral();
}

/// Takes the link away from whoever is connected over the air.
void AidOnAir::endCentral()
{
    if (!_central || std::exchange(_isEnding, true))
        return;
    forgetLink();
    if (_peripheral)
        _radio->cancelPeripheralConnection(_peripheral);
    _server->disconnectCentral(*_central);
}

/// Whoever still waits for an answer hears that it failed.
void AidOnAir::forgetLink()
{
    if (_limit)
        _limit->invalidate();
    _isReady = false;
    _characteristics.clear();
    _waiting.clear();
    _writes.clear();
    _reads.clear();
}

// Values

void AidOnAir::onceReady(Step step)
{
    if (_isReady)
        step(*this);
    else if (_waiting.size() < mostWaiting)
        _waiting.push_back(std::move(step));
}

void AidOnAir::gattServerDidSubscribe(bluez::GattServer&, const CBUUID& characteristic, bool isSubscribed)
{
    if (isSubscribed)
        _subscribed.insert(characteristic);
    else
        _subscribed.erase(characteristic);
    if (_isReady)
        _peripheral->setNotifyValue(isSubscribed, _characteristics.at(characteristic));
}

void AidOnAir::gattServerDidReceiveWrite(bluez::GattServer&, const std::string& central, const CBUUID& characteristic,
    const Data& value, CBCharacteristicWriteType type, bluez::WriteAnswer answer)
{
    if (!isServing(central))
        return answer(bluez::GattError::notPermitted);
    onceReady([characteristic, value, type, answer = std::move(answer)](AidOnAir& self) {
        log(self._name, "written", characteristic, value);
        if (value.size() > self._peripheral->maximumWriteValueLength(type))
            return answer(bluez::GattError::invalidLength);
        if (type == CBCharacteristicWriteType::withResponse)
            self._writes[characteristic].enqueue(answer);
        self._peripheral->writeValue(value, self._characteristics.at(characteristic), type);
    });
}

void AidOnAir::gattServerDidReceiveRead(
    bluez::GattServer&, const std::string& central, const CBUUID& characteristic, bluez::ReadAnswer answer)
{
    if (!isServing(central))
        return;
    onceReady([characteristic, answer = std::move(answer)](AidOnAir& self) {
        self._reads[characteristic].enqueue(answer);
        self._peripheral->readValue(self._characteristics.at(characteristic));
    });
}

void AidOnAir::peripheralDidWriteValueFor(
    CBPeripheral&, const std::shared_ptr<CBCharacteristic>& characteristic, const MaybeError& error)
{
    if (const auto answer = _writes[characteristic->uuid()].dequeue())
        (*answer)(error ? std::optional(bluez::GattError::failed) : std::nullopt);
}

/// The answer to a read and a notification look the same. Each value goes out once, as one or the other, in the order
/// in which they came.
void AidOnAir::peripheralDidUpdateValueFor(
    CBPeripheral&, const std::shared_ptr<CBCharacteristic>& characteristic, const MaybeError& error)
{
    const auto& uuid = characteristic->uuid();
    const auto read = _reads[uuid].dequeue();
    if (error)
        return; // which is what the dropped answer says
    const auto& value = *characteristic->value();
    log(_name, read ? "read" : "notified", uuid, value);
    if (read)
        (*read)(value);
    else
        _server->notify(uuid, value);
}

} // namespace aurisk::tool
