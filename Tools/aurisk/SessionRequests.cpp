#include "AuriskSDK/HearingAid/Aurisk/AuriskA16Accessory.h"
#include "Tools/aurisk/Purpose.h"
#include "Tools/aurisk/Session.h"

#include <fmt/format.h>

/// What a session asks its device for.

namespace aurisk::tool {

namespace {

bool isRefusal(const AuriskResultError& error)
{
    return !error.as<AuriskResultError::timeout>() && !error.as<AuriskResultError::disconnected>();
}

} // namespace

// Requests

/// Whether the device answers requests at all; ends the session where it does not.
bool Session::answersRequests()
{
    const bool answers = _pl3 ? _pl3->dataService() != nullptr : _device->dataService() != nullptr;
    if (!answers)
        fail(fmt::format("{} has no service that answers requests ({})", name(),
            _pl3 ? PL3DataService::serviceUUID.uuidString() : "AE30"));
    return answers;
}

/// Asks, and goes on with what comes of it, unless this wait is over by then.
template <typename Device, typename Request, typename Result>
void Session::ask(Device& device, const Request& request, ThenWith<Result> answered)
{
    waitFor(purpose(request));
    _lastReply.reset();
    _isAsking = true;
    device.request(
        request, [weak = weak_from_this(), wait = _wait, answered = std::move(answered)](const Result& result) {
            const auto self = weak.lock();
            if (!self)
                return;
            self->_isAsking = false;
            if (self->_wait == wait)
                answered(*self, result);
            else if (self->_phase == Phase::undoing)
                self->undoNext();
        });
}

void Session::failWithoutAnswer(const std::string& purpose, Seconds timeout)
{
    fail(fmt::format("{} did not answer within {:g} s when asked to {}", name(), timeout.count(), purpose));
}

void Session::attempt(const AuriskRequest& request, ThenWith<AuriskResult> then)
{
    if (answersRequests())
        ask<AuriskAccessory, AuriskRequest, AuriskResult>(
            *_device, request, [request, then = std::move(then)](Session& self, const AuriskResult& result) {
                self.answered(request, result, then);
            });
}

void Session::answered(const AuriskRequest& request, const AuriskResult& result, const ThenWith<AuriskResult>& then)
{
    waitIsOver();
    if (result.isSuccess() || isRefusal(*result.error()))
        return then(*this, result);
    if (result.error()->as<AuriskResultError::disconnected>())
        return fail(fmt::format("{} is not connected", name()));
    failWithoutAnswer(purpose(request), AuriskDataService::defaultTimeout);
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

// Requests of the PL3 family

void Session::attempt(const PL3Request& request, ThenWith<PL3Result> then)
{
    if (answersRequests())
        ask<PL3Accessory, PL3Request, PL3Result>(
            *_pl3, request, [then = std::move(then)](Session& self, const PL3Result& result) {
                self.waitIsOver();
                then(self, result);
            });
}

void Session::request(const PL3Request& request, ThenWith<PL3Response> then)
{
    attempt(request, [request, then = std::move(then)](Session& self, const PL3Result& result) {
        if (result.isSuccess())
            then(self, *result.data());
        else if (*result.error() == PL3Error::timeout)
            self.failWithoutAnswer(purpose(request), PL3DataService::defaultTimeout);
        else
            self.fail(fmt::format("{} refused to {}{}", self.name(), purpose(request), advice(request)));
    });
}

/// The next notification answers a read, be it about something else. The true answer comes too late then, or takes the
/// place of the next one, so it is asked for once more.
void Session::attempt(PL3Command command, ThenWith<std::optional<Data>> then, int often)
{
    const PL3Request request{ .command = command, .read = true };
    attempt(request, [=, then = std::move(then)](Session& self, const PL3Result& result) {
        if (!result.isSuccess())
            then(self, std::nullopt);
        else if (result.data()->command == command)
            then(self, result.data()->data);
        else if (often > 1)
            self.attempt(command, then, often - 1);
        else
            self.fail(fmt::format("{} spoke of something else when asked to {}", self.name(), purpose(request)));
    });
}

void Session::read(PL3Command command, ThenWith<Data> then)
{
    attempt(command, [command, then = std::move(then)](Session& self, const std::optional<Data>& answer) {
        if (answer)
            return then(self, *answer);
        self.failWithoutAnswer(purpose(PL3Request{ .command = command, .read = true }), PL3DataService::defaultTimeout);
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

} // namespace aurisk::tool
