#include "Tools/aurisk/FirmwareUpdate.h"

#include "AuriskSDK/Shared/Dfu/DFUConfigure.h"
#include "Tools/aurisk/Values.h"

#include <fmt/format.h>

#include <algorithm>

namespace aurisk::tool {

namespace {

constexpr std::string_view again = "move closer and start the update again";
constexpr std::string_view offAndOn = "switch it off and on, and start the update again";

/// What an error that the library reports is to people: what the device did, and what they can do.
struct Row {
    DFUError error;
    std::string_view happened, next;
};
constexpr Row rows[] = {
    { DFUError::characteristicsDiscoveryFailed, "did not tell what its service for firmware updates holds", offAndOn },
    { DFUError::requiredCharacteristicsMissing,
        "cannot be updated: its service for firmware updates lacks AE3B to write to, or AE3C to answer",
        "nothing was sent to it" },
    { DFUError::enablingNotificationsFailed, "did not agree to answer an update (AE3C)", offAndOn },
    { DFUError::receivingNotificationFailed, "gave an answer that could not be received", again },
    { DFUError::unsupportedResponse, "gave an answer that stands for nothing ({answer})", again },
    { DFUError::crcError, "did not receive the image as it was sent", again },
    { DFUError::initFailure, "refused to begin an update", "charge it, switch it off and on, and try again" },
    { DFUError::diskNotEnough, "has no room for the {size} bytes of the image",
        "is {file} the right file for it, and --type {type} the right one?" },
    { DFUError::sequenceFailure, "missed a packet", again },
    { DFUError::bootWriteFailed, "received the image and could not start it",
        "is {file} the right file for it? {versions}" },
};

/// The bytes that a message of the library ends with.
std::string bytesOf(const std::string& message) { return message.substr(message.rfind(' ') + 1); }

} // namespace

void FirmwareUpdate::begin(
    Session& session, const std::shared_ptr<DFUFirmware>& image, Session::Then completed, Session::Then ended)
{
    const auto update = std::make_shared<FirmwareUpdate>(Key{}, session, *image, std::move(completed));
    session.allowLeaving(); // the library says whether that is a failure
    session.setIfCutShort([update] { return update->ifCutShort(); });
    session.setAtEnd([update, ended = std::move(ended)](Session& self) {
        update->end(self);
        ended(self);
    });
    update->watch(session);

    const auto configure = DFUConfigure::create()->with(image);
    configure->delegate = update;
    configure->progressDelegate = update;
    session.device().startOTA(configure);
}

FirmwareUpdate::FirmwareUpdate(Key, Session& session, const DFUFirmware& image, Session::Then completed)
    : _session(session.weak_from_this())
    , _name(session.name())
    , _size(image.totalSize)
    , _completed(std::move(completed))
    , _progress(image.totalSize)
    , _lastHeard(DispatchQueue::main().now())
{
}

/// The session, where the update is not over.
std::shared_ptr<Session> FirmwareUpdate::underWay() { return _completed ? _session.lock() : nullptr; }

void FirmwareUpdate::dfuStateDidChange(DFUState to)
{
    const auto session = underWay();
    if (!session || to == DFUState::aborted)
        return;
    _lastHeard = DispatchQueue::main().now();
    _progress.enter(*session, to);
    if (to != DFUState::completed)
        return watch(*session);
    const auto next = std::exchange(_completed, nullptr);
    _watch->invalidate();
    session->device().stopOTA();
    next(*session);
}

void FirmwareUpdate::dfuProgressDidChange(int to, double, double avgSpeedBytesPerSecond)
{
    if (const auto session = underWay())
        _progress.report(*session, to, avgSpeedBytesPerSecond);
}

/// What follows ends the update, and that counts for nothing before the library has returned from here.
void FirmwareUpdate::dfuError(DFUError error, const std::string& didOccurWithMessage)
{
    DispatchQueue::main().async([weak = weak_from_this(), error, didOccurWithMessage] {
        if (const auto self = weak.lock())
            self->failed(error, didOccurWithMessage);
    });
}

void FirmwareUpdate::failed(DFUError error, const std::string& message)
{
    const auto session = underWay();
    if (!session)
        return;
    if (error == DFUError::receivingNotificationFailed && session->device().state() != AccessoryState::connected)
        return fail(*session, fmt::format("the link to {} was lost {}", _name, _progress.howFar()), whileUnsure(again));

    const auto row = std::find_if(
        std::begin(rows), std::end(rows), [error](const Row& candidate) { return candidate.error == error; });
    const auto filled = [&](std::string_view text) {
        return fmt::format(fmt::runtime(text), fmt::arg("answer", bytesOf(message)), fmt::arg("size", _size),
            fmt::arg("file", inQuotes(session->options().file)), fmt::arg("versions", versions()),
            fmt::arg("type", int(session->options().firmwareType)));
    };
    const auto where = _progress.state() == DFUState::uploading ? ' ' + _progress.howFar() : "";
    if (row == std::end(rows))
        return fail(*session, fmt::format("{} failed to be updated: {}", _name, message), again);
    const bool isUnclear = error == DFUError::unsupportedResponse || error == DFUError::receivingNotificationFailed;
    const auto next = filled(row->next);
    fail(*session, fmt::format("{} {}{}", _name, filled(row->happened), where), isUnclear ? whileUnsure(next) : next);
}

// A silent device

/// Looks again when the device could be too late, whatever it says until then: one timer at a time.
void FirmwareUpdate::watch(Session& session)
{
    if (_watch)
        return;
    const auto left = _lastHeard + patience(session) - DispatchQueue::main().now();
    _watch = DispatchTimer::scheduledTimer(DispatchQueue::main(), left, [weak = weak_from_this()] {
        if (const auto self = weak.lock())
            self->look();
    });
}

void FirmwareUpdate::look()
{
    constexpr Seconds negligible{ 0.001 };
    const auto session = underWay();
    _watch = nullptr;
    if (!session)
        return;
    const auto limit = patience(*session);
    if (_lastHeard + limit - DispatchQueue::main().now() > negligible)
        return watch(*session);
    fail(*session, fmt::format("{} fell silent {} (nothing for {:g} s)", _name, _progress.howFar(), limit.count()),
        whileUnsure(offAndOn));
}

/// To check and to start an image takes longer than to take a packet.
Seconds FirmwareUpdate::patience(const Session& session) const
{
    const auto limit = session.options().timeout;
    return _progress.state() < DFUState::validating ? limit : std::max(limit, longWait);
}

// The end

std::string FirmwareUpdate::versions() const
{
    return fmt::format("aurisk profile show {} tells which versions it has", printable(_name));
}

/// What to do after something that does not say what the device made of the image. Before it has all of it, it has made
/// nothing of it.
std::string FirmwareUpdate::whileUnsure(std::string_view usual) const
{
    return _progress.state() < DFUState::validating ? std::string(usual) : versions();
}

void FirmwareUpdate::fail(Session& session, const std::string& happened, std::string_view next)
{
    session.setIfCutShort(nullptr); // this says it
    session.fail(fmt::format("{}; {}", happened, next));
}

std::string FirmwareUpdate::ifCutShort() const
{
    switch (_progress.state()) {
    case DFUState::completed:
        return fmt::format("{} took the whole image, and has not told its versions since; {}", _name, versions());
    case DFUState::validating:
    case DFUState::validated:
        return fmt::format("the update of {} was broken off {}; {}", _name, _progress.howFar(), versions());
    default:
        return fmt::format("the update of {} was broken off {}; the next one begins anew", _name, _progress.howFar());
    }
}

/// So that the device can be updated again, whatever has become of this.
void FirmwareUpdate::end(Session& session)
{
    _completed = nullptr;
    if (const auto timer = std::exchange(_watch, nullptr))
        timer->invalidate();
    session.device().stopOTA();
    session.endLive();
}

} // namespace aurisk::tool
