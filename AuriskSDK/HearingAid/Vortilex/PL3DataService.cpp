#include "AuriskSDK/HearingAid/Vortilex/PL3DataService.h"

#include "AuriskSDK/HearingAid/Vortilex/Data/HDLC.h"
#include "AuriskSDK/Shared/Utils/Precondition.h"

#include <fmt/format.h>

#include <utility>

namespace aurisk {

namespace {

/// Bluetooth Core Specification, Vol 3, Part F, 3.3.3: a confirmation that takes longer never comes.
constexpr Seconds longestTransaction{ 30 };

} // namespace

std::shared_ptr<PL3DataService> PL3DataService::create(
    std::string tag, std::shared_ptr<CBPeripheral> peripheral, std::shared_ptr<CBService> service)
{
    auto made = std::make_shared<PL3DataService>(Key{}, std::move(tag), std::move(peripheral), std::move(service));
    made->peripheral()->discoverCharacteristics(made->service());
    made->peripheral()->discoverCharacteristics(made->service()); // twice, as these devices have always been asked
    made->_messageHandler
        = Handler::create(DispatchQueue::main(), [weak = std::weak_ptr(made)](const PL3Request& request) {
              if (const auto self = weak.lock())
                  self->send(request);
          });
    return made;
}

void PL3DataService::request(const PL3Request& request, Seconds timeout, Complete complete)
{
    expectMainQueue();
    auto weak = std::weak_ptr(std::static_pointer_cast<PL3DataService>(shared_from_this()));
    _messageHandler->excute(request, timeout,
        [weak = std::move(weak), request, complete = std::move(complete)](const std::optional<PL3Result>& answer) {
            const auto result = answer.value_or(PL3Result::error(PL3Error::timeout));
            if (const auto self = weak.lock()) {
                for (auto& piece : self->_unconfirmed)
                    piece.ends.reset(); // a confirmation that comes after this ends nothing
                if (const auto delegate = self->_delegate.lock())
                    delegate->didFinishRequest(request, result);
            }
            if (complete)
                complete(result);
        });
}

void PL3DataService::didDiscoverCharacteristics(
    const std::vector<std::shared_ptr<CBCharacteristic>>& characteristics, const MaybeError&)
{
    for (const auto& characteristic : characteristics)
        if (characteristic->uuid() == microGattCharactUUID) {
            _microGattCharact = characteristic;
            if (contains(characteristic->properties(), CBCharacteristicProperties::notify))
                peripheral()->setNotifyValue(true, characteristic);
        }
}

/// Whatever the error says: from here on the device can answer, or requests end by their time-outs.
void PL3DataService::didUpdateNotificationStateForCharacteristic(
    const std::shared_ptr<CBCharacteristic>&, const MaybeError&)
{
    _messageHandler->launch();
}

void PL3DataService::send(const PL3Request& request)
{
    if (!_microGattCharact) {
        log("No uisMicroGatt characteristic found");
        return;
    }
    CHDLC frame;
    frame.create(rawValue(request.command), request.data ? DataView(*request.data) : DataView(), request.read);

    forgetLostPieces();
    bool endsWrite = !request.read;
    while (frame.moreData()) {
        const bool isFirst = std::exchange(endsWrite, false);
        _unconfirmed.push_back({ DispatchQueue::main().now(), isFirst ? std::optional(request) : std::nullopt });
        peripheral()->writeValue(frame.getHDLC(), _microGattCharact, CBCharacteristicWriteType::withResponse);
    }
}

void PL3DataService::forgetLostPieces()
{
    const auto oldest = DispatchQueue::main().now() - longestTransaction;
    while (!_unconfirmed.empty() && _unconfirmed.front().sent < oldest)
        _unconfirmed.pop_front();
}

void PL3DataService::didWriteValueForCharacteristic(const std::shared_ptr<CBCharacteristic>&, const MaybeError& error)
{
    forgetLostPieces();
    if (_unconfirmed.empty())
        return;
    const auto written = std::exchange(_unconfirmed.front().ends, std::nullopt);
    _unconfirmed.pop_front();
    if (!written)
        return;
    if (error) {
        _messageHandler->excuted(PL3Result::error(PL3Error::unknown));
        return;
    }
    precondition(written->data.has_value(), "a write of {} has no data", caseName(written->command));
    _messageHandler->excuted(PL3Result::success({ written->command, *written->data }));
}

void PL3DataService::didUpdateValueForCharacteristic(
    const std::shared_ptr<CBCharacteristic>& characteristic, CBPeripheral&, const MaybeError&)
{
    const auto value = characteristic->value();
    if (!value)
        return;
    CHDLC frame;
    frame.parse(*value);
    const auto command = fromRawValue<PL3Command>(frame.rcvdCommand()).value_or(PL3Command::unknown);
    const auto& data = frame.rcvdPayload();

    const auto request = _messageHandler->currentValue();
    const bool isAnswer = request && request->read && _messageHandler->excuted(PL3Result::success({ command, data }));
    if (!isAnswer)
        if (const auto delegate = _delegate.lock())
            delegate->didNotify(command, data);
    if (AuriskLog::enable())
        log(fmt::format("{} Characteristic >>> [{}]", name(command), fmt::join(data, ", ")));
}

} // namespace aurisk
