#pragma once

#include "Simulator/AuriskAidState.h"
#include "Simulator/FirmwareAcceptor.h"
#include "Simulator/SimulatedAid.h"

namespace aurisk {

struct AidFrame;

/// A hearing aid that speaks the Aurisk protocol.
///
/// Services: AE30 with AE01 (requests, written) and AE02 (replies, notified), 180F with 2A19 (battery, percent), AE3A
/// with AE3B (frames of an update, written) and AE3C (their answers, notified).
///
/// Each request is answered on AE02, with its command plus 0x80 or, when refused, plus 0xC0, and its two identifiers.
/// It refuses what it does not know, programs that it does not have and payloads of the wrong length; a value that is
/// no frame, or whose checksum is wrong, it does not answer. When its wearer changes program or volume it says so by
/// itself (0x9F), and so it does with the battery level.
///
/// An image that is whole and boots (FirmwareAcceptor.h) is installed: type 0 brings the profile's productSoft, type 1
/// its bluetoothSoft, type 2 its ota. The aid starts anew then, and hears nothing more until its link has gone.
///
/// It has no timer: what time does to it (its battery, its run times) shows whenever somebody looks.
class SimulatedAuriskAid final : public SimulatedAid {
public:
    /// Throws SimulatedWorldError for a state that cannot be.
    explicit SimulatedAuriskAid(AuriskAidState state);

    /// `place` is what an error calls the value.
    static std::shared_ptr<SimulatedAuriskAid> fromJson(const nlohmann::json& value, const std::string& place);

    /// As it is at this moment.
    AuriskAidState state() const;

    /// Changes the aid behind everybody's back: nothing is notified. What is missing of blocks and profile has what the
    /// factory gives it. Throws SimulatedWorldError for a state that cannot be, and changes nothing then.
    void setState(AuriskAidState state);

    /// The image that was installed last; empty where none was.
    const Data& firmwareImage() const { return _state.firmware.image; }

    std::string name() const override { return _state.name; }
    std::string address() const override { return _state.address; }
    bool isOnAir() const override { return !_state.shipped && !_state.switchedOff; }
    CBAdvertisementData advertisement() const override;
    std::vector<SimulatedService> gattTable() const override;
    void didDisconnect() override;
    void didReceive(const CBUUID& characteristic, DataView value) override;
    void refuse(const CBUUID& characteristic, DataView value) override;
    std::optional<Data> read(const CBUUID& characteristic) const override;
    bool accepts(const WearerAction& action) const override;
    bool perform(const WearerAction& action) override;
    void keepTime(std::function<Seconds()> clock) override;

    /// Less than a minute in which nothing happened is left out, so that a short look at a world does not change it.
    nlohmann::json toJson() const override;

private:
    /// The payload of the reply; none where the request is refused.
    using Answer = std::optional<Data>;

    std::optional<AidFrame> heard(DataView value) const;
    void answerRequest(const AidFrame& request);
    Answer answer(const AidFrame& request);
    Answer answerRead(const AidFrame& request) const;
    Answer answerVolume(std::uint8_t what) const;
    Answer answerWrite(const AidFrame& request);
    Answer answerControl(const AidFrame& request);
    Answer answerAuxiliary(const AidFrame& request);
    Answer answerHearingTest(const AidFrame& request);
    Answer answerShip(const AidFrame& request);

    int programCount() const { return int(_state.volumes.size()); }
    void reply(const AidFrame& request, const Answer& answer) const;
    void resetToFactory();
    void update(FirmwareAcceptor::Reaction reaction);
    void install(FirmwareAcceptor::Image image);
    void turnPower(bool on);
    void putInBattery(int percent);
    std::int64_t uncountedSeconds() const;
    void catchUp();
    void notifyProgramAndVolumes() const;

    AuriskAidState _state; ///< as it was when it was counted last
    std::function<Seconds()> _clock;
    Seconds _countedUntil{ 0 };
    FirmwareAcceptor _acceptor;
    bool _isRestarting = false; ///< until its link has gone
};

} // namespace aurisk
