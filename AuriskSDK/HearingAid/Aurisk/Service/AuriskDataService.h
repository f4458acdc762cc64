#pragma once

#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskRequest.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskResult.h"
#include "AuriskSDK/Shared/Accessory/AccessoryMessageHandler.h"
#include "AuriskSDK/Shared/Accessory/AccessoryService.h"

#include <functional>
#include <memory>
#include <vector>

namespace aurisk {

/// Hears what becomes of requests. Called on the main queue.
class AuriskDataServiceDelegate {
public:
    virtual ~AuriskDataServiceDelegate() = default;

    /// The request's turn has come: its frame has been handed to the radio, if there still is a link to carry it.
    virtual void didSendRequest(const AuriskRequest& request) = 0;
    /// The request has its reply, or its time has run out; called before the requester's own completion.
    virtual void didFinishRequest(const AuriskRequest& request, const AuriskResult& result) = 0;
    /// The wearer changed program (from 0) or volume.
    virtual void didNotify(int program, int volume) = 0;
};

/// Requests and replies over the GATT service AE30: frames are written to AE01 and notified by AE02. One request is on
/// the air at a time; requests made before the subscription to AE02 is confirmed wait for it.
class AuriskDataService final : public AccessoryService {
public:
    using Complete = std::function<void(const AuriskResult&)>;

    /// How long a reply may take where nobody says otherwise.
    static constexpr Seconds defaultTimeout{ 3.0 };

    /// Starts the discovery of the service's characteristics.
    static std::shared_ptr<AuriskDataService> create(
        std::string tag, std::shared_ptr<CBPeripheral> peripheral, std::shared_ptr<CBService> service);
    using AccessoryService::AccessoryService;

    std::shared_ptr<AuriskDataServiceDelegate> delegate() const { return _delegate.lock(); }
    void setDelegate(std::weak_ptr<AuriskDataServiceDelegate> delegate) { _delegate = std::move(delegate); }

    /// Queues a request. `complete`, which may be empty, is called once: with the device's answer, or with `timeout`
    /// when none has come `timeout` after the sending.
    void request(const AuriskRequest& request, Seconds timeout, Complete complete);

    /// Queues all requests, each with the default time-out, and calls `complete` once when every one has completed.
    void request(const std::vector<AuriskRequest>& requests, std::function<void()> complete);

    void didDiscoverCharacteristics(
        const std::vector<std::shared_ptr<CBCharacteristic>>& characteristics, const MaybeError& error) override;
    void didUpdateValueForCharacteristic(const std::shared_ptr<CBCharacteristic>& characteristic,
        CBPeripheral& peripheral, const MaybeError& error) override;
    void didUpdateNotificationStateForCharacteristic(
        const std::shared_ptr<CBCharacteristic>& characteristic, const MaybeError& error) override;

private:
    using Handler = AccessoryMessageHandler<AuriskRequest, AuriskResult>;

    void send(const AuriskRequest& request);
    void write(DataView data);

    std::shared_ptr<CBCharacteristic> _writeCharacteristic;
    std::shared_ptr<CBCharacteristic> _notifyCharacteristic;
    std::shared_ptr<Handler> _messageHandler; ///< there from `create` on
    std::weak_ptr<AuriskDataServiceDelegate> _delegate;
};

} // namespace aurisk
