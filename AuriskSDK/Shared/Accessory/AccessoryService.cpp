#include "AuriskSDK/Shared/Accessory/AccessoryService.h"

#include "AuriskSDK/Shared/Utils/AuriskLog.h"

#include <fmt/core.h>

namespace aurisk {

AccessoryService::AccessoryService(
    Key, std::string tag, std::shared_ptr<CBPeripheral> peripheral, std::shared_ptr<CBService> service)
    : _peripheral(std::move(peripheral))
    , _service(std::move(service))
    , _tag(std::move(tag))
{
}

void AccessoryService::log(std::string_view message) const { AuriskLog::log(fmt::format("[{}] {}", _tag, message)); }

} // namespace aurisk
