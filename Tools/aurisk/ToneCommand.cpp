#include "Tools/aurisk/Commands.h"

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

} // namespace

void playTone(Session& session)
{
    session.attempt(Request::hearingSupported{}, [](Session& self, const AuriskResult& result) {
        if (!result.isSuccess())
            return self.fail(fmt::format("{} has no hearing test, so it plays no tones", self.name()));
        if (self.options().stop)
            return stop(self);
        self.request(
            Request::enterHearingMode{ .enter = true }, [](Session& again, const auto&) { play(again); },
            Request::enterHearingMode{ .enter = false });
    });
}

} // namespace aurisk::tool
