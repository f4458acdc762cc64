#pragma once

#include "AuriskSDK/Platform/BlueZ/BlueZObjects.h"

#include <functional>

namespace aurisk::bluez {

/// Agrees when a device wants to be paired with that is ours to agree for, and refuses any other. The daemon asks it
/// while it is registered, unless the user's desktop has an agent of its own, which the daemon prefers. It can neither
/// show nor read a number, as hearing aids cannot either.
class PairingAgent final : public BlueZObjects::Listener, public std::enable_shared_from_this<PairingAgent> {
    class Key {
        friend class PairingAgent;
        Key() = default;
    };

public:
    /// `isOurs` says whether a device, named by its path, may be paired with.
    static std::shared_ptr<PairingAgent> create(
        std::shared_ptr<BlueZObjects> objects, std::function<bool(const std::string& devicePath)> isOurs);
    PairingAgent(Key, std::shared_ptr<BlueZObjects> objects, std::function<bool(const std::string&)> isOurs);
    ~PairingAgent() override;

    /// Whether there is anything to agree to.
    void need(bool needed);

    void daemonDidChange() override;

private:
    void settle();
    void asked(const BusRequest& request) const;

    std::shared_ptr<BlueZObjects> _objects;
    std::function<bool(const std::string&)> _isOurs;
    std::string _path;
    bool _isNeeded = false;
    bool _isRegistered = false;
};

} // namespace aurisk::bluez
