#pragma once

#include "AuriskSDK/Shared/Utils/HexToData.h"
#include "Simulator/WorldReader.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <fmt/format.h>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace aurisk {

// The state of an aid lists its members once, in a function that shows each to a visitor; these two visitors read and
// write them.

inline constexpr std::array ears = { Named<bool>{ false, "left" }, Named<bool>{ true, "right" } };

/// Visits the members of a state and takes them from a world file.
struct ReadingMembers {
    WorldReader reader;

    void text(std::string_view key, std::string& value) { value = reader.text(key); }
    void flag(std::string_view key, bool& value) { value = reader.boolean(key, value); }

    template <typename Value> void choice(std::string_view key, Value& value, const auto& names)
    {
        value = reader.choice<Value>(key, value, names);
    }

    template <typename List> void numbers(std::string_view key, List& value, std::int64_t high)
    {
        const auto numbers = reader.integers(key, high);
        if (!numbers)
            return;
        if constexpr (requires { value.resize(0); })
            value.resize(numbers->size());
        else if (numbers->size() != value.size())
            failAt(reader.place(key), fmt::format("must be {} numbers", value.size()));
        std::transform(numbers->begin(), numbers->end(), value.begin(),
            [](std::int64_t number) { return typename List::value_type(number); });
    }

    void bytes(std::string_view key, Data& value) { value = reader.bytes(key).value_or(Data{}); }

    void byteLists(std::string_view key, std::vector<Data>& value)
    {
        reader.each(key,
            [&](const auto& element, const auto& place) { value.push_back(WorldReader::bytesOf(element, place)); });
    }

    void entry(std::string_view key, std::map<std::uint8_t, Data>& map, std::uint8_t number, bool isText)
    {
        if (!reader.find(key))
            return;
        if (isText) {
            const auto given = reader.text(key);
            map[number].assign(given.begin(), given.end());
        } else {
            bytes(key, map[number]);
        }
    }

    void byte(std::string_view key, std::uint8_t& value, int high, std::span<const Named<std::uint8_t>> names)
    {
        const auto* given = reader.find(key);
        if (given && given->is_string())
            value = reader.choice<std::uint8_t>(key, {}, names);
        else
            number(key, value, high);
    }

    template <typename Number> void number(std::string_view key, Number& value, std::int64_t high, std::int64_t low = 0)
    {
        value = Number(reader.integer(key, value, low, high));
    }

    template <typename Number> void number(std::string_view key, std::optional<Number>& value, std::int64_t high)
    {
        if (reader.find(key))
            number(key, value.emplace(), high);
    }

    template <typename Part> void part(std::string_view key, std::optional<Part>& value, auto visitMembers)
    {
        if (reader.find(key))
            group(key, value.emplace(), visitMembers);
    }

    template <typename Part> void group(std::string_view key, Part& value, auto visitMembers)
    {
        if (const auto* given = reader.find(key)) {
            ReadingMembers inner{ WorldReader(*given, reader.place(key)) };
            visitMembers(inner, value);
            inner.reader.finish();
        }
    }

    template <typename Part> void groups(std::string_view key, std::vector<Part>& value, auto visitMembers)
    {
        if (reader.find(key))
            value.clear();
        reader.each(key, [&](const auto& element, const auto& place) {
            ReadingMembers inner{ WorldReader(element, place) };
            visitMembers(inner, value.emplace_back());
            inner.reader.finish();
        });
    }
};

/// Visits the members of a state and writes them down as `ReadingMembers` takes them.
struct WritingMembers {
    nlohmann::json object = nlohmann::json::object();

    void text(const char* key, const std::string& value) { object[key] = value; }
    void flag(const char* key, bool value) { object[key] = value; }
    template <typename Value> void choice(const char* key, Value value, const auto& names)
    {
        object[key] = nameOf<Value>(value, names);
    }
    void numbers(const char* key, const auto& value, std::int64_t) { object[key] = value; }

    void bytes(const char* key, const Data& value)
    {
        if (!value.empty())
            object[key] = ask_hexadecimal(value);
    }

    void byteLists(const char* key, const std::vector<Data>& value)
    {
        auto list = nlohmann::json::array();
        for (const auto& bytes : value)
            list.push_back(ask_hexadecimal(bytes));
        object[key] = std::move(list);
    }

    void entry(const char* key, const std::map<std::uint8_t, Data>& map, std::uint8_t number, bool isText)
    {
        const auto found = map.find(number);
        if (found == map.end())
            return;
        if (isText)
            text(key, { found->second.begin(), found->second.end() });
        else
            bytes(key, found->second);
    }

    void byte(const char* key, std::uint8_t value, int, std::span<const Named<std::uint8_t>> names)
    {
        if (const auto name = nameOf(value, names); !name.empty())
            object[key] = name;
        else
            object[key] = value;
    }

    void number(const char* key, std::int64_t value, std::int64_t, std::int64_t = 0) { object[key] = value; }

    template <typename Number> void number(const char* key, const std::optional<Number>& value, std::int64_t)
    {
        if (value)
            object[key] = *value;
    }

    template <typename Part> void part(const char* key, const std::optional<Part>& value, auto visitMembers)
    {
        if (value)
            group(key, *value, visitMembers);
    }

    template <typename Part> void group(const char* key, const Part& value, auto visitMembers)
    {
        WritingMembers inner;
        visitMembers(inner, value);
        object[key] = std::move(inner.object);
    }

    template <typename Part> void groups(const char* key, const std::vector<Part>& value, auto visitMembers)
    {
        auto list = nlohmann::json::array();
        for (const auto& part : value) {
            WritingMembers inner;
            visitMembers(inner, part);
            list.push_back(std::move(inner.object));
        }
        object[key] = std::move(list);
    }
};

/// Refuses an aid that has no name or no address; `place` is what an error calls the aid.
void refuseNamelessAid(std::string_view name, std::string_view address, const std::string& place);

} // namespace aurisk
