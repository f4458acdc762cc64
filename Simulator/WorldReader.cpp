#include "Simulator/WorldReader.h"

#include "AuriskSDK/Shared/Utils/HexToData.h"

#include <algorithm>
#include <fmt/format.h>

namespace aurisk {

namespace {

template <typename Number>
Number inRange(const nlohmann::json& value, Number low, Number high, const std::string& place)
{
    // As a double, since an unsigned number may be too large for every other type here.
    const auto number = value.get<double>();
    if (number < double(low) || number > double(high))
        failAt(place, fmt::format("{} is outside {} to {}", value.dump(), low, high));
    return value.get<Number>();
}

std::int64_t integerIn(const nlohmann::json& value, std::int64_t low, std::int64_t high, const std::string& place)
{
    if (!value.is_number_integer())
        failAt(place, "must be a whole number");
    return inRange(value, low, high, place);
}

} // namespace

void failAt(const std::string& place, const std::string& problem) { throw SimulatedWorldError(place + ": " + problem); }

WorldReader::WorldReader(const nlohmann::json& object, std::string place)
    : _object(object)
    , _place(std::move(place))
{
    if (!object.is_object())
        failAt(_place.empty() ? "world" : _place, "must be an object");
}

const nlohmann::json* WorldReader::find(std::string_view key)
{
    if (std::find(_known.begin(), _known.end(), key) == _known.end())
        _known.emplace_back(key);
    const auto found = _object.find(key);
    return found == _object.end() ? nullptr : &*found;
}

std::string WorldReader::place(std::string_view key) const
{
    return _place.empty() ? std::string(key) : fmt::format("{}.{}", _place, key);
}

std::string WorldReader::text(std::string_view key)
{
    const auto* value = find(key);
    if (!value)
        failAt(place(key), "is missing");
    if (!value->is_string())
        failAt(place(key), "must be a text");
    return value->get<std::string>();
}

bool WorldReader::boolean(std::string_view key, bool fallback)
{
    const auto* value = find(key);
    if (!value)
        return fallback;
    if (!value->is_boolean())
        failAt(place(key), "must be true or false");
    return value->get<bool>();
}

std::int64_t WorldReader::integer(std::string_view key, std::int64_t fallback, std::int64_t low, std::int64_t high)
{
    const auto* value = find(key);
    return value ? integerIn(*value, low, high, place(key)) : fallback;
}

Seconds WorldReader::seconds(std::string_view key, Seconds fallback, Seconds low, Seconds high)
{
    const auto* value = find(key);
    if (!value)
        return fallback;
    if (!value->is_number())
        failAt(place(key), "must be a number of seconds");
    return Seconds(inRange(*value, low.count(), high.count(), place(key)));
}

std::optional<std::vector<std::int64_t>> WorldReader::integers(std::string_view key, std::int64_t high)
{
    if (!find(key))
        return std::nullopt;
    std::vector<std::int64_t> all;
    each(
        key, [&](const auto& element, const std::string& where) { all.push_back(integerIn(element, 0, high, where)); });
    return all;
}

std::optional<Data> WorldReader::bytes(std::string_view key)
{
    const auto* value = find(key);
    return value ? std::optional(bytesOf(*value, place(key))) : std::nullopt;
}

Data WorldReader::bytesOf(const nlohmann::json& value, const std::string& place)
{
    auto digits = value.is_string() ? value.get<std::string>() : std::string();
    std::erase(digits, ' ');
    if (digits.empty() || digits.size() % 2 != 0
        || digits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
        failAt(place, "must be bytes, two hexadecimal digits each");
    return ask_hexadecimal(digits).value();
}

void WorldReader::each(
    std::string_view key, const std::function<void(const nlohmann::json& element, std::string place)>& read)
{
    const auto* list = find(key);
    if (!list)
        return;
    if (!list->is_array())
        failAt(place(key), "must be a list");
    for (std::size_t i = 0; i < list->size(); ++i)
        read((*list)[i], fmt::format("{}[{}]", place(key), i));
}

void WorldReader::finish() const
{
    for (const auto& [key, value] : _object.items())
        if (std::find(_known.begin(), _known.end(), key) == _known.end())
            failAt(place(key), fmt::format("is no known key; known are {}", fmt::join(_known, ", ")));
}

} // namespace aurisk
