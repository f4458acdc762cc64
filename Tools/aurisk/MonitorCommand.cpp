#include "Tools/aurisk/Commands.h"

#include "AuriskSDK/Shared/Utils/HexToData.h"
#include "Tools/aurisk/DeviceFields.h"
#include "Tools/aurisk/PL3Commands.h"
#include "Tools/aurisk/Steps.h"

#include <fmt/format.h>

#include <cmath>
#include <map>
#include <memory>
#include <optional>
#include <utility>

namespace aurisk::tool {

namespace {

/// `12.34 s  X1-L  volume 9 (was 8), program 0`
void tellEvent(Session& session, const std::string& event, const Fields& fields)
{
    const auto time = session.sinceBegin().count();
    Fields all = { { .key = "time", .value = std::round(time * 1000) / 1000 }, { .key = "event", .value = event } };
    all.insert(all.end(), fields.begin(), fields.end());
    session.line(all, fmt::format("{:8.2f} s  ", time));
}

/// The field, and what it was before, where that is something else.
Fields changed(Field field, int previous)
{
    Fields fields = { field, { .key = "previous", .value = previous } };
    if (field.value != previous)
        fields.front().text += fmt::format(" (was {})", previous);
    return fields;
}

const auto tellDisconnection = [](Session& self) { tellEvent(self, "disconnected", { { .text = "disconnected" } }); };

Session::Events events()
{
    return {
        .program = [](Session& self, int previous,
                       int current) { tellEvent(self, "program", changed(programField(current), previous)); },
        .volume =
            [](Session& self, int previous, int current) {
                auto fields = changed(volumeField(current), previous);
                fields.push_back(programField(self.device().program()));
                tellEvent(self, "volume", fields);
            },
        .battery = [](Session& self, int bat) { tellEvent(self, "battery", { batteryField(bat) }); },
        .disconnected = tellDisconnection,
    };
}

void listen(Session& session, Fields fields, Session::Events events)
{
    fields.insert(fields.begin(), { .text = "connected" });
    tellEvent(session, "connected", fields);
    session.setEvents(std::move(events));
    session.pause(session.options().duration, [](Session& self) { self.finish(); });
}

/// The state is read first, so that the first change of each value can say what it was.
void play(Session& session)
{
    session.request(AuriskRequest::readProgramVolume{}, [](Session& self, const auto&) {
        const auto begin = [](Session& again, std::optional<int> bat) {
            Fields fields = { programField(again.device().program()), volumeField(again.device().volume()) };
            if (bat)
                fields.push_back(batteryField(bat));
            listen(again, fields, events());
        };
        if (!self.device().batteryService())
            return begin(self, std::nullopt);
        self.readBattery(begin);
    });
}

// The PL3 family

/// The last one of each number whose changes say what it was.
using Known = std::map<PL3Command, int>;

/// How an event that is a number is called and shown; none for any other.
std::optional<std::pair<std::string, Field>> numberEvent(const PL3Response& event)
{
    if (event.data.size() != 1)
        return std::nullopt;
    const int number = event.data.front();
    switch (event.command) {
    case PL3Command::program: return std::pair("program", programField(number));
    case PL3Command::volumeLevel: return std::pair("volume", volumeField(number));
    case PL3Command::batteryLevel: return std::pair("battery", batteryField(number));
    case PL3Command::muteUnmute: return std::pair("mute", switchField("mute", "mute", number != 0));
    default: return std::nullopt;
    }
}

void tellNotified(Session& session, Known& known, const PL3Response& event)
{
    const auto shown = numberEvent(event);
    if (!shown) {
        const auto name = std::string(caseName(event.command));
        const auto data = ask_hexadecimal(event.data);
        return tellEvent(session, name, { { .key = "data", .value = data, .label = name, .text = data } });
    }
    const auto& [name, field] = *shown;
    const auto previous = known.find(event.command);
    if (previous == known.end())
        return tellEvent(session, name, { field });
    tellEvent(session, name, changed(field, std::exchange(previous->second, event.data.front())));
}

/// Reads the state, too. The wearer may act meanwhile, which the accessory hears.
void playPL3(Session& session)
{
    const auto reads = [](PL3Command command) -> Step {
        return [command](Session& self, const Session::Then& then) {
            readNumber(self, command, [then](Session& again, int) { then(again); });
        };
    };
    inTurn(session, { reads(PL3Command::program), reads(PL3Command::volumeLevel), reads(PL3Command::batteryLevel) },
        [](Session& self) {
            const auto& device = self.pl3();
            const auto known = std::make_shared<Known>(
                Known{ { PL3Command::program, device.program() }, { PL3Command::volumeLevel, device.volume() } });
            listen(self,
                { programField(device.program()), volumeField(device.volume()), batteryField(device.battery()) },
                { .notified = [known](Session& again, const PL3Response& event) { tellNotified(again, *known, event); },
                    .disconnected = tellDisconnection });
        });
}

} // namespace

Plan planMonitor() { return { .play = play, .playPL3 = playPL3 }; }

} // namespace aurisk::tool
