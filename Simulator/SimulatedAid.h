#pragma once

#include "AuriskSDK/Platform/Bluetooth.h"
#include "AuriskSDK/Platform/Dispatch.h"
#include "Simulator/SimulatedWorldError.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace aurisk {

constexpr int loudest = 15; ///< the largest volume
constexpr std::size_t mostPrograms = 15;

/// The ear that the name says: "-R" at its end is the right one.
bool isRightByName(std::string_view name);

/// What the wearer of an aid does to it: turns the volume, pushes the program button, puts it into the charger.
///
///     volume V    of the current program, 0 to 15         program P   counted from 0
///     battery B   percent                                 mute M      1 on, 0 off
///     power P     0 switches the aid off: it leaves the air; 1 switches it on, out of the shipping state too
struct WearerAction {
    std::string what = {};
    int value = 0;

    /// Reads "volume 5"; none for any other form. Whether an aid knows the action is the aid's to say.
    static std::optional<WearerAction> fromString(std::string_view text);
    std::string toString() const;

    /// Whether it is one of the above, for an aid of so many programs.
    bool isPossibleWith(int programCount) const;

    friend bool operator==(const WearerAction&, const WearerAction&) = default;
};

struct SimulatedCharacteristic {
    CBUUID uuid;
    CBCharacteristicProperties properties = CBCharacteristicProperties::none;
};

struct SimulatedService {
    CBUUID uuid;
    std::vector<SimulatedCharacteristic> characteristics = {};
};

/// One virtual hearing aid: a GATT table, bytes in, bytes out. It knows neither radio nor time; a link
/// (SimulatedRadio) carries its bytes, and everything here is called on the queue of that link.
class SimulatedAid {
public:
    SimulatedAid() = default;
    SimulatedAid(const SimulatedAid&) = delete;
    SimulatedAid& operator=(const SimulatedAid&) = delete;
    virtual ~SimulatedAid() = default;

    /// The name under which it advertises, and by which a world knows it.
    virtual std::string name() const = 0;

    /// Its Bluetooth address: "0A:1B:2C:3D:4E:5F".
    virtual std::string address() const = 0;

    /// The same for one address in every run: the address is its last twelve digits.
    CBUUID identifier() const;

    /// Whether it can be heard at all; one that is switched off, or packed for shipping, cannot.
    virtual bool isOnAir() const { return true; }

    virtual CBAdvertisementData advertisement() const = 0;
    virtual std::vector<SimulatedService> gattTable() const = 0;

    virtual void didConnect() { }

    /// The link has ended, whoever ended it. Subscriptions end with it.
    virtual void didDisconnect() { _subscriptions.clear(); }

    virtual void didSubscribe(const CBUUID& characteristic, bool enabled);

    /// A write has arrived.
    virtual void didReceive(const CBUUID& characteristic, DataView value) = 0;

    /// A write has arrived that the aid is to refuse, whatever it asks: it answers with its error reply, where it has
    /// one.
    virtual void refuse(const CBUUID& characteristic, DataView value) = 0;

    /// Whether the confirmation of a write, which the aid has not heard yet, says that it failed: the way to refuse of
    /// those whose protocol has no error reply. `refused`: it is to be refused, whatever it asks.
    virtual bool failsWrite(const CBUUID&, DataView, bool /*refused*/) const { return false; }

    /// The value of a readable characteristic; none for any other.
    virtual std::optional<Data> read(const CBUUID& characteristic) const = 0;

    /// Whether its wearer can do this.
    virtual bool accepts(const WearerAction& action) const = 0;

    /// The wearer acts; false, and nothing happens, where `accepts` says no.
    virtual bool perform(const WearerAction& action) = 0;

    /// Everything there is to know of it, in the form that `aidFromJson` reads.
    virtual nlohmann::json toJson() const = 0;

    /// Set by the link: from now on this clock says what time it is. Without one no time goes by.
    virtual void keepTime(std::function<Seconds()>) { }

    /// Set by the link: carries a notification away.
    std::function<void(const CBUUID& characteristic, Data value)> notify;

    /// Set by the link: the aid starts anew. Its link goes soon, and for a while it is off the air.
    std::function<void()> restart;

protected:
    /// Notifies `value`, if somebody has subscribed to it.
    void send(const CBUUID& characteristic, Data value) const;

private:
    std::set<CBUUID> _subscriptions;
};

/// Makes an aid of any kind from its JSON form. Throws SimulatedWorldError; `place` is what it calls the value.
std::shared_ptr<SimulatedAid> aidFromJson(const nlohmann::json& value, const std::string& place = "aid");

} // namespace aurisk
