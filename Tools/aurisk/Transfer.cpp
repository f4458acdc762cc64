#include "Tools/aurisk/Transfer.h"

#include <fmt/format.h>

#include <memory>

namespace aurisk::tool {

namespace {

std::vector<Step> stepsOf(const std::vector<ImportItem>& items, Step ImportItem::*step)
{
    std::vector<Step> steps;
    for (const auto& item : items)
        steps.push_back(item.*step);
    return steps;
}

/// How far the writing of an import has come.
struct Progress {
    std::size_t begun = 0, written = 0, count = 0;

    /// Of a device that went no further.
    std::string sentence(const std::string& name) const
    {
        if (begun == 0)
            return {};
        if (written == count)
            return fmt::format("{} has taken the whole import, which was not read back", name);
        const auto next = begun > written ? ", and perhaps one more" : "";
        return fmt::format("{} has taken {} of {} part(s) of the import{}", name, written, count, next);
    }
};

/// The step, counted.
Step counted(const Step& write, const std::shared_ptr<Progress>& progress)
{
    return [=](Session& session, const Session::Then& then) {
        ++progress->begun;
        write(session, [=](Session& self) {
            ++progress->written;
            then(self);
        });
    };
}

} // namespace

void ExportedParts::add(const Session& session, const std::string& member, Json value)
{
    auto device = exchangeHead(session.name(), session.device());
    device[member] = std::move(value);
    _parts.emplace(session.name(), Part{ session.device().deviceId(), std::move(device) });
}

void ExportedParts::write(const std::string& path, std::string_view format, Output& output) const
{
    std::vector<Json> devices;
    for (const auto& [name, part] : _parts)
        devices.push_back(part.device);
    writeExchangeFile(path, format, devices, output);
    if (path == "-")
        return;
    for (const auto& [name, part] : _parts)
        output.line(name,
            { { .key = "identifier", .value = part.identifier }, { .key = "name", .value = name },
                { .key = "exported", .value = path, .text = "exported to " + path } });
}

void importItems(Session& session, const std::vector<ImportItem>& items, Session::Then then)
{
    const auto compare = [=](Session& self) { inTurn(self, stepsOf(items, &ImportItem::compare), then); };
    const auto write = [=](Session& self) {
        const auto progress = std::make_shared<Progress>();
        progress->count = items.size();
        self.setIfCutShort([progress, name = self.name()] { return progress->sentence(name); });
        auto steps = stepsOf(items, &ImportItem::write);
        for (auto& step : steps)
            step = counted(step, progress);
        inTurn(self, std::move(steps), compare);
    };
    const auto meet = [=](Session& self) { self.meet(write); };
    inTurn(session, stepsOf(items, &ImportItem::prepare), meet);
}

} // namespace aurisk::tool
