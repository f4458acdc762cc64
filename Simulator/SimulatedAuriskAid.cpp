#include "Simulator/SimulatedAuriskAid.h"

#include "AuriskSDK/Shared/Utils/HexToData.h"
#include "Simulator/AidFrame.h"
#include "Simulator/AuriskAidMemory.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <nlohmann/json.hpp>
#include <utility>

namespace aurisk {

namespace {

const CBUUID dataService(0xAE30), requests(0xAE01), replies(0xAE02);
const CBUUID batteryService(0x180F), batteryLevel(0x2A19);
const CBUUID updateService(0xAE3A), updateRequests(0xAE3B), updateAnswers(0xAE3C);

constexpr std::uint8_t reading = 0x11, writing = 0x14, controlling = 0x1C, auxiliary = 0x1D, shipping = 0xCC;
constexpr std::uint8_t block = 0x03, volumes = 0x04, ear = 0x05, logBlock = 0x06, profileField = 0x08;
constexpr std::uint8_t succeeded = 0x80, refused = 0xC0, wearerActed = 0x9F;

/// The writes of blocks that carry this flag in their first identifier ask not to be answered.
bool wantsNoAnswer(const AidFrame& request)
{
    return request.command == writing && request.second() == block && (request.first() & 0x80) != 0;
}

std::optional<Data> acknowledged(bool done) { return done ? std::optional(Data{}) : std::nullopt; }

constexpr std::int64_t worthSaving = 60; ///< seconds

} // namespace

SimulatedAuriskAid::SimulatedAuriskAid(AuriskAidState state) { setState(std::move(state)); }

std::shared_ptr<SimulatedAuriskAid> SimulatedAuriskAid::fromJson(const nlohmann::json& value, const std::string& place)
{
    return std::make_shared<SimulatedAuriskAid>(auriskAidStateFromJson(value, place));
}

nlohmann::json SimulatedAuriskAid::toJson() const
{
    auto value = aurisk::toJson(uncountedSeconds() < worthSaving ? _state : state());
    value["kind"] = "aurisk";
    return value;
}

void SimulatedAuriskAid::setState(AuriskAidState state)
{
    const auto name = state.name;
    _state = completed(std::move(state), name);
    _countedUntil = _clock ? _clock() : Seconds(0);
}

AuriskAidState SimulatedAuriskAid::state() const
{
    auto now = _state;
    letPass(now, uncountedSeconds());
    return now;
}

// Time

void SimulatedAuriskAid::keepTime(std::function<Seconds()> clock)
{
    if (uncountedSeconds() >= worthSaving)
        catchUp();
    _clock = std::move(clock);
    _countedUntil = _clock ? _clock() : Seconds(0);
}

std::int64_t SimulatedAuriskAid::uncountedSeconds() const
{
    constexpr Seconds roundingError{ 1e-6 };
    return _clock && isOnAir() ? std::int64_t(std::floor((_clock() - _countedUntil + roundingError).count())) : 0;
}

void SimulatedAuriskAid::catchUp()
{
    const auto seconds = uncountedSeconds();
    const auto battery = _state.battery;
    letPass(_state, seconds);
    if (isOnAir())
        _countedUntil += Seconds(double(seconds));
    else if (_clock)
        _countedUntil = _clock();
    if (_state.battery != battery)
        send(batteryLevel, { std::uint8_t(_state.battery) });
}

// The air

CBAdvertisementData SimulatedAuriskAid::advertisement() const
{
    Data data = { 0xFE, 0xFE };
    const auto address = ask_hexadecimal(_state.address).value_or(Data{});
    data.insert(data.end(), address.begin(), address.end());
    data.push_back(std::uint8_t(_state.radioChip | (_state.transparencyFlag ? 0x80 : 0x00)));
    data.push_back(_state.chip);
    return { std::move(data), _state.name };
}

std::vector<SimulatedService> SimulatedAuriskAid::gattTable() const
{
    using Properties = CBCharacteristicProperties;
    return {
        { dataService,
            { { requests, Properties::write | Properties::writeWithoutResponse }, { replies, Properties::notify } } },
        { batteryService, { { batteryLevel, Properties::read | Properties::notify } } },
        { updateService,
            { { updateRequests, Properties::writeWithoutResponse }, { updateAnswers, Properties::notify } } },
    };
}

std::optional<Data> SimulatedAuriskAid::read(const CBUUID& characteristic) const
{
    if (characteristic == batteryLevel)
        return Data{ std::uint8_t(state().battery) };
    return std::nullopt;
}

void SimulatedAuriskAid::didDisconnect()
{
    SimulatedAid::didDisconnect();
    _acceptor = {};
    _isRestarting = false;
}

std::optional<AidFrame> SimulatedAuriskAid::heard(DataView value) const
{
    return _isRestarting ? std::nullopt : AidFrame::parse(value);
}

void SimulatedAuriskAid::didReceive(const CBUUID& characteristic, DataView value)
{
    const auto request = heard(value);
    if (request && characteristic == requests)
        answerRequest(*request);
    else if (request && characteristic == updateRequests)
        update(_acceptor.didReceive(*request, _state.firmware));
}

void SimulatedAuriskAid::refuse(const CBUUID& characteristic, DataView value)
{
    const auto request = heard(value);
    if (request && characteristic == requests)
        reply(*request, std::nullopt);
    else if (request && characteristic == updateRequests)
        update(_acceptor.refuse(*request));
}

void SimulatedAuriskAid::answerRequest(const AidFrame& request)
{
    if (request.command != reading)
        catchUp();
    const auto answered = request.hasIdentifiers() ? answer(request) : std::nullopt;
    if (!request.hasIdentifiers() || !wantsNoAnswer(request))
        reply(request, answered);
}

void SimulatedAuriskAid::reply(const AidFrame& request, const Answer& answer) const
{
    AidFrame frame{ std::uint8_t(request.command + (answer ? succeeded : refused)), request.body };
    if (request.hasIdentifiers())
        frame.body.resize(2);
    if (answer)
        frame.body.insert(frame.body.end(), answer->begin(), answer->end());
    send(replies, frame.notified());
}

SimulatedAuriskAid::Answer SimulatedAuriskAid::answer(const AidFrame& request)
{
    switch (request.command) {
    case reading: return answerRead(request);
    case writing: return answerWrite(request);
    case controlling: return answerControl(request);
    case auxiliary: return answerAuxiliary(request);
    case shipping: return answerShip(request);
    default: return std::nullopt;
    }
}

SimulatedAuriskAid::Answer SimulatedAuriskAid::answerRead(const AidFrame& request) const
{
    const auto what = request.first();
    if (!request.payload().empty())
        return std::nullopt;
    switch (request.second()) {
    case block: return readBlock(_state, what);
    case volumes: return answerVolume(what);
    case ear: return what == 0x80 ? Answer(Data{ std::uint8_t(_state.isRight) }) : std::nullopt;
    case logBlock: return readLog(state(), what);
    case profileField: return readProfileField(_state, what);
    default: return std::nullopt;
    }
}

SimulatedAuriskAid::Answer SimulatedAuriskAid::answerVolume(std::uint8_t what) const
{
    if (what == 0x00)
        return Data{ std::uint8_t(_state.program) };
    if (what == 0xFF) {
        Data all = { std::uint8_t(_state.program + 1) };
        all.insert(all.end(), _state.volumes.begin(), _state.volumes.end());
        return all;
    }
    if (what > programCount())
        return std::nullopt;
    return Data{ std::uint8_t(_state.volumes[what - 1u]) };
}

SimulatedAuriskAid::Answer SimulatedAuriskAid::answerWrite(const AidFrame& request)
{
    const auto what = request.first();
    const auto payload = request.payload();
    switch (request.second()) {
    case block: return acknowledged(writeBlock(_state, what & 0x7F, payload));
    case profileField: return acknowledged(writeProfileField(_state, what, payload));
    case ear:
        if (what != 0x80 || payload.size() != 1 || payload[0] > 1)
            return std::nullopt;
        _state.isRight = payload[0] == 1;
        return Data{};
    default: return std::nullopt;
    }
}

SimulatedAuriskAid::Answer SimulatedAuriskAid::answerControl(const AidFrame& request)
{
    const auto value = request.second();
    const auto hasProgram = [this](int number) { return number >= 1 && number <= programCount(); };
    if (!request.payload().empty())
        return std::nullopt;

    switch (request.first()) {
    case 0x01:
        if (!hasProgram(value >> 4))
            return std::nullopt;
        _state.volumes[(value >> 4) - 1u] = value & 0x0F;
        return Data{};
    case 0x02:
        if (!hasProgram(value))
            return std::nullopt;
        _state.program = value - 1;
        return Data{};
    case 0x06: _state.lastBeep = value; return Data{};
    default: break;
    }

    if (value != 0x00)
        return std::nullopt;
    switch (request.first()) {
    case 0x03: _state.locked = true; return Data{};
    case 0x04: _state.muted = false; return Data{};
    case 0x05: _state.muted = true; return Data{};
    default: return std::nullopt;
    }
}

SimulatedAuriskAid::Answer SimulatedAuriskAid::answerAuxiliary(const AidFrame& request)
{
    const auto what = request.first(), how = request.second();
    const auto payload = request.payload();
    if (what == 0x39)
        return _state.hearingTestSupported ? answerHearingTest(request) : std::nullopt;

    const bool carriesLevel = what == 0xAE || what == 0xAF;
    if (payload.size() != (carriesLevel ? 1 : 0) || how > (what == 0x81 ? 1 : 0))
        return std::nullopt;
    switch (what) {
    case 0x81: _state.finding = how == 1; return Data{};
    case 0x82: resetToFactory(); return Data{};
    case 0x83: _state.inDeviceTest = true; return Data{};
    case 0xAE: _state.transparencyLevel = payload[0]; return Data{};
    case 0xAF:
        if (payload[0] > 2)
            return std::nullopt;
        _state.brEdrEnabled = payload[0] != 0;
        _state.brEdrContinuous = payload[0] == 1;
        return Data{};
    case 0xBE: return Data{ std::uint8_t(_state.transparencyLevel) };
    case 0xBF: return Data{ std::uint8_t(!_state.brEdrEnabled ? 0 : _state.brEdrContinuous ? 1 : 2) };
    default: return std::nullopt;
    }
}

SimulatedAuriskAid::Answer SimulatedAuriskAid::answerHearingTest(const AidFrame& request)
{
    const auto payload = request.payload();
    const auto number = [&](std::size_t at, std::size_t size) { return littleEndian(payload.subspan(at, size)); };
    constexpr std::size_t payloadSizes[] = { 0, 7, 6, 10, 1, 0 };
    if (request.second() >= std::size(payloadSizes) || payload.size() != payloadSizes[request.second()])
        return std::nullopt;

    switch (request.second()) {
    case 0x00: _state.tone.reset(); break;
    case 0x01:
        _state.tone = { .frequency = int(number(0, 2)), .dB = payload[2], .timestamp = std::uint32_t(number(3, 4)) };
        break;
    case 0x02: _state.baseAmplitude = { int(number(0, 2)), std::uint32_t(number(2, 4)) }; break;
    case 0x03:
        _state.tone = { .frequency = int(number(0, 2)),
            .amplitude = std::uint32_t(number(2, 4)),
            .timestamp = std::uint32_t(number(6, 4)) };
        break;
    case 0x04:
        if (payload[0] > 1)
            return std::nullopt;
        _state.inHearingMode = payload[0] == 0; // 0 enters, 1 leaves
        break;
    default: break; // 05 asks whether there is a hearing test: any success says yes
    }
    return Data{};
}

SimulatedAuriskAid::Answer SimulatedAuriskAid::answerShip(const AidFrame& request)
{
    if (request.first() != 0xC3 || request.second() != 0x49 || !request.payload().empty())
        return std::nullopt;
    notePowerDown(_state.usage);
    _state.shipped = true;
    return Data{};
}

void SimulatedAuriskAid::resetToFactory()
{
    AuriskAidState fresh;
    fresh.name = _state.name;
    fresh.address = _state.address;
    fresh.chip = _state.chip;
    fresh.radioChip = _state.radioChip;
    fresh.transparencyFlag = _state.transparencyFlag;
    fresh.hearingTestSupported = _state.hearingTestSupported;
    fresh.volumes = std::vector<int>(_state.volumes.size(), fresh.volumes.front());
    fresh.isRight = isRightByName(_state.name);
    fresh.battery = _state.battery;
    fresh.profile = std::move(_state.profile);
    fresh.usage = std::move(_state.usage);
    fresh.firmware = std::move(_state.firmware);
    _state = completed(std::move(fresh));
}

void SimulatedAuriskAid::update(FirmwareAcceptor::Reaction reaction)
{
    for (auto& value : reaction.answers)
        send(updateAnswers, std::move(value));
    if (reaction.accepted)
        install(*std::move(reaction.accepted));
}

/// Nobody can read the new version before it runs, as the aid is deaf until then.
void SimulatedAuriskAid::install(FirmwareAcceptor::Image image)
{
    constexpr std::uint8_t productSoft = 0x03, bluetoothSoft = 0x12, ota = 0x20;
    constexpr std::array versions = { productSoft, bluetoothSoft, ota };
    const auto version = versionOf(image.bytes);
    auto& firmware = _state.firmware;

    catchUp();
    _state.profile[versions.at(std::size_t(image.type))].assign(version.begin(), version.end());
    firmware.image = std::move(image.bytes);
    firmware.imageType = image.type;
    firmware.updates = std::min(firmware.updates + 1, mostCounted);
    _isRestarting = true;
    if (restart)
        restart();
}

bool SimulatedAuriskAid::accepts(const WearerAction& action) const { return action.isPossibleWith(programCount()); }

bool SimulatedAuriskAid::perform(const WearerAction& action)
{
    if (!accepts(action))
        return false;
    catchUp();
    if (action.what == "volume") {
        _state.volumes[std::size_t(_state.program)] = action.value;
        noteUserEvent(_state, AuriskUserEvent::volume, action.value);
        notifyProgramAndVolumes();
    } else if (action.what == "program") {
        _state.program = action.value;
        noteUserEvent(_state, AuriskUserEvent::program, action.value);
        notifyProgramAndVolumes();
    } else if (action.what == "battery") {
        putInBattery(action.value);
    } else if (action.what == "mute") {
        _state.muted = action.value == 1;
        noteUserEvent(_state, AuriskUserEvent::mute, action.value);
    } else if (isOnAir() != (action.value == 1)) {
        turnPower(action.value == 1);
    }
    return true;
}

/// A level that falls is the same battery, some time later.
void SimulatedAuriskAid::putInBattery(int percent)
{
    if (percent > std::exchange(_state.battery, percent)) {
        noteNewBattery(_state.usage);
        noteUserEvent(_state, AuriskUserEvent::battery, percent);
    }
    send(batteryLevel, { std::uint8_t(percent) });
}

void SimulatedAuriskAid::turnPower(bool on)
{
    if (!on)
        notePowerDown(_state.usage);
    _state.switchedOff = !on;
    _state.shipped = false;
    noteUserEvent(_state, AuriskUserEvent::power, on);
}

void SimulatedAuriskAid::notifyProgramAndVolumes() const
{
    AidFrame frame{ wearerActed, Data(_state.volumes.begin(), _state.volumes.end()) };
    frame.body.insert(frame.body.begin(), std::uint8_t(_state.program + 1));
    send(replies, frame.notified());
}

} // namespace aurisk
