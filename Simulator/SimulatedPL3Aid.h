#pragma once

#include "Simulator/HdlcFrame.h"
#include "Simulator/PL3AidState.h"
#include "Simulator/SimulatedAid.h"

namespace aurisk {

/// A hearing aid that speaks the PL3 protocol.
///
/// It has one service, 95E81860-47B6-C216-A125-403009D6F03E, with one characteristic,
/// 95E82A96-47B6-C216-A125-403009D6F03E: frames are written to it, a piece at a time, and notified by it.
///
/// A read is answered with its command; a write says no more than that it was confirmed. The protocol has no error
/// reply, so the aid refuses by letting the write fail that ends the frame: an unknown command, a read of what can
/// only be written and the other way round, a payload of the wrong length or out of range. When its wearer changes
/// volume, program, battery or mute it says so by itself.
class SimulatedPL3Aid final : public SimulatedAid {
public:
    /// Throws SimulatedWorldError for a state that cannot be.
    explicit SimulatedPL3Aid(PL3AidState state);

    /// `place` is what an error calls the value.
    static std::shared_ptr<SimulatedPL3Aid> fromJson(const nlohmann::json& value, const std::string& place);

    const PL3AidState& state() const { return _state; }

    /// Changes the aid behind everybody's back: nothing is notified. What is missing of blocks has what the factory
    /// gives it. Throws SimulatedWorldError for a state that cannot be, and changes nothing then.
    void setState(PL3AidState state);

    std::string name() const override { return _state.name; }
    std::string address() const override { return _state.address; }
    bool isOnAir() const override { return !_state.switchedOff; }
    CBAdvertisementData advertisement() const override;
    std::vector<SimulatedService> gattTable() const override;
    void didDisconnect() override;
    void didReceive(const CBUUID& characteristic, DataView value) override;
    void refuse(const CBUUID& characteristic, DataView value) override;
    bool failsWrite(const CBUUID& characteristic, DataView value, bool refused) const override;
    std::optional<Data> read(const CBUUID&) const override { return std::nullopt; }
    bool accepts(const WearerAction& action) const override;
    bool perform(const WearerAction& action) override;
    nlohmann::json toJson() const override;

private:
    void announce(std::uint8_t command) const;

    PL3AidState _state;
    HdlcReceiver _receiver;
};

} // namespace aurisk
