#include "Tools/aurisk/UpdateProgress.h"

#include "Tools/aurisk/ProgressBar.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace aurisk::tool {

namespace {

constexpr Seconds betweenRedraws{ 0.2 };

/// A log between the redraws would ruin what they show.
bool isRedrawing(const Session& session)
{
    return session.style().redrawing && !session.style().json && !session.options().log;
}

double milliseconds(Seconds span) { return std::round(span.count() * 1000) / 1000; }

std::string speedText(double speed) { return fmt::format("{:.1f} kB/s", speed / 1000); }

/// Rounded up: there is something left until there is not.
std::string leftText(Seconds span) { return clockText(Seconds(std::ceil(span.count()))) + " left"; }

} // namespace

UpdateProgress::UpdateProgress(int size)
    : _size(size)
    , _began(DispatchQueue::main().now())
    , _reported(_began)
{
}

void UpdateProgress::enter(Session& session, DFUState state)
{
    const bool isNew = std::exchange(_state, state) != state;
    if (isRedrawing(session)) {
        if (isNew || !_drawn || DispatchQueue::main().now() - *_drawn >= betweenRedraws)
            redraw(session);
    } else if (isNew && session.style().json && state != DFUState::uploading) // of which its reports tell
        tellState(session);
}

void UpdateProgress::report(Session& session, int percent, double speed)
{
    _percent = std::clamp(percent, 0, 100); // a device that repeats itself has taken more than there is
    _speed = std::isfinite(speed) && speed > 0 ? std::optional(speed) : std::nullopt;
    _reported = DispatchQueue::main().now();
    if (!isRedrawing(session))
        tellReport(session);
}

void UpdateProgress::tellState(Session& session) const
{
    session.line({ { .key = "state", .value = std::string(description(_state)) },
        { .key = "elapsed", .value = milliseconds(elapsed()) } });
}

void UpdateProgress::tellReport(Session& session)
{
    constexpr int betweenLines = 10;
    if (!session.style().json) {
        if (_percent < _nextLine)
            return;
        _nextLine = _percent - _percent % betweenLines + betweenLines;
    }
    const auto left = remaining();
    session.line({
        { .key = "state", .value = std::string(description(DFUState::uploading)) },
        { .key = "progress", .value = _percent, .text = fmt::format("{} %", _percent) },
        { .key = "speed",
            .value = _speed ? Json(std::llround(*_speed)) : Json(),
            .text = _speed ? speedText(*_speed) : "" },
        { .key = "elapsed", .value = milliseconds(elapsed()) },
        { .key = "remaining",
            .value = left ? Json(milliseconds(*left)) : Json(),
            .text = left && _percent < 100 ? leftText(*left) : "" },
    });
}

void UpdateProgress::redraw(Session& session)
{
    _drawn = DispatchQueue::main().now();
    session.showLive(progressBar(session.name(), _percent, words(), session.style()));
}

/// None where the speed is not known.
std::optional<Seconds> UpdateProgress::remaining() const
{
    if (!_speed)
        return std::nullopt;
    const Seconds atReport(double(_size) * (100 - _percent) / 100 / *_speed);
    return std::max(Seconds(0), atReport - (DispatchQueue::main().now() - _reported));
}

/// Behind the bar.
std::string UpdateProgress::words() const
{
    switch (_state) {
    case DFUState::validating: return "checks the image";
    case DFUState::validated: return "starts the image";
    case DFUState::completed: return "starts anew";
    case DFUState::uploading: break;
    default: return "begins";
    }
    const auto left = remaining();
    return left ? fmt::format("{}, {} gone, {}", speedText(*_speed), clockText(elapsed()), leftText(*left))
                : clockText(elapsed()) + " gone";
}

std::string UpdateProgress::howFar() const
{
    switch (_state) {
    case DFUState::validating: return "while it checked the image";
    case DFUState::validated: return "when it was about to start the image";
    case DFUState::completed: return "after it had taken the image";
    case DFUState::uploading: return fmt::format("after {} % of the image", _percent);
    default: return "before it took anything of the image";
    }
}

} // namespace aurisk::tool
