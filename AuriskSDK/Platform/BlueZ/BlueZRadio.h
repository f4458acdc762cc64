#pragma once

#include "AuriskSDK/Platform/BlueZ/BlueZ.h"
#include "AuriskSDK/Platform/BlueZ/Connector.h"
#include "AuriskSDK/Platform/BlueZ/PairingAgent.h"

#include <set>

namespace aurisk::bluez {

class BlueZCentral;

/// One adapter of the daemon, which the centrals of a platform share: its state, its scan, its connections. It hands on
/// to them what the daemon tells of its devices.
class BlueZRadio final : public Platform,
                         public BlueZObjects::Listener,
                         public std::enable_shared_from_this<BlueZRadio> {
    class Key {
        friend class BlueZRadio;
        Key() = default;
    };

public:
    static std::shared_ptr<BlueZRadio> create(PlatformOptions options);
    BlueZRadio(Key, PlatformOptions options);

    std::shared_ptr<CBCentralManager> makeCentralManager(
        std::weak_ptr<CBCentralManagerDelegate> delegate, const CBCentralManagerOptions& options) override;
    std::string whyNot() const override;

    CBManagerState state() const { return _state; }
    const PlatformOptions& options() const { return _options; }
    BlueZObjects& objects() const { return *_objects; }
    Connector& connector() const { return *_connector; }

    const std::string& adapter() const { return _adapter; }

    /// A central has begun to scan, or ended it.
    void scanDidChange();

    /// What is connected, or tries to be, may want to be paired with, and is let go where the daemon forgets whose it
    /// is.
    void didOccupy(const std::string& devicePath);
    void didFree(const std::string& devicePath);

    void daemonDidChange() override;
    void didAppear(const std::string& path, const std::string& interface) override;
    void didChange(const std::string& path, const std::string& interface, const BusDictionary& changed) override;
    void didVanish(const std::string& path, const std::string& interface) override;

private:
    template <typename Work> void eachCentral(Work work);
    std::string findAdapter() const;
    CBManagerState stateNow() const;
    void update();
    void become(CBManagerState state);
    void powerOn();
    void endIfLeftBehind(const std::string& device);
    void didHear(const std::string& devicePath);
    void linkDidGo(const std::string& devicePath);
    BluetoothError whyLost() const;

    PlatformOptions _options;
    std::shared_ptr<BlueZObjects> _objects = BlueZObjects::create();
    std::shared_ptr<Discovery> _discovery = std::make_shared<Discovery>(_objects);
    std::shared_ptr<Connector> _connector = std::make_shared<Connector>(_objects, _discovery);
    std::shared_ptr<PairingAgent> _agent;
    std::vector<std::weak_ptr<BlueZCentral>> _centrals;
    std::string _adapter; ///< its path; kept while it is away
    CBManagerState _state = CBManagerState::unknown;
    bool _isToBePoweredOn = false;
    int _absence = 0; ///< counts how often daemon or adapter have gone, or come back
    std::multiset<std::string> _occupied; ///< the devices that a central has, or tries to have
    std::set<std::string> _leftBehind; ///< those that were when the daemon went
    Seconds _daemonBegan{ 0 };
};

} // namespace aurisk::bluez
