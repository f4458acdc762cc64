#pragma once

#include "Simulator/SimulatedLink.h"

#include <map>
#include <set>

namespace aurisk {

class SimulatedCentral;

/// What the centrals of one radio share.
struct SimulatedAir {
    DispatchQueue& queue;
    std::shared_ptr<SimulatedWorld> world;
    std::vector<std::shared_ptr<SimulatedLink>> links; ///< one for each aid of the world, in its order

    bool isOn() const { return world->radioState == CBManagerState::poweredOn; }
};

/// One aid as one central sees it.
class SimulatedPeripheral final : public CBPeripheral,
                                  public SimulatedLinkHost,
                                  public std::enable_shared_from_this<SimulatedPeripheral> {
public:
    SimulatedPeripheral(std::weak_ptr<SimulatedCentral> central, std::shared_ptr<SimulatedLink> link);

    const CBUUID& identifier() const override { return _identifier; }
    std::optional<std::string> name() const override { return _link->aid().name(); }
    CBPeripheralState state() const override { return _state; }
    void setDelegate(std::weak_ptr<CBPeripheralDelegate> delegate) override { _delegate = std::move(delegate); }
    std::vector<std::shared_ptr<CBService>> services() const override { return _services; }
    void discoverServices() override;
    void discoverCharacteristics(const std::shared_ptr<CBService>& service) override;
    void setNotifyValue(bool enabled, const std::shared_ptr<CBCharacteristic>& characteristic) override;
    void readValue(const std::shared_ptr<CBCharacteristic>& characteristic) override;
    void writeValue(DataView value, const std::shared_ptr<CBCharacteristic>& characteristic,
        CBCharacteristicWriteType type) override;
    std::size_t maximumWriteValueLength(CBCharacteristicWriteType) const override
    {
        return _link->maximumValueLength();
    }

    void linkDidConnect() override;
    void linkDidEnd(const MaybeError& error) override;
    void linkDidNotify(const CBUUID& characteristic, const Data& value) override;

    /// Becomes connecting; false where that is not possible now. While it is still disconnecting it connects
    /// afterwards.
    bool beginConnecting();
    void cancel();
    void abandon();
    const std::shared_ptr<SimulatedLink>& link() const { return _link; }

private:
    using Characteristic = std::shared_ptr<CBCharacteristic>;

    /// `work` with this peripheral in front of its arguments, unless the peripheral has gone by then.
    template <typename Step> auto whileAlive(Step work)
    {
        return [weak = weak_from_this(), work](const auto&... arguments) mutable {
            if (const auto self = weak.lock())
                work(*self, arguments...);
        };
    }

    /// The same, only while the host has not given up the connection.
    template <typename Step> auto whileConnected(Step work)
    {
        return whileAlive([work](SimulatedPeripheral& self, const auto&... arguments) mutable {
            if (self._state == CBPeripheralState::connected)
                work(self, arguments...);
        });
    }

    template <typename... Declared, typename... Given>
    void tell(void (CBPeripheralDelegate::*event)(CBPeripheral&, Declared...), const Given&... given)
    {
        if (const auto delegate = _delegate.lock())
            (delegate.get()->*event)(*this, given...);
    }

    template <typename... Declared, typename... Given>
    void tellSoon(void (CBPeripheralDelegate::*event)(CBPeripheral&, Declared...), const Given&... given)
    {
        _link->soon(whileConnected([event, given...](SimulatedPeripheral& self) { self.tell(event, given...); }));
    }

    bool has(const std::shared_ptr<CBService>& service) const;
    bool has(const Characteristic& characteristic) const;
    void ask(std::function<void(SimulatedPeripheral&, const MaybeError&)> answered);
    void makeServices();
    void makeCharacteristics(const std::shared_ptr<CBService>& service) const;
    MaybeError refusal(bool refused) const;
    MaybeError problemOf(CBCharacteristicProperties needed, const CBCharacteristic& characteristic) const;
    MaybeError problemOfWriting(std::size_t length, const CBCharacteristic&, CBCharacteristicWriteType) const;
    void failWrite(const Characteristic& characteristic, const MaybeError& problem);
    void confirmWrite(const Characteristic& characteristic, bool failed);

    std::weak_ptr<SimulatedCentral> _central;
    std::shared_ptr<SimulatedLink> _link;
    CBUUID _identifier;
    std::weak_ptr<CBPeripheralDelegate> _delegate;
    CBPeripheralState _state = CBPeripheralState::disconnected;
    bool _connectsAgain = false; ///< asked to connect while it was still disconnecting
    std::vector<std::shared_ptr<CBService>> _services;
};

/// One central of a simulated radio.
class SimulatedCentral final : public CBCentralManager, public std::enable_shared_from_this<SimulatedCentral> {
public:
    SimulatedCentral(std::shared_ptr<SimulatedAir> air, std::weak_ptr<CBCentralManagerDelegate> delegate);
    ~SimulatedCentral() override;

    CBManagerState state() const override { return _state; }
    void scanForPeripherals(const CBScanOptions& options) override;
    void stopScan() override;
    void connectPeripheral(const std::shared_ptr<CBPeripheral>& peripheral) override;
    void cancelPeripheralConnection(const std::shared_ptr<CBPeripheral>& peripheral) override;

    /// The radio is in `state` now, which the delegate is told soon.
    void radioIs(CBManagerState state);

    template <typename... Declared, typename... Given>
    void tell(void (CBCentralManagerDelegate::*event)(CBCentralManager&, Declared...), const Given&... given)
    {
        if (const auto delegate = _delegate.lock())
            (delegate.get()->*event)(*this, given...);
    }

private:
    void didChange(CBManagerState state);
    void listen();
    void scheduleAdvertisement(std::size_t index, Seconds delay);
    void hear(std::size_t index);
    void refuseForeign(const std::shared_ptr<CBPeripheral>& peripheral);
    std::shared_ptr<SimulatedPeripheral> mine(const std::shared_ptr<CBPeripheral>& peripheral) const;

    std::shared_ptr<SimulatedAir> _air;
    std::weak_ptr<CBCentralManagerDelegate> _delegate;
    CBManagerState _state = CBManagerState::unknown; ///< what the delegate has been told
    std::map<std::size_t, std::shared_ptr<SimulatedPeripheral>> _peripherals; ///< by the aid's place in the world
    bool _isScanning = false;
    bool _allowDuplicates = false;
    int _listening = 0; ///< counts the spells of listening: an advertisement belongs to one of them
    std::set<std::size_t> _reported;
};

} // namespace aurisk
