#include "Tools/aurisk/Session.h"

#include "AuriskSDK/HearingAid/Aurisk/AuriskA16Accessory.h"
#include "AuriskSDK/Shared/Accessory/AccessoryManager.h"
#include "Tools/aurisk/Purpose.h"

#include <fmt/format.h>

#include <algorithm>

namespace aurisk::tool {

namespace {

constexpr std::uint16_t batteryService = 0x180F, replies = 0xAE02;

/// Whether a notified value is a frame that answers no request: what the wearer did.
bool isUnasked(const Data& value)
{
    constexpr std::size_t commandAt = 3;
    constexpr std::uint8_t wearerActed = 0x9F;
    return value.size() > commandAt && value[commandAt] == wearerActed;
}

bool isRefusal(const AuriskResultError& error)
{
    return !error.as<AuriskResultError::timeout>() && !error.as<AuriskResultError::disconnected>();
}

} // namespace

std::shared_ptr<Session> Session::create(
    std::shared_ptr<AuriskAccessory> device, const Setting& setting, std::function<void(ExitCode)> ended)
{
    return std::make_shared<Session>(Key{}, std::move(device), setting, std::move(ended));
}

Session::Session(
    Key, std::shared_ptr<AuriskAccessory> device, const Setting& setting, std::function<void(ExitCode)> ended)
    : _device(std::move(device))
    , _name(_device->name())
    , _options(setting.options)
    , _output(setting.output)
    , _began(setting.began)
    , _gate(setting.gate)
    , _ended(std::move(ended))
    , _tap(std::make_shared<PeripheralTap>(_device))
{
}

void Session::open(Then then)
{
    _opened = std::move(then);
    _tap->onValue = [weak = weak_from_this()](const CBCharacteristic& characteristic) {
        const auto self = weak.lock();
        if (self && characteristic.uuid() == CBUUID(replies) && characteristic.value()
            && !isUnasked(*characteristic.value()))
            self->didReply(*characteristic.value());
    };
    _tap->onCharacteristics = [weak = weak_from_this()](const CBService& service) {
        const auto self = weak.lock();
        if (self && self->_batteryRead && service.uuid() == CBUUID(batteryService))
            self->askForBattery();
    };
    if (!_device->connect(weak_from_this(), _options.timeout, name()))
        fail(fmt::format("Bluetooth was switched off before {} could be connected", name()),
            ExitCode::bluetoothUnavailable);
}

void Session::didReply(const Data& value)
{
    _lastReply = value;
    if (_logFetched) // the next part of the log
        waitFor(std::string(_purpose));
}

/// Whether the device answers requests at all; ends the session where it does not.
bool Session::answersRequests()
{
    if (!_device->dataService())
        fail(fmt::format("{} has no service that answers requests (AE30)", name()));
    return _device->dataService() != nullptr;
}

std::size_t Session::longestValue() const
{
    return _device->peripheral()->maximumWriteValueLength(CBCharacteristicWriteType::withoutResponse);
}

// Waits

std::string Session::limit() const { return fmt::format("{:g} s", _options.timeout.count()); }

void Session::waitFor(std::string purpose)
{
    waitIsOver();
    _purpose = std::move(purpose);
    _timer = DispatchTimer::scheduledTimer(DispatchQueue::main(), _options.timeout, [weak = weak_from_this()] {
        const auto self = weak.lock();
        if (!self)
            return;
        auto sentence
            = fmt::format("{} did not answer within {} when asked to {}", self->name(), self->limit(), self->_purpose);
        if (self->_phase != Phase::closing)
            return self->fail(sentence);
        self->_output.note(sentence);
        self->end();
    });
}

void Session::waitIsOver()
{
    ++_wait;
    _purpose.clear();
    if (const auto timer = std::exchange(_timer, nullptr))
        timer->invalidate();
}

void Session::pause(std::optional<Seconds> span, Then then)
{
    waitIsOver();
    _pause = std::move(then);
    if (span)
        _timer = DispatchTimer::scheduledTimer(DispatchQueue::main(), *span, [weak = weak_from_this()] {
            const auto self = weak.lock();
            if (const auto next = self ? std::exchange(self->_pause, nullptr) : nullptr)
                next(*self);
        });
}

void Session::interrupt(ExitCode code)
{
    if (const auto next = std::exchange(_pause, nullptr)) {
        waitIsOver();
        next(*this);
    } else
        finish(code);
}

// Requests

void Session::attempt(const AuriskRequest& request, ThenWith<AuriskResult> then)
{
    if (!answersRequests())
        return;
    waitFor(purpose(request));
    _lastReply.reset();
    _isAsking = true;
    _device->request(
        request, [weak = weak_from_this(), wait = _wait, request, then = std::move(then)](const AuriskResult& result) {
            const auto self = weak.lock();
            if (!self)
                return;
            self->_isAsking = false;
            if (self->_wait == wait)
                self->answered(request, result, then);
            else if (self->_phase == Phase::undoing)
                self->undoNext();
        });
}

void Session::answered(const AuriskRequest& request, const AuriskResult& result, const ThenWith<AuriskResult>& then)
{
    waitIsOver();
    if (result.isSuccess() || isRefusal(*result.error()))
        return then(*this, result);
    if (result.error()->as<AuriskResultError::disconnected>())
        return fail(fmt::format("{} is not connected", name()));
    fail(fmt::format("{} did not answer within {:g} s when asked to {}", name(),
        AuriskDataService::defaultTimeout.count(), purpose(request)));
}

void Session::request(const AuriskRequest& request, ThenWith<AuriskResponse> then, std::optional<AuriskRequest> undo)
{
    const bool hasUndo = undo.has_value();
    if (hasUndo)
        _undo.push_back(*std::move(undo));
    attempt(request, [request, hasUndo, then = std::move(then)](Session& self, const AuriskResult& result) {
        if (result.isSuccess())
            return then(self, *result.data());
        if (hasUndo)
            self._undo.pop_back();
        if (result.error()->as<AuriskResultError::other>())
            return self.failBeyondAnswer(request);
        self.fail(fmt::format("{} refused to {}{}", self.name(), purpose(request), advice(request)));
    });
}

void Session::failBeyondAnswer(const AuriskRequest& request)
{
    fail(fmt::format("{} gave an answer that fits nothing when asked to {}", name(), purpose(request)));
}

void Session::meet(Then then)
{
    _gate->arrive([weak = weak_from_this(), then = std::move(then)](bool all) {
        const auto self = weak.lock();
        if (!self || self->_phase != Phase::working)
            return;
        if (all)
            return then(*self);
        self->fail(fmt::format("{} was left as it is, since the other one cannot go on", self->name()));
    });
}

// Logs

void Session::fetchLog(AuriskDataLogType type, ThenWith<Data> then)
{
    const auto device = std::dynamic_pointer_cast<AuriskA16Accessory>(_device);
    if (!device)
        return fail(fmt::format("{} keeps no logs", name()));
    if (!answersRequests())
        return;
    waitFor(purpose(type));
    _logFetched = std::move(then);
    device->requestDataLog(type, [weak = weak_from_this(), type](const std::optional<Data>& log) {
        const auto self = weak.lock();
        const auto next = self ? std::exchange(self->_logFetched, nullptr) : nullptr;
        if (!next)
            return;
        self->waitIsOver();
        if (log)
            return next(*self, *log);
        self->fail(fmt::format("{} refused to {}, or not all of it came", self->name(), purpose(type)));
    });
}

// The battery

void Session::readBattery(ThenWith<int> then)
{
    const auto service = _device->batteryService();
    if (!service)
        return fail(fmt::format("{} has no battery service (180F)", name()));
    waitFor("tell its battery level");
    _batteryRead = std::move(then);
    if (service->readNotifyCharacteristic())
        askForBattery();
}

/// Once the characteristics of the service are known.
void Session::askForBattery()
{
    if (_device->batteryService()->readNotifyCharacteristic())
        _device->readBattery();
    else
        fail(fmt::format("the battery service of {} holds no level (2A19)", name()));
}

void Session::batteryDidChanged(const std::shared_ptr<AuriskAccessory>&, int bat)
{
    if (const auto then = std::exchange(_batteryRead, nullptr)) {
        waitIsOver();
        then(*this, bat);
    } else if (_events.battery)
        _events.battery(*this, bat);
}

// What is told

Fields Session::identified(const Fields& fields) const
{
    Fields all = { { .key = "identifier", .value = _device->deviceId() }, { .key = "name", .value = name() } };
    all.insert(all.end(), fields.begin(), fields.end());
    return all;
}

void Session::line(const Fields& fields, const std::string& prefix)
{
    _output.line(prefix + name(), identified(fields));
}

void Session::block(const Fields& fields) { _output.block(name(), identified(fields)); }

void Session::picture(const std::string& caption, const Fields& fields, const std::vector<std::string>& lines)
{
    _output.picture(name(), caption, identified(fields), lines);
}

// The end

void Session::fail(const std::string& sentence, ExitCode code)
{
    if (_phase >= Phase::closing)
        return;
    _output.failure({ .code = code, .sentence = sentence, .name = name() });
    if (_phase != Phase::undoing)
        return finish(code);
    _code = std::max(_code, code);
    undoNext();
}

void Session::finish(ExitCode code)
{
    if (_phase >= Phase::undoing)
        return;
    _phase = Phase::undoing;
    _code = code;
    const auto cutShort = std::exchange(_ifCutShort, nullptr);
    if (const auto sentence = cutShort && code != ExitCode::done ? cutShort() : ""; !sentence.empty())
        _output.failure({ .code = code, .sentence = sentence, .name = name() });
    _opened = nullptr;
    _pause = nullptr;
    _batteryRead = nullptr;
    _logFetched = nullptr;
    _gate->leave();
    undoNext();
}

void Session::undoNext()
{
    waitIsOver();
    if (_undo.empty() || _device->state() != AccessoryState::connected)
        return close();
    if (_isAsking) // what the device does yet, cannot be undone before it has
        return letItAnswer();
    const auto request = _undo.back();
    _undo.pop_back();
    this->request(request, [](Session& self, const AuriskResponse&) { self.undoNext(); });
}

void Session::letItAnswer()
{
    constexpr auto longest = AuriskDataService::defaultTimeout * 2; // of a write that is followed by a switch
    _timer = DispatchTimer::scheduledTimer(DispatchQueue::main(), longest, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) {
            self->_isAsking = false;
            self->undoNext();
        }
    });
}

void Session::close()
{
    _phase = Phase::closing;
    waitFor("disconnect");
    if (!_device->disconnect())
        end();
}

void Session::end()
{
    if (std::exchange(_phase, Phase::ended) == Phase::ended)
        return;
    waitIsOver();
    _events = {};
    DispatchQueue::main().async([ended = std::exchange(_ended, nullptr), code = _code] { ended(code); });
}

// The device

bool Session::isRadioOff() const
{
    const auto manager = _device->manager();
    return !manager || !manager->isAvailable();
}

void Session::deviceDidConnect(const std::shared_ptr<Accessory>&, const MaybeError&)
{
    if (_phase == Phase::opening)
        waitFor("tell its services");
}

void Session::deviceDidDiscoverServices(
    const std::shared_ptr<Accessory>&, const std::vector<std::shared_ptr<AccessoryService>>&)
{
    if (_phase != Phase::opening)
        return;
    _phase = Phase::working;
    waitIsOver();
    _device->peripheral()->setDelegate(_tap);
    if (const auto then = std::exchange(_opened, nullptr))
        then(*this);
}

void Session::deviceDidFailToConnect(const std::shared_ptr<Accessory>&, const MaybeError& error)
{
    if (_phase != Phase::opening)
        return;
    if (isRadioOff())
        return fail(fmt::format("Bluetooth was switched off while {} was being connected", name()),
            ExitCode::bluetoothUnavailable);
    if (error)
        return fail(fmt::format("{} cannot be connected: {}", name(), error->localizedDescription));
    if (const auto manager = _device->manager()) // the radio is still trying
        manager->disconnectFromPerpheral(_device->peripheral());
    fail(fmt::format("{} did not answer within {} when asked to connect", name(), limit()));
}

void Session::deviceDidDisconnect(const std::shared_ptr<Accessory>&, const MaybeError&)
{
    if (_events.disconnected)
        _events.disconnected(*this);
    if (_phase == Phase::closing)
        return end();
    if (isRadioOff())
        return fail(
            fmt::format("Bluetooth was switched off while {} was connected", name()), ExitCode::bluetoothUnavailable);
    const auto purpose = _purpose.empty() ? "" : fmt::format(" while it was asked to {}", _purpose);
    fail(fmt::format("the link to {} was lost{}", name(), purpose));
}

void Session::didNotifyProgram(const std::shared_ptr<AuriskAccessory>&, int previous, int current)
{
    if (_events.program)
        _events.program(*this, previous, current);
}

void Session::didNotifyVolume(const std::shared_ptr<AuriskAccessory>&, int previous, int current)
{
    if (_events.volume)
        _events.volume(*this, previous, current);
}

} // namespace aurisk::tool
