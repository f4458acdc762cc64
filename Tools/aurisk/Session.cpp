#include "Tools/aurisk/Session.h"

#include "AuriskSDK/Shared/Accessory/AccessoryManager.h"

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

} // namespace

std::shared_ptr<Session> Session::create(
    std::shared_ptr<Accessory> device, const Setting& setting, std::function<void(ExitCode)> ended)
{
    return std::make_shared<Session>(Key{}, std::move(device), setting, std::move(ended));
}

Session::Session(Key, std::shared_ptr<Accessory> device, const Setting& setting, std::function<void(ExitCode)> ended)
    : _accessory(std::move(device))
    , _device(std::dynamic_pointer_cast<AuriskAccessory>(_accessory))
    , _pl3(std::dynamic_pointer_cast<PL3Accessory>(_accessory))
    , _name(_accessory->name())
    , _options(setting.options)
    , _output(setting.output)
    , _began(setting.began)
    , _gate(setting.gate)
    , _connectLimit(setting.connectLimit)
    , _ended(std::move(ended))
    , _tap(std::make_shared<PeripheralTap>(_accessory))
{
}

void Session::open(Then then)
{
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
    if (_pl3)
        _pl3->setDataDelegate(weak_from_this());
    waitFor("connect", _connectLimit);
    connect(std::move(then));
}

/// Tries until the wait that has begun is over.
void Session::connect(Then then)
{
    _phase = Phase::opening;
    _opened = std::move(then);
    if (!_accessory->connect(weak_from_this(), name()))
        fail(fmt::format("Bluetooth was switched off before {} could be connected", name()),
            ExitCode::bluetoothUnavailable);
}

void Session::didReply(const Data& value)
{
    _lastReply = value;
    if (_logFetched) // the next part of the log
        waitFor(std::string(_purpose));
}

std::size_t Session::longestValue() const
{
    return _accessory->peripheral()->maximumWriteValueLength(CBCharacteristicWriteType::withoutResponse);
}

// Waits

void Session::wait(Seconds limit, Then late)
{
    waitIsOver();
    _timer = DispatchTimer::scheduledTimer(
        DispatchQueue::main(), limit, [weak = weak_from_this(), late = std::move(late)] {
            if (const auto self = weak.lock())
                late(*self);
        });
}

void Session::waitFor(std::string purpose) { waitFor(std::move(purpose), _options.timeout); }

void Session::waitFor(std::string purpose, Seconds limit)
{
    wait(limit, [limit](Session& self) {
        const auto sentence = fmt::format(
            "{} did not answer within {:g} s when asked to {}", self.name(), limit.count(), self._purpose);
        if (self._phase != Phase::closing)
            return self.fail(sentence);
        if (self._code == ExitCode::done) // and of what has failed before enough has been said
            self._output.note(sentence);
        self.end();
    });
    _purpose = std::move(purpose);
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
        wait(*span, [](Session& self) {
            if (const auto next = std::exchange(self._pause, nullptr))
                next(self);
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

// A device that starts anew

void Session::awaitReturn(Seconds limit, std::string ifItStaysAway, Then then)
{
    _left = [=](Session& self) { self.connectAgain(limit, ifItStaysAway, then); };
    if (_accessory->state() != AccessoryState::connected)
        return didLeave();
    wait(_options.timeout, [](Session& self) {
        self.waitFor("disconnect");
        self._accessory->disconnect();
    });
}

void Session::didLeave()
{
    if (const auto next = std::exchange(_left, nullptr)) {
        _mayLeave = false;
        next(*this);
    }
}

void Session::connectAgain(Seconds limit, const std::string& ifItStaysAway, Then then)
{
    wait(limit, [ifItStaysAway](Session& self) {
        self._ifCutShort = nullptr; // the sentence says it all
        self.fail(ifItStaysAway);
    });
    connect(std::move(then));
}

// The other devices

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

// What is told

Fields Session::identified(const Fields& fields) const
{
    Fields all = { { .key = "identifier", .value = _accessory->deviceId() }, { .key = "name", .value = name() } };
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

void Session::showLive(const std::string& line) { _output.showLive(name(), line); }

void Session::endLive() { _output.endLive(name()); }

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
    _mayLeave = false;
    _left = nullptr;
    if (const auto atEnd = std::exchange(_atEnd, nullptr))
        atEnd(*this);
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
    if (_undo.empty() || _accessory->state() != AccessoryState::connected)
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
    wait(longest, [](Session& self) {
        self._isAsking = false;
        self.undoNext();
    });
}

void Session::close()
{
    _phase = Phase::closing;
    if (_accessory->state() == AccessoryState::disconnected)
        return end();
    waitFor("disconnect");
    if (!_accessory->disconnect())
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
    const auto manager = _accessory->manager();
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
    _accessory->peripheral()->setDelegate(_tap);
    if (const auto then = std::exchange(_opened, nullptr))
        then(*this);
}

void Session::deviceDidFailToConnect(const std::shared_ptr<Accessory>&, const MaybeError& error)
{
    if (_phase == Phase::closing)
        return end();
    if (_phase != Phase::opening)
        return;
    if (isRadioOff())
        return fail(fmt::format("Bluetooth was switched off while {} was being connected", name()),
            ExitCode::bluetoothUnavailable);
    fail(fmt::format("{} cannot be connected{}", name(), error ? ": " + error->localizedDescription : ""));
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
    if (_mayLeave)
        return didLeave();
    const auto purpose = _purpose.empty() ? "" : fmt::format(" while it was asked to {}", _purpose);
    fail(fmt::format("the link to {} was lost{}", name(), purpose));
}

void Session::didNotify(const std::shared_ptr<PL3Accessory>&, const PL3Response& data)
{
    if (_events.notified)
        _events.notified(*this, data);
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
