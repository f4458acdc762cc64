#pragma once

#include "AuriskSDK/Platform/Bluetooth.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace aurisk {

/// One GATT service of a connected accessory, in the hands of the family that knows it. Made when services are
/// discovered, owned by the accessory, replaced at the next connection. Unless its family says otherwise it is not told
/// of connections and disconnections: it learns of a lost link by its own failed writes. Everything here is called on
/// the main queue.
class AccessoryService : public std::enable_shared_from_this<AccessoryService> {
protected:
    struct Key {
        explicit Key() = default;
    };

public:
    AccessoryService(
        Key, std::string tag, std::shared_ptr<CBPeripheral> peripheral, std::shared_ptr<CBService> service);
    virtual ~AccessoryService() = default;

    /// The service's UUID string, which begins each of its log lines.
    const std::string& tag() const { return _tag; }

    /// Writes one log line, behind the tag in square brackets.
    virtual void log(std::string_view message) const;

    virtual void didConnect() { }
    virtual void didDisconnect(const MaybeError&) { }
    virtual void didDiscoverCharacteristics(const std::vector<std::shared_ptr<CBCharacteristic>>&, const MaybeError&) {
    }
    virtual void didUpdateValueForCharacteristic(
        const std::shared_ptr<CBCharacteristic>&, CBPeripheral&, const MaybeError&)
    {
    }
    virtual void didWriteValueForCharacteristic(const std::shared_ptr<CBCharacteristic>&, const MaybeError&) { }
    virtual void didUpdateNotificationStateForCharacteristic(
        const std::shared_ptr<CBCharacteristic>&, const MaybeError&)
    {
    }

protected:
    const std::shared_ptr<CBPeripheral>& peripheral() const { return _peripheral; }
    const std::shared_ptr<CBService>& service() const { return _service; }

private:
    std::shared_ptr<CBPeripheral> _peripheral;
    std::shared_ptr<CBService> _service;
    std::string _tag;
};

} // namespace aurisk
