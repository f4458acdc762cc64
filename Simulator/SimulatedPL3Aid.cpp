#include "Simulator/SimulatedPL3Aid.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

namespace aurisk {

namespace {

const CBUUID dataService = *CBUUID::fromString("95E81860-47B6-C216-A125-403009D6F03E");
const CBUUID dataCharacteristic = *CBUUID::fromString("95E82A96-47B6-C216-A125-403009D6F03E");

constexpr std::uint8_t readFlag = 0x80;
constexpr std::uint8_t volumeLevel = 0, currentProgram = 1, deviceSettings = 2, batteryLevel = 3, orientation = 4;
constexpr std::uint8_t burnLiveSettings = 5, rpsCommands = 12, updateAdvertising = 13, streamingStatus = 14;
constexpr std::uint8_t muteUnmute = 15, clearPASList = 16, clearBLEBondList = 17, modelNumber = 18, manufacturer = 19;

std::uint8_t ear(const PL3AidState& state) { return state.isRight ? 3 : 2; }

Data bytesOf(std::uint16_t number) { return { std::uint8_t(number), std::uint8_t(number >> 8) }; }

const PL3AidBlock* blockOf(std::uint8_t command)
{
    const auto all = pl3AidBlocks();
    const auto found = std::find_if(all.begin(), all.end(), [=](const auto& one) { return one.command == command; });
    return found == all.end() ? nullptr : &*found;
}

Data settingsOf(const PL3AidState& state)
{
    constexpr std::uint8_t volumeSteps = loudest + 1, stepSize = 1, volumeEnabled = 1;
    const auto& [major, minor, build] = state.version;
    return { std::uint8_t(state.programs.size()), volumeSteps, stepSize, volumeEnabled, 0, 0, 0, 0, build, minor,
        major };
}

/// What the command reads; none where it is not one that reads.
std::optional<Data> valueOf(const PL3AidState& state, std::uint8_t command)
{
    if (const auto* block = blockOf(command))
        return state.programs[std::size_t(state.program)].*block->member;
    switch (command) {
    case volumeLevel: return Data{ std::uint8_t(state.volume) };
    case currentProgram: return Data{ std::uint8_t(state.program) };
    case deviceSettings: return settingsOf(state);
    case batteryLevel: return Data{ std::uint8_t(state.battery) };
    case orientation: return Data{ ear(state) };
    case streamingStatus: return Data{ 0 };
    case muteUnmute: return Data{ std::uint8_t(state.muted) };
    case modelNumber: return bytesOf(state.modelNumber);
    case manufacturer: return bytesOf(state.manufacturerId);
    default: return std::nullopt;
    }
}

/// Does what the command writes; false where it is not one that writes, or not this.
bool obey(PL3AidState& state, std::uint8_t command, DataView payload)
{
    const auto set = [payload](auto& setting, std::size_t most) {
        const bool isInRange = payload.size() == 1 && payload[0] <= most;
        if (isInRange)
            setting = payload[0];
        return isInRange;
    };
    if (const auto* block = blockOf(command)) {
        if (payload.size() != pl3AidBlockSize)
            return false;
        (state.programs[std::size_t(state.program)].*block->member).assign(payload.begin(), payload.end());
        return true;
    }
    switch (command) {
    case volumeLevel: return set(state.volume, loudest);
    case currentProgram: return set(state.program, state.programs.size() - 1);
    case muteUnmute: return set(state.muted, 1);
    case burnLiveSettings:
    case rpsCommands:
    case updateAdvertising:
    case clearPASList:
    case clearBLEBondList: return !payload.empty(); // heard, and nothing to be seen of it
    default: return false;
    }
}

/// What comes of some frames.
struct Outcome {
    PL3AidState state;
    std::vector<HdlcFrame> answers = {};
};

/// None where the aid refuses one of them, and with it all.
std::optional<Outcome> outcomeOf(const std::vector<HdlcFrame>& frames, const PL3AidState& state)
{
    Outcome outcome{ state };
    for (const auto& [command, payload] : frames)
        if ((command & readFlag) == 0) {
            if (!obey(outcome.state, command, payload))
                return std::nullopt;
        } else {
            auto value = valueOf(outcome.state, command & std::uint8_t(~readFlag));
            if (!value || !payload.empty())
                return std::nullopt;
            outcome.answers.push_back({ command, *std::move(value) });
        }
    return outcome;
}

} // namespace

SimulatedPL3Aid::SimulatedPL3Aid(PL3AidState state) { setState(std::move(state)); }

std::shared_ptr<SimulatedPL3Aid> SimulatedPL3Aid::fromJson(const nlohmann::json& value, const std::string& place)
{
    return std::make_shared<SimulatedPL3Aid>(pl3AidStateFromJson(value, place));
}

nlohmann::json SimulatedPL3Aid::toJson() const
{
    auto value = aurisk::toJson(_state);
    value["kind"] = "pl3";
    return value;
}

void SimulatedPL3Aid::setState(PL3AidState state)
{
    const auto name = state.name;
    _state = completed(std::move(state), name);
}

CBAdvertisementData SimulatedPL3Aid::advertisement() const
{
    Data data = { 0xC6, 0x03, ear(_state) };
    for (const auto number : { _state.manufacturerId, _state.modelNumber })
        for (const auto byte : bytesOf(number))
            data.push_back(byte);
    return { std::move(data), _state.name };
}

std::vector<SimulatedService> SimulatedPL3Aid::gattTable() const
{
    using Properties = CBCharacteristicProperties;
    return { { dataService, { { dataCharacteristic, Properties::write | Properties::notify } } } };
}

void SimulatedPL3Aid::didDisconnect()
{
    SimulatedAid::didDisconnect();
    _receiver = {};
}

bool SimulatedPL3Aid::failsWrite(const CBUUID&, DataView value, bool refused) const
{
    auto receiver = _receiver;
    return refused || !outcomeOf(receiver.receive(value), _state);
}

void SimulatedPL3Aid::didReceive(const CBUUID&, DataView value)
{
    auto outcome = outcomeOf(_receiver.receive(value), _state);
    if (!outcome)
        return;
    _state = std::move(outcome->state);
    for (const auto& answer : outcome->answers)
        send(dataCharacteristic, answer.notified());
}

/// The frame that the piece belongs to never comes to its end.
void SimulatedPL3Aid::refuse(const CBUUID&, DataView) { _receiver = {}; }

bool SimulatedPL3Aid::accepts(const WearerAction& action) const
{
    return action.isPossibleWith(int(_state.programs.size()));
}

bool SimulatedPL3Aid::perform(const WearerAction& action)
{
    if (!accepts(action))
        return false;
    if (action.what == "volume") {
        _state.volume = action.value;
        announce(volumeLevel);
    } else if (action.what == "program") {
        _state.program = action.value;
        announce(currentProgram);
    } else if (action.what == "battery") {
        _state.battery = action.value;
        announce(batteryLevel);
    } else if (action.what == "mute") {
        _state.muted = action.value == 1;
        announce(muteUnmute);
    } else {
        _state.switchedOff = action.value == 0;
    }
    return true;
}

void SimulatedPL3Aid::announce(std::uint8_t command) const
{
    send(dataCharacteristic, HdlcFrame{ command, valueOf(_state, command).value() }.notified());
}

} // namespace aurisk
