#pragma once

#include <AuriskSDK/AuriskSDK.h>

#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

/// Hears everything that the library reports and passes it on to the functions of `reports`, of which a program fills
/// in those that it waits for. The library holds delegates weakly: keep this alive.
class Listener final : public aurisk::AccessoryManagerStatusDelegate,
                       public aurisk::AccessoryManagerScanningDelegate,
                       public aurisk::AuriskAccessoryDelegate {
    template <typename T> using Ref = const std::shared_ptr<T>&;

public:
    struct Reports {
        std::function<void(bool)> isAvailable = {};
        std::function<void(Ref<aurisk::Accessory>, std::optional<int> rssi)> discovered = {};
        std::function<void(aurisk::AccessoryState)> state = {};
        std::function<void(const std::vector<std::shared_ptr<aurisk::AccessoryService>>&)> services = {};
        std::function<void(const aurisk::MaybeError&)> failedToConnect = {};
        std::function<void(const aurisk::MaybeError&)> disconnected = {};
        std::function<void(int previous, int current)> volume = {};
        std::function<void(int percent)> battery = {};
    };
    Reports reports;

    void accessoryManagerIsAvailable(Ref<aurisk::AccessoryManager>, bool isAvailable) override
    {
        pass(reports.isAvailable, isAvailable);
    }
    void accessoryManagerIsScanning(Ref<aurisk::AccessoryManager>, bool) override { }
    void accessoryManagerDidDiscover(
        Ref<aurisk::AccessoryManager>, Ref<aurisk::Accessory> accessory, std::optional<int> rssi) override
    {
        pass(reports.discovered, accessory, rssi);
    }
    void accessoryManagerDidUpdate(Ref<aurisk::AccessoryManager>, Ref<aurisk::Accessory>, std::optional<int>) override
    {
    }

    void deviceDidUpdate(Ref<aurisk::Accessory>, aurisk::AccessoryState state) override { pass(reports.state, state); }
    void deviceDidDiscoverServices(
        Ref<aurisk::Accessory>, const std::vector<std::shared_ptr<aurisk::AccessoryService>>& services) override
    {
        pass(reports.services, services);
    }
    void deviceDidConnect(Ref<aurisk::Accessory>, const aurisk::MaybeError&) override { }
    void deviceDidDisconnect(Ref<aurisk::Accessory>, const aurisk::MaybeError& error) override
    {
        pass(reports.disconnected, error);
    }
    void deviceDidFailToConnect(Ref<aurisk::Accessory>, const aurisk::MaybeError& error) override
    {
        pass(reports.failedToConnect, error);
    }

    void didSendRequest(Ref<aurisk::AuriskAccessory>, const aurisk::AuriskRequest&) override { }
    void batteryDidChanged(Ref<aurisk::AuriskAccessory>, int percent) override { pass(reports.battery, percent); }
    void didNotifyProgram(Ref<aurisk::AuriskAccessory>, int, int) override { }
    void didNotifyVolume(Ref<aurisk::AuriskAccessory>, int previous, int current) override
    {
        pass(reports.volume, previous, current);
    }
    void didUpdateValue(Ref<aurisk::AuriskAccessory>, const aurisk::AuriskRequest&) override { }

private:
    /// Calls a copy, as the report may replace the function that it runs in.
    template <typename Report, typename... Values> static void pass(Report report, Values&&... values)
    {
        if (report)
            report(std::forward<Values>(values)...);
    }
};
