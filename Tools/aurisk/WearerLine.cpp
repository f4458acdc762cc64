#include "Tools/aurisk/WearerLine.h"

#include "Tools/aurisk/Values.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <limits>
#include <sstream>

namespace aurisk::tool {

namespace {

using Kind = Fault::Kind;
using Names = std::vector<std::string>;

constexpr Range yesOrNo{ 0, 1 }, percent{ 0, 100 }, messages{ 1, std::numeric_limits<int>::max() / 2 };

template <typename Value> struct Word {
    std::string_view word;
    Value value;
};

constexpr std::array actions = { Word<Range>{ "volume", volumes }, Word<Range>{ "program", programs },
    Word<Range>{ "battery", percent }, Word<Range>{ "mute", yesOrNo }, Word<Range>{ "power", yesOrNo } };

constexpr std::array switches = { Word<bool LinkFaults::*>{ "silent", &LinkFaults::isSilent },
    Word<bool LinkFaults::*>{ "refuse-connections", &LinkFaults::refusesConnections },
    Word<bool LinkFaults::*>{ "ignore-connections", &LinkFaults::ignoresConnections } };

constexpr std::array faults = { Word<Kind>{ "lose", Kind::lose }, Word<Kind>{ "duplicate", Kind::duplicate },
    Word<Kind>{ "corrupt", Kind::corrupt }, Word<Kind>{ "refuse", Kind::refuse }, Word<Kind>{ "delay", Kind::delay },
    Word<Kind>{ "drop-before", Kind::dropLinkBefore }, Word<Kind>{ "drop-after", Kind::dropLinkAfter } };

const auto* find(const auto& words, std::string_view word)
{
    const auto found = std::find_if(words.begin(), words.end(), [&](const auto& each) { return each.word == word; });
    return found == words.end() ? nullptr : &found->value;
}

bool isVerb(std::string_view word)
{
    return word == "help" || word == "drop" || find(actions, word) || find(switches, word) || find(faults, word);
}

/// The words behind the verb, taken one by one.
class Values {
public:
    Values(std::string_view verb, std::span<const std::string> words)
        : _verb(verb)
        , _words(words)
    {
    }

    bool empty() const { return _words.empty(); }
    std::string_view take(std::string_view what)
    {
        if (_words.empty())
            throw UsageError(fmt::format("{}: {} is missing", _verb, what));
        const auto& word = _words.front();
        _words = _words.subspan(1);
        return word;
    }
    int number(Range range)
    {
        return wholeNumber(_verb, take(fmt::format("a number from {} to {}", range.low, range.high)), range);
    }
    Seconds seconds() { return timeSpan(_verb, take("the number of seconds")); }
    void finish() const
    {
        if (!_words.empty())
            throw UsageError(fmt::format("{}: {} is one word too many", _verb, inQuotes(_words.front())));
    }

private:
    std::string_view _verb;
    std::span<const std::string> _words;
};

WearerLine::Deed deedOf(const std::string& verb, Values& values)
{
    if (verb == "help")
        return WearerLine::Help{};
    if (verb == "drop")
        return WearerLine::Drop{};
    if (const auto* range = find(actions, verb))
        return WearerAction{ .what = verb, .value = values.number(*range) };
    if (const auto* fault = find(switches, verb))
        return WearerLine::Switch{ .fault = *fault, .on = values.number(yesOrNo) == 1 };
    Fault fault{ .kind = *find(faults, verb) };
    if (fault.kind == Kind::delay)
        fault.by = values.seconds();
    if (!values.empty())
        fault.message = values.number(messages);
    return fault;
}

/// Why the aid cannot do it; none where it can.
std::optional<std::string> problemOf(const WearerLine::Deed& deed, const SimulatedAid& aid)
{
    const auto* action = std::get_if<WearerAction>(&deed);
    if (!action || aid.accepts(*action))
        return std::nullopt;
    return fmt::format("{} does not know {}", aid.name(), action->toString());
}

/// Does one deed to one aid.
struct Doing {
    Simulator& simulator;
    const std::string& name;

    void operator()(const WearerLine::Help&) const { }
    void operator()(const WearerAction& action) const { simulator.radio().perform(name, action); }
    void operator()(const WearerLine::Drop&) const { simulator.radio().dropLink(name); }
    void operator()(const WearerLine::Switch& change) const { link().*change.fault = change.on; }
    void operator()(Fault fault) const
    {
        const auto sent = simulator.radio().messageCount(name);
        std::erase_if(link().faults, [&](const Fault& one) { return one.message <= sent; }); // they are over
        fault.message += sent;
        link().faults.push_back(fault);
    }

    LinkFaults& link() const { return simulator.world().placed(name).faults; }
};

} // namespace

std::optional<WearerLine> WearerLine::parse(std::string_view text)
{
    std::istringstream stream{ std::string(text) };
    const Names words(std::istream_iterator<std::string>(stream), {});
    if (words.empty())
        return std::nullopt;
    const auto verb = std::find_if(words.begin(), words.end(), isVerb); // a name may have blanks
    if (verb == words.end())
        throw UsageError(
            fmt::format("{} is nothing that a wearer or a link does (help tells what is)", inQuotes(text)));
    Values values(*verb, { verb + 1, words.end() });
    WearerLine line{ .name = fmt::format("{}", fmt::join(words.begin(), verb, " ")), .deed = deedOf(*verb, values) };
    values.finish();
    return line;
}

std::string_view WearerLine::help()
{
    return R"([NAME] volume V           the wearer turns the volume of the current program to V, 0 to 15
[NAME] program P          ... chooses a program, counted from 0
[NAME] battery B          ... puts in a battery with B percent
[NAME] mute 1|0           ... mutes or unmutes
[NAME] power 0|1          ... switches the hearing aid off, and on again
[NAME] drop               the link goes
[NAME] silent 1|0         the hearing aid hears everything and says nothing, until 0
[NAME] refuse-connections 1|0    ... refuses each connection, until 0
[NAME] ignore-connections 1|0    ... makes no connection, until 0
[NAME] lose [N]           the next message, or the Nth from now on, is lost
[NAME] duplicate [N]      ... arrives twice
[NAME] corrupt [N]        ... arrives with a wrong bit
[NAME] refuse [N]         ... is refused
[NAME] delay S [N]        ... arrives S seconds late
[NAME] drop-before [N]    the link goes before it
[NAME] drop-after [N]     ... or after it
Without NAME it is about every hearing aid that is served.)";
}

void WearerLine::apply(Simulator& simulator, const Names& served) const
{
    const auto known = findName(served, name);
    if (!name.empty() && known == served.end())
        throw UsageError(
            fmt::format("no hearing aid called {} is served ({})", inQuotes(name), fmt::join(served, ", ")));
    const auto targets = name.empty() ? served : Names{ *known };
    for (const auto& target : targets)
        if (const auto problem = problemOf(deed, *simulator.aid(target)))
            throw UsageError(*problem);
    for (const auto& target : targets)
        std::visit(Doing{ simulator, target }, deed);
}

} // namespace aurisk::tool
