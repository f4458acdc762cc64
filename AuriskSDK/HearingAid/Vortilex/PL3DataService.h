#pragma once

#include "AuriskSDK/HearingAid/Vortilex/Data/PL3Request.h"
#include "AuriskSDK/HearingAid/Vortilex/Data/PL3Result.h"
#include "AuriskSDK/Shared/Accessory/AccessoryMessageHandler.h"
#include "AuriskSDK/Shared/Accessory/AccessoryService.h"

#include <deque>
#include <functional>
#include <memory>
#include <vector>

namespace aurisk {

/// Hears what becomes of requests, and what a device says unasked. Called on the main queue.
class PL3DataServiceDelegate {
public:
    virtual ~PL3DataServiceDelegate() = default;

    /// The request has its result; called before the requester's own completion.
    virtual void didFinishRequest(const PL3Request& request, const PL3Result& result) = 0;
    /// A notification that answers no request.
    virtual void didNotify(PL3Command command, const Data& data) = 0;
};

/// Requests and answers over the one characteristic of the PL3 service, both as CHDLC frames. One request is on the air
/// at a time; requests made before the subscription is confirmed wait for it.
///
/// A read ends with the next notification, whatever that is about: nothing in it says which request it answers. A write
/// ends when the device confirms its first piece of at most 20 bytes; the confirmations of the other pieces end
/// nothing, however late they come.
class PL3DataService final : public AccessoryService {
public:
    using Complete = std::function<void(const PL3Result&)>;

    /// 95E81860-47B6-C216-A125-403009D6F03E
    static constexpr CBUUID serviceUUID{ { 0x95, 0xE8, 0x18, 0x60, 0x47, 0xB6, 0xC2, 0x16, 0xA1, 0x25, 0x40, 0x30, 0x09,
        0xD6, 0xF0, 0x3E } };
    /// 95E82A96-47B6-C216-A125-403009D6F03E
    static constexpr CBUUID microGattCharactUUID{ { 0x95, 0xE8, 0x2A, 0x96, 0x47, 0xB6, 0xC2, 0x16, 0xA1, 0x25, 0x40,
        0x30, 0x09, 0xD6, 0xF0, 0x3E } };

    /// How long an answer or a confirmation may take.
    static constexpr Seconds defaultTimeout{ 3.0 };

    /// Starts the discovery of the service's characteristics.
    static std::shared_ptr<PL3DataService> create(
        std::string tag, std::shared_ptr<CBPeripheral> peripheral, std::shared_ptr<CBService> service);
    using AccessoryService::AccessoryService;

    std::shared_ptr<PL3DataServiceDelegate> delegate() const { return _delegate.lock(); }
    void setDelegate(std::weak_ptr<PL3DataServiceDelegate> delegate) { _delegate = std::move(delegate); }

    /// Where frames are written to and notified by; none until it has been discovered.
    const std::shared_ptr<CBCharacteristic>& microGattCharact() const { return _microGattCharact; }

    /// Queues a request. `complete`, which may be empty, is called once: with what the device answered or, for a write,
    /// what was written; with `timeout` when neither has come `timeout` after the sending; with `unknown` where the
    /// device refuses the write. Data of more than 254 bytes are a broken precondition at the sending, a write without
    /// data at its confirmation.
    void request(const PL3Request& request, Seconds timeout, Complete complete);

    void didDiscoverCharacteristics(
        const std::vector<std::shared_ptr<CBCharacteristic>>& characteristics, const MaybeError& error) override;
    void didUpdateValueForCharacteristic(const std::shared_ptr<CBCharacteristic>& characteristic,
        CBPeripheral& peripheral, const MaybeError& error) override;
    void didWriteValueForCharacteristic(
        const std::shared_ptr<CBCharacteristic>& characteristic, const MaybeError& error) override;
    void didUpdateNotificationStateForCharacteristic(
        const std::shared_ptr<CBCharacteristic>& characteristic, const MaybeError& error) override;

private:
    using Handler = AccessoryMessageHandler<PL3Request, PL3Result>;

    /// A piece of a frame on its way: the device confirms each, in the order of their sending.
    struct Piece {
        Seconds sent{ 0 };
        std::optional<PL3Request> ends = {}; ///< the write that its confirmation ends, while that is on the air
    };

    void send(const PL3Request& request);
    void forgetLostPieces();

    std::shared_ptr<CBCharacteristic> _microGattCharact;
    std::shared_ptr<Handler> _messageHandler; ///< there from `create` on
    std::weak_ptr<PL3DataServiceDelegate> _delegate;
    std::deque<Piece> _unconfirmed;
};

} // namespace aurisk
