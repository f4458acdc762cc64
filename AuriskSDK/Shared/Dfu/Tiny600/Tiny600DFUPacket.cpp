#include "AuriskSDK/Shared/Dfu/Tiny600/Tiny600DFUPacket.h"

#include "AuriskSDK/Shared/Utils/AuriskLog.h"
#include "AuriskSDK/Shared/Utils/HexToData.h"
#include "AuriskSDK/Shared/Utils/Precondition.h"

#include <fmt/core.h>

#include <algorithm>

namespace aurisk {

namespace {

std::shared_ptr<CBPeripheral> peripheralOf(const CBCharacteristic& characteristic)
{
    const auto service = characteristic.service();
    return service ? service->peripheral() : nullptr;
}

} // namespace

std::shared_ptr<Tiny600DFUPacket> Tiny600DFUPacket::create(
    std::shared_ptr<CBCharacteristic> writeCharacteristic, std::shared_ptr<CBCharacteristic> notifyCharacteristic)
{
    return std::make_shared<Tiny600DFUPacket>(Key{}, std::move(writeCharacteristic), std::move(notifyCharacteristic));
}

Tiny600DFUPacket::Tiny600DFUPacket(
    Key, std::shared_ptr<CBCharacteristic> writeCharacteristic, std::shared_ptr<CBCharacteristic> notifyCharacteristic)
    : _writeCharacteristic(std::move(writeCharacteristic))
    , _notifyCharacteristic(std::move(notifyCharacteristic))
{
    if (const auto peripheral = peripheralOf(*_writeCharacteristic))
        _packetSize = static_cast<std::uint32_t>(
            std::min<std::size_t>(peripheral->maximumWriteValueLength(CBCharacteristicWriteType::withoutResponse),
                Tiny600DFUFrame::largestPacket));
}

void Tiny600DFUPacket::expectSendable(const DFUFirmware& firmware)
{
    const auto size = firmware.totalSize;
    precondition(size > 0 && std::cmp_less_equal(size, largestImage), "a firmware image is 1 to {} bytes, not {}",
        largestImage, size);
}

// Steps

void Tiny600DFUPacket::begin(Success onSuccess, Report onError)
{
    _success = std::move(onSuccess);
    _report = std::move(onError);
}

void Tiny600DFUPacket::enableNotifications(Success onSuccess, Report onError)
{
    ++_update;
    _finalOutcomes = 0;
    _isValidating = false;
    _complete = nullptr;
    begin(std::move(onSuccess), std::move(onError));
    const auto peripheral = reachedPeripheral(*_notifyCharacteristic);
    if (!peripheral)
        return;
    const auto uuid = _notifyCharacteristic->uuid().uuidString();
    AuriskLog::log(fmt::format("Enabling notifications for {}...", uuid));
    AuriskLog::log(fmt::format("peripheral.setNotifyValue(true, for: {})", uuid));
    peripheral->setNotifyValue(true, _notifyCharacteristic);
}

void Tiny600DFUPacket::sendStartDfu(const DFUFirmware& firmware, Success onSuccess, Report onError)
{
    expectSendable(firmware);
    const auto frame = Tiny600DFUFrame::start(firmware, _packetSize);
    begin(std::move(onSuccess), std::move(onError));
    const auto peripheral = reachedPeripheral(*_writeCharacteristic);
    if (!peripheral)
        return;
    _upload = {};
    _totalBytes = static_cast<std::uint32_t>(firmware.totalSize);
    write(*peripheral, frame);
}

void Tiny600DFUPacket::sendNext(const DFUFirmware& packetsOf, std::weak_ptr<DFUProgressDelegate> andReportProgressTo,
    DispatchQueue& queue, Complete onUploadComplete, Success onSuccess, Report onError)
{
    expectSendable(packetsOf);
    const auto frame = Tiny600DFUFrame::packet(packetsOf, _packetSize, _upload.seqSent, _upload.bytesSent);
    begin(std::move(onSuccess), std::move(onError));
    _complete = std::move(onUploadComplete);
    _queue = &queue;
    _progressDelegate = std::move(andReportProgressTo);
    const auto peripheral = reachedPeripheral(*_writeCharacteristic);
    if (!peripheral)
        return;
    _totalBytes = static_cast<std::uint32_t>(packetsOf.totalSize);
    _upload.currentBytes = static_cast<std::uint32_t>(frame.size()) - Tiny600DFUFrame::overhead;
    if (!_upload.startTime) {
        _upload.startTime = _upload.lastTime = DispatchQueue::main().now();
        tellProgress(0, 0, 0);
    }
    write(*peripheral, frame);
}

void Tiny600DFUPacket::sendValidateData(
    const DFUFirmware& firmware, Complete onComplete, Success onSuccess, Report onError)
{
    begin(std::move(onSuccess), std::move(onError));
    _complete = std::move(onComplete);
    _isValidating = true;
    if (const auto peripheral = reachedPeripheral(*_writeCharacteristic))
        write(*peripheral, Tiny600DFUFrame::validate(firmware), "), for: "); // the bracket is what readers of logs know
}

/// The step fails where there is none.
std::shared_ptr<CBPeripheral> Tiny600DFUPacket::reachedPeripheral(const CBCharacteristic& characteristic) const
{
    auto peripheral = peripheralOf(characteristic);
    if (!peripheral)
        fail(DFUError::initFailure, "Assert characteristic.service?.peripheral != nil failed");
    return peripheral;
}

void Tiny600DFUPacket::write(CBPeripheral& peripheral, const Data& frame, std::string_view beforeUuid) const
{
    if (AuriskLog::enable())
        AuriskLog::log(fmt::format("peripheral.writeValue(0x{}{}{}, type: .withoutResponse)", ask_hexadecimal(frame),
            beforeUuid, _writeCharacteristic->uuid().uuidString()));
    peripheral.writeValue(frame, _writeCharacteristic, CBCharacteristicWriteType::withoutResponse);
}

// Answers

void Tiny600DFUPacket::peripheralDidUpdateNotificationStateFor(
    CBPeripheral&, const std::shared_ptr<CBCharacteristic>& characteristic, const MaybeError& error)
{
    if (error) {
        AuriskLog::log("Enabling notifications failed. Check if Service Changed service is enabled.");
        AuriskLog::e(*error);
        return fail(DFUError::enablingNotificationsFailed, "Enabling notifications failed");
    }
    AuriskLog::log("Notifications enabled for " + characteristic->uuid().uuidString());
    AuriskLog::log("DFU Control Point notifications enabled");
    succeed();
}

void Tiny600DFUPacket::peripheralDidUpdateValueFor(
    CBPeripheral&, const std::shared_ptr<CBCharacteristic>& characteristic, const MaybeError& error)
{
    if (characteristic != _notifyCharacteristic)
        return;
    if (error) {
        AuriskLog::log("Receiving notification failed");
        AuriskLog::e(*error);
        return fail(DFUError::receivingNotificationFailed, "Receiving notification failed");
    }
    const auto value = characteristic->value();
    if (!value)
        return;
    const auto response = decodeFromDevice("firmware notification",
        [&]() -> std::optional<Tiny600DFUResponse> { return Tiny600DFUResponse::parse(*value); });
    if (!response)
        return;
    if (response->status)
        return act(*response->status);
    AuriskLog::log("Unknown response received: 0x" + ask_hexadecimal(*value));
    fail(DFUError::unsupportedResponse, "Unsupported response received: 0x" + ask_hexadecimal(*value));
}

void Tiny600DFUPacket::act(Tiny600DFUResultCode status)
{
    using Code = Tiny600DFUResultCode;
    switch (status) {
    case Code::init_success: return;
    case Code::init_failure: return fail(DFUError::initFailure, "init failure");
    case Code::space_enough:
    case Code::crc_success: return succeed();
    case Code::space_not_enough: return fail(DFUError::diskNotEnough, "Disk is not enough");
    case Code::recv_pkg_success: return packetTaken();
    case Code::recv_pkg_seq_failure: return fail(DFUError::sequenceFailure, "recv_pkg_seq_failure");
    case Code::crc_failure: return fail(DFUError::crcError, "crc error");
    case Code::boot_write_ok:
        if (_complete)
            soon(_complete, _isValidating);
        return;
    case Code::boot_write_failure:
        if (_report)
            soon([report = _report] { report(DFUError::bootWriteFailed, "boot write failed"); }, true);
        return;
    }
}

/// One packet of the image has been taken: so many more bytes have arrived, whichever packet it was.
void Tiny600DFUPacket::packetTaken()
{
    const auto taken = decodeFromDevice("acknowledgement", [this] { return counted(); });
    if (!taken)
        return;
    _upload = taken->upload;
    if (taken->percent > _upload.progressReported)
        reportProgress(taken->percent);
    if (_upload.bytesSent != _totalBytes)
        return succeed();
    printLine("send data finished...");
    if (const auto complete = _complete)
        complete();
}

/// What an acknowledgement makes of the upload. One that no packet can have had, breaks a precondition.
std::optional<Tiny600DFUPacket::Counted> Tiny600DFUPacket::counted() const
{
    precondition(_totalBytes > 0, "no packet has been sent that could have been taken");
    const auto bytes = std::uint64_t(_upload.bytesSent) + _upload.currentBytes;
    precondition(bytes <= largestImage, "{} bytes have been taken, of {}", bytes, _totalBytes);
    Counted result{ _upload, exactly<std::uint8_t>(bytes * 100 / _totalBytes, "percent") };
    result.upload.bytesSent = static_cast<std::uint32_t>(bytes);
    ++result.upload.seqSent;
    return result;
}

void Tiny600DFUPacket::reportProgress(std::uint8_t percent)
{
    const auto now = DispatchQueue::main().now();
    const auto speed = [now](std::uint32_t bytes, std::optional<Seconds> since) {
        return bytes / (now - since.value_or(now)).count();
    };
    const auto current = speed(_upload.bytesSent - _upload.bytesSentSinceProgressNotification, _upload.lastTime);
    printLine("currentSpeed = " + LogItem(current).bare());
    tellProgress(percent, current, speed(_upload.bytesSent, _upload.startTime));
    _upload.lastTime = now;
    _upload.bytesSentSinceProgressNotification = _upload.bytesSent;
    _upload.progressReported = percent;
}

/// The queue may run on another thread, which then touches nothing but the delegate.
void Tiny600DFUPacket::tellProgress(int percent, double currentSpeed, double avgSpeed)
{
    if (_queue)
        _queue->async([=, self = weak_from_this(), weak = _progressDelegate] {
            const auto delegate = weak.lock();
            if (delegate && !self.expired())
                delegate->dfuProgressDidChange(percent, currentSpeed, avgSpeed);
        });
}

/// The outcome of an update never reaches the next one.
void Tiny600DFUPacket::soon(std::function<void()> outcome, bool isFinal)
{
    _finalOutcomes += isFinal;
    const auto tell = [self = shared_from_this(), update = _update, outcome = std::move(outcome), isFinal] {
        if (self->_update != update)
            return;
        self->_finalOutcomes -= isFinal;
        outcome();
    };
    DispatchQueue::main().asyncAfter(untilOutcome, tell);
}

/// What is called may be replaced meanwhile by the step that it begins.
void Tiny600DFUPacket::succeed() const
{
    if (const auto success = _success)
        success();
}

void Tiny600DFUPacket::fail(DFUError error, const std::string& message) const
{
    if (const auto report = _report)
        report(error, message);
}

} // namespace aurisk
