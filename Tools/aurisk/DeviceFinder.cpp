#include "Tools/aurisk/DeviceFinder.h"

#include "AuriskSDK/HearingAid/Aurisk/AuriskAccessory.h"

namespace aurisk::tool {

namespace {

std::vector<Candidate> candidatesOf(const std::vector<std::shared_ptr<Accessory>>& accessories)
{
    std::vector<Candidate> candidates;
    for (const auto& accessory : accessories) {
        const auto aurisk = std::dynamic_pointer_cast<AuriskAccessory>(accessory);
        candidates.push_back({ accessory->name(), accessory->deviceId(), aurisk ? aurisk->address() : "" });
    }
    return candidates;
}

} // namespace

std::shared_ptr<DeviceFinder> DeviceFinder::start(
    std::shared_ptr<AccessoryManager> manager, const Options& options, std::function<void(Result)> found)
{
    auto finder = std::make_shared<DeviceFinder>(Key{}, std::move(manager), options, std::move(found));
    finder->_limit = finder->after(options.timeout, Search::over);
    finder->_manager->setScanningDelegate(finder);
    finder->_manager->startScan();
    return finder;
}

DeviceFinder::DeviceFinder(
    Key, std::shared_ptr<AccessoryManager> manager, const Options& options, std::function<void(Result)> found)
    : _manager(std::move(manager))
    , _options(options)
    , _found(std::move(found))
{
}

std::shared_ptr<DispatchTimer> DeviceFinder::after(Seconds span, Search search)
{
    return DispatchTimer::scheduledTimer(DispatchQueue::main(), span, [weak = weak_from_this(), search] {
        if (const auto self = weak.lock())
            self->consider(search);
    });
}

void DeviceFinder::stop()
{
    _found = nullptr;
    for (auto* timer : { &_settling, &_limit })
        if (const auto running = std::exchange(*timer, nullptr))
            running->invalidate();
    _manager->stopScan();
}

void DeviceFinder::accessoryManagerDidDiscover(
    const std::shared_ptr<AccessoryManager>&, const std::shared_ptr<Accessory>&, std::optional<int>)
{
    consider(Search::going);
}

void DeviceFinder::consider(Search search)
{
    if (!_found)
        return;
    const auto accessories = _manager->accessories();
    const auto candidates = candidatesOf(accessories);
    const auto choice = choose(_options, candidates, search);
    if (!choice) {
        const bool mayBeEnough = choose(_options, candidates, Search::settled).has_value();
        if (mayBeEnough && !_settling)
            _settling = after(settling, Search::settled);
        return;
    }
    const auto found = std::exchange(_found, nullptr);
    stop();
    if (const auto* failure = std::get_if<Failure>(&*choice))
        return found(*failure);
    std::vector<std::shared_ptr<Accessory>> chosen;
    for (const auto place : std::get<0>(*choice))
        chosen.push_back(accessories[place]);
    found(std::move(chosen));
}

} // namespace aurisk::tool
