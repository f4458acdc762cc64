#include "AuriskSDK/Platform/BlueZ/BlueZGattServer.h"
#include "AuriskSDK/Platform/BlueZ/BusAnswer.h"

// What the daemon asks of a server: its objects, and what centrals want.

namespace aurisk::bluez {

namespace {

BusError busError(GattError error)
{
    switch (error) {
    case GattError::failed: break;
    case GattError::notPermitted: return { "org.bluez.Error.NotPermitted", "This is not permitted." };
    case GattError::invalidLength: return { "org.bluez.Error.InvalidValueLength", "The value has a wrong length." };
    case GattError::notSupported: return { "org.bluez.Error.NotSupported", "This is not supported." };
    }
    return { "org.bluez.Error.Failed", "This has failed." };
}

const BusError unknownMethod{ "org.freedesktop.DBus.Error.UnknownMethod", "There is no such method." };

} // namespace

void BlueZGattServer::called(const BusRequest& request)
{
    const auto answer = std::make_shared<BusAnswer>(_objects->bus().weak_from_this(), request);
    const auto is = [&](const char* interface, const char* member) {
        return request.interface == interface && request.member == member;
    };
    if (is(interface::objectManager, "GetManagedObjects"))
        return answer->give({ _table.objects() });
    if (request.interface == interface::properties)
        return tellProperties(request, *answer);
    if (is(interface::advertisement, "Release")) {
        answer->give({});
        return _advertiser->isForgotten();
    }
    const auto* characteristic = _table.characteristicAt(request.path);
    if (!characteristic)
        return answer->refuse(unknownMethod);
    if (is(interface::characteristic, "ReadValue"))
        return read(characteristic->uuid, request, answer);
    if (is(interface::characteristic, "WriteValue"))
        return write(*characteristic, request, answer);
    const bool begins = is(interface::characteristic, "StartNotify");
    if (!begins && !is(interface::characteristic, "StopNotify"))
        return answer->refuse(unknownMethod);
    answer->give({});
    subscribe(characteristic->uuid, begins);
}

void BlueZGattServer::tellProperties(const BusRequest& request, BusAnswer& answer) const
{
    const auto* interface = find<std::string>(request.arguments, 0);
    const auto object = _table.objects().find(request.path);
    BusInterfaces interfaces;
    if (object != _table.objects().end())
        interfaces = object->second;
    else if (request.path == _root + "/advertisement")
        interfaces.emplace(interface::advertisement, _advertiser->properties());

    const auto properties = interface ? interfaces.find(*interface) : interfaces.end();
    if (properties == interfaces.end())
        return answer.refuse({ "org.freedesktop.DBus.Error.UnknownInterface", "There is no such interface." });
    if (request.member == "GetAll")
        return answer.give({ properties->second });
    const auto* name = find<std::string>(request.arguments, 1);
    const auto value = name ? properties->second.find(*name) : properties->second.end();
    if (request.member != "Get" || value == properties->second.end())
        return answer.refuse({ "org.freedesktop.DBus.Error.UnknownProperty", "There is no such property." });
    answer.give({ BusVariant(value->second) });
}

/// Whose request it is. Whoever makes one is a central, however it came to be connected.
std::string BlueZGattServer::centralOf(const BusDictionary& options)
{
    const auto* device = find<ObjectPath>(options, "device");
    return device ? connected(device->text) : "";
}

void BlueZGattServer::read(const CBUUID& characteristic, const BusRequest& request, std::shared_ptr<BusAnswer> answer)
{
    const auto* given = find<BusDictionary>(request.arguments, 0);
    const auto options = given ? *given : BusDictionary();
    const auto* offset = find<std::uint16_t>(options, "offset");
    const auto answerFrom = [answer = std::move(answer), from = offset ? *offset : std::size_t(0)](const Data& value) {
        if (from > value.size())
            return answer->refuse({ "org.bluez.Error.InvalidOffset", "The value is shorter." });
        answer->give({ Data(value.begin() + std::ptrdiff_t(from), value.end()) });
    };
    tell(&GattServerDelegate::gattServerDidReceiveRead, centralOf(options), characteristic, answerFrom);
}

/// The daemon puts long writes together by itself: a part of one is nothing that it sends. Some versions of it do not
/// say what type a write is of, and confirm by themselves whatever could have been without response.
void BlueZGattServer::write(
    const GattCharacteristic& characteristic, const BusRequest& request, std::shared_ptr<BusAnswer> answer)
{
    const auto* value = find<Data>(request.arguments, 0);
    const auto* options = find<BusDictionary>(request.arguments, 1);
    if (!value || !options)
        return answer->refuse(busError(GattError::failed));
    if (const auto* offset = find<std::uint16_t>(*options, "offset"); offset && *offset > 0)
        return answer->refuse(busError(GattError::notSupported));

    const auto* type = find<std::string>(*options, "type");
    const bool isAnswered = type
        ? *type != "command"
        : !contains(characteristic.properties, CBCharacteristicProperties::writeWithoutResponse);
    if (!isAnswered)
        answer->give({}); // so that the next one is not held up
    const auto give = [answer = std::move(answer)](std::optional<GattError> error) {
        if (error)
            answer->refuse(busError(*error));
        else
            answer->give({});
    };
    tell(&GattServerDelegate::gattServerDidReceiveWrite, centralOf(*options), characteristic.uuid, *value,
        isAnswered ? CBCharacteristicWriteType::withResponse : CBCharacteristicWriteType::withoutResponse, give);
}

void BlueZGattServer::subscribe(const CBUUID& characteristic, bool isSubscribed)
{
    const bool isNews
        = isSubscribed ? _subscribed.insert(characteristic).second : _subscribed.erase(characteristic) > 0;
    if (isNews)
        tell(&GattServerDelegate::gattServerDidSubscribe, characteristic, isSubscribed);
}

} // namespace aurisk::bluez
