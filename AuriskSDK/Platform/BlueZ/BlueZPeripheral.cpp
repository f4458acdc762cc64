#include "AuriskSDK/Platform/BlueZ/BlueZPeripheral.h"

#include "AuriskSDK/Platform/BlueZ/BlueZCentral.h"
#include "AuriskSDK/Platform/BlueZ/BlueZRadio.h"
#include "AuriskSDK/Platform/BlueZ/GattFlags.h"
#include "AuriskSDK/Shared/Utils/AuriskLog.h"
#include "AuriskSDK/Shared/Utils/HexToData.h"

#include <fmt/format.h>

#include <algorithm>

namespace aurisk::bluez {

namespace {

using State = CBPeripheralState;
using Properties = CBCharacteristicProperties;

/// How long operations that were asked for before the end of a connection may take.
constexpr Seconds drainLimit{ 1 };

/// How long it may take from the end of a service to the end of its device's connection.
constexpr Seconds vanishedPatience{ 0.5 };

/// How long the daemon may take to read a battery level of its own.
constexpr Seconds batteryPatience{ 1 };

const CBUUID batteryService(0x180F), batteryLevelCharacteristic(0x2A19);

/// A UUID of version 8, which is the maker's own (RFC 9562, 5.8), with the device's address in its last six bytes.
CBUUID identifierOf(const std::string& address)
{
    CBUUID::Bytes bytes = { 0xB1, 0x5E, 0x00, 0x00, 0xA1, 0xD5, 0x80, 0x00, 0x80, 0x00 };
    auto digits = address;
    std::erase(digits, ':');
    const auto six = ask_hexadecimal(digits).value_or(Data{});
    std::copy_n(six.begin(), std::min<std::size_t>(six.size(), 6), bytes.begin() + 10);
    return CBUUID(bytes);
}

} // namespace

std::shared_ptr<BlueZPeripheral> BlueZPeripheral::create(std::weak_ptr<BlueZCentral> central,
    std::shared_ptr<BlueZRadio> radio, const std::string& address, std::string devicePath)
{
    return std::make_shared<BlueZPeripheral>(
        Key(), std::move(central), std::move(radio), address, std::move(devicePath));
}

BlueZPeripheral::BlueZPeripheral(Key, std::weak_ptr<BlueZCentral> central, std::shared_ptr<BlueZRadio> radio,
    const std::string& address, std::string devicePath)
    : _central(std::move(central))
    , _radio(std::move(radio))
    , _identifier(identifierOf(address))
    , _path(std::move(devicePath))
    , _lastName(name())
{
}

BlueZPeripheral::~BlueZPeripheral() { abandon(); }

BlueZObjects& BlueZPeripheral::objects() const { return _radio->objects(); }

std::optional<std::string> BlueZPeripheral::name() const
{
    const auto* name = objects().property<std::string>(_path, interface::device, "Name");
    return name ? std::optional(*name) : _lastName;
}

std::string BlueZPeripheral::label() const { return name().value_or(_identifier.uuidString()); }

// Connections

void BlueZPeripheral::enter(State state)
{
    const bool wasFree = _state == State::disconnected;
    _state = state;
    if (wasFree && state != State::disconnected)
        _radio->didOccupy(_path);
    if (!wasFree && state == State::disconnected)
        _radio->didFree(_path);
}

void BlueZPeripheral::connect()
{
    if (_state == State::disconnecting)
        _connectsAgain = true;
    if (_state != State::disconnected)
        return;
    enter(State::connecting);
    if (_radio->state() == CBManagerState::poweredOn)
        return _radio->connector().connect(shared_from_this(), _radio->options().connectionLimit);
    DispatchQueue::main().async(inThisConnection([](BlueZPeripheral& self) {
        self.connectionFailed(bluezError(ErrorCode::radioOff, "The radio is not powered on."));
    }));
}

void BlueZPeripheral::connectionIsMade()
{
    const auto self = shared_from_this();
    _lastName = name();
    enter(State::connected);
    if (const auto central = _central.lock())
        central->tell(&CBCentralManagerDelegate::centralManagerDidConnect, std::shared_ptr<CBPeripheral>(self));
}

void BlueZPeripheral::connectionFailed(const BluetoothError& error) { end(error); }

void BlueZPeripheral::connectionIsGivenUp()
{
    if (_state == State::disconnecting)
        end(std::nullopt);
}

void BlueZPeripheral::cancel()
{
    _connectsAgain = false;
    if (_state == State::connecting) {
        enter(State::disconnecting);
        if (!_radio->connector().cancel(*this)) // it has failed, which was to be told soon
            DispatchQueue::main().async(inThisConnection([](BlueZPeripheral& self) { self.end(std::nullopt); }));
    } else if (_state == State::connected) {
        enter(State::disconnecting);
        _endsOnceIdle = true;
        DispatchQueue::main().asyncAfter(
            drainLimit, inThisConnection([](BlueZPeripheral& self) { self.disconnect(); }));
        beginNext();
    }
}

/// Ends the link once what was asked for before is done.
void BlueZPeripheral::disconnect()
{
    if (!std::exchange(_endsOnceIdle, false))
        return;
    objects().call(_path, interface::device, "Disconnect", {}, disconnectLimit,
        inThisConnection([](BlueZPeripheral& self, const BusReply& reply) {
            if (reply.error)
                AuriskLog::log(reply.error->message);
            self.end(std::nullopt);
        }));
}

void BlueZPeripheral::linkDidGo(const BluetoothError& error)
{
    if (!_radio->connector().isTrying(*this)) // which tells by itself what becomes of an attempt
        end(error);
}

/// A device that has changed its services is connected anew, or nothing that it is asked would arrive. Where the device
/// goes as a whole, word of that is on its way.
void BlueZPeripheral::objectDidVanish(const std::string& path)
{
    if (_state != State::connected || !uses(path) || std::exchange(_isOutdated, true))
        return;
    DispatchQueue::main().asyncAfter(vanishedPatience, inThisConnection([](BlueZPeripheral& self) {
        self.objects().call(self._path, interface::device, "Disconnect", {}, disconnectLimit, nullptr);
        self.end(bluezError(ErrorCode::linkLost, self.label() + " has changed its services."));
    }));
}

/// The connection, or the attempt at one, is over. There is no error where the host asked for that.
void BlueZPeripheral::end(const MaybeError& error)
{
    const auto self = shared_from_this();
    const auto before = _state;
    if (before == State::disconnected)
        return;
    forgetConnection();
    if (const auto central = _central.lock()) {
        const std::shared_ptr<CBPeripheral> peripheral = self;
        if (before == State::connecting)
            central->tell(&CBCentralManagerDelegate::centralManagerDidFailToConnect, peripheral, error);
        else
            central->tell(&CBCentralManagerDelegate::centralManagerDidDisconnectPeripheral, peripheral,
                before == State::disconnecting ? MaybeError() : error);
    }
    if (std::exchange(_connectsAgain, false))
        connect();
}

/// Ends whatever there is, and nobody is told.
void BlueZPeripheral::abandon()
{
    _connectsAgain = false;
    if (_state == State::disconnected)
        return;
    if (_state == State::connected || _endsOnceIdle)
        objects().call(_path, interface::device, "Disconnect", {}, disconnectLimit, nullptr);
    forgetConnection();
    _radio->connector().abandon(*this);
}

void BlueZPeripheral::forgetConnection()
{
    ++_connection;
    _services.clear();
    _operations.clear();
    _isOperating = false;
    _isOutdated = _endsOnceIdle = false;
    _reading = nullptr;
    _heardWhileReading.clear();
    enter(State::disconnected);
}

// Services and characteristics

void BlueZPeripheral::discoverServices()
{
    if (_state == State::connected)
        DispatchQueue::main().async(inThisConnection([](BlueZPeripheral& self) { self.didAskForServices(true); }));
}

void BlueZPeripheral::didAskForServices(bool mayWait)
{
    if (mayWait && isBatteryLate())
        return DispatchQueue::main().asyncAfter(
            batteryPatience, inThisConnection([](BlueZPeripheral& self) { self.didAskForServices(false); }));
    if (_services.empty())
        makeServices();
    tell(&Delegate::peripheralDidDiscoverServices, MaybeError());
}

/// Some daemons keep the battery service of a device for themselves, and tell the level a little later.
bool BlueZPeripheral::isBatteryLate() const
{
    const auto* offered = objects().property<std::vector<std::string>>(_path, interface::device, "UUIDs");
    if (!_services.empty() || !offered || batteryLevel())
        return false;
    const auto isBattery = [](const std::string& uuid) { return CBUUID::fromString(uuid) == batteryService; };
    const auto isShown = [&](const std::string& path) {
        const auto* uuid = objects().property<std::string>(path, interface::service, "UUID");
        return uuid && isBattery(*uuid);
    };
    const auto shown = objects().below(_path, interface::service);
    return std::any_of(offered->begin(), offered->end(), isBattery)
        && std::none_of(shown.begin(), shown.end(), isShown);
}

/// Those that are said to be secondary, too: the daemon (5.66) takes primary services for that where it remembers
/// others at their handles, as after an update that has changed the table.
void BlueZPeripheral::makeServices()
{
    bool hasBattery = false;
    for (const auto& path : objects().below(_path, interface::service)) {
        const auto* text = objects().property<std::string>(path, interface::service, "UUID");
        const auto uuid = text ? CBUUID::fromString(*text) : std::nullopt;
        if (!uuid)
            continue;
        hasBattery = hasBattery || *uuid == batteryService;
        _services.push_back(std::make_shared<BlueZService>(*uuid, weak_from_this(), path));
    }
    if (!hasBattery && batteryLevel())
        _services.push_back(std::make_shared<BlueZService>(batteryService, weak_from_this(), ""));
}

void BlueZPeripheral::discoverCharacteristics(const std::shared_ptr<CBService>& service)
{
    if (!has(service))
        return;
    DispatchQueue::main().async(inThisConnection([service](BlueZPeripheral& self) {
        if (service->characteristics().empty())
            self.makeCharacteristics(service);
        self.tell(&Delegate::peripheralDidDiscoverCharacteristicsFor, service, MaybeError());
    }));
}

void BlueZPeripheral::makeCharacteristics(const std::shared_ptr<CBService>& service) const
{
    const auto& servicePath = static_cast<const BlueZService&>(*service).path;
    std::vector<std::shared_ptr<CBCharacteristic>> all;
    if (servicePath.empty())
        all.push_back(std::make_shared<BlueZCharacteristic>(
            batteryLevelCharacteristic, Properties::read | Properties::notify, service, ""));
    else
        for (const auto& path : objects().below(servicePath, interface::characteristic)) {
            const auto* text = objects().property<std::string>(path, interface::characteristic, "UUID");
            const auto* words = objects().property<std::vector<std::string>>(path, interface::characteristic, "Flags");
            if (const auto uuid = text ? CBUUID::fromString(*text) : std::nullopt; uuid && words)
                all.push_back(std::make_shared<BlueZCharacteristic>(*uuid, propertiesOf(*words), service, path));
        }
    service->setCharacteristics(std::move(all));
}

bool BlueZPeripheral::has(const std::shared_ptr<CBService>& service) const
{
    return _state == State::connected && std::find(_services.begin(), _services.end(), service) != _services.end();
}

/// Whether a service or a characteristic that has been handed out is that object.
bool BlueZPeripheral::uses(const std::string& path) const
{
    return std::any_of(_services.begin(), _services.end(), [&](const auto& service) {
        const auto& all = service->characteristics();
        return static_cast<const BlueZService&>(*service).path == path
            || std::any_of(all.begin(), all.end(),
                [&](const auto& one) { return static_cast<const BlueZCharacteristic&>(*one).path == path; });
    });
}

/// The characteristic, where it is one of this connection.
BlueZPeripheral::Characteristic BlueZPeripheral::mine(const std::shared_ptr<CBCharacteristic>& characteristic) const
{
    const auto service = characteristic ? characteristic->service() : nullptr;
    if (!has(service))
        return nullptr;
    const auto& all = service->characteristics();
    const auto found = std::find(all.begin(), all.end(), characteristic);
    return found == all.end() ? nullptr : std::static_pointer_cast<BlueZCharacteristic>(*found);
}

MaybeError BlueZPeripheral::problemOf(Properties needed, const CBCharacteristic& characteristic) const
{
    if (contains(characteristic.properties(), needed))
        return std::nullopt;
    return bluezError(ErrorCode::notPermitted,
        fmt::format("Characteristic {} of {} does not permit that.", characteristic.uuid().uuidString(), label()));
}

} // namespace aurisk::bluez
