#include "AuriskSDK/Platform/BlueZ/PairingAgent.h"

#include "AuriskSDK/Shared/Utils/AuriskLog.h"

#include <fmt/format.h>

namespace aurisk::bluez {

std::shared_ptr<PairingAgent> PairingAgent::create(
    std::shared_ptr<BlueZObjects> objects, std::function<bool(const std::string&)> isOurs)
{
    auto agent = std::make_shared<PairingAgent>(Key(), std::move(objects), std::move(isOurs));
    agent->_objects->add(std::weak_ptr<Listener>(agent));
    return agent;
}

PairingAgent::PairingAgent(Key, std::shared_ptr<BlueZObjects> objects, std::function<bool(const std::string&)> isOurs)
    : _objects(std::move(objects))
    , _isOurs(std::move(isOurs))
    , _path(fmt::format("/aurisk/agent{:x}", std::uintptr_t(this)))
{
}

PairingAgent::~PairingAgent()
{
    need(false);
    _objects->bus().stopServing(_path);
}

void PairingAgent::need(bool needed)
{
    _isNeeded = needed;
    settle();
}

void PairingAgent::daemonDidChange()
{
    if (_objects->daemon() != DaemonState::present)
        _isRegistered = false;
    settle();
}

void PairingAgent::settle()
{
    if (_isNeeded == _isRegistered || _objects->daemon() != DaemonState::present)
        return;
    _isRegistered = _isNeeded;
    if (!_isNeeded)
        return _objects->call(
            daemonPath, interface::agentManager, "UnregisterAgent", { ObjectPath{ _path } }, daemonLimit, nullptr);

    _objects->bus().serve(_path, [weak = weak_from_this()](const BusRequest& request) {
        if (const auto self = weak.lock())
            self->asked(request);
    });
    _objects->call(daemonPath, interface::agentManager, "RegisterAgent", { ObjectPath{ _path }, "NoInputNoOutput" },
        daemonLimit, [](const BusReply& reply) {
            if (reply.error)
                AuriskLog::log("nobody can agree to be paired with: " + reply.error->message);
        });
}

/// These name the device first. What would need a keyboard or a display cannot be, and nobody may use services of ours.
void PairingAgent::asked(const BusRequest& request) const
{
    const auto& member = request.member;
    if (member == "Release" || member == "Cancel")
        return _objects->bus().answer(request, {});
    const auto* device = find<ObjectPath>(request.arguments, 0);
    const bool canAgree = member == "RequestConfirmation" || member == "RequestAuthorization";
    if (canAgree && device && _isOurs(device->text))
        return _objects->bus().answer(request, {});
    AuriskLog::log(fmt::format("refused to be paired with {} ({})", device ? device->text : "somebody", member));
    _objects->bus().refuse(request, { "org.bluez.Error.Rejected", "Not one of ours." });
}

} // namespace aurisk::bluez
