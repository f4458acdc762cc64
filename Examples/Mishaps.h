#pragma once

#include <Simulator/SimulatedAuriskAid.h>
#include <Simulator/Simulator.h>

#include <memory>
#include <string_view>
#include <utility>

/// What can go wrong with a simulated world, by name.
struct Mishap {
    std::string_view name;
    std::string_view meaning;
    void (*happen)(aurisk::Simulator&);
};

namespace mishaps {

inline void everyLink(aurisk::Simulator& simulator, auto&& spoil)
{
    for (auto& placed : simulator.world().aids)
        spoil(placed.faults);
}

/// The aid says yes to every change, and moments later it is as it was.
inline void forget(const std::shared_ptr<aurisk::SimulatedAuriskAid>& aid, const aurisk::AuriskAidState& always)
{
    aid->setState(always);
    aurisk::DispatchQueue::main().asyncAfter(aurisk::Seconds(0.01), [aid, always] { forget(aid, always); });
}

/// The messages before this one set a connection up.
constexpr int firstRequest = 7, manyRequests = 100;

inline constexpr Mishap all[] = {
    { "radio-off", "Bluetooth is switched off",
        [](aurisk::Simulator& simulator) { simulator.radio().setState(aurisk::CBManagerState::poweredOff); } },
    { "nobody", "no hearing aid is switched on",
        [](aurisk::Simulator& simulator) {
            for (const auto& placed : simulator.world().aids)
                simulator.radio().perform(placed.aid->name(), { "power", 0 });
        } },
    { "no-connection", "the hearing aids let nobody connect",
        [](aurisk::Simulator& simulator) {
            everyLink(simulator, [](aurisk::LinkFaults& link) { link.refusesConnections = true; });
        } },
    { "silent", "the hearing aids hear everything and answer nothing",
        [](aurisk::Simulator& simulator) {
            everyLink(simulator, [](aurisk::LinkFaults& link) { link.isSilent = true; });
        } },
    { "refusing", "the hearing aids refuse whatever they are asked",
        [](aurisk::Simulator& simulator) {
            everyLink(simulator, [](aurisk::LinkFaults& link) {
                for (int message = firstRequest; message < firstRequest + manyRequests; ++message)
                    link.faults.push_back({ aurisk::Fault::Kind::refuse, message });
            });
        } },
    { "forgetful", "the hearing aids accept every change and forget it at once",
        [](aurisk::Simulator& simulator) {
            for (const auto& placed : simulator.world().aids)
                if (auto aid = std::dynamic_pointer_cast<aurisk::SimulatedAuriskAid>(placed.aid))
                    forget(aid, aid->state());
        } },
    { "lost-link", "the hearing aids walk out of range after a while",
        [](aurisk::Simulator& simulator) {
            everyLink(simulator, [](aurisk::LinkFaults& link) {
                link.faults.push_back({ aurisk::Fault::Kind::dropLinkAfter, firstRequest + 5 });
            });
        } },
};

/// None where no mishap has that name.
inline const Mishap* named(std::string_view name)
{
    for (const auto& mishap : all)
        if (mishap.name == name)
            return &mishap;
    return nullptr;
}

} // namespace mishaps
