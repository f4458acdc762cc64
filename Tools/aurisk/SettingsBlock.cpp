#include "Tools/aurisk/SettingsBlock.h"

#include "AuriskSDK/Shared/Utils/BitLayout.h"
#include "AuriskSDK/Shared/Utils/Precondition.h"
#include "Tools/aurisk/BlockJson.h"

#include <algorithm>
#include <type_traits>

namespace aurisk::tool {

namespace {

template <typename Block, typename Part> int rawOf(const SettingsBlock& block, std::size_t index)
{
    const auto& member = Part::member(std::get<Block>(block));
    if constexpr (Part::isList)
        return static_cast<int>(member[index]);
    else
        return static_cast<int>(member);
}

template <typename Block, typename Part> void setRaw(SettingsBlock& block, std::size_t index, int raw)
{
    auto& member = Part::member(std::get<Block>(block));
    const auto value = static_cast<typename Part::Value>(raw);
    if constexpr (Part::isList)
        member[index] = value;
    else
        member = value;
}

template <typename Block, typename Part> BlockField describe(const Part& part)
{
    BlockField field{ .name = part.name, .most = (1 << part.width) - 1 };
    if constexpr (TabledEnum<typename Part::Value>) {
        static_assert(countsUpFromZero<typename Part::Value>());
        for (const auto& row : enumCases<typename Part::Value>)
            field.cases.push_back({ row.name, caseLabel(row.name, row.label) });
        field.most = int(field.cases.size()) - 1;
    }
    field.isList = Part::isList;
    if constexpr (Part::isList)
        field.size = std::tuple_size_v<std::remove_reference_t<decltype(Part::member(std::declval<Block&>()))>>;
    field.get = rawOf<Block, Part>;
    field.set = setRaw<Block, Part>;
    return field;
}

template <typename Block> const std::vector<BlockField>& describedFields()
{
    static const auto fields = [] {
        std::vector<BlockField> list;
        bits::eachMember<Block>([&](const auto& part) { list.push_back(describe<Block>(part)); });
        return list;
    }();
    return fields;
}

template <typename Settings> std::optional<SettingsBlock> unwrapped(const std::optional<Settings>& settings)
{
    if (!settings)
        return std::nullopt;
    return std::visit([](const auto& block) { return SettingsBlock(block); }, settings->block());
}

} // namespace

const std::vector<BlockField>& fieldsOf(const SettingsBlock& block)
{
    return std::visit(
        [](const auto& one) -> const auto& { return describedFields<std::decay_t<decltype(one)>>(); }, block);
}

const BlockField* fieldOf(const SettingsBlock& block, std::string_view name)
{
    if (name == "numberOfPrograms" && std::holds_alternative<AuriskA4GlobalDsp>(block))
        name = "programNbr";
    const auto& fields = fieldsOf(block);
    const auto found
        = std::find_if(fields.begin(), fields.end(), [&](const auto& field) { return field.name == name; });
    return found == fields.end() ? nullptr : &*found;
}

std::vector<int> frequenciesOf(const SettingsBlock& block)
{
    return std::visit(
        []<typename Block>(const Block& one) {
            if constexpr (ProgramBlock<Block>)
                return one.frequences();
            else
                return std::vector<int>();
        },
        block);
}

std::vector<Derived> derivedOf(const SettingsBlock& block)
{
    return std::visit(
        []<typename Block>(const Block& one) -> std::vector<Derived> {
            if constexpr (ProgramBlock<Block>)
                return { { "direction", std::string(caseName(one.direction())), caseName(one.direction()) },
                    { "noise", std::string(caseName(one.noise())), caseName(one.noise()) },
                    { "matrixGain", one.matrixGainDisplayValue(), one.getMatrixGain() } };
            else
                return {};
        },
        block);
}

std::optional<SettingsBlock> defaultBlock(BlockKind kind, AuriskChip chip)
{
    const bool isProgram = kind == BlockKind::program;
    switch (chip) {
    case AuriskChip::h01:
    case AuriskChip::a4: return isProgram ? SettingsBlock(AuriskA4Dsp()) : SettingsBlock(AuriskA4GlobalDsp());
    case AuriskChip::a16: return isProgram ? SettingsBlock(AuriskA16Dsp()) : SettingsBlock(AuriskA16GlobalDsp());
    case AuriskChip::unassigned: break;
    }
    return std::nullopt;
}

std::optional<SettingsBlock> decodeBlock(BlockKind kind, AuriskChip chip, DataView bytes)
{
    return kind == BlockKind::program ? unwrapped(AuriskDsp::decode(chip, bytes))
                                      : unwrapped(AuriskGlobalDsp::decode(chip, bytes));
}

Json fieldsToJson(const SettingsBlock& block)
{
    return std::visit(
        [](const auto& one) { return codec::membersToJson(one, codec::EnumerationsAs::caseNames); }, block);
}

void setFields(SettingsBlock& block, const nlohmann::json& object, const std::string& place)
{
    const ScopedContainment containment;
    std::visit(
        [&](auto& one) {
            auto changed = one;
            codec::setMembers(changed, object, codec::Place{ place }, codec::EnumerationsAs::caseNames);
            if constexpr (requires { changed.toBytes(); })
                changed.toBytes();
            else
                changed.toData();
            one = changed;
        },
        block);
}

} // namespace aurisk::tool
