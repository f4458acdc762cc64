#include "AuriskSDK/HearingAid/Aurisk/AuriskH01Accessory.h"

#include "AuriskSDK/Shared/Utils/Precondition.h"

namespace aurisk {

namespace {

/// The program whose block the request writes.
std::optional<int> writtenProgram(const AuriskRequest& request)
{
    if (const auto* write = request.as<AuriskRequest::writeDsp>())
        return write->program;
    if (const auto* write = request.as<AuriskRequest::writeDspData>())
        return write->program;
    return std::nullopt;
}

} // namespace

std::shared_ptr<AuriskH01Accessory> AuriskH01Accessory::create(
    std::shared_ptr<CBPeripheral> peripheral, DataView mfgData, std::weak_ptr<AccessoryManager> manager)
{
    return std::make_shared<AuriskH01Accessory>(Key{}, std::move(peripheral), mfgData, std::move(manager));
}

void AuriskH01Accessory::request(const AuriskRequest& request, Complete complete)
{
    const auto program = writtenProgram(request);
    if (!program)
        return AuriskAccessory::request(request, std::move(complete));
    precondition(*program >= 0 && *program <= 254, "program: {} cannot be switched to", *program);
    AuriskAccessory::request(request,
        [weak = weak_from_this(), program = *program, complete = std::move(complete)](const AuriskResult& result) {
            const auto self = std::static_pointer_cast<AuriskH01Accessory>(weak.lock());
            if (result.isSuccess() && self)
                self->AuriskAccessory::request(AuriskRequest::controlProgram{ .program = program }, complete);
            else if (complete)
                complete(result.isSuccess() ? AuriskResult::error(AuriskResultError::disconnected{}) : result);
        });
}

} // namespace aurisk
