#pragma once

#include "AuriskSDK/HearingAid/Aurisk/AuriskAccessory.h"
#include "AuriskSDK/Shared/Accessory/AccessoryManager.h"

#include <string>
#include <vector>

namespace aurisk::tests {

using Lines = std::vector<std::string>;

/// An application that writes down all it hears, one line each, in order.
class Application final : public AccessoryManagerStatusDelegate,
                          public AccessoryManagerScanningDelegate,
                          public AuriskAccessoryDelegate,
                          public std::enable_shared_from_this<Application> {
public:
    Lines heard;
    int updates = 0; ///< advertisements of devices that were known; not among the lines
    std::optional<int> lastRssi;
    MaybeError lastError; ///< why a connection failed

    /// What was heard since it was last asked.
    Lines take() { return std::exchange(heard, {}); }

    void hear(const std::string& line)
    {
        heard.push_back(line);
        if (onLine)
            onLine(line);
    }

    /// Sends a request and hears "<request> => <result>".
    void request(AuriskAccessory& accessory, const AuriskRequest& request)
    {
        accessory.request(request, [weak = weak_from_this(), request](const AuriskResult& result) {
            if (const auto self = weak.lock())
                self->hear(description(request) + " => " + description(result));
        });
    }

    void accessoryManagerIsAvailable(const std::shared_ptr<AccessoryManager>&, bool isAvailable) override
    {
        hear(isAvailable ? "available" : "unavailable");
    }
    void accessoryManagerIsScanning(const std::shared_ptr<AccessoryManager>&, bool isScanning) override
    {
        hear(isScanning ? "scanning" : "not scanning");
    }
    void accessoryManagerDidDiscover(const std::shared_ptr<AccessoryManager>&,
        const std::shared_ptr<Accessory>& accessory, std::optional<int> rssi) override
    {
        lastRssi = rssi;
        hear("discovered " + accessory->name());
    }
    void accessoryManagerDidUpdate(
        const std::shared_ptr<AccessoryManager>&, const std::shared_ptr<Accessory>&, std::optional<int> rssi) override
    {
        lastRssi = rssi;
        ++updates;
    }

    void deviceDidUpdate(const std::shared_ptr<Accessory>&, AccessoryState state) override
    {
        static const Lines names = { "disconnected", "disconnecting", "connecting", "connected" };
        hear("state " + names.at(static_cast<std::size_t>(state)));
    }
    void deviceDidDiscoverServices(
        const std::shared_ptr<Accessory>&, const std::vector<std::shared_ptr<AccessoryService>>& services) override
    {
        std::string line = "services";
        for (const auto& service : services)
            line += " " + service->tag();
        hear(line);
        if (onServices)
            onServices();
    }
    void deviceDidConnect(const std::shared_ptr<Accessory>& accessory, const MaybeError& error) override
    {
        hear("did connect" + suffix(error));
        if (onConnect)
            onConnect(accessory);
    }
    void deviceDidDisconnect(const std::shared_ptr<Accessory>&, const MaybeError& error) override
    {
        hear("did disconnect" + suffix(error));
        if (onDisconnect)
            onDisconnect();
    }
    void deviceDidFailToConnect(const std::shared_ptr<Accessory>&, const MaybeError& error) override
    {
        lastError = error;
        hear("did fail to connect" + suffix(error));
    }

    void didSendRequest(const std::shared_ptr<AuriskAccessory>&, const AuriskRequest& request) override
    {
        hear("sent " + description(request));
        if (onSend)
            onSend(request);
    }
    void batteryDidChanged(const std::shared_ptr<AuriskAccessory>&, int bat) override
    {
        hear("battery " + std::to_string(bat));
    }
    void didNotifyProgram(const std::shared_ptr<AuriskAccessory>&, int previous, int current) override
    {
        hear("program " + std::to_string(previous) + " to " + std::to_string(current));
    }
    void didNotifyVolume(const std::shared_ptr<AuriskAccessory>&, int previous, int current) override
    {
        hear("volume " + std::to_string(previous) + " to " + std::to_string(current));
    }
    void didUpdateValue(const std::shared_ptr<AuriskAccessory>&, const AuriskRequest& request) override
    {
        hear("updated " + description(request));
    }

    std::function<void(const std::string& line)> onLine;
    std::function<void(const std::shared_ptr<Accessory>&)> onConnect;
    std::function<void()> onServices, onDisconnect;
    std::function<void(const AuriskRequest&)> onSend;

private:
    static std::string suffix(const MaybeError& error) { return error ? " with an error" : ""; }
};

} // namespace aurisk::tests
