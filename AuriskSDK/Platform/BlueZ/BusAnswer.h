#pragma once

#include "AuriskSDK/Platform/BlueZ/SystemBus.h"

namespace aurisk::bluez {

/// The answer that one call from the bus waits for. Where nobody gives it, the caller hears that it failed.
class BusAnswer {
public:
    BusAnswer(std::weak_ptr<SystemBus> bus, BusRequest request)
        : _bus(std::move(bus))
        , _request(std::move(request))
    {
    }
    ~BusAnswer() { refuse({ "org.bluez.Error.Failed", "There is no answer." }); }
    BusAnswer(const BusAnswer&) = delete;
    BusAnswer& operator=(const BusAnswer&) = delete;

    void give(const BusValues& values)
    {
        if (const auto bus = takeBus())
            bus->answer(_request, values);
    }
    void refuse(const BusError& error)
    {
        if (const auto bus = takeBus())
            bus->refuse(_request, error);
    }

private:
    /// Only the first answer finds it.
    std::shared_ptr<SystemBus> takeBus() { return std::exchange(_bus, {}).lock(); }

    std::weak_ptr<SystemBus> _bus;
    BusRequest _request;
};

} // namespace aurisk::bluez
