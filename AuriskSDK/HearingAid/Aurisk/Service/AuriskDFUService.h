#pragma once

#include "AuriskSDK/Shared/Accessory/AccessoryService.h"
#include "AuriskSDK/Shared/Dfu/DFUConfigure.h"
#include "AuriskSDK/Shared/Dfu/Tiny600/Tiny600DFUPacket.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace aurisk {

/// Firmware updates over the GATT service AE3A: frames are written to AE3B, and AE3C notifies what the device says.
///
/// An update is a chain of steps, each begun by the device's answer to the one before: subscribe, start, packet after
/// packet, validate, and the device starts the new image. A device that falls silent is waited for, without a limit.
class AuriskDFUService final : public AccessoryService {
public:
    /// Starts the discovery of the service's characteristics.
    static std::shared_ptr<AuriskDFUService> create(
        std::string tag, std::shared_ptr<CBPeripheral> peripheral, std::shared_ptr<CBService> service);
    using AccessoryService::AccessoryService;

    /// Whether an update may start: at first, and once one has been aborted. Neither success nor failure makes it true.
    bool aborted() const { return _aborted; }

    /// Begins an update; nothing while `aborted` is false. What becomes of it is told to the configuration's delegates,
    /// which are kept alive only where they hear of progress. A configuration without an image, or with one that cannot
    /// be sent (Tiny600DFUPacket::expectSendable), is a broken precondition.
    void start(std::shared_ptr<DFUConfigure> configure);

    /// Ends the update, whatever has become of it, and returns `aborted`: true. The device is not told.
    /// `DFUState::aborted` is reported, except where the update was still waiting for the characteristics.
    bool abort();

    /// The link has gone: an update that has neither completed nor been aborted fails, perhaps once more, with
    /// DFUError::receivingNotificationFailed.
    void didDisconnect(const MaybeError& error) override;

    void didDiscoverCharacteristics(
        const std::vector<std::shared_ptr<CBCharacteristic>>& characteristics, const MaybeError& error) override;
    void didUpdateNotificationStateForCharacteristic(
        const std::shared_ptr<CBCharacteristic>& characteristic, const MaybeError& error) override;
    void didUpdateValueForCharacteristic(const std::shared_ptr<CBCharacteristic>& characteristic,
        CBPeripheral& peripheral, const MaybeError& error) override;

private:
    using Report = Tiny600DFUPacket::Report;

    void enableControlPoint();
    void sendStart();
    void upload();
    void validate();
    void validated();
    void completed();

    std::function<void()> next(void (AuriskDFUService::*step)());
    Report failure();
    void fail(DFUError error, const std::string& message);
    std::shared_ptr<AuriskDFUService> self();
    void tell(DFUState state) const;

    /// The packet layer: there once both characteristics are known.
    std::shared_ptr<Tiny600DFUPacket> _dfuPacketCharacteristic;
    bool _aborted = true;
    bool _isUnderWay = false; ///< started, and neither completed nor aborted
    std::function<void()> _success; ///< once the characteristics have been discovered
    Report _report; ///< where they are not
    std::shared_ptr<DFUProgressDelegate> _progressDelegate;
    std::shared_ptr<DFUFirmware> _firmware;
    std::shared_ptr<DFUConfigure> _configure;
};

} // namespace aurisk
