#include "Fuzz/FuzzTargets.h"
#include "Simulator/SimulatedWorld.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cctype>
#include <string>

namespace aurisk::fuzz {

namespace {

/// Bytes in hexadecimal may be given with blanks and capital letters.
std::string plain(std::string text)
{
    std::erase(text, ' ');
    std::ranges::transform(text, text.begin(), [](unsigned char letter) { return char(std::tolower(letter)); });
    return text;
}

/// Whether `written` says all that `given` says. A number may have become the name that stands for it, and what was
/// left out has its default, at the end of a list, too.
bool saysAll(const nlohmann::json& written, const nlohmann::json& given)
{
    if (given.is_object())
        return std::ranges::all_of(given.items(), [&](const auto& member) {
            return written.contains(member.key()) && saysAll(written[member.key()], member.value());
        });
    if (given.is_array())
        return written.size() >= given.size()
            && std::equal(given.begin(), given.end(), written.begin(),
                [](const auto& one, const auto& other) { return saysAll(other, one); });
    if (given.is_string() && written.is_string())
        return plain(written) == plain(given);
    if (given.is_number()) // compared as doubles, since JSON values wrap where one is signed and the other is not
        return written.is_string() || (written.is_number() && written.get<double>() == given.get<double>());
    return written == given;
}

} // namespace

void world(DataView input)
{
    const auto json = nlohmann::json::parse(input.begin(), input.end(), nullptr, false);
    if (json.is_discarded())
        return;
    std::optional<SimulatedWorld> read;
    try {
        read = SimulatedWorld::fromJson(json);
    } catch (const SimulatedWorldError& error) {
        require(*error.what() != '\0', "a world was refused without a word");
        return;
    }
    const auto written = read->toJson();
    require(saysAll(written, json), "a world has lost something that was read");
    require(SimulatedWorld::fromJson(written).toJson() == written, "a world did not survive being written and read");
}

} // namespace aurisk::fuzz
