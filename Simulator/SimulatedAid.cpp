#include "Simulator/SimulatedAid.h"

#include "AuriskSDK/Shared/Utils/HexToData.h"
#include "Simulator/SimulatedAuriskAid.h"
#include "Simulator/SimulatedPL3Aid.h"
#include "Simulator/WorldReader.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace aurisk {

namespace {

using Maker = std::shared_ptr<SimulatedAid> (*)(const nlohmann::json& value, const std::string& place);

template <typename Aid> std::shared_ptr<SimulatedAid> make(const nlohmann::json& value, const std::string& place)
{
    return Aid::fromJson(value, place);
}

constexpr std::array kinds
    = { Named<Maker>{ make<SimulatedAuriskAid>, "aurisk" }, Named<Maker>{ make<SimulatedPL3Aid>, "pl3" } };

} // namespace

bool isRightByName(std::string_view name) { return name.ends_with("-R"); }

std::optional<WearerAction> WearerAction::fromString(std::string_view text)
{
    const auto blank = text.find(' ');
    if (blank == 0 || blank == std::string_view::npos)
        return std::nullopt;
    const auto number = text.substr(blank + 1);
    WearerAction action{ std::string(text.substr(0, blank)) };
    const auto [rest, error] = std::from_chars(number.data(), number.data() + number.size(), action.value);
    if (error != std::errc() || rest != number.data() + number.size())
        return std::nullopt;
    return action;
}

std::string WearerAction::toString() const { return what + " " + std::to_string(value); }

bool WearerAction::isPossibleWith(int programCount) const
{
    const auto isUpTo = [this](int most) { return value >= 0 && value <= most; };
    if (what == "volume")
        return isUpTo(loudest);
    if (what == "program")
        return isUpTo(programCount - 1);
    if (what == "battery")
        return isUpTo(100);
    return (what == "mute" || what == "power") && isUpTo(1);
}

CBUUID SimulatedAid::identifier() const
{
    CBUUID::Bytes bytes = { 0x5A, 0x1D, 0x00, 0x00, 0xA1, 0xD5, 0x40, 0x00, 0x80, 0x00 };
    const auto digits = ask_hexadecimal(address()).value_or(Data{});
    std::copy_n(digits.begin(), std::min<std::size_t>(digits.size(), 6), bytes.begin() + 10);
    return CBUUID(bytes);
}

void SimulatedAid::didSubscribe(const CBUUID& characteristic, bool enabled)
{
    if (enabled)
        _subscriptions.insert(characteristic);
    else
        _subscriptions.erase(characteristic);
}

void SimulatedAid::send(const CBUUID& characteristic, Data value) const
{
    if (notify && _subscriptions.count(characteristic) > 0)
        notify(characteristic, std::move(value));
}

std::shared_ptr<SimulatedAid> aidFromJson(const nlohmann::json& value, const std::string& place)
{
    const auto make = WorldReader(value, place).choice<Maker>("kind", {}, kinds);
    auto description = value;
    description.erase("kind");
    return make(description, place);
}

} // namespace aurisk
