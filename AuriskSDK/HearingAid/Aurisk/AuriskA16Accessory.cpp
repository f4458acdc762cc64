#include "AuriskSDK/HearingAid/Aurisk/AuriskA16Accessory.h"

namespace aurisk {

std::shared_ptr<AuriskA16Accessory> AuriskA16Accessory::create(
    std::shared_ptr<CBPeripheral> peripheral, DataView mfgData, std::weak_ptr<AccessoryManager> manager)
{
    return std::make_shared<AuriskA16Accessory>(Key{}, std::move(peripheral), mfgData, std::move(manager));
}

void AuriskA16Accessory::requestSummaryDataLog(SummaryComplete complete)
{
    requestDataLog(AuriskDataLogType::summary, [complete = std::move(complete)](const std::optional<Data>& data) {
        const auto log = data ? AuriskSummaryDataLog::decode(*data) : std::nullopt;
        if (complete)
            complete(log);
    });
}

void AuriskA16Accessory::requestDataLog(AuriskDataLogType logType, DataLogComplete complete)
{
    const auto group = std::make_shared<DispatchGroup>();
    const auto fetched = std::make_shared<std::optional<Data>>(std::in_place); // none once a frame has failed
    const auto take = [fetched](const AuriskResult& result) {
        const auto* reply = result.isSuccess() ? result.data()->as<AuriskResponse::didRequest>() : nullptr;
        if (!reply)
            fetched->reset();
        else if (const auto& payload = reply->data.data; payload && *fetched)
            (*fetched)->insert((*fetched)->end(), payload->begin(), payload->end());
    };
    for (const auto& frame : rawDataArray(logType)) {
        group->enter();
        request(AuriskRequest::writeProtocolData{ .data = frame }, [group, take](const AuriskResult& result) {
            take(result);
            group->leave();
        });
    }
    group->notify(DispatchQueue::main(), [fetched, complete = std::move(complete)] {
        if (complete)
            complete(*fetched);
    });
}

} // namespace aurisk
