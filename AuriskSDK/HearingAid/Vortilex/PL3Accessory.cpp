#include "AuriskSDK/HearingAid/Vortilex/PL3Accessory.h"

#include "AuriskSDK/HearingAid/Vortilex/Data/PL3ManuData.h"
#include "AuriskSDK/Shared/Utils/AuriskLog.h"
#include "AuriskSDK/Shared/Utils/Precondition.h"

#include <optional>

namespace aurisk {

std::shared_ptr<PL3Accessory> PL3Accessory::create(
    std::shared_ptr<CBPeripheral> peripheral, DataView mfgData, std::weak_ptr<AccessoryManager> manager)
{
    const PL3ManuData manuData(mfgData);
    auto made = std::make_shared<PL3Accessory>(Key{}, std::move(peripheral), mfgData, std::move(manager));
    made->setTag("PL3 Accessory");
    made->take(manuData);
    return made;
}

std::shared_ptr<PL3Accessory> PL3Accessory::self()
{
    return std::static_pointer_cast<PL3Accessory>(shared_from_this());
}

void PL3Accessory::updateManufacturerData(std::shared_ptr<CBPeripheral> peripheral, DataView mfgData)
{
    const auto manuData = decodeFromDevice("advertisement", [&] { return std::optional(PL3ManuData(mfgData)); });
    if (!manuData)
        return;
    Accessory::updateManufacturerData(std::move(peripheral), mfgData);
    take(*manuData);
}

void PL3Accessory::take(const PL3ManuData& manuData)
{
    _orientation = manuData.orientation;
    _modelName = manuData.modelName;
    printLine(_modelName);
    _manufacturerId = manuData.manufacturerId;
    printLine(std::to_string(_manufacturerId));
}

std::shared_ptr<AccessoryService> PL3Accessory::initial(const std::shared_ptr<CBService>& service)
{
    if (service->uuid() != PL3DataService::serviceUUID)
        return nullptr;
    _dataService = PL3DataService::create(tag(), peripheral(), service);
    _dataService->setDelegate(self());
    return _dataService;
}

void PL3Accessory::request(const PL3Request& request, Complete complete)
{
    expectMainQueue();
    if (state() == AccessoryState::connected && _dataService)
        _dataService->request(request, PL3DataService::defaultTimeout, std::move(complete));
    else if (complete)
        complete(PL3Result::error(PL3Error::unknown));
}

void PL3Accessory::request(const std::vector<PL3Request>& requests, std::function<void()> complete)
{
    expectMainQueue();
    const auto group = std::make_shared<DispatchGroup>();
    for (const auto& each : requests) {
        group->enter();
        request(each, [group](const PL3Result&) { group->leave(); });
    }
    if (complete)
        group->notify(DispatchQueue::main(), std::move(complete));
}

std::uint8_t PL3Accessory::getValueAsUInt8(DataView data) { return data.empty() ? 0 : data.front(); }

void PL3Accessory::didFinishRequest(const PL3Request& request, const PL3Result& result)
{
    if (!result.isSuccess())
        return;
    keep(result.data()->command, result.data()->data);
    if (const auto delegate = _dataDelegate.lock())
        delegate->didUpdateValue(self(), request);
}

void PL3Accessory::didNotify(PL3Command command, const Data& data)
{
    keep(command, data);
    if (const auto delegate = _dataDelegate.lock())
        delegate->didNotify(self(), { command, data });
}

void PL3Accessory::keep(PL3Command command, DataView data)
{
    switch (command) {
    case PL3Command::volumeLevel: _volume = getValueAsUInt8(data); break;
    case PL3Command::program: _program = getValueAsUInt8(data); break;
    case PL3Command::batteryLevel: _battery = getValueAsUInt8(data); break;
    case PL3Command::bandEQs: _bandEQ[_program] = PL3BandEQ(data); break;
    case PL3Command::compRatios: _compRatio[_program] = PL3CompRatio(data); break;
    case PL3Command::compTimes: _compTime[_program] = PL3CompTime(data); break;
    case PL3Command::compThreshold: _compThreshold[_program] = PL3CompThreshold(data); break;
    case PL3Command::mpoConfig: _mpoConfig[_program] = PL3MpoConfig(data); break;
    case PL3Command::inputSettings: _inputSetting[_program] = PL3InputSettings(data); break;
    default: break;
    }
}

} // namespace aurisk
