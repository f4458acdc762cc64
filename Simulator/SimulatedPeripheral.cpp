#include "AuriskSDK/Shared/Utils/AuriskLog.h"
#include "Simulator/SimulatedCentral.h"

#include <algorithm>
#include <utility>

namespace aurisk {

using State = CBPeripheralState;
using Delegate = CBPeripheralDelegate;

SimulatedPeripheral::SimulatedPeripheral(std::weak_ptr<SimulatedCentral> central, std::shared_ptr<SimulatedLink> link)
    : _central(std::move(central))
    , _link(std::move(link))
    , _identifier(_link->aid().identifier())
{
}

// Connection

bool SimulatedPeripheral::beginConnecting()
{
    _connectsAgain = _state == State::disconnecting;
    if (_state != State::disconnected)
        return false;
    _state = State::connecting;
    return true;
}

void SimulatedPeripheral::cancel()
{
    _connectsAgain = false;
    if (_state != State::connecting && _state != State::connected)
        return;
    _state = State::disconnecting;
    _link->cancel(shared_from_this());
}

void SimulatedPeripheral::abandon()
{
    _state = State::disconnected;
    _services.clear();
    _link->abandon(shared_from_this());
}

void SimulatedPeripheral::linkDidConnect()
{
    const auto central = _central.lock();
    if (!central || _state != State::connecting)
        return;
    _state = State::connected;
    central->tell(&CBCentralManagerDelegate::centralManagerDidConnect, shared_from_this());
}

void SimulatedPeripheral::linkDidEnd(const MaybeError& error)
{
    const auto was = std::exchange(_state, State::disconnected);
    const auto central = _central.lock();
    _services.clear();
    if (!central || was == State::disconnected)
        return;

    if (was == State::connecting)
        central->tell(&CBCentralManagerDelegate::centralManagerDidFailToConnect, shared_from_this(), error);
    else
        central->tell(&CBCentralManagerDelegate::centralManagerDidDisconnectPeripheral, shared_from_this(),
            was == State::disconnecting ? std::nullopt : error);
    if (std::exchange(_connectsAgain, false))
        central->connectPeripheral(shared_from_this());
}

// Discovery

/// Asks the aid for something that it answers with a mere yes or no.
void SimulatedPeripheral::ask(std::function<void(SimulatedPeripheral&, const MaybeError&)> answered)
{
    _link->carry(whileAlive([answered](SimulatedPeripheral& self) {
        self._link->send({}, self.whileConnected([answered](SimulatedPeripheral& me, const Data&, bool refused) {
            answered(me, me.refusal(refused));
        }));
    }));
}

void SimulatedPeripheral::discoverServices()
{
    if (_state != State::connected)
        return;
    ask([](SimulatedPeripheral& self, const MaybeError& error) {
        if (!error && self._services.empty())
            self.makeServices();
        self.tell(&Delegate::peripheralDidDiscoverServices, error);
    });
}

void SimulatedPeripheral::makeServices()
{
    for (const auto& service : _link->aid().gattTable())
        _services.push_back(std::make_shared<CBService>(service.uuid, weak_from_this()));
}

void SimulatedPeripheral::discoverCharacteristics(const std::shared_ptr<CBService>& service)
{
    if (!has(service))
        return;
    ask([service](SimulatedPeripheral& self, const MaybeError& error) {
        if (!error && service->characteristics().empty())
            self.makeCharacteristics(service);
        self.tell(&Delegate::peripheralDidDiscoverCharacteristicsFor, service, error);
    });
}

void SimulatedPeripheral::makeCharacteristics(const std::shared_ptr<CBService>& service) const
{
    std::vector<Characteristic> all;
    for (const auto& offered : _link->aid().gattTable())
        if (offered.uuid == service->uuid())
            for (const auto& one : offered.characteristics)
                all.push_back(std::make_shared<CBCharacteristic>(one.uuid, one.properties, service));
    service->setCharacteristics(std::move(all));
}

bool SimulatedPeripheral::has(const std::shared_ptr<CBService>& service) const
{
    return _state == State::connected && std::find(_services.begin(), _services.end(), service) != _services.end();
}

bool SimulatedPeripheral::has(const Characteristic& characteristic) const
{
    const auto service = characteristic ? characteristic->service() : nullptr;
    if (!has(service))
        return false;
    const auto& all = service->characteristics();
    return std::find(all.begin(), all.end(), characteristic) != all.end();
}

// Values

void SimulatedPeripheral::setNotifyValue(bool enabled, const Characteristic& characteristic)
{
    const auto event = &Delegate::peripheralDidUpdateNotificationStateFor;
    if (!has(characteristic))
        return;
    if (const auto problem = problemOf(CBCharacteristicProperties::notify, *characteristic))
        return tellSoon(event, characteristic, problem);

    _link->carry(whileAlive([=](SimulatedPeripheral& self) {
        const auto confirmed = [=](SimulatedPeripheral& me, const Data&, bool refused) {
            me.tell(event, characteristic, me.refusal(refused));
        };
        if (!self._link->send({}, self.whileConnected(confirmed)))
            self._link->aid().didSubscribe(characteristic->uuid(), enabled);
    }));
}

void SimulatedPeripheral::readValue(const Characteristic& characteristic)
{
    const auto event = &Delegate::peripheralDidUpdateValueFor;
    if (!has(characteristic))
        return;
    if (const auto problem = problemOf(CBCharacteristicProperties::read, *characteristic))
        return tellSoon(event, characteristic, problem);

    _link->carry(whileAlive([=](SimulatedPeripheral& self) {
        if (self._link->placed().faults.isSilent)
            return;
        auto value = self._link->aid().read(characteristic->uuid()).value_or(Data{});
        self._link->send(
            std::move(value), self.whileConnected([=](SimulatedPeripheral& me, const Data& read, bool refused) {
                if (!refused)
                    characteristic->setValue(read);
                me.tell(event, characteristic, me.refusal(refused));
            }));
    }));
}

void SimulatedPeripheral::linkDidNotify(const CBUUID& uuid, const Data& value)
{
    if (_state != State::connected)
        return;
    for (const auto& service : std::vector(_services))
        for (const auto& characteristic : std::vector(service->characteristics()))
            if (characteristic->uuid() == uuid) {
                characteristic->setValue(value);
                return tell(&Delegate::peripheralDidUpdateValueFor, characteristic, MaybeError());
            }
}

void SimulatedPeripheral::writeValue(
    DataView value, const Characteristic& characteristic, CBCharacteristicWriteType type)
{
    const bool isAnswered = type == CBCharacteristicWriteType::withResponse;
    if (!has(characteristic))
        return;
    if (const auto problem = problemOfWriting(value.size(), *characteristic, type)) {
        if (isAnswered)
            failWrite(characteristic, problem);
        else
            AuriskLog::log(problem->localizedDescription);
        return;
    }

    bool answers = isAnswered; // once, should the write arrive twice
    _link->send(Data(value.begin(), value.end()),
        whileAlive([=](SimulatedPeripheral& self, const Data& written, bool refused) mutable {
            auto& aid = self._link->aid();
            if (std::exchange(answers, false))
                self.confirmWrite(characteristic, aid.failsWrite(characteristic->uuid(), written, refused));
            if (refused)
                aid.refuse(characteristic->uuid(), written);
            else
                aid.didReceive(characteristic->uuid(), written);
            self._link->aidDidChange();
        }));
}

/// Takes as long as a write that is sent, so that it does not overtake the confirmations of those before it.
void SimulatedPeripheral::failWrite(const Characteristic& characteristic, const MaybeError& problem)
{
    _link->carry(whileAlive([=](SimulatedPeripheral& self) {
        self._link->carry(self.whileConnected(
            [=](SimulatedPeripheral& me) { me.tell(&Delegate::peripheralDidWriteValueFor, characteristic, problem); }));
    }));
}

void SimulatedPeripheral::confirmWrite(const Characteristic& characteristic, bool failed)
{
    _link->send({}, whileConnected([=](SimulatedPeripheral& self, const Data&, bool refused) {
        self.tell(&Delegate::peripheralDidWriteValueFor, characteristic, self.refusal(failed || refused));
    }));
}

// Problems

MaybeError SimulatedPeripheral::refusal(bool refused) const
{
    if (!refused)
        return std::nullopt;
    return simulatedError(SimulatedErrorCode::requestRefused, _link->aid().name() + " refused the request.");
}

MaybeError SimulatedPeripheral::problemOf(
    CBCharacteristicProperties needed, const CBCharacteristic& characteristic) const
{
    if (contains(characteristic.properties(), needed))
        return std::nullopt;
    return simulatedError(SimulatedErrorCode::notPermitted,
        "Characteristic " + characteristic.uuid().uuidString() + " does not permit that.");
}

MaybeError SimulatedPeripheral::problemOfWriting(
    std::size_t length, const CBCharacteristic& characteristic, CBCharacteristicWriteType type) const
{
    const auto needed = type == CBCharacteristicWriteType::withResponse
        ? CBCharacteristicProperties::write
        : CBCharacteristicProperties::writeWithoutResponse;
    const auto most = maximumWriteValueLength(type);
    if (length <= most)
        return problemOf(needed, characteristic);
    return simulatedError(SimulatedErrorCode::tooLong,
        "A write of " + std::to_string(length) + " bytes is longer than the " + std::to_string(most)
            + " that this connection carries.");
}

} // namespace aurisk
