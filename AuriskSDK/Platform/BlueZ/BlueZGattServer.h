#pragma once

#include "AuriskSDK/Platform/BlueZ/Advertiser.h"
#include "AuriskSDK/Platform/BlueZ/GattTable.h"

#include <set>

namespace aurisk::bluez {

class BusAnswer;

/// A server on one adapter of the daemon. It begins anew with each life of the daemon and each return of the adapter.
class BlueZGattServer final : public GattServer,
                              public BlueZObjects::Listener,
                              public std::enable_shared_from_this<BlueZGattServer> {
    struct Key {
        explicit Key() = default;
    };

public:
    /// `root` is where its objects are on the bus.
    static std::shared_ptr<BlueZGattServer> create(std::shared_ptr<BlueZObjects> objects, std::string root,
        GattServerOptions options, std::weak_ptr<GattServerDelegate> delegate);
    BlueZGattServer(Key, std::shared_ptr<BlueZObjects> objects, std::string root, GattServerOptions options,
        std::weak_ptr<GattServerDelegate> delegate);
    ~BlueZGattServer() override;

    std::string adapter() const override;
    std::string address() const override;
    void advertise(std::optional<CBAdvertisementData> advertisement) override;
    void notify(const CBUUID& characteristic, DataView value) override;
    void disconnectCentral(const std::string& central) override;
    void stop(std::function<void()> stopped) override;

    void daemonDidChange() override;
    void didAppear(const std::string& path, const std::string& interface) override;
    void didChange(const std::string& path, const std::string& interface, const BusDictionary& changed) override;
    void didVanish(const std::string& path, const std::string& interface) override;

private:
    // From nothing to serving, a step at a time
    void beginSoon();
    void begin();
    std::optional<std::string> obstacle();
    bool isDaemonStarting() const;
    void beginLater(Seconds delay);
    void switchOn();
    void takeName();
    void noteAlias();
    void registerTable();
    void start();
    void pause(const std::string& why);
    void tryLater(const std::string& why);
    void end();
    void isForgotten();

    // What the daemon asks for
    void called(const BusRequest& request);
    void tellProperties(const BusRequest& request, BusAnswer& answer) const;
    void read(const CBUUID& characteristic, const BusRequest& request, std::shared_ptr<BusAnswer> answer);
    void write(const GattCharacteristic& characteristic, const BusRequest& request, std::shared_ptr<BusAnswer> answer);
    void subscribe(const CBUUID& characteristic, bool isSubscribed);

    void lookAt(const std::string& device);
    std::string connected(const std::string& device);
    void disconnected(const std::string& device);
    std::string centralOf(const BusDictionary& options);

    void set(const char* property, BusValue value, std::function<void(BlueZGattServer&, const BusReply&)> answered);
    void call(const char* interface, const char* member, BusValues arguments,
        std::function<void(BlueZGattServer&, const BusReply&)> answered);

    template <typename... Declared, typename... Given>
    void tell(void (GattServerDelegate::*event)(GattServer&, Declared...), Given&&... given)
    {
        if (const auto delegate = _delegate.lock(); delegate && !_isEnding)
            (delegate.get()->*event)(*this, std::forward<Given>(given)...);
    }

    std::shared_ptr<BlueZObjects> _objects;
    std::string _root;
    GattServerOptions _options;
    std::weak_ptr<GattServerDelegate> _delegate;
    GattTable _table;
    std::shared_ptr<Advertiser> _advertiser;
    std::string _adapter; ///< its path; empty until it is known
    std::optional<std::string> _previousAlias; ///< empty: none of its own; none: it has not been changed yet
    std::optional<std::string> _obstacle; ///< what the delegate was told last, unless it has started since
    std::map<std::string, std::string> _centrals; ///< the addresses of those that are connected, by path
    std::set<CBUUID> _subscribed;
    bool _maySwitchOn = true;
    bool _mayBeRegistered = false; ///< the table, in this life of the daemon: it has been asked to take it
    bool _isRegistered = false;
    Seconds _daemonBegan{ 0 };
    bool _isServing = false;
    bool _isEnding = false;
    std::shared_ptr<DispatchGroup> _end = std::make_shared<DispatchGroup>(); ///< what is left to be done by then
    int _spell = 0; ///< counts what makes answers and timers void
};

} // namespace aurisk::bluez
