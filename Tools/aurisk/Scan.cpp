#include "Tools/aurisk/Scan.h"

#include "Tools/aurisk/DeviceFields.h"

#include <fmt/format.h>

namespace aurisk::tool {

namespace {

const std::vector<Column> columns
    = { { "name", 12 }, { "rssi", 8 }, { "ear", 10 }, { "chip", 10 }, { "address", 17 }, { "identifier", 36 } };

} // namespace

std::shared_ptr<Scan> Scan::start(
    std::shared_ptr<AccessoryManager> manager, const Options& options, Output& output, std::function<void()> ended)
{
    auto scan = std::make_shared<Scan>(Key{}, std::move(manager), options, output, std::move(ended));
    scan->_manager->setScanningDelegate(scan);
    scan->_manager->startScan(*options.duration);
    return scan;
}

Scan::Scan(
    Key, std::shared_ptr<AccessoryManager> manager, const Options& options, Output& output, std::function<void()> ended)
    : _manager(std::move(manager))
    , _options(options)
    , _output(output)
    , _ended(std::move(ended))
{
}

void Scan::stop()
{
    _ended = nullptr;
    _manager->stopScan();
}

void Scan::accessoryManagerIsScanning(const std::shared_ptr<AccessoryManager>&, bool isScanning)
{
    if (isScanning)
        return;
    if (_manager->accessories().empty())
        _output.note("no hearing aid was heard");
    if (const auto ended = std::exchange(_ended, nullptr))
        ended();
}

void Scan::accessoryManagerDidDiscover(
    const std::shared_ptr<AccessoryManager>&, const std::shared_ptr<Accessory>& accessory, std::optional<int> rssi)
{
    _output.row(advertisedFields(*accessory, rssi), columns);
}

void Scan::accessoryManagerDidUpdate(
    const std::shared_ptr<AccessoryManager>&, const std::shared_ptr<Accessory>& accessory, std::optional<int> rssi)
{
    if (_options.updates)
        _output.row(advertisedFields(*accessory, rssi), columns);
}

} // namespace aurisk::tool
