#include "Tools/aurisk/DeviceChoice.h"

#include "Tools/aurisk/Values.h"

#include <fmt/format.h>

#include <algorithm>

namespace aurisk::tool {

namespace {

using Candidates = std::vector<Candidate>;
using Places = std::vector<std::size_t>;

constexpr std::string_view leftSuffix = "-L", rightSuffix = "-R";

bool isExactly(const Candidate& candidate, std::string_view wanted)
{
    return candidate.name == wanted || isSameInEitherCase(candidate.identifier, wanted)
        || (!candidate.address.empty() && isSameInEitherCase(candidate.address, wanted));
}

template <typename Predicate> Places placesOf(const Candidates& candidates, Predicate holds)
{
    Places places;
    for (std::size_t i = 0; i < candidates.size(); ++i)
        if (holds(candidates[i]))
            places.push_back(i);
    return places;
}

/// The candidates that `wanted` names; those that it names exactly hide the others.
Places named(const Candidates& candidates, const std::string& wanted, bool exactly)
{
    auto places = placesOf(candidates, [&](const auto& each) { return isExactly(each, wanted); });
    if (places.empty() && !exactly)
        places = placesOf(candidates, [&](const auto& each) { return isSameInEitherCase(each.name, wanted); });
    return places;
}

std::vector<std::string> namesOf(const Candidates& candidates)
{
    std::vector<std::string> names;
    for (const auto& each : candidates)
        names.push_back(each.name);
    return names;
}

Failure notFound(const Options& options, const std::string& what, const Candidates& candidates)
{
    const auto names = namesOf(candidates);
    auto sentence = fmt::format("no {} within {:g} s", what, options.timeout.count());
    if (!names.empty())
        sentence += fmt::format("; seen: {}", fmt::join(names, ", "));
    const bool isNumber
        = !options.device.empty() && options.device.find_first_not_of("0123456789") == options.device.npos;
    const auto command = caseName(options.command);
    if (isNumber && !options.set
        && (options.command == Command::volume || options.command == Command::program
            || options.command == Command::transparency))
        sentence += fmt::format(" (to change it: aurisk {} set {})", command, options.device);
    return { .code = ExitCode::notFound, .sentence = std::move(sentence), .seen = names };
}

Failure tooMany(const std::string& what, const std::vector<std::string>& names, std::string_view advice)
{
    return {
        .code = ExitCode::usage,
        .sentence = fmt::format("{} {} found: {}; {}", names.size(), what, fmt::join(names, ", "), advice),
        .seen = names,
    };
}

/// Identifiers tell devices of one name apart.
Failure ambiguous(const Options& options, const Candidates& candidates, const Places& places)
{
    std::vector<std::string> identified;
    for (const auto place : places)
        identified.push_back(fmt::format("{} ({})", candidates[place].name, candidates[place].identifier));
    return tooMany("hearing aids called " + inQuotes(options.device), identified, "give the identifier");
}

std::optional<Choice> chooseNamed(const Options& options, const Candidates& candidates, Search search)
{
    const auto places = named(candidates, options.device, search == Search::going);
    if (places.size() > 1)
        return ambiguous(options, candidates, places);
    if (places.size() == 1)
        return places;
    if (search == Search::over)
        return notFound(options, "hearing aid called " + inQuotes(options.device), candidates);
    return std::nullopt;
}

std::optional<Choice> chooseOnly(const Options& options, const Candidates& candidates, Search search)
{
    if (search == Search::going || (candidates.empty() && search == Search::settled))
        return std::nullopt;
    if (candidates.empty())
        return notFound(options, "hearing aid was heard", candidates);
    if (candidates.size() > 1)
        return tooMany("hearing aids", namesOf(candidates), "name one of them");
    return Places{ 0 };
}

std::string withoutSuffix(const std::string& name)
{
    const bool hasSuffix = name.ends_with(leftSuffix) || name.ends_with(rightSuffix);
    return hasSuffix ? name.substr(0, name.size() - leftSuffix.size()) : name;
}

std::optional<Choice> chooseNamedPair(const Options& options, const Candidates& candidates, Search search)
{
    const auto stem = withoutSuffix(options.device);
    Places pair;
    for (const auto suffix : { leftSuffix, rightSuffix }) {
        const auto name = stem + std::string(suffix);
        const auto places = named(candidates, name, search == Search::going);
        if (places.size() > 1)
            return ambiguous(options, candidates, places);
        if (places.empty() && search == Search::over)
            return notFound(options, "hearing aid called " + inQuotes(name), candidates);
        pair.insert(pair.end(), places.begin(), places.end());
    }
    return pair.size() == 2 ? std::optional<Choice>(pair) : std::nullopt;
}

std::optional<Choice> chooseOnlyPair(const Options& options, const Candidates& candidates, Search search)
{
    if (search == Search::going)
        return std::nullopt;
    std::vector<Places> pairs;
    std::vector<std::string> stems;
    for (std::size_t left = 0; left < candidates.size(); ++left) {
        const auto& name = candidates[left].name;
        const auto stem = withoutSuffix(name);
        if (!name.ends_with(leftSuffix))
            continue;
        for (const auto right :
            placesOf(candidates, [&](const auto& each) { return each.name == stem + std::string(rightSuffix); })) {
            pairs.push_back({ left, right });
            stems.push_back(stem);
        }
    }
    if (pairs.size() > 1)
        return tooMany("pairs", stems, "name one of them");
    if (pairs.size() == 1)
        return pairs.front();
    if (search == Search::over)
        return notFound(options, "pair of hearing aids was heard", candidates);
    return std::nullopt;
}

} // namespace

std::optional<Choice> choose(const Options& options, const Candidates& candidates, Search search)
{
    const auto choosing = options.both ? (options.device.empty() ? chooseOnlyPair : chooseNamedPair)
                                       : (options.device.empty() ? chooseOnly : chooseNamed);
    return choosing(options, candidates, search);
}

} // namespace aurisk::tool
