#include "AuriskSDK/Platform/BlueZ/GattServer.h"

#include "AuriskSDK/Platform/BlueZ/BlueZGattServer.h"

namespace aurisk::bluez {

namespace {

/// All servers share one connection to the bus.
class BlueZGattServers final : public GattServerPlatform {
public:
    std::shared_ptr<GattServer> makeGattServer(
        GattServerOptions options, std::weak_ptr<GattServerDelegate> delegate) override
    {
        return BlueZGattServer::create(
            _objects, "/aurisk/server" + std::to_string(_count++), std::move(options), std::move(delegate));
    }

private:
    std::shared_ptr<BlueZObjects> _objects = BlueZObjects::create();
    int _count = 0;
};

} // namespace

std::shared_ptr<GattServerPlatform> makeGattServerPlatform() { return std::make_shared<BlueZGattServers>(); }

} // namespace aurisk::bluez
