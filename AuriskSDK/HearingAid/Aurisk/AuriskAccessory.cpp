#include "AuriskSDK/HearingAid/Aurisk/AuriskAccessory.h"

#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskManuData.h"
#include "AuriskSDK/HearingAid/Aurisk/Repository/AuriskResourceBundle.h"
#include "AuriskSDK/Shared/Utils/AuriskLog.h"
#include "AuriskSDK/Shared/Utils/Precondition.h"

#include <fmt/format.h>

namespace aurisk {

namespace {

AccessoryOrientation orientationOf(const CBPeripheral& peripheral)
{
    const auto name = peripheral.name().value_or("");
    if (name.ends_with("-L"))
        return AccessoryOrientation::left;
    if (name.ends_with("-R"))
        return AccessoryOrientation::right;
    return AccessoryOrientation::unassigned;
}

} // namespace

std::shared_ptr<AuriskAccessory> AuriskAccessory::create(
    std::shared_ptr<CBPeripheral> peripheral, DataView mfgData, std::weak_ptr<AccessoryManager> manager)
{
    return std::make_shared<AuriskAccessory>(Key{}, std::move(peripheral), mfgData, std::move(manager));
}

AuriskAccessory::AuriskAccessory(
    Key key, std::shared_ptr<CBPeripheral> peripheral, DataView mfgData, std::weak_ptr<AccessoryManager> manager)
    : Accessory(key, std::move(peripheral), mfgData, std::move(manager))
    , _orientation(orientationOf(*this->peripheral()))
{
    const AuriskManuData manuData(mfgData);
    _hearChip = manuData.hearChip;
    take(manuData);
}

void AuriskAccessory::take(const AuriskManuData& manuData)
{
    _address = manuData.address;
    _bleChip = manuData.bleChip;
    _transEnable = manuData.transEnable;
}

void AuriskAccessory::updateManufacturerData(std::shared_ptr<CBPeripheral> peripheral, DataView mfgData)
{
    Accessory::updateManufacturerData(std::move(peripheral), mfgData);
    take(AuriskManuData(mfgData));
    if (const auto orientation = orientationOf(*this->peripheral()); orientation != AccessoryOrientation::unassigned)
        _orientation = orientation;
}

std::string AuriskAccessory::name() const
{
    if (!_profile.pSeriesCode.empty())
        return _profile.pSeriesCode + (_orientation == AccessoryOrientation::left ? "-L" : "-R");
    return localName() ? *localName() : Accessory::name();
}

std::optional<int> AuriskAccessory::volume() const
{
    const auto known = _program ? _volumeDic.find(*_program) : _volumeDic.end();
    return known == _volumeDic.end() ? std::nullopt : std::optional(known->second);
}

std::optional<AuriskDsp> AuriskAccessory::dsp() const
{
    const auto known = _program ? _dspDic.find(*_program) : _dspDic.end();
    return known == _dspDic.end() ? std::nullopt : std::optional(known->second);
}

std::optional<int> AuriskAccessory::numberOfProgram() const
{
    return _global ? std::optional(_global->numberOfPrograms()) : std::nullopt;
}

void AuriskAccessory::request(const AuriskRequest& request, Complete complete)
{
    expectMainQueue();
    if (state() != AccessoryState::connected) {
        if (complete)
            complete(AuriskResult::error(AuriskResultError::disconnected{}));
        return;
    }
    if (_dataService)
        _dataService->request(request, AuriskDataService::defaultTimeout, std::move(complete));
}

void AuriskAccessory::request(const std::vector<AuriskRequest>& requests, std::function<void()> complete)
{
    expectMainQueue();
    const auto group = std::make_shared<DispatchGroup>();
    for (const auto& each : requests) {
        group->enter();
        request(each, [group](const AuriskResult&) { group->leave(); });
    }
    if (complete)
        group->notify(DispatchQueue::main(), std::move(complete));
}

void AuriskAccessory::readNumberOfProgram(Complete complete)
{
    request(AuriskRequest::readGlobalDsp{ .chip = _hearChip }, std::move(complete));
}

void AuriskAccessory::writeNumberOfProgram(int number, Complete complete)
{
    if (_global)
        return sendNumberOfProgram(number, std::move(complete));
    readNumberOfProgram([weak = weak_from_this(), number, complete = std::move(complete)](const AuriskResult& result) {
        const auto tell = [&](const AuriskResult& outcome) {
            if (complete)
                complete(outcome);
        };
        const auto self = std::static_pointer_cast<AuriskAccessory>(weak.lock());
        if (!result.isSuccess())
            tell(result);
        else if (!self)
            tell(AuriskResult::error(AuriskResultError::disconnected{}));
        else if (!result.data()->as<AuriskResponse::didReadGlobal>() || !self->_global)
            tell(AuriskResult::error(AuriskResultError::other{ .message = "failed to request" }));
        else
            self->sendNumberOfProgram(number, complete);
    });
}

/// The global block is known.
void AuriskAccessory::sendNumberOfProgram(int number, Complete complete)
{
    auto changed = *_global;
    changed.setNumberOfPrograms(number);
    request(AuriskRequest::writeGlobalDspData{ .data = changed.toData(), .chip = _hearChip, .withResponse = true },
        std::move(complete));
}

void AuriskAccessory::readScenesOfProgram(Complete complete)
{
    request(AuriskRequest::readProfile{ .type = AuriskProfileType::productReserved }, std::move(complete));
}

bool AuriskAccessory::takeRepository(const AuriskResourceBundle& bundle)
{
    const auto& reserved = _profile.reservedField;
    const auto entry = bundle.find(
        _profile.skuCode, _profile.patternCode, reserved ? std::optional(reserved->hornPowerCode) : std::nullopt);
    if (entry)
        _profile.repository = *entry;
    return entry.has_value();
}

void AuriskAccessory::readBattery()
{
    if (_batteryService)
        _batteryService->read();
}

void AuriskAccessory::startOTA(std::shared_ptr<DFUConfigure> configure)
{
    const auto self = shared_from_this(); // a delegate may let go of the last reference from outside
    const auto updating = _firmwareUpdateService;
    if (!updating)
        return;
    updating->start(std::move(configure));
    if (state() != AccessoryState::connected)
        updating->didDisconnect(std::nullopt);
}

void AuriskAccessory::stopOTA()
{
    if (_firmwareUpdateService)
        _firmwareUpdateService->abort();
}

void AuriskAccessory::didDisconnect(const MaybeError& error)
{
    const auto self = shared_from_this(); // a delegate may let go of the last reference from outside
    const auto updating = _firmwareUpdateService;
    Accessory::didDisconnect(error);
    if (updating)
        updating->didDisconnect(error);
}

std::shared_ptr<AccessoryService> AuriskAccessory::initial(const std::shared_ptr<CBService>& service)
{
    static const CBUUID data(0xAE30), battery(0x180F), firmwareUpdate(0xAE3A);
    if (service->uuid() == data) {
        _dataService = AuriskDataService::create(service->uuid().uuidString(), peripheral(), service);
        _dataService->setDelegate(self());
        return _dataService;
    }
    if (service->uuid() == battery) {
        _batteryService = AuriskBatService::create(service->uuid().uuidString(), peripheral(), service);
        peripheral()->discoverCharacteristics(service);
        _batteryService->setDelegate(self());
        return _batteryService;
    }
    if (service->uuid() == firmwareUpdate) {
        if (const auto former = _firmwareUpdateService) // begun on it since, an update has no link
            former->didDisconnect(std::nullopt);
        _firmwareUpdateService = AuriskDFUService::create(service->uuid().uuidString(), peripheral(), service);
        return _firmwareUpdateService;
    }
    return nullptr;
}

std::shared_ptr<AuriskAccessory> AuriskAccessory::self()
{
    return std::static_pointer_cast<AuriskAccessory>(shared_from_this());
}

/// Calls `what` with the delegate, where that is one for this family.
template <typename What> void AuriskAccessory::tell(What&& what)
{
    if (const auto conforming = std::dynamic_pointer_cast<AuriskAccessoryDelegate>(delegate()))
        what(*conforming);
}

void AuriskAccessory::didSendRequest(const AuriskRequest& request)
{
    tell([&](auto& delegate) { delegate.didSendRequest(self(), request); });
}

void AuriskAccessory::didFinishRequest(const AuriskRequest& request, const AuriskResult& result)
{
    if (!result.isSuccess())
        return;
    apply(*result.data(), request);
    tell([&](auto& delegate) { delegate.didUpdateValue(self(), request); });
}

void AuriskAccessory::apply(const AuriskResponse& response, const AuriskRequest& request)
{
    std::visit(overloaded{
                   [&](const AuriskResponse::didReadProgram& read) {
                       _program = read.program;
                       if (read.volume)
                           _volumeDic[read.program] = *read.volume;
                       else
                           _volumeDic.erase(read.program);
                   },
                   [&](const AuriskResponse::didReadDsp& read) {
                       if (const auto block = decoded<AuriskDsp>("program", read.data))
                           _dspDic.insert_or_assign(read.program, *block);
                   },
                   [&](const AuriskResponse::didReadGlobal& read) {
                       if (const auto block = decoded<AuriskGlobalDsp>("global", read.data))
                           _global = block;
                   },
                   [&](const AuriskResponse::didReadProfile& read) { _profile.set(read.type, read.data); },
                   [&](const AuriskResponse::didReadTransparency& read) { _transLevel = read.level; },
                   [&](const AuriskResponse::didReadBrEdr& read) {
                       _brEdr = read.enable;
                       _brEdrContinuousIfEnable = read.continuousIfEnable;
                   },
                   [&](const AuriskResponse::didReadHearingTest& read) { _hearingSupported = read.supported; },
                   [](const AuriskResponse::didNotify&) {
                       printLine("didNotify is excuted by 'func didNotify(program: Int, volume: Int)' ");
                   },
                   [&](const auto&) { writeAcknowledged(request); },
               },
        response.value());
}

/// The block that the device sent. One that it should not have sent, leaves what is known as it was.
template <typename Block> std::optional<Block> AuriskAccessory::decoded(std::string_view what, DataView data) const
{
    auto block = Block::decode(_hearChip, data);
    if (!block && _hearChip != AuriskChip::unassigned)
        log(fmt::format("a {} block of {} bytes does not decode and is dropped", what, data.size()));
    return block;
}

/// The reply carries no values, so what was asked for holds now.
void AuriskAccessory::writeAcknowledged(const AuriskRequest& request)
{
    std::visit(
        overloaded{
            [&](const AuriskRequest::writeDsp& written) { _dspDic.insert_or_assign(written.program, written.dsp); },
            [&](const AuriskRequest::writeGlobalDsp& written) { _global = written.global; },
            [&](const AuriskRequest::writeProfile& written) { _profile.set(written.type, written.data); },
            [&](const AuriskRequest::controlVolume& set) { _volumeDic[set.program] = set.volume; },
            [&](const AuriskRequest::controlProgram& set) { _program = set.program; },
            [&](const AuriskRequest::setTransparency& set) { _transLevel = set.level; },
            [&](const AuriskRequest::setBrEdr& set) {
                _brEdr = set.enable;
                _brEdrContinuousIfEnable = set.continuousIfEnable;
            },
            [](const auto&) {},
        },
        request.value());
    tell([&](auto& delegate) { delegate.didUpdateValue(self(), request); });
}

void AuriskAccessory::didNotify(int program, int volume)
{
    if (_program != program) {
        const auto previous = std::exchange(_program, program).value_or(program);
        tell([&](auto& delegate) { delegate.didNotifyProgram(self(), previous, program); });
        return; // the volumes are left as they were, deliberately
    }
    const auto known = this->volume();
    if (known == volume)
        return;
    _volumeDic[program] = volume;
    tell([&](auto& delegate) { delegate.didNotifyVolume(self(), known.value_or(volume), volume); });
}

void AuriskAccessory::didUpdateBattery(int level)
{
    _bat = level;
    tell([&](auto& delegate) { delegate.batteryDidChanged(self(), level); });
}

} // namespace aurisk
