#pragma once

#include "AuriskSDK/Platform/BlueZ/GattServer.h"
#include "AuriskSDK/Shared/Utils/Queue.h"
#include "Simulator/Simulator.h"

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace aurisk::tool {

class AidOnAir;

/// Hears what becomes of an aid on the air.
class AidOnAirDelegate {
public:
    virtual ~AidOnAirDelegate() = default;
    virtual void aidDidBecomeAudible(const AidOnAir& aid) = 0;
    /// The aid itself does not advertise, though nobody is connected.
    virtual void aidDidFallSilent(const AidOnAir& aid) = 0;
    /// It cannot be heard at present, or cannot yet; `why` is a sentence without a full stop.
    virtual void aidCannotBeHeard(const AidOnAir& aid, const std::string& why) = 0;
    virtual void aidDidConnect(const AidOnAir& aid, const std::string& central) = 0;
    virtual void aidDidDisconnect(const AidOnAir& aid, const std::string& central) = 0;
};

/// One aid of a running simulator, for others to connect to over the air. Whoever does is passed on to the simulated
/// link, as if there had been no other air in between: what spoils that link, the aid's own ways and its wearer show as
/// they do there. One central has the aid at a time; whichever side ends its connection ends the other, too.
class AidOnAir final : public CBCentralManagerDelegate,
                       public CBPeripheralDelegate,
                       public bluez::GattServerDelegate,
                       public std::enable_shared_from_this<AidOnAir> {
    struct Key {
        explicit Key() = default;
    };

public:
    /// `name` is that of an aid of the simulator's world.
    static std::shared_ptr<AidOnAir> create(std::shared_ptr<Simulator> simulator, std::string name,
        bluez::GattServerPlatform& servers, std::string adapter, std::weak_ptr<AidOnAirDelegate> delegate);
    AidOnAir(Key, std::shared_ptr<Simulator> simulator, std::string name, std::weak_ptr<AidOnAirDelegate> delegate);

    const std::string& name() const { return _name; }
    std::string adapter() const { return _server->adapter(); }
    std::string address() const { return _server->address(); }

    /// Takes it off the air for good; `stopped` runs once that is done.
    void stop(std::function<void()> stopped) { _server->stop(std::move(stopped)); }

    // The air
    void gattServerDidStart(bluez::GattServer&) override { }
    void gattServerDidStop(bluez::GattServer& server, const std::string& why) override;
    void gattServerDidStartAdvertising(bluez::GattServer& server) override;
    void gattServerDidConnect(bluez::GattServer& server, const std::string& central) override;
    void gattServerDidDisconnect(bluez::GattServer& server, const std::string& central) override;
    void gattServerDidSubscribe(bluez::GattServer& server, const CBUUID& characteristic, bool isSubscribed) override;
    void gattServerDidReceiveWrite(bluez::GattServer& server, const std::string& central, const CBUUID& characteristic,
        const Data& value, CBCharacteristicWriteType type, bluez::WriteAnswer answer) override;
    void gattServerDidReceiveRead(bluez::GattServer& server, const std::string& central, const CBUUID& characteristic,
        bluez::ReadAnswer answer) override;

    // The simulated radio
    void centralManagerDidUpdateState(CBCentralManager&) override { }
    void centralManagerDidDiscover(CBCentralManager&, const std::shared_ptr<CBPeripheral>& peripheral,
        const CBAdvertisementData& advertisement, std::optional<int>) override;
    void centralManagerDidConnect(CBCentralManager&, const std::shared_ptr<CBPeripheral>& peripheral) override;
    void centralManagerDidDisconnectPeripheral(
        CBCentralManager&, const std::shared_ptr<CBPeripheral>&, const MaybeError&) override
    {
        linkDidEnd();
    }
    void centralManagerDidFailToConnect(
        CBCentralManager&, const std::shared_ptr<CBPeripheral>&, const MaybeError&) override
    {
        linkDidEnd();
    }
    void peripheralDidDiscoverServices(CBPeripheral& peripheral, const MaybeError& error) override;
    void peripheralDidDiscoverCharacteristicsFor(
        CBPeripheral&, const std::shared_ptr<CBService>& service, const MaybeError& error) override;
    void peripheralDidUpdateValueFor(
        CBPeripheral&, const std::shared_ptr<CBCharacteristic>& characteristic, const MaybeError& error) override;
    void peripheralDidWriteValueFor(
        CBPeripheral&, const std::shared_ptr<CBCharacteristic>& characteristic, const MaybeError& error) override;

private:
    using Step = std::function<void(AidOnAir&)>;

    void listen();
    void watch();
    void fallSilent();
    void connectLink();
    void linkIsReady();
    void linkDidEnd();
    void endCentral();
    void forgetLink();
    bool isServing(const std::string& central) const { return _central == central && !_isEnding; }
    void onceReady(Step step);

    std::shared_ptr<Simulator> _simulator;
    std::string _name;
    std::weak_ptr<AidOnAirDelegate> _delegate;
    std::shared_ptr<bluez::GattServer> _server;
    std::shared_ptr<CBCentralManager> _radio;
    std::shared_ptr<CBPeripheral> _peripheral; ///< none until it has been heard
    bool _isAudible = false; ///< as the delegate knows
    bool _isSilent = false; ///< the same
    bool _isListening = false;
    int _watch = 0; ///< counts the watches, the last of which counts
    Seconds _lastHeard{ 0 };

    std::optional<std::string> _central; ///< whoever is connected over the air
    bool _isEnding = false; ///< it is to go, and has not yet
    std::set<CBUUID> _subscribed; ///< over the air
    std::shared_ptr<DispatchTimer> _limit; ///< until the link is ready
    bool _isReady = false;
    std::size_t _undiscovered = 0; ///< services whose characteristics are not known yet
    std::map<CBUUID, std::shared_ptr<CBCharacteristic>> _characteristics;
    std::vector<Step> _waiting; ///< for the link to be ready
    std::map<CBUUID, Queue<bluez::WriteAnswer>> _writes; ///< under way
    std::map<CBUUID, Queue<bluez::ReadAnswer>> _reads;
};

} // namespace aurisk::tool
