#pragma once

#include "Simulator/SimulatedAid.h"

#include <cstdint>

namespace aurisk {

struct AidFrame;

/// A tone that the hearing test asked for: by sound pressure in dB, or by amplitude.
struct AuriskTone {
    int frequency = 0;   ///< Hz
    std::optional<int> dB = {};
    std::optional<std::uint32_t> amplitude = {};
    std::uint32_t timestamp = 0;   ///< as the host gave it

    friend bool operator==(const AuriskTone&, const AuriskTone&) = default;
};

/// An amplitude that the hearing test measures from.
struct AuriskBaseAmplitude {
    int frequency = 0;   ///< Hz
    std::uint32_t amplitude = 0;

    friend bool operator==(const AuriskBaseAmplitude&, const AuriskBaseAmplitude&) = default;
};

/// Everything that an Aurisk aid is and holds. Programs are counted from 0.
struct AuriskAidState {
    // What it was made as. A factory reset leaves it alone.
    std::string name;
    std::string address;
    std::uint8_t chip = 0x06;   ///< hearing-aid chip: a4 0x00, h01 0x01, a16 0x06
    std::uint8_t radioChip = 0x08;   ///< u87 7, tiny600 8; at most 0x7F, as the top bit is the transparency flag's
    bool transparencyFlag = false;   ///< what its advertisement says of transparency
    bool hearingTestSupported = true;

    // How it is set.
    std::vector<int> volumes = { 8, 8, 8, 8 };   ///< one a program: 1 to 15 programs, volumes 0 to 15
    int program = 0;
    bool muted = false;
    int transparencyLevel = 0;
    bool brEdrEnabled = false;
    bool brEdrContinuous = false;   ///< stays on continuously while enabled
    bool isRight = false;   ///< the ear that was written to it
    bool locked = false;

    // What it is doing.
    bool finding = false;
    bool inHearingMode = false;
    bool inDeviceTest = false;
    std::optional<AuriskTone> tone = {};
    std::optional<AuriskBaseAmplitude> baseAmplitude = {};   ///< the one set last
    std::optional<int> lastBeep = {};

    int battery = 100;   ///< percent
    bool shipped = false;   ///< packed for shipping: off the air
    bool switchedOff = false;   ///< by its wearer: off the air

    friend bool operator==(const AuriskAidState&, const AuriskAidState&) = default;
};

/// A hearing aid that speaks the Aurisk protocol.
///
/// Services: AE30 with AE01 (requests, written) and AE02 (replies, notified), 180F with 2A19 (battery, percent).
///
/// Each request is answered on AE02, with its command plus 0x80 or, when refused, plus 0xC0, and its two identifiers.
/// It refuses what it does not know, programs that it does not have and payloads of the wrong length; a value that is
/// no frame, or whose checksum is wrong, it does not answer. When its wearer changes program or volume it says so by
/// itself (0x9F), and so it does with the battery level. Parameter blocks, profile fields and logs are refused.
class SimulatedAuriskAid final : public SimulatedAid {
public:
    /// Throws SimulatedWorldError for a state that cannot be.
    explicit SimulatedAuriskAid(AuriskAidState state);

    /// `place` is what an error calls the value.
    static std::shared_ptr<SimulatedAuriskAid> fromJson(const nlohmann::json& value, const std::string& place);

    const AuriskAidState& state() const { return _state; }

    /// Changes the aid behind everybody's back: nothing is notified. Throws SimulatedWorldError for a state that
    /// cannot be, and changes nothing then.
    void setState(AuriskAidState state);

    std::string name() const override { return _state.name; }
    std::string address() const override { return _state.address; }
    bool isOnAir() const override { return !_state.shipped && !_state.switchedOff; }
    CBAdvertisementData advertisement() const override;
    std::vector<SimulatedService> gattTable() const override;
    void didReceive(const CBUUID& characteristic, DataView value) override;
    void refuse(const CBUUID& characteristic, DataView value) override;
    std::optional<Data> read(const CBUUID& characteristic) const override;
    bool accepts(const WearerAction& action) const override;
    bool perform(const WearerAction& action) override;
    nlohmann::json toJson() const override;

private:
    /// The payload of the reply; none where the request is refused.
    using Answer = std::optional<Data>;

    Answer answer(const AidFrame& request);
    Answer answerRead(const AidFrame& request) const;
    Answer answerWrite(const AidFrame& request);
    Answer answerControl(const AidFrame& request);
    Answer answerAuxiliary(const AidFrame& request);
    Answer answerHearingTest(const AidFrame& request);
    Answer answerShip(const AidFrame& request);

    int programCount() const { return int(_state.volumes.size()); }
    void resetToFactory();
    void notifyProgramAndVolumes() const;
    void notifyBattery() const;

    AuriskAidState _state;
};

}   // namespace aurisk
