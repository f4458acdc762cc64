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
    if (!_device->dataService())
        fail(fmt::format("{} has no service that answers requests (AE30)", name()));
    return _device->dataService() != nullptr;
}

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
