#include "Simulator/SimulatedCentral.h"

namespace aurisk {

SimulatedCentral::SimulatedCentral(std::shared_ptr<SimulatedAir> air, std::weak_ptr<CBCentralManagerDelegate> delegate)
    : _air(std::move(air))
    , _delegate(std::move(delegate))
{
}

SimulatedCentral::~SimulatedCentral()
{
    for (const auto& [index, peripheral] : _peripherals)
        peripheral->abandon();
}

// State

void SimulatedCentral::radioIs(CBManagerState state)
{
    _air->queue.async([weak = weak_from_this(), state] {
        if (const auto self = weak.lock())
            self->didChange(state);
    });
}

void SimulatedCentral::didChange(CBManagerState state)
{
    _state = state;
    std::vector<std::shared_ptr<SimulatedPeripheral>> losing;
    if (state == CBManagerState::poweredOn)
        listen();
    else
        for (const auto& [index, peripheral] : _peripherals)
            losing.push_back(peripheral);

    tell(&CBCentralManagerDelegate::centralManagerDidUpdateState);
    for (const auto& peripheral : losing)
        peripheral->link()->end(peripheral, radioIsOff());
}

// Scanning

void SimulatedCentral::scanForPeripherals(const CBScanOptions& options)
{
    _isScanning = true;
    _allowDuplicates = options.allowDuplicates;
    _reported.clear();
    listen();
}

void SimulatedCentral::stopScan()
{
    _isScanning = false;
    ++_listening;
}

/// Listens from now on, where there is a scan and a radio. Each aid comes at a moment of its own within its interval.
void SimulatedCentral::listen()
{
    ++_listening;
    if (!_isScanning || _state != CBManagerState::poweredOn)
        return;
    const auto count = double(_air->links.size());
    for (std::size_t i = 0; i < _air->links.size(); ++i)
        scheduleAdvertisement(i, _air->links[i]->placed().advertisingInterval * (double(i + 1) / (count + 1)));
}

void SimulatedCentral::scheduleAdvertisement(std::size_t index, Seconds delay)
{
    _air->queue.asyncAfter(delay, [weak = weak_from_this(), index, listening = _listening] {
        if (const auto self = weak.lock(); self && self->_listening == listening)
            self->hear(index);
    });
}

void SimulatedCentral::hear(std::size_t index)
{
    const auto& link = _air->links[index];
    if (!_air->isOn())
        return;
    scheduleAdvertisement(index, link->placed().advertisingInterval);
    if (link->isUp() || !link->isAudible())
        return;
    if (!_reported.insert(index).second && !_allowDuplicates)
        return;

    auto& peripheral = _peripherals[index];
    if (!peripheral)
        peripheral = std::make_shared<SimulatedPeripheral>(weak_from_this(), link);
    tell(&CBCentralManagerDelegate::centralManagerDidDiscover, std::shared_ptr<CBPeripheral>(peripheral),
        link->aid().advertisement(), std::optional<int>(link->placed().rssi));
}

// Connections

void SimulatedCentral::connectPeripheral(const std::shared_ptr<CBPeripheral>& peripheral)
{
    const auto one = mine(peripheral);
    if (!one)
        return refuseForeign(peripheral);
    if (!one->beginConnecting())
        return;
    if (_air->isOn() && _state == CBManagerState::poweredOn)
        return one->link()->connect(one);
    _air->queue.async([weak = std::weak_ptr(one)] {
        if (const auto alive = weak.lock())
            alive->linkDidEnd(radioIsOff());
    });
}

void SimulatedCentral::refuseForeign(const std::shared_ptr<CBPeripheral>& peripheral)
{
    _air->queue.async([weak = weak_from_this(), peripheral] {
        if (const auto self = weak.lock())
            self->tell(&CBCentralManagerDelegate::centralManagerDidFailToConnect, peripheral,
                MaybeError(
                    simulatedError(SimulatedErrorCode::foreignPeripheral, "Another central found this peripheral.")));
    });
}

void SimulatedCentral::cancelPeripheralConnection(const std::shared_ptr<CBPeripheral>& peripheral)
{
    if (const auto one = mine(peripheral))
        one->cancel();
}

std::shared_ptr<SimulatedPeripheral> SimulatedCentral::mine(const std::shared_ptr<CBPeripheral>& peripheral) const
{
    for (const auto& [index, one] : _peripherals)
        if (one == peripheral)
            return one;
    return nullptr;
}

} // namespace aurisk
