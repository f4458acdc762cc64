#include "Tools/aurisk/Serving.h"

#include <fmt/format.h>

namespace aurisk::tool {

std::shared_ptr<Serving> Serving::start(std::shared_ptr<Simulator> simulator,
    std::shared_ptr<bluez::GattServerPlatform> servers, const std::vector<Place>& places, Output& output,
    std::function<void(ExitCode)> ended)
{
    auto serving = std::make_shared<Serving>(Key{}, std::move(servers), output, std::move(ended));
    for (const auto& [name, adapter] : places)
        serving->_aids.push_back(AidOnAir::create(simulator, name, *serving->_servers, adapter, serving));
    return serving;
}

Serving::Serving(
    Key, std::shared_ptr<bluez::GattServerPlatform> servers, Output& output, std::function<void(ExitCode)> ended)
    : _servers(std::move(servers))
    , _output(output)
    , _ended(std::move(ended))
{
}

void Serving::aidDidBecomeAudible(const AidOnAir& aid)
{
    _heard.insert(aid.name());
    tell(aid, "onAir", fmt::format("{} is on the air as {} {}", aid.name(), aid.adapter(), aid.address()),
        { { "adapter", aid.adapter() }, { "address", aid.address() } });
}

/// One that has been on the air waits until it can be there again.
void Serving::aidCannotBeHeard(const AidOnAir& aid, const std::string& why)
{
    if (_heard.contains(aid.name()))
        return tell(aid, "offAir", fmt::format("{} is off the air: {}", aid.name(), why), { { "why", why } });
    if (!_ended)
        return;
    _output.failure({ .code = ExitCode::bluetoothUnavailable, .sentence = why, .name = aid.name() });
    finish(ExitCode::bluetoothUnavailable);
}

void Serving::aidDidConnect(const AidOnAir& aid, const std::string& central)
{
    tell(aid, "connected", fmt::format("{} is connected to {}", aid.name(), central), { { "central", central } });
}

void Serving::aidDidDisconnect(const AidOnAir& aid, const std::string& central)
{
    tell(aid, "disconnected", fmt::format("{} is disconnected from {}", aid.name(), central),
        { { "central", central } });
}

void Serving::tell(const AidOnAir& aid, const std::string& event, const std::string& words, const Json& more)
{
    Json object = { { "event", event }, { "name", aid.name() } };
    object.update(more);
    _output.document(words, object);
}

void Serving::finish(ExitCode code)
{
    const auto ended = std::exchange(_ended, nullptr);
    if (!ended)
        return;
    const auto group = std::make_shared<DispatchGroup>();
    for (const auto& aid : _aids) {
        group->enter();
        aid->stop([group] { group->leave(); });
    }
    group->notify(DispatchQueue::main(), [ended, code] { ended(code); });
}

} // namespace aurisk::tool
