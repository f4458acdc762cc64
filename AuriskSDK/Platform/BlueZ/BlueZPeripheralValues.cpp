#include "AuriskSDK/Platform/BlueZ/BlueZPeripheral.h"
#include "AuriskSDK/Platform/BlueZ/BlueZRadio.h"
#include "AuriskSDK/Shared/Utils/AuriskLog.h"

#include <fmt/format.h>

#include <algorithm>

// What goes to and comes from the characteristics of a connection.

namespace aurisk::bluez {

namespace {

using State = CBPeripheralState;
using Properties = CBCharacteristicProperties;

/// The daemon gives up a transaction of the attribute protocol after 30 s (Core Specification, Vol 3 Part F 3.3.3), and
/// the link with it.
constexpr Seconds operationLimit{ 35 };

BusValues argumentsOf(DataView value, const char* type)
{
    return { Data(value.begin(), value.end()), BusDictionary{ { "type", type } } };
}

} // namespace

// Operations: the daemon does one at a time for a characteristic, and the attribute protocol one for a link

void BlueZPeripheral::enqueue(std::function<void(BlueZPeripheral&)> operation)
{
    _operations.push_back(std::move(operation));
    beginNext();
}

void BlueZPeripheral::beginNext()
{
    while (!_isOperating && !_operations.empty()) {
        const auto operation = std::move(_operations.front());
        _operations.pop_front();
        _isOperating = true;
        operation(*this);
    }
    if (!_isOperating)
        disconnect();
}

void BlueZPeripheral::operationDidEnd()
{
    _isOperating = false;
    beginNext();
}

void BlueZPeripheral::callCharacteristic(const Characteristic& characteristic, const char* member, BusValues arguments,
    std::function<void(BlueZPeripheral&, const BusReply&)> answered)
{
    objects().call(characteristic->path, interface::characteristic, member, std::move(arguments), operationLimit,
        inThisConnection([answered = std::move(answered)](BlueZPeripheral& self, const BusReply& reply) {
            const auto connection = self._connection;
            answered(self, reply);
            if (self._connection == connection)
                self.operationDidEnd();
        }));
}

MaybeError BlueZPeripheral::errorOf(
    const char* what, const CBCharacteristic& characteristic, const BusReply& reply) const
{
    if (!reply.error)
        return std::nullopt;
    return bluezError(fmt::format("{} {} of {}", what, characteristic.uuid().uuidString(), label()), *reply.error);
}

// Values

void BlueZPeripheral::setNotifyValue(bool enabled, const std::shared_ptr<CBCharacteristic>& characteristic)
{
    const auto one = mine(characteristic);
    if (!one)
        return;
    const auto event = &Delegate::peripheralDidUpdateNotificationStateFor;
    if (const auto problem = problemOf(Properties::notify | Properties::indicate, *one))
        return tellSoon(event, characteristic, problem);
    if (one->path.empty()) {
        one->isSubscribed = enabled;
        return tellSoon(event, characteristic, MaybeError());
    }
    enqueue([=](BlueZPeripheral& self) {
        one->isSubscribed = enabled; // now, so that the first value does not come too early
        self.callCharacteristic(
            one, enabled ? "StartNotify" : "StopNotify", {}, [=](BlueZPeripheral& me, const BusReply& reply) {
                const auto error = me.errorOf("subscribing to", *one, reply);
                if (error)
                    one->isSubscribed = false;
                me.tell(event, characteristic, error);
            });
    });
}

void BlueZPeripheral::readValue(const std::shared_ptr<CBCharacteristic>& characteristic)
{
    const auto one = mine(characteristic);
    if (!one)
        return;
    if (const auto problem = problemOf(Properties::read, *one))
        return tellSoon(&Delegate::peripheralDidUpdateValueFor, characteristic, problem);
    if (one->path.empty())
        return DispatchQueue::main().async(inThisConnection([one](BlueZPeripheral& self) {
            if (auto level = self.batteryLevel())
                self.take(one, std::move(*level));
        }));
    enqueue([one](BlueZPeripheral& self) {
        self._reading = one;
        self.callCharacteristic(one, "ReadValue", { BusDictionary{} },
            [one](BlueZPeripheral& me, const BusReply& reply) { me.didRead(one, reply); });
    });
}

/// The daemon tells what has been read as a changed value, too, before it answers: the last one that equals the answer
/// is no notification.
void BlueZPeripheral::didRead(const Characteristic& characteristic, const BusReply& reply)
{
    _reading = nullptr;
    auto heard = std::exchange(_heardWhileReading, {});
    const auto* answer = find<Data>(reply.values, 0);
    if (answer)
        if (const auto echo = std::find(heard.rbegin(), heard.rend(), *answer); echo != heard.rend())
            heard.erase(std::next(echo).base());
    for (auto& value : heard)
        if (characteristic->isSubscribed)
            take(characteristic, std::move(value));
    if (answer)
        return take(characteristic, *answer);
    const auto error = reply.error ? errorOf("reading", *characteristic, reply)
                                   : MaybeError(bluezError(ErrorCode::failed, "The daemon answered with no value."));
    tell(&Delegate::peripheralDidUpdateValueFor, std::shared_ptr<CBCharacteristic>(characteristic), error);
}

void BlueZPeripheral::take(const Characteristic& characteristic, Data value)
{
    if (_state != State::connected)
        return;
    characteristic->setValue(std::move(value));
    tell(&Delegate::peripheralDidUpdateValueFor, std::shared_ptr<CBCharacteristic>(characteristic), MaybeError());
}

void BlueZPeripheral::valueDidChange(const std::string& path, const Data& value)
{
    if (_state != State::connected)
        return;
    if (_reading && _reading->path == path)
        return _heardWhileReading.push_back(value);
    for (const auto& service : _services)
        for (const auto& one : service->characteristics()) {
            const auto characteristic = std::static_pointer_cast<BlueZCharacteristic>(one);
            if (characteristic->path != path)
                continue;
            if (characteristic->isSubscribed)
                take(characteristic, value);
            return;
        }
}

std::optional<Data> BlueZPeripheral::batteryLevel() const
{
    const auto* percent = objects().property<std::uint8_t>(_path, interface::battery, "Percentage");
    return percent ? std::optional(Data{ *percent }) : std::nullopt;
}

/// Where the daemon keeps the battery service for itself it tells the level alone.
void BlueZPeripheral::batteryDidChange()
{
    const auto level = batteryLevel();
    if (level)
        valueDidChange("", *level);
}

void BlueZPeripheral::writeValue(
    DataView value, const std::shared_ptr<CBCharacteristic>& characteristic, CBCharacteristicWriteType type)
{
    const auto one = mine(characteristic);
    if (!one)
        return;
    const bool isAnswered = type == CBCharacteristicWriteType::withResponse;
    auto problem = problemOf(isAnswered ? Properties::write : Properties::writeWithoutResponse, *one);
    if (const auto most = maximumWriteValueLength(type); value.size() > most)
        problem = bluezError(ErrorCode::tooLong,
            fmt::format("A write of {} bytes is longer than the {} that the connection to {} carries.", value.size(),
                most, label()));
    if (!isAnswered)
        return writeCommand(one, value, problem);
    const auto event = &Delegate::peripheralDidWriteValueFor;
    if (problem) // which is told in its turn
        return enqueue([=](BlueZPeripheral& self) {
            DispatchQueue::main().async(self.inThisConnection([=](BlueZPeripheral& me) {
                const auto connection = me._connection;
                me.tell(event, characteristic, problem);
                if (me._connection == connection)
                    me.operationDidEnd();
            }));
        });
    enqueue([=, arguments = argumentsOf(value, "request")](BlueZPeripheral& self) {
        self.callCharacteristic(one, "WriteValue", arguments, [=](BlueZPeripheral& me, const BusReply& reply) {
            me.tell(event, characteristic, me.errorOf("writing to", *one, reply));
        });
    });
}

/// Nobody is told what becomes of it, so the daemon is not asked either: its answer would say no more than that it has
/// it, and the bus keeps the order.
void BlueZPeripheral::writeCommand(const Characteristic& characteristic, DataView value, const MaybeError& problem)
{
    if (problem)
        return AuriskLog::log(problem->localizedDescription);
    enqueue([characteristic, arguments = argumentsOf(value, "command")](BlueZPeripheral& self) {
        self.objects().call(
            characteristic->path, interface::characteristic, "WriteValue", arguments, operationLimit, nullptr);
        self._isOperating = false; // and the next one may begin
    });
}

/// An attribute write takes three bytes of the ATT MTU, and no attribute is longer than 512 (Core Specification, Vol 3
/// Part F 3.4.5 and 3.2.9). Daemons that do not tell the MTU get what every connection can carry.
std::size_t BlueZPeripheral::maximumWriteValueLength(CBCharacteristicWriteType) const
{
    constexpr int header = 3, shortest = 20, longest = 512;
    for (const auto& path : objects().below(_path, interface::characteristic))
        if (const auto* mtu = objects().property<std::uint16_t>(path, interface::characteristic, "MTU"))
            return std::size_t(std::clamp(*mtu - header, shortest, longest));
    return shortest;
}

} // namespace aurisk::bluez
