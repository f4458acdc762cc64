#include "AuriskSDK/Platform/Dispatch.h"

namespace aurisk {

void DispatchGroup::leave()
{
    if (--_underWay > 0)
        return;
    for (auto& [queue, work] : std::exchange(_waiting, {}))
        queue->async(std::move(work));
}

void DispatchGroup::notify(DispatchQueue& queue, Work work)
{
    if (_underWay > 0)
        _waiting.emplace_back(&queue, std::move(work));
    else
        queue.async(std::move(work));
}

std::shared_ptr<DispatchTimer> DispatchTimer::scheduledTimer(DispatchQueue& queue, Seconds interval, Work work)
{
    auto timer = std::make_shared<DispatchTimer>();
    timer->_work = std::move(work);
    queue.asyncAfter(interval, [timer] {
        if (const auto due = std::exchange(timer->_work, nullptr))
            due();
    });
    return timer;
}

} // namespace aurisk
