#include "Tools/aurisk/FieldEdit.h"

#include "Tools/aurisk/Values.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>

namespace aurisk::tool {

namespace {

constexpr std::string_view gains = "equalizerArray";
constexpr Range matrixGains{ 1, 47 };

/// A change that does not fit: what is wrong with it, and what would be right on that chip.
class Misfit : public UsageError {
public:
    Misfit(const std::string& theFault, const std::string& theRule)
        : UsageError(theFault + "; " + theRule)
        , fault(theFault)
        , rule(theRule)
    {
    }
    std::string fault, rule;
};

bool isSameInEitherCase(std::string_view one, std::string_view other)
{
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; };
    return std::equal(
        one.begin(), one.end(), other.begin(), other.end(), [&](char a, char b) { return lower(a) == lower(b); });
}

std::optional<int> number(std::string_view text)
{
    int value = 0;
    const auto* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && stop == end ? std::optional(value) : std::nullopt;
}

/// The name in FIELD@HZ.
std::string_view nameIn(std::string_view field) { return field.substr(0, field.find('@')); }

/// The raw value that a text stands for.
std::optional<int> rawValueOf(const BlockField& field, std::string_view text)
{
    if (const auto raw = number(text))
        return *raw >= 0 && *raw <= field.most ? raw : std::nullopt;
    const auto find = [&](const auto& isMeant) -> std::optional<int> {
        const auto found = std::find_if(field.cases.begin(), field.cases.end(), isMeant);
        return found == field.cases.end() ? std::nullopt : std::optional(int(found - field.cases.begin()));
    };
    if (const auto raw = find([&](const auto& one) { return one.name == text || one.label == text; }))
        return raw;
    return find([&](const auto& one) { return isSameInEitherCase(one.label, text); });
}

std::string whatItMayBe(const BlockField& field)
{
    if (field.cases.empty())
        return fmt::format("a number from 0 to {} is needed", field.most);
    std::string names;
    for (const auto& one : field.cases)
        names += (names.empty() ? "" : ", ") + std::string(one.name);
    return "it may be " + names;
}

int checkedRaw(const BlockField& field, const std::string& place, std::string_view text)
{
    const auto raw = rawValueOf(field, text);
    if (!raw)
        throw Misfit(fmt::format("{}: {} will not do", place, inQuotes(text)), whatItMayBe(field));
    return *raw;
}

std::size_t bandAt(const SettingsBlock& form, std::string_view place, std::string_view text)
{
    const auto centres = frequenciesOf(form);
    const auto found = std::find(centres.begin(), centres.end(), number(text).value_or(0));
    if (found == centres.end())
        throw Misfit(fmt::format("{}: {} is the frequency of no band", place, inQuotes(text)),
            fmt::format("there are {} Hz", fmt::join(centres, ", ")));
    return std::size_t(found - centres.begin());
}

std::vector<std::string_view> split(std::string_view text, char separator)
{
    std::vector<std::string_view> parts;
    for (auto end = text.find(separator); end != text.npos; end = text.find(separator)) {
        parts.push_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    parts.push_back(text);
    return parts;
}

Edit setting(const BlockField& field, std::size_t first, std::vector<int> raws)
{
    return [set = field.set, first, raws = std::move(raws)](SettingsBlock& block) {
        for (std::size_t i = 0; i < raws.size(); ++i)
            set(block, first + i, raws[i]);
    };
}

/// What only blocks of programs can do.
template <typename Apply> Edit onProgram(Apply apply)
{
    return [apply](SettingsBlock& block) {
        std::visit(
            [&]<typename Block>(Block& one) {
                if constexpr (ProgramBlock<Block>)
                    apply(one);
            },
            block);
    };
}

template <TabledEnum E> E readCase(const Assignment& change, std::initializer_list<E> excluded = {})
{
    std::string names;
    for (const auto& row : enumCases<E>) {
        if (std::find(excluded.begin(), excluded.end(), row.value) != excluded.end())
            continue;
        if (row.name == change.value)
            return row.value;
        names += (names.empty() ? "" : ", ") + std::string(row.name);
    }
    throw Misfit(fmt::format("{}: {} will not do", change.field, inQuotes(change.value)), "it may be " + names);
}

/// An attenuation in dB, or its label.
int readMatrixGain(const Assignment& change)
{
    const auto& labels = labelsOf<AuriskA16DspEnum::MatrixGain>();
    const auto found = std::find(labels.begin() + matrixGains.low, labels.end(), change.value);
    if (found != labels.end())
        return int(found - labels.begin());
    return wholeNumber(change.field, change.value, matrixGains);
}

/// Empty where the change is not to something that several fields make up.
Edit derivedEdit(const Assignment& change)
{
    if (change.field == "direction")
        return onProgram([direction = readCase(change, { AuriskDirection::unknown })](
                             auto& program) { program.setDirection(direction); });
    if (change.field == "noise")
        return onProgram([noise = readCase<AuriskNoise>(change)](auto& program) { program.setNoise(noise); });
    if (change.field == "matrixGain")
        return onProgram([gain = readMatrixGain(change)](auto& program) { program.setMatrixGain(gain); });
    return nullptr;
}

/// The sentence for a change that fits neither chip.
std::string fitsNeither(const Misfit& a4, const Misfit& a16)
{
    if (a4.rule == a16.rule)
        return a4.what();
    return fmt::format("{}; on an a4 or h01 {}, on an a16 {}", a4.fault, a4.rule, a16.rule);
}

/// Why a change does not fit a chip; none where it does.
std::optional<Misfit> misfit(BlockKind kind, AuriskChip chip, const Assignment& change, EditReader reader)
{
    try {
        editsFor(kind, chip, { change }, reader);
    } catch (const Misfit& fault) {
        return fault;
    }
    return std::nullopt;
}

} // namespace

Edit fieldEdit(const SettingsBlock& form, const Assignment& change)
{
    if (!frequenciesOf(form).empty())
        if (auto edit = derivedEdit(change))
            return edit;
    const auto at = change.field.find('@');
    const auto* field = fieldOf(form, nameIn(change.field));
    if (!field)
        refuseField(change, frequenciesOf(form).empty() ? "global" : "dsp", fieldOf(form, nameIn(change.value)));
    if (at == std::string::npos && !field->isList)
        return setting(*field, 0, { checkedRaw(*field, change.field, change.value) });
    if (!field->isList)
        throw UsageError(fmt::format("{}: {} is no list of bands", change.field, field->name));
    if (at != std::string::npos) {
        const auto band = bandAt(form, change.field, change.field.substr(at + 1));
        return setting(*field, band, { checkedRaw(*field, change.field, change.value) });
    }
    std::vector<int> raws;
    for (const auto part : split(change.value, ','))
        raws.push_back(checkedRaw(*field, change.field, part));
    if (raws.size() != field->size)
        throw Misfit(fmt::format("{}: {} value(s) will not do", change.field, raws.size()),
            fmt::format("{} are needed, with commas between (or one as {}@HZ)", field->size, field->name));
    return setting(*field, 0, std::move(raws));
}

Edit equalizerEdit(const SettingsBlock& form, const Assignment& change)
{
    const auto place = change.field + "=" + change.value;
    const auto band = bandAt(form, place, change.field);
    const auto& field = *fieldOf(form, gains);
    const auto gain = number(change.value);
    const auto label = gain ? fmt::format("{} dB", *gain) : std::string();
    const auto found
        = std::find_if(field.cases.begin(), field.cases.end(), [&](const auto& one) { return one.label == label; });
    if (found != field.cases.end())
        return setting(field, band, { int(found - field.cases.begin()) });
    std::string labels;
    for (const auto& one : field.cases)
        labels += (labels.empty() ? "" : ", ") + one.label.substr(0, one.label.find(' '));
    throw Misfit(fmt::format("{}: no such gain", place), fmt::format("it may be {} dB", labels));
}

std::vector<Edit> editsFor(BlockKind kind, AuriskChip chip, const std::vector<Assignment>& changes, EditReader reader)
{
    std::vector<Edit> edits;
    if (const auto form = defaultBlock(kind, chip))
        for (const auto& change : changes)
            edits.push_back(reader(*form, change));
    return edits;
}

void checkForAnyChip(BlockKind kind, const std::vector<Assignment>& changes, EditReader reader)
{
    const auto hasField = [&](AuriskChip chip, const Assignment& change) {
        return fieldOf(*defaultBlock(kind, chip), nameIn(change.field)) != nullptr;
    };
    for (const auto& change : changes) {
        const bool isOfA4 = hasField(AuriskChip::a4, change), isOfA16 = hasField(AuriskChip::a16, change);
        if (isOfA4 != isOfA16) {
            editsFor(kind, isOfA4 ? AuriskChip::a4 : AuriskChip::a16, { change }, reader);
            continue;
        }
        const auto onA4 = misfit(kind, AuriskChip::a4, change, reader);
        const auto onA16 = misfit(kind, AuriskChip::a16, change, reader);
        if (onA4 && onA16)
            throw UsageError(fitsNeither(*onA4, *onA16));
    }
}

void refuseField(const Assignment& change, std::string_view command, bool isValueAField)
{
    if (isValueAField)
        throw UsageError(fmt::format("{}: its value is missing (aurisk {} --help)", change.value, command));
    throw UsageError(
        fmt::format("{} is the name of no field (aurisk {} show lists them)", inQuotes(change.field), command));
}

std::string Difference::place() const { return frequency ? fmt::format("{}@{}", name, *frequency) : name; }

std::vector<Difference> differences(const SettingsBlock& before, const SettingsBlock& after)
{
    std::vector<Difference> list;
    const auto derivedBefore = derivedOf(before), derivedAfter = derivedOf(after);
    for (std::size_t i = 0; i < derivedBefore.size(); ++i)
        if (const auto& from = derivedBefore[i], &to = derivedAfter[i]; from.value != to.value)
            list.push_back({ .name = std::string(from.name),
                .before = from.text,
                .after = to.text,
                .from = from.value,
                .to = to.value });
    const auto centres = frequenciesOf(before);
    for (const auto& field : fieldsOf(before))
        for (std::size_t i = 0; i < field.size; ++i) {
            const int from = field.get(before, i), to = field.get(after, i);
            if (from != to)
                list.push_back({ .name = std::string(field.name),
                    .frequency = field.isList ? std::optional(centres[i]) : std::nullopt,
                    .before = field.label(from),
                    .after = field.label(to),
                    .from = field.value(from),
                    .to = field.value(to) });
        }
    return list;
}

} // namespace aurisk::tool
