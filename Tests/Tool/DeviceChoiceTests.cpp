#include "Tools/aurisk/DeviceChoice.h"

#include <gmock/gmock.h>

namespace aurisk::tests {
namespace {

using tool::Candidate;
using tool::ExitCode;
using tool::Search;
using Candidates = std::vector<Candidate>;

const Candidate left{ "X1-L", "5A1D-1", "0A:1B:2C:3D:4E:5F" }, right{ "X1-R", "5A1D-2", "0A:1B:2C:3D:4E:60" },
    solo{ "Solo-L", "5A1D-3", "" }, lower{ "x1-l", "5A1D-4", "" }, twin{ "X1-L", "5A1D-5", "" },
    otherLeft{ "Y-L", "5A1D-6", "" }, otherRight{ "Y-R", "5A1D-7", "" };

/// The identifiers of the chosen ones, "go on", or the exit code with the sentence.
std::string chosen(const std::string& device, bool both, const Candidates& candidates, Search search)
{
    tool::Options options;
    options.command = tool::Command::info;
    options.device = device;
    options.both = both;
    const auto choice = tool::choose(options, candidates, search);
    if (!choice)
        return "go on";
    if (const auto* failure = std::get_if<tool::Failure>(&*choice))
        return std::to_string(static_cast<int>(failure->code)) + " " + failure->sentence;
    std::string identifiers;
    for (const auto place : std::get<0>(*choice))
        identifiers += (identifiers.empty() ? "" : " ") + candidates[place].identifier;
    return identifiers;
}

TEST(DeviceChoice, FollowsTheNameOrWhatIsThere)
{
    struct {
        std::string device;
        bool both;
        Candidates candidates;
        Search search;
        std::string expected;
    } const cases[] = {
        // One by name: an exact one at once, one in another case when no better can be heard any more.
        { "X1-L", false, { right, left }, Search::going, "5A1D-1" },
        { "5a1d-2", false, { left, right }, Search::going, "5A1D-2" },
        { "0a:1b:2c:3d:4e:60", false, { left, right }, Search::going, "5A1D-2" },
        { "x1-l", false, { left, right }, Search::going, "go on" },
        { "x1-l", false, { left, right }, Search::settled, "5A1D-1" },
        { "x1-l", false, { left, lower }, Search::settled, "5A1D-4" },
        { "X1-l", false, { left, lower }, Search::settled,
            "2 2 hearing aids called \"X1-l\" found: X1-L (5A1D-1), x1-l (5A1D-4); give the identifier" },
        { "X1-L", false, { left, twin }, Search::settled,
            "2 2 hearing aids called \"X1-L\" found: X1-L (5A1D-1), X1-L (5A1D-5); give the identifier" },
        { "Y", false, { left }, Search::settled, "go on" },
        { "Y", false, { left, right }, Search::over, "4 no hearing aid called \"Y\" within 5 s; seen: X1-L, X1-R" },
        { "Y", false, {}, Search::over, "4 no hearing aid called \"Y\" within 5 s" },
        // One without a name: the only one, once others had their time.
        { "", false, { left }, Search::going, "go on" },
        { "", false, { left }, Search::settled, "5A1D-1" },
        { "", false, { left, solo }, Search::settled, "2 2 hearing aids found: X1-L, Solo-L; name one of them" },
        { "", false, {}, Search::settled, "go on" },
        { "", false, {}, Search::over, "4 no hearing aid was heard within 5 s" },
        // A pair by name, left first.
        { "X1", true, { right }, Search::going, "go on" },
        { "X1", true, { right, solo, left }, Search::going, "5A1D-1 5A1D-2" },
        { "X1-R", true, { right, left }, Search::going, "5A1D-1 5A1D-2" },
        { "x1", true, { right, left }, Search::going, "go on" },
        { "x1", true, { right, left }, Search::settled, "5A1D-1 5A1D-2" },
        { "X1", true, { left, solo }, Search::over, "4 no hearing aid called \"X1-R\" within 5 s; seen: X1-L, Solo-L" },
        // A pair without a name.
        { "", true, { left, right }, Search::going, "go on" },
        { "", true, { solo, right, left }, Search::settled, "5A1D-1 5A1D-2" },
        { "", true, { left, solo }, Search::settled, "go on" },
        { "", true, { left, solo }, Search::over,
            "4 no pair of hearing aids was heard within 5 s; seen: X1-L, Solo-L" },
        { "", true, { left, otherLeft, right, otherRight }, Search::settled,
            "2 2 pairs found: X1, Y; name one of them" },
    };
    for (const auto& [device, both, candidates, search, expected] : cases)
        EXPECT_EQ(chosen(device, both, candidates, search), expected)
            << '"' << device << '"' << (both ? " both " : " ") << candidates.size();
}

TEST(DeviceChoice, ANumberThatNamesNobodyWasPerhapsMeantAsTheNewValue)
{
    tool::Options options;
    options.command = tool::Command::volume;
    options.device = "3";
    const auto choice = tool::choose(options, { left }, Search::over);
    EXPECT_EQ(std::get<tool::Failure>(*choice).sentence,
        "no hearing aid called \"3\" within 5 s; seen: X1-L (to change it: aurisk volume set 3)");
}

} // namespace
} // namespace aurisk::tests
