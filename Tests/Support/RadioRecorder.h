#pragma once

#include "AuriskSDK/Platform/Bluetooth.h"
#include "AuriskSDK/Shared/Utils/HexToData.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace aurisk::tests {

using Lines = std::vector<std::string>;

/// Writes down everything that the port tells, one line each. Nothing may be told while it is told something.
class RadioRecorder : public CBCentralManagerDelegate, public CBPeripheralDelegate {
public:
    Lines heard;
    std::map<std::string, std::shared_ptr<CBPeripheral>> found; ///< by name
    std::function<void(const std::string& line)> onLine = {};

    Lines take() { return std::exchange(heard, {}); }

    void centralManagerDidUpdateState(CBCentralManager& central) override
    {
        hear("state " + std::to_string(int(central.state())));
    }
    void centralManagerDidDiscover(CBCentralManager&, const std::shared_ptr<CBPeripheral>& peripheral,
        const CBAdvertisementData&, std::optional<int> rssi) override
    {
        found[*peripheral->name()] = peripheral;
        hear("found " + *peripheral->name() + " " + std::to_string(*rssi));
    }
    void centralManagerDidConnect(CBCentralManager&, const std::shared_ptr<CBPeripheral>& peripheral) override
    {
        hear("connected " + nameOf(peripheral));
    }
    void centralManagerDidDisconnectPeripheral(
        CBCentralManager&, const std::shared_ptr<CBPeripheral>& peripheral, const MaybeError& error) override
    {
        hear("disconnected " + nameOf(peripheral) + text(error));
    }
    void centralManagerDidFailToConnect(
        CBCentralManager&, const std::shared_ptr<CBPeripheral>& peripheral, const MaybeError& error) override
    {
        hear("failed " + nameOf(peripheral) + text(error));
    }

    void peripheralDidDiscoverServices(CBPeripheral& peripheral, const MaybeError& error) override
    {
        std::string line = "services";
        for (const auto& service : peripheral.services())
            line += " " + service->uuid().uuidString();
        hear(line + text(error));
    }
    void peripheralDidDiscoverCharacteristicsFor(
        CBPeripheral&, const std::shared_ptr<CBService>& service, const MaybeError& error) override
    {
        auto line = "characteristics of " + service->uuid().uuidString() + ":";
        for (const auto& one : service->characteristics())
            line += " " + one->uuid().uuidString() + "/" + std::to_string(int(one->properties()));
        hear(line + text(error));
    }
    void peripheralDidUpdateValueFor(
        CBPeripheral&, const std::shared_ptr<CBCharacteristic>& one, const MaybeError& error) override
    {
        hear("value " + one->uuid().uuidString() + (error ? text(error) : " " + ask_hexadecimal(*one->value())));
    }
    void peripheralDidWriteValueFor(
        CBPeripheral&, const std::shared_ptr<CBCharacteristic>& one, const MaybeError& error) override
    {
        hear("written " + one->uuid().uuidString() + text(error));
    }
    void peripheralDidUpdateNotificationStateFor(
        CBPeripheral&, const std::shared_ptr<CBCharacteristic>& one, const MaybeError& error) override
    {
        hear("subscribed " + one->uuid().uuidString() + text(error));
    }

protected:
    virtual std::string nameOf(const std::shared_ptr<CBPeripheral>& peripheral) const { return *peripheral->name(); }
    virtual std::string text(const MaybeError& error) const
    {
        return error ? ", " + error->domain + " " + std::to_string(error->code) : "";
    }
    void hear(const std::string& line)
    {
        EXPECT_FALSE(std::exchange(_isBeingTold, true)) << line << " came inside another callback";
        heard.push_back(line);
        if (onLine)
            onLine(line);
        _isBeingTold = false;
    }

private:
    bool _isBeingTold = false;
};

// Requests to an aid whose programs are at volumes 10, 11 and 12, and how it answers.
constexpr auto readVolume1 = "fe68110201048016", volume1Is10 = "value AE02 00fe68910301040a0b16";
constexpr auto readVolume2 = "fe68110202048116", volume2Is11 = "value AE02 00fe68910302040b0d16";
constexpr auto readVolume3 = "fe68110203048216", volume3Is12 = "value AE02 00fe68910303040c0f16";

} // namespace aurisk::tests
