#include "Tools/aurisk/Commands.h"

#include "Tools/aurisk/DeviceFields.h"

#include <fmt/format.h>

namespace aurisk::tool {

namespace {

using Request = AuriskRequest;

AuriskRequest toneOf(const Options& options)
{
    const auto freq = std::uint16_t(*options.value);
    if (options.dB)
        return Request::playSine{ .freq = freq, .dB = std::uint8_t(*options.dB), .timestamp = options.timestamp };
    return Request::playSineAmplitude{
        .freq = freq, .amp = std::int16_t(*options.amp), .timestamp = options.timestamp
    };
}

void tellTone(Session& session)
{
    const auto& options = session.options();
    const auto span = *options.duration;
    const Field strength = options.dB
        ? Field{ .key = "dB", .value = *options.dB, .text = fmt::format("at {} dB", *options.dB) }
        : Field{ .key = "amp", .value = *options.amp, .text = fmt::format("with an amplitude of {}", *options.amp) };
    session.line({
        { .key = "freq",
            .value = *options.value,
            .text = fmt::format("plays {} Hz {} for {:g} s", *options.value, strength.text, span.count()) },
        { .key = strength.key, .value = strength.value },
        { .key = "seconds", .value = span.count() },
    });
}

void play(Session& session)
{
    session.request(
        toneOf(session.options()),
        [](Session& self, const auto&) {
            tellTone(self);
            self.pause(*self.options().duration, [](Session& again) { again.finish(); });
        },
        Request::stopPlaySine{});
}

bool isSupported(const AuriskResult& result)
{
    const auto* read = result.isSuccess() ? result.data()->as<AuriskResponse::didReadHearingTest>() : nullptr;
    return read && read->supported;
}

/// Ends a tone, and the hearing test, that something else has left behind.
void stop(Session& session)
{
    session.request(Request::stopPlaySine{}, [](Session& self, const auto&) {
        self.request(Request::enterHearingMode{ .enter = false }, [](Session& again, const auto&) {
            again.line({ { .key = "playing", .value = false, .text = "plays no tone" } });
            again.finish();
        });
    });
}

/// Sets the amplitude that the hearing test measures from at a frequency.
void setBase(Session& session)
{
    const int freq = *session.options().value, amp = *session.options().amp;
    const Request::setBaseAmplitude base{ .freq = std::uint16_t(freq), .amp = std::int16_t(amp) };
    session.request(base, [=](Session& self, const auto&) {
        self.line(
            { { .key = "freq", .value = freq, .text = fmt::format("measures {} Hz from amplitude {}", freq, amp) },
                { .key = "amp", .value = amp } });
        self.finish();
    });
}

void within(Session& session, const Session::Then& then)
{
    session.request(
        Request::enterHearingMode{ .enter = true }, [then](Session& self, const auto&) { then(self); },
        Request::enterHearingMode{ .enter = false });
}

} // namespace

void playTone(Session& session)
{
    session.attempt(Request::hearingSupported{}, [](Session& self, const AuriskResult& result) {
        const auto action = self.options().toneAction;
        if (action == ToneAction::supported) {
            self.line({ hearingTestField(isSupported(result)) });
            return self.finish();
        }
        if (!isSupported(result))
            return self.fail(fmt::format("{} has no hearing test, so it plays no tones", self.name()));
        if (action == ToneAction::stop)
            return stop(self);
        within(self, action == ToneAction::base ? setBase : play);
    });
}

} // namespace aurisk::tool
