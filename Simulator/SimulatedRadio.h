#pragma once

#include "AuriskSDK/Platform/Bluetooth.h"
#include "AuriskSDK/Platform/Dispatch.h"
#include "Simulator/SimulatedWorld.h"

#include <memory>
#include <string_view>
#include <vector>

namespace aurisk {

class SimulatedCentral;
struct SimulatedAir;

/// A Bluetooth radio that hears the aids of a world instead of real ones. Use it, and the centrals it makes, on the
/// thread that runs its queue.
///
/// Aids advertise only to a scan, and there is no timer where nobody scans. An aid that is connected, or off the air,
/// does not advertise. An attempt to connect to one that is off the air waits until it is back. An aid that starts anew
/// loses its link 0.3 s later and is off the air for the second after that.
///
/// The operations below that name an aid throw std::out_of_range where the world has none of that name.
class SimulatedRadio final : public BluetoothPlatform {
public:
    explicit SimulatedRadio(std::shared_ptr<SimulatedWorld> world, DispatchQueue& queue = DispatchQueue::main());
    ~SimulatedRadio() override;

    /// The central's state is unknown until its delegate has been told. With `showPowerAlert` a radio that is powered
    /// off is switched on.
    std::shared_ptr<CBCentralManager> makeCentralManager(
        std::weak_ptr<CBCentralManagerDelegate> delegate, const CBCentralManagerOptions& options) override;

    CBManagerState state() const;

    /// Every central is told. Any state other than powered-on ends all links: after the state, each peripheral that is
    /// connected is reported disconnected with an error, and each attempt as failed. Scans hear nothing until the radio
    /// is powered on again.
    void setState(CBManagerState state);

    /// The link of this aid goes, as if it had walked out of range; nothing where it has none.
    void dropLink(std::string_view aidName);

    /// How many messages its link has carried so far (LinkFaults.h says what counts).
    int messageCount(std::string_view aidName) const;

    /// How many aids have a link now, and whether this one has.
    int linkCount() const;
    bool isConnected(std::string_view aidName) const;

    /// The wearer of this aid acts; false where the aid does not accept that.
    bool perform(std::string_view aidName, const WearerAction& action);

private:
    std::shared_ptr<SimulatedAir> _air;
    std::vector<std::weak_ptr<SimulatedCentral>> _centrals;
};

} // namespace aurisk
