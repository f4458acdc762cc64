#include "AuriskSDK/HearingAid/Aurisk/Service/AuriskDFUService.h"

#include "AuriskSDK/Shared/Utils/AuriskLog.h"
#include "AuriskSDK/Shared/Utils/Precondition.h"

namespace aurisk {

namespace {

std::shared_ptr<CBCharacteristic> find(
    const std::vector<std::shared_ptr<CBCharacteristic>>& characteristics, std::uint16_t uuid)
{
    for (const auto& characteristic : characteristics)
        if (characteristic->uuid() == CBUUID(uuid))
            return characteristic;
    return nullptr;
}

/// None where one of the two characteristics is missing.
std::shared_ptr<Tiny600DFUPacket> packetLayer(const std::vector<std::shared_ptr<CBCharacteristic>>& characteristics)
{
    const auto controlPoint = find(characteristics, 0xAE3B);
    const auto answers = find(characteristics, 0xAE3C);
    return controlPoint && answers ? Tiny600DFUPacket::create(controlPoint, answers) : nullptr;
}

bool hasNeededProperties(const Tiny600DFUPacket& packets)
{
    using Properties = CBCharacteristicProperties;
    return contains(packets.writeCharacteristic()->properties(), Properties::writeWithoutResponse)
        && contains(packets.notifyCharacteristic()->properties(), Properties::notify);
}

} // namespace

std::shared_ptr<AuriskDFUService> AuriskDFUService::create(
    std::string tag, std::shared_ptr<CBPeripheral> peripheral, std::shared_ptr<CBService> service)
{
    auto made = std::make_shared<AuriskDFUService>(Key{}, std::move(tag), std::move(peripheral), std::move(service));
    made->peripheral()->discoverCharacteristics(made->service());
    return made;
}

// The chain

void AuriskDFUService::start(std::shared_ptr<DFUConfigure> configure)
{
    expectMainQueue();
    if (!_aborted)
        return;
    precondition(configure && configure->file, "an update needs a configuration with a firmware image");
    Tiny600DFUPacket::expectSendable(*configure->file);
    _firmware = configure->file;
    _progressDelegate = configure->progressDelegate.lock();
    _configure = std::move(configure);
    _aborted = false;
    _isUnderWay = true;
    if (_dfuPacketCharacteristic)
        return enableControlPoint();

    _success = next(&AuriskDFUService::enableControlPoint);
    _report = failure();
    if (!service()->peripheral())
        return fail(DFUError::initFailure, "Assert service.peripheral != nil failed");
    log("Discovering characteristics in DFU Service...");
    peripheral()->discoverCharacteristics(service());
}

void AuriskDFUService::enableControlPoint()
{
    if (!hasNeededProperties(*_dfuPacketCharacteristic)) {
        log("DFU Control Point characteristic must have Write and Notify properties");
        return fail(DFUError::requiredCharacteristicsMissing,
            "DFU Control Point characteristic does not have the Write and Notify properties");
    }
    tell(DFUState::starting);
    _dfuPacketCharacteristic->enableNotifications(next(&AuriskDFUService::sendStart), failure());
}

void AuriskDFUService::sendStart()
{
    tell(DFUState::enablingDfuMode);
    _dfuPacketCharacteristic->sendStartDfu(*_firmware, next(&AuriskDFUService::upload), failure());
}

/// Again with every packet that the device has taken.
void AuriskDFUService::upload()
{
    tell(DFUState::uploading);
    _dfuPacketCharacteristic->sendNext(*_firmware, _progressDelegate, _configure->progressDelegateQueue,
        next(&AuriskDFUService::validate), next(&AuriskDFUService::upload), failure());
}

void AuriskDFUService::validate()
{
    tell(DFUState::validating);
    _dfuPacketCharacteristic->sendValidateData(
        *_firmware, next(&AuriskDFUService::completed), next(&AuriskDFUService::validated), failure());
}

void AuriskDFUService::validated() { tell(DFUState::validated); }

void AuriskDFUService::completed()
{
    _isUnderWay = false;
    tell(DFUState::completed);
}

bool AuriskDFUService::abort()
{
    expectMainQueue();
    _aborted = true;
    _isUnderWay = false;
    _progressDelegate = nullptr;
    if (_report) { // still waiting for the characteristics: it leaves nothing behind
        _firmware = nullptr;
        _success = nullptr;
        _report = nullptr;
        _configure = nullptr;
    }
    tell(DFUState::aborted);
    return _aborted;
}

/// `step`, which does nothing once the service has gone.
std::function<void()> AuriskDFUService::next(void (AuriskDFUService::*step)())
{
    return [weak = std::weak_ptr(self()), step] {
        if (const auto self = weak.lock())
            (self.get()->*step)();
    };
}

AuriskDFUService::Report AuriskDFUService::failure()
{
    return [weak = std::weak_ptr(self())](DFUError error, const std::string& message) {
        if (const auto self = weak.lock())
            self->fail(error, message);
    };
}

std::shared_ptr<AuriskDFUService> AuriskDFUService::self()
{
    return std::static_pointer_cast<AuriskDFUService>(shared_from_this());
}

/// Deliberately, whoever hears of it has to abort the update afterwards before another one can start.
void AuriskDFUService::fail(DFUError error, const std::string& message)
{
    const auto self = shared_from_this(); // a delegate may let go of the last reference from outside
    if (const auto delegate = _configure ? _configure->delegate.lock() : nullptr)
        delegate->dfuError(error, message);
    _aborted = false;
}

void AuriskDFUService::tell(DFUState state) const
{
    if (!_configure || _configure->delegate.expired())
        return;
    _configure->delegateQueue.async([weak = _configure->delegate, state] {
        if (const auto delegate = weak.lock())
            delegate->dfuStateDidChange(state);
    });
}

// The radio

/// What the device has decided is told in a moment, even where another connection replaces this service by then.
void AuriskDFUService::didDisconnect(const MaybeError&)
{
    if (!std::exchange(_isUnderWay, false))
        return;
    if (_dfuPacketCharacteristic && _dfuPacketCharacteristic->isDecided())
        DispatchQueue::main().asyncAfter(Tiny600DFUPacket::untilOutcome, [self = self()] {});
    else
        fail(DFUError::receivingNotificationFailed, "Receiving notification failed");
}

void AuriskDFUService::didDiscoverCharacteristics(
    const std::vector<std::shared_ptr<CBCharacteristic>>& characteristics, const MaybeError& error)
{
    // What is known stays, also where the same question is answered twice: an update may be running on it.
    if (!_dfuPacketCharacteristic && (_aborted || !error))
        _dfuPacketCharacteristic = packetLayer(characteristics);

    const auto onward = std::exchange(_success, nullptr);
    const auto report = std::exchange(_report, nullptr);
    if (!onward)
        return;
    if (error) {
        log("Characteristics discovery failed");
        AuriskLog::e(*error);
        return report(DFUError::characteristicsDiscoveryFailed, "Characteristics discovery failed");
    }
    log("DFU characteristics discovered");
    if (_dfuPacketCharacteristic)
        return onward();
    log("DFU Control Point characteristic not found");
    report(DFUError::requiredCharacteristicsMissing,
        "DFU packet characteristics does not have the Write and Notify properties");
}

void AuriskDFUService::didUpdateNotificationStateForCharacteristic(
    const std::shared_ptr<CBCharacteristic>& characteristic, const MaybeError& error)
{
    if (!_aborted && _dfuPacketCharacteristic)
        _dfuPacketCharacteristic->peripheralDidUpdateNotificationStateFor(*peripheral(), characteristic, error);
}

void AuriskDFUService::didUpdateValueForCharacteristic(
    const std::shared_ptr<CBCharacteristic>& characteristic, CBPeripheral& peripheral, const MaybeError& error)
{
    if (!_aborted && _dfuPacketCharacteristic)
        _dfuPacketCharacteristic->peripheralDidUpdateValueFor(peripheral, characteristic, error);
}

} // namespace aurisk
