#pragma once

#include "AuriskSDK/Platform/Data.h"
#include "AuriskSDK/Platform/Dispatch.h"
#include "Simulator/SimulatedWorldError.h"

#include <cstdint>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace aurisk {

/// A value and its name in a world file.
template <typename Value> struct Named {
    Value value = {};
    std::string_view name = {};
};

template <typename Value> std::string_view nameOf(Value value, std::span<const Named<Value>> names)
{
    for (const auto& named : names)
        if (named.value == value)
            return named.name;
    return {};
}

/// Throws the SimulatedWorldError "place: problem".
[[noreturn]] void failAt(const std::string& place, const std::string& problem);

/// Reads the members of one JSON object and, at the end, refuses those that nobody asked for. Every problem is a
/// SimulatedWorldError that names the place.
class WorldReader {
public:
    /// `place` names the object in errors; it is empty for the outermost one.
    WorldReader(const nlohmann::json& object, std::string place);

    /// The member of that key; none where there is none.
    const nlohmann::json* find(std::string_view key);
    std::string place(std::string_view key) const;

    std::string text(std::string_view key); ///< must be there
    bool boolean(std::string_view key, bool fallback);
    std::int64_t integer(std::string_view key, std::int64_t fallback, std::int64_t low, std::int64_t high);
    Seconds seconds(std::string_view key, Seconds fallback, Seconds low, Seconds high);

    /// Each number of a list, from 0 to `high`; none where there is no list.
    std::optional<std::vector<std::int64_t>> integers(std::string_view key, std::int64_t high);

    /// At least one byte, in hexadecimal text that may have blanks; none where there is no text.
    std::optional<Data> bytes(std::string_view key);
    static Data bytesOf(const nlohmann::json& value, const std::string& place);

    /// Reads each element of a list, which may be missing, with its place.
    void each(std::string_view key, const std::function<void(const nlohmann::json& element, std::string place)>& read);

    /// The value of that name; must be there where there is no fallback.
    template <typename Value>
    Value choice(std::string_view key, std::optional<Value> fallback, std::span<const Named<Value>> names)
    {
        if (fallback && !find(key))
            return *fallback;
        const auto name = text(key);
        std::string known;
        for (const auto& named : names) {
            if (named.name == name)
                return named.value;
            known += (known.empty() ? "" : ", ") + std::string(named.name);
        }
        failAt(place(key), "\"" + name + "\" is none of " + known);
    }

    /// Refuses members that nobody has asked for.
    void finish() const;

private:
    const nlohmann::json& _object;
    std::string _place;
    std::vector<std::string> _known;
};

} // namespace aurisk
