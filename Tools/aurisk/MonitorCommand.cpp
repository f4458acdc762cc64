#include "Tools/aurisk/Commands.h"

#include "Tools/aurisk/DeviceFields.h"

#include <fmt/format.h>

#include <cmath>

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
        .disconnected = [](Session& self) { tellEvent(self, "disconnected", { { .text = "disconnected" } }); },
    };
}

void listen(Session& session, Fields fields)
{
    fields.insert(fields.begin(), { .text = "connected" });
    tellEvent(session, "connected", fields);
    session.setEvents(events());
    session.pause(session.options().duration, [](Session& self) { self.finish(); });
}

} // namespace

/// The state is read first, so that the first change of each value can say what it was.
void playMonitor(Session& session)
{
    session.request(AuriskRequest::readProgramVolume{}, [](Session& self, const auto&) {
        const Fields fields = { programField(self.device().program()), volumeField(self.device().volume()) };
        if (!self.device().batteryService())
            return listen(self, fields);
        self.readBattery([fields](Session& again, int bat) {
            auto all = fields;
            all.push_back(batteryField(bat));
            listen(again, all);
        });
    });
}

} // namespace aurisk::tool
