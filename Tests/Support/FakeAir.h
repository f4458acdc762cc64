#pragma once

#include "AuriskSDK/Platform/BlueZ/GattServer.h"
#include "AuriskSDK/Shared/Utils/HexToData.h"

#include <map>
#include <string>
#include <vector>

namespace aurisk::tests {

/// The air around one adapter, as a test plays it. It writes down what the server is told, a line each.
class FakeGattServer final : public bluez::GattServer {
public:
    FakeGattServer(bluez::GattServerOptions given, std::weak_ptr<bluez::GattServerDelegate> delegate)
        : options(std::move(given))
        , _delegate(std::move(delegate))
    {
    }

    std::string adapter() const override { return options.adapter; }
    std::string address() const override { return "00:AA:01:01:00:01"; }
    void advertise(std::optional<CBAdvertisementData> wanted) override { advertisement = std::move(wanted); }
    void notify(const CBUUID& characteristic, DataView value) override
    {
        lines->push_back("notified " + characteristic.uuidString() + " " + ask_hexadecimal(value));
    }
    void disconnectCentral(const std::string& central) override { lines->push_back("ends " + central); }
    void stop(std::function<void()> stopped) override
    {
        lines->push_back("stopped");
        stopped();
    }

    void starts()
    {
        tell().gattServerDidStart(*this);
        tell().gattServerDidStartAdvertising(*this);
    }
    void stops(const std::string& why) { tell().gattServerDidStop(*this, why); }
    void connects(const std::string& central) { tell().gattServerDidConnect(*this, central); }
    void disconnects(const std::string& central) { tell().gattServerDidDisconnect(*this, central); }
    void subscribes(const CBUUID& characteristic, bool on = true)
    {
        tell().gattServerDidSubscribe(*this, characteristic, on);
    }

    /// What comes of it is written down: "confirmed AE01", "refused AE01 0" with the error, or "dropped AE01".
    void writes(const std::string& central, const CBUUID& characteristic, std::string_view value,
        CBCharacteristicWriteType type = CBCharacteristicWriteType::withResponse)
    {
        const auto end = std::make_shared<End>(lines, characteristic);
        tell().gattServerDidReceiveWrite(*this, central, characteristic, *ask_hexadecimal(value), type,
            [end](std::optional<bluez::GattError> error) {
                end->is(error ? "refused" : "confirmed", error ? " " + std::to_string(int(*error)) : "");
            });
    }
    void reads(const std::string& central, const CBUUID& characteristic)
    {
        const auto end = std::make_shared<End>(lines, characteristic);
        tell().gattServerDidReceiveRead(*this, central, characteristic,
            [end](const Data& value) { end->is("read", " " + ask_hexadecimal(value)); });
    }

    std::vector<std::string> take() { return std::exchange(*lines, {}); }

    bluez::GattServerOptions options;
    std::optional<CBAdvertisementData> advertisement;
    std::shared_ptr<std::vector<std::string>> lines = std::make_shared<std::vector<std::string>>();

private:
    /// How one request ends: each of them does, and once.
    struct End {
        End(std::shared_ptr<std::vector<std::string>> written, const CBUUID& characteristic)
            : lines(std::move(written))
            , uuid(characteristic.uuidString())
        {
        }
        ~End()
        {
            if (count == 0)
                lines->push_back("dropped " + uuid);
        }
        void is(const std::string& what, const std::string& more)
        {
            lines->push_back((++count > 1 ? "again " : "") + what + " " + uuid + more);
        }
        std::shared_ptr<std::vector<std::string>> lines;
        std::string uuid;
        int count = 0;
    };

    bluez::GattServerDelegate& tell() { return *_delegate.lock(); }

    std::weak_ptr<bluez::GattServerDelegate> _delegate;
};

/// Makes them, and keeps them by the names that they serve under.
class FakeAir final : public bluez::GattServerPlatform {
public:
    std::shared_ptr<bluez::GattServer> makeGattServer(
        bluez::GattServerOptions options, std::weak_ptr<bluez::GattServerDelegate> delegate) override
    {
        const auto server = std::make_shared<FakeGattServer>(options, std::move(delegate));
        servers[options.name] = server;
        return server;
    }

    std::map<std::string, std::shared_ptr<FakeGattServer>> servers;
};

} // namespace aurisk::tests
