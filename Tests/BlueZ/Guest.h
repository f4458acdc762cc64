#pragma once

#include "AuriskSDK/Platform/BlueZ/BlueZ.h"
#include "AuriskSDK/Platform/BlueZ/GattServer.h"
#include "Simulator/SimulatedAuriskAid.h"
#include "Simulator/Simulator.h"
#include "Tests/Support/RealTime.h"
#include "Tools/aurisk/AidOnAir.h"

#include <memory>
#include <string>
#include <vector>

/// The guest that these tests run in (scripts/bluez-vm): a Bluetooth daemon, two adapters, and the air between them.

namespace aurisk::tests {

constexpr auto hostAdapter = "hci0", aidAdapter = "hci1";

/// Runs a program of the guest's, and the main queue meanwhile; false where it fails.
bool perform(const std::vector<std::string>& command);

void setPower(const std::string& adapter, bool on);

/// Whether the aid's adapter is within reach. A link that is there does not notice.
void setInReach(bool within);

/// How many sockets this process has: each of them is a connection to the bus.
int countOfSockets();

/// Leaves radio and daemon to the next test as it should find them.
void tidyUp();

/// A simulated aid that is served on the aid's adapter by this process.
class ServedAid final : public tool::AidOnAirDelegate {
public:
    /// On the air by the end of this.
    static std::shared_ptr<ServedAid> create(std::shared_ptr<SimulatedAuriskAid> aid);
    ~ServedAid() override;

    Simulator& simulator() const { return *_simulator; }
    const SimulatedAuriskAid& aid() const;
    bool isOnAir() const { return _isOnAir; }
    bool isConnected() const { return _isConnected; }

    void aidDidBecomeAudible(const tool::AidOnAir&) override { _isOnAir = true; }
    void aidDidFallSilent(const tool::AidOnAir&) override { _isOnAir = false; }
    void aidCannotBeHeard(const tool::AidOnAir&, const std::string&) override { _isOnAir = false; }
    void aidDidConnect(const tool::AidOnAir&, const std::string&) override { _isConnected = true; }
    void aidDidDisconnect(const tool::AidOnAir&, const std::string&) override { _isConnected = false; }

private:
    std::shared_ptr<Simulator> _simulator;
    std::shared_ptr<bluez::GattServerPlatform> _servers = bluez::makeGattServerPlatform();
    std::shared_ptr<tool::AidOnAir> _aid;
    bool _isOnAir = false, _isConnected = false;
};

} // namespace aurisk::tests
