#include "Simulator/LinkFaults.h"

#include "Simulator/WorldReader.h"

#include <array>
#include <limits>

namespace aurisk {

namespace {

constexpr std::array kinds = {
    Named<Fault::Kind>{ Fault::Kind::dropLinkBefore, "dropLinkBefore" },
    Named<Fault::Kind>{ Fault::Kind::dropLinkAfter, "dropLinkAfter" },
    Named<Fault::Kind>{ Fault::Kind::lose, "lose" },
    Named<Fault::Kind>{ Fault::Kind::duplicate, "duplicate" },
    Named<Fault::Kind>{ Fault::Kind::delay, "delay" },
    Named<Fault::Kind>{ Fault::Kind::corrupt, "corrupt" },
    Named<Fault::Kind>{ Fault::Kind::refuse, "refuse" },
};

Fault faultFromJson(const nlohmann::json& value, const std::string& place)
{
    WorldReader reader(value, place);
    Fault fault;
    fault.kind = reader.choice<Fault::Kind>("kind", {}, kinds);
    fault.message = int(reader.integer("message", 1, 1, std::numeric_limits<int>::max()));
    if (fault.kind == Fault::Kind::delay)
        fault.by = reader.seconds("by", fault.by, Seconds(0), Seconds(3600));
    reader.finish();
    return fault;
}

nlohmann::json toJson(const Fault& fault)
{
    nlohmann::json value = { { "kind", nameOf<Fault::Kind>(fault.kind, kinds) }, { "message", fault.message } };
    if (fault.kind == Fault::Kind::delay)
        value["by"] = fault.by.count();
    return value;
}

} // namespace

nlohmann::json toJson(const LinkFaults& faults)
{
    auto list = nlohmann::json::array();
    for (const auto& fault : faults.faults)
        list.push_back(toJson(fault));
    return {
        { "latency", faults.latency.count() },
        { "refusesConnections", faults.refusesConnections },
        { "ignoresConnections", faults.ignoresConnections },
        { "isSilent", faults.isSilent },
        { "faults", std::move(list) },
    };
}

LinkFaults linkFaultsFrom(WorldReader& reader)
{
    LinkFaults faults;
    faults.latency = reader.seconds("latency", faults.latency, Seconds(0), Seconds(60));
    faults.refusesConnections = reader.boolean("refusesConnections", faults.refusesConnections);
    faults.ignoresConnections = reader.boolean("ignoresConnections", faults.ignoresConnections);
    faults.isSilent = reader.boolean("isSilent", faults.isSilent);
    reader.each("faults",
        [&](const auto& element, const auto& where) { faults.faults.push_back(faultFromJson(element, where)); });
    reader.finish();
    return faults;
}

} // namespace aurisk
