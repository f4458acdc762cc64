#include "Tools/aurisk/Commands.h"

#include "Tools/aurisk/DeviceFields.h"
#include "Tools/aurisk/PL3Commands.h"
#include "Tools/aurisk/Values.h"

#include <fmt/format.h>

namespace aurisk::tool {

namespace {

using Request = AuriskRequest;
using Response = AuriskResponse;

void tell(Session& session, const Fields& fields)
{
    session.line(fields);
    session.finish();
}

void playProgram(Session& session)
{
    if (!session.options().set)
        return session.read<Response::didReadProgram>(Request::readProgramVolume{},
            [](Session& self, const auto& read) { tell(self, { programField(read.program) }); });
    const int program = *session.options().value;
    session.request(Request::controlProgram{ .program = program },
        [program](Session& self, const auto&) { tell(self, { programField(program) }); });
}

void setVolume(Session& session, int program)
{
    const int volume = *session.options().value;
    session.request(Request::controlVolume{ .volume = volume, .program = program }, [=](Session& self, const auto&) {
        tell(self, { volumeField(volume), programField(program) });
    });
}

void playVolume(Session& session)
{
    const auto& options = session.options();
    if (options.set && options.program)
        return setVolume(session, *options.program);
    const auto question = options.program ? Request(Request::readVolume{ .program = *options.program })
                                          : Request(Request::readProgramVolume{});
    session.read<Response::didReadProgram>(question, [](Session& self, const auto& read) {
        if (!self.options().set)
            return tell(self, { volumeField(read.volume), programField(read.program) });
        if (read.program < programs.low || read.program > programs.high)
            return self.fail(fmt::format("{} says that its program is {}, which cannot be", self.name(), read.program));
        setVolume(self, read.program);
    });
}

void playMute(Session& session)
{
    const bool mute = *session.options().on;
    session.request(Request::controlMute{ .mute = mute },
        [mute](Session& self, const auto&) { tell(self, { switchField("mute", "mute", mute) }); });
}

Fields levelFields(int level)
{
    return { { .key = "transLevel", .value = level, .label = "transparency", .text = std::to_string(level) } };
}

void playTransparency(Session& session)
{
    if (!session.options().set)
        return session.read<Response::didReadTransparency>(Request::getTransparencyLevel{},
            [](Session& self, const auto& read) { tell(self, levelFields(read.level)); });
    const int level = *session.options().value;
    session.request(Request::setTransparency{ .level = level },
        [level](Session& self, const auto&) { tell(self, levelFields(level)); });
}

void playBrEdr(Session& session)
{
    const auto& options = session.options();
    if (!options.on)
        return session.read<Response::didReadBrEdr>(Request::readBrEdr{},
            [](Session& self, const auto& read) { tell(self, brEdrFields(read.enable, read.continuousIfEnable)); });
    session.request(Request::setBrEdr{ .enable = *options.on, .continuousIfEnable = options.continuous },
        [](Session& self, const auto&) { tell(self, brEdrFields(*self.options().on, self.options().continuous)); });
}

void playBattery(Session& session)
{
    session.readBattery([](Session& self, int bat) { tell(self, { batteryField(bat) }); });
}

void playFind(Session& session)
{
    session.request(
        Request::beginFind{},
        [](Session& self, const auto&) {
            const auto span = *self.options().duration;
            self.line({ { .key = "finding", .value = true },
                { .key = "seconds",
                    .value = span.count(),
                    .text = fmt::format("is audible for {:g} s", span.count()) } });
            self.pause(span, [](Session& again) { again.finish(); });
        },
        Request::endFind{});
}

void playOrientation(Session& session)
{
    const auto fields = [](AccessoryOrientation orientation) -> Fields {
        const auto name = std::string(caseName(orientation));
        return { { .key = "orientation", .value = name, .label = "ear", .text = name } };
    };
    if (!session.options().set)
        return session.read<Response::didReadOrientation>(Request::readOrientation{},
            [fields](Session& self, const auto& read) { tell(self, fields(read.orientation)); });
    const auto orientation = *session.options().orientation;
    session.request(Request::writeOrientation{ .orientation = orientation },
        [=](Session& self, const auto&) { tell(self, fields(orientation)); });
}

} // namespace

Plan planOf(const Options& options)
{
    switch (options.command) {
    case Command::info: return { .play = playInfo, .playPL3 = playPL3Info };
    case Command::program: return { .play = playProgram, .playPL3 = playPL3Program };
    case Command::volume:
        return { .play = playVolume, .playPL3 = playPL3Volume, .checkPL3 = [=](const PL3Accessory& device) {
                    return whyWithoutVolumeOfProgram(options, device);
                } };
    case Command::mute: return { .play = playMute, .playPL3 = playPL3Mute };
    case Command::transparency: return { .play = playTransparency };
    case Command::bredr: return { .play = playBrEdr };
    case Command::battery: return { .play = playBattery, .playPL3 = playPL3Battery };
    case Command::find: return { .play = playFind };
    case Command::tone: return { .play = playTone };
    case Command::orientation: return { .play = playOrientation };
    case Command::monitor: return planMonitor();
    case Command::raw: return planRaw(options);
    case Command::dsp: return planDsp(options);
    case Command::eq: return planEq(options);
    case Command::noise: return planNoise(options);
    case Command::direction: return planDirection(options);
    case Command::global: return planGlobal(options);
    case Command::profile: return planProfile(options);
    case Command::logs: return planLogs(options);
    case Command::update: return planUpdate(options);
    case Command::scan:
    case Command::sim:
    case Command::codec: break;
    }
    return {};
}

} // namespace aurisk::tool
