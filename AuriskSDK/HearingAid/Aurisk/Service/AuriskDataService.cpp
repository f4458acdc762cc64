#include "AuriskSDK/HearingAid/Aurisk/Service/AuriskDataService.h"

#include "AuriskSDK/Shared/Utils/HexToData.h"
#include "AuriskSDK/Shared/Utils/Precondition.h"

#include <fmt/format.h>

namespace aurisk {

std::shared_ptr<AuriskDataService> AuriskDataService::create(
    std::string tag, std::shared_ptr<CBPeripheral> peripheral, std::shared_ptr<CBService> service)
{
    auto made = std::make_shared<AuriskDataService>(Key{}, std::move(tag), std::move(peripheral), std::move(service));
    made->peripheral()->discoverCharacteristics(made->service());
    made->log(fmt::format("-- {} init -- ", fmt::ptr(made.get())));
    made->_messageHandler
        = Handler::create(DispatchQueue::main(), [weak = std::weak_ptr(made)](const AuriskRequest& request) {
              if (const auto self = weak.lock())
                  self->send(request);
          });
    return made;
}

void AuriskDataService::request(const AuriskRequest& request, Seconds timeout, Complete complete)
{
    expectMainQueue();
    auto weak = std::weak_ptr(std::static_pointer_cast<AuriskDataService>(shared_from_this()));
    _messageHandler->excute(request, timeout,
        [weak = std::move(weak), request, complete = std::move(complete)](const std::optional<AuriskResult>& answer) {
            const auto result = answer ? *answer : AuriskResult::error(AuriskResultError::timeout{});
            if (const auto self = weak.lock())
                if (const auto delegate = self->_delegate.lock())
                    delegate->didFinishRequest(request, result);
            if (complete)
                complete(result);
        });
}

void AuriskDataService::request(const std::vector<AuriskRequest>& requests, std::function<void()> complete)
{
    const auto group = std::make_shared<DispatchGroup>();
    for (const auto& each : requests) {
        group->enter();
        request(each, defaultTimeout, [group](const AuriskResult&) { group->leave(); });
    }
    if (complete)
        group->notify(DispatchQueue::main(), std::move(complete));
}

void AuriskDataService::didDiscoverCharacteristics(
    const std::vector<std::shared_ptr<CBCharacteristic>>& characteristics, const MaybeError&)
{
    static const CBUUID requests(0xAE01), replies(0xAE02);
    for (const auto& characteristic : characteristics) {
        if (characteristic->uuid() == requests)
            _writeCharacteristic = characteristic;
        else if (characteristic->uuid() == replies) {
            _notifyCharacteristic = characteristic;
            peripheral()->setNotifyValue(true, characteristic);
        }
    }
}

/// Whatever the error says: from here on the device can answer, or requests end by their time-outs.
void AuriskDataService::didUpdateNotificationStateForCharacteristic(
    const std::shared_ptr<CBCharacteristic>&, const MaybeError&)
{
    _messageHandler->launch();
}

void AuriskDataService::send(const AuriskRequest& request)
{
    const auto bytes = request.requestRawData().toData();
    write(bytes);
    if (const auto delegate = _delegate.lock())
        delegate->didSendRequest(request);
    if (AuriskLog::enable())
        log(fmt::format("{} send data ----> {}", fmt::ptr(this), ask_hexadecimal(bytes)));
}

void AuriskDataService::write(DataView data)
{
    if (!_writeCharacteristic)
        return;
    if (peripheral()->state() != CBPeripheralState::connected) {
        log("write failed because peripheral is disconnected");
        return;
    }
    const bool withoutResponse
        = contains(_writeCharacteristic->properties(), CBCharacteristicProperties::writeWithoutResponse);
    peripheral()->writeValue(data, _writeCharacteristic,
        withoutResponse ? CBCharacteristicWriteType::withoutResponse : CBCharacteristicWriteType::withResponse);
}

void AuriskDataService::didUpdateValueForCharacteristic(
    const std::shared_ptr<CBCharacteristic>& characteristic, CBPeripheral&, const MaybeError&)
{
    const auto value = characteristic->value();
    if (!value)
        return;
    const auto result = decodeFromDevice("notification", [&]() -> std::optional<AuriskResult> {
        const auto frame = AuriskRawData::parse(*value);
        if (!frame)
            return std::nullopt;
        return frame->toResult();
    });
    if (!result)
        return;
    if (AuriskLog::enable())
        log("receive data ----> " + ask_hexadecimal(*value));

    const auto* notified = result->isSuccess() ? result->data()->as<AuriskResponse::didNotify>() : nullptr;
    if (!notified)
        _messageHandler->excuted(result);
    else if (const auto delegate = _delegate.lock())
        delegate->didNotify(notified->program, notified->volume);
}

} // namespace aurisk
