#include "AuriskSDK/Shared/Dfu/DFUConfigure.h"

namespace aurisk {

std::shared_ptr<DFUConfigure> DFUConfigure::create(
    DispatchQueue& queue, DispatchQueue& delegateQueue, DispatchQueue& progressQueue)
{
    return std::make_shared<DFUConfigure>(Key{}, queue, delegateQueue, progressQueue);
}

DFUConfigure::DFUConfigure(Key, DispatchQueue& updateQueue, DispatchQueue& statesQueue, DispatchQueue& progressQueue)
    : queue(updateQueue)
    , delegateQueue(statesQueue)
    , progressDelegateQueue(progressQueue)
{
}

std::shared_ptr<DFUConfigure> DFUConfigure::with(std::shared_ptr<DFUFirmware> firmware)
{
    file = std::move(firmware);
    return shared_from_this();
}

} // namespace aurisk
