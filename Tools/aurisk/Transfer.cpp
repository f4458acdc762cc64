#include "Tools/aurisk/Transfer.h"

namespace aurisk::tool {

namespace {

std::vector<Step> stepsOf(const std::vector<ImportItem>& items, Step ImportItem::*step)
{
    std::vector<Step> steps;
    for (const auto& item : items)
        steps.push_back(item.*step);
    return steps;
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
    const auto write = [=](Session& self) { inTurn(self, stepsOf(items, &ImportItem::write), compare); };
    const auto meet = [=](Session& self) { self.meet(write); };
    inTurn(session, stepsOf(items, &ImportItem::prepare), meet);
}

} // namespace aurisk::tool
