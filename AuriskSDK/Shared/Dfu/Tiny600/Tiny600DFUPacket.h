#pragma once

#include "AuriskSDK/Platform/Bluetooth.h"
#include "AuriskSDK/Platform/Dispatch.h"
#include "AuriskSDK/Shared/Dfu/DFUFirmware.h"
#include "AuriskSDK/Shared/Dfu/DFUServiceDelegate.h"
#include "AuriskSDK/Shared/Dfu/Tiny600/Tiny600DFUPacketCode.h"

#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace aurisk {

/// The steps of an update over the radio chip tiny600, one by one: each writes one frame, or subscribes, and turns what
/// the device answers into a call of what the step was given. What comes next is the caller's to say. Nothing is sent
/// again, and nothing has a time limit. Everything is called, and calls back, on the main queue, progress apart.
class Tiny600DFUPacket final : public CBPeripheralDelegate, public std::enable_shared_from_this<Tiny600DFUPacket> {
    struct Key {
        explicit Key() = default;
    };

public:
    using Success = std::function<void()>;
    using Complete = std::function<void()>;
    using Report = std::function<void(DFUError, const std::string& message)>;

    /// Frames go to `writeCharacteristic`, and answers come from `notifyCharacteristic`.
    static std::shared_ptr<Tiny600DFUPacket> create(
        std::shared_ptr<CBCharacteristic> writeCharacteristic, std::shared_ptr<CBCharacteristic> notifyCharacteristic);
    Tiny600DFUPacket(Key, std::shared_ptr<CBCharacteristic> writeCharacteristic,
        std::shared_ptr<CBCharacteristic> notifyCharacteristic);

    /// Bytes: the percentage is counted in 32 bits.
    static constexpr std::uint32_t largestImage = std::numeric_limits<std::uint32_t>::max() / 100;

    /// A firmware image that cannot be sent is a broken precondition: one of no bytes, or of more than `largestImage`.
    static void expectSendable(const DFUFirmware& firmware);

    const std::shared_ptr<CBCharacteristic>& writeCharacteristic() const { return _writeCharacteristic; }
    const std::shared_ptr<CBCharacteristic>& notifyCharacteristic() const { return _notifyCharacteristic; }

    /// The longest frame, in bytes: what one write of this connection carries, up to Tiny600DFUFrame::largestPacket; 20
    /// where the peripheral was not known.
    std::uint32_t packetSize() const { return _packetSize; }

    std::uint32_t seqSent() const { return _upload.seqSent; } ///< of the next packet; only its low 16 bits travel
    std::uint32_t bytesSent() const { return _upload.bytesSent; } ///< that the device has taken

    /// How long after the device has said what became of its boot that is told.
    static constexpr Seconds untilOutcome{ 0.1 };

    /// Whether the device has said that it starts the validated image, or that it cannot start one, and nobody has been
    /// told yet.
    bool isDecided() const { return _finalOutcomes > 0; }

    /// Subscribes to the answers: the first step of an update. What an earlier one has left is forgotten.
    void enableNotifications(Success onSuccess, Report onError);

    /// Begins a transfer. `onSuccess`: the device has space for it.
    void sendStartDfu(const DFUFirmware& firmware, Success onSuccess, Report onError);

    /// Writes the next packet. `onUploadComplete` instead of `onSuccess` once the device has taken the last one.
    /// Progress goes to `andReportProgressTo`, on `queue`.
    void sendNext(const DFUFirmware& packetsOf, std::weak_ptr<DFUProgressDelegate> andReportProgressTo,
        DispatchQueue& queue, Complete onUploadComplete, Success onSuccess, Report onError);

    /// `onSuccess`: the device has received the image as it was sent; `onComplete`: it starts it.
    void sendValidateData(const DFUFirmware& firmware, Complete onComplete, Success onSuccess, Report onError);

    void peripheralDidUpdateNotificationStateFor(CBPeripheral& peripheral,
        const std::shared_ptr<CBCharacteristic>& characteristic, const MaybeError& error) override;
    void peripheralDidUpdateValueFor(CBPeripheral& peripheral, const std::shared_ptr<CBCharacteristic>& characteristic,
        const MaybeError& error) override;

private:
    /// How far the transfer has come.
    struct Upload {
        std::uint32_t seqSent = 1;
        std::uint32_t bytesSent = 0;
        std::uint32_t currentBytes = 0; ///< in the packet under way
        std::uint32_t bytesSentSinceProgressNotification = 0; ///< what `bytesSent` was at the last report
        std::uint8_t progressReported = 0; ///< percent
        std::optional<Seconds> startTime = {}; ///< of the first packet
        std::optional<Seconds> lastTime = {}; ///< of the last report
    };
    struct Counted {
        Upload upload;
        std::uint8_t percent; ///< of the image, and more than 100 where the device repeats itself
    };

    void begin(Success onSuccess, Report onError);
    std::shared_ptr<CBPeripheral> reachedPeripheral(const CBCharacteristic& characteristic) const;
    void write(CBPeripheral& peripheral, const Data& frame, std::string_view beforeUuid = ", for: ") const;
    void act(Tiny600DFUResultCode status);
    void packetTaken();
    std::optional<Counted> counted() const;
    void reportProgress(std::uint8_t percent);
    void tellProgress(int percent, double currentSpeed, double avgSpeed);
    void soon(std::function<void()> outcome, bool isFinal);
    void succeed() const;
    void fail(DFUError error, const std::string& message) const;

    std::uint32_t _packetSize = 20;
    std::shared_ptr<CBCharacteristic> _writeCharacteristic;
    std::shared_ptr<CBCharacteristic> _notifyCharacteristic;
    Success _success;
    Report _report;
    Complete _complete;
    DispatchQueue* _queue = nullptr; ///< of progress
    std::weak_ptr<DFUProgressDelegate> _progressDelegate;
    std::uint32_t _totalBytes = 0;
    Upload _upload;
    int _update = 0; ///< counts updates
    int _finalOutcomes = 0; ///< of this one, still to be told
    bool _isValidating = false;
};

} // namespace aurisk
