#include "AuriskSDK/Platform/BlueZ/Advertiser.h"

#include "AuriskSDK/Platform/BlueZ/GattTable.h"

namespace aurisk::bluez {

namespace {

constexpr Seconds retryInterval{ 2 };

} // namespace

void Advertiser::radioIs(const std::string& poweredAdapter)
{
    if (std::exchange(_adapter, poweredAdapter) == poweredAdapter)
        return;
    ++_spell;
    _given.reset();
    if (_state != State::off)
        _state = State::on;
    settle();
}

void Advertiser::isForgotten()
{
    ++_spell;
    _given.reset();
    _state = State::off;
    settle();
}

void Advertiser::want(std::optional<CBAdvertisementData> advertisement)
{
    if (_wanted == advertisement)
        return;
    _wanted = std::move(advertisement);
    settle();
}

BusDictionary Advertiser::properties() const { return propertiesOf(_given.value_or(CBAdvertisementData())); }

void Advertiser::settle()
{
    if (_adapter.empty())
        return;
    if (_state == State::off && _wanted)
        start();
    else if (_state == State::on && (!_given || _given != _wanted))
        takeBack();
}

void Advertiser::start()
{
    _state = State::starting;
    _given = _wanted;
    call(
        "RegisterAdvertisement", { ObjectPath{ _path }, BusDictionary() }, [](Advertiser& self, const BusReply& reply) {
            if (!reply.error) {
                self._state = State::on;
                self._handlers.started();
                return self.settle();
            }
            if (reply.error->name.ends_with(".AlreadyExists")) { // by a call whose answer came too late
                self._state = State::on;
                self._given.reset();
                return self.settle();
            }
            self._state = State::off;
            self._handlers.failed(*reply.error);
            DispatchQueue::main().asyncAfter(retryInterval, [weak = self.weak_from_this(), spell = self._spell] {
                if (const auto later = weak.lock(); later && later->_spell == spell)
                    later->settle();
            });
        });
}

/// Where the daemon has none of ours it says so, which is as good.
void Advertiser::takeBack()
{
    _state = State::stopping;
    call("UnregisterAdvertisement", { ObjectPath{ _path } }, [](Advertiser& self, const BusReply&) {
        self._state = State::off;
        self.settle();
    });
}

void Advertiser::stop(std::function<void()> stopped)
{
    ++_spell;
    const bool isToEnd = mayBeHeard();
    const auto adapter = std::exchange(_adapter, "");
    if (!isToEnd)
        return DispatchQueue::main().async(std::move(stopped));
    _objects->call(adapter, interface::advertisingManager, "UnregisterAdvertisement", { ObjectPath{ _path } },
        daemonLimit, [stopped = std::move(stopped)](const BusReply&) { stopped(); });
}

void Advertiser::call(
    const char* member, BusValues arguments, std::function<void(Advertiser&, const BusReply&)> answered)
{
    _objects->call(_adapter, interface::advertisingManager, member, std::move(arguments), daemonLimit,
        [weak = weak_from_this(), spell = _spell, answered = std::move(answered)](const BusReply& reply) {
            if (const auto self = weak.lock(); self && self->_spell == spell)
                answered(*self, reply);
        });
}

} // namespace aurisk::bluez
