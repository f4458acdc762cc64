#include "Simulator/AuriskAidMemory.h"

#include "Simulator/AuriskAidState.h"
#include "Simulator/AuriskFactory.h"
#include "Simulator/WorldReader.h"

#include <algorithm>
#include <fmt/format.h>

namespace aurisk {

namespace {

/// A request names programs 0 to 4; the numbers after them are those of global blocks.
constexpr std::size_t mostProgramBlocks = 5;

/// A reply says its length in a byte that, with both identifiers, stays below 250.
constexpr std::size_t longestText = 247;
constexpr std::size_t reservedSize = 20;

/// Values that follow each other in a block of the a16.
struct Run {
    std::size_t firstBit, width, count;
    std::uint64_t validValues; ///< 0 to one less
};

/// Where not all the values that the width allows stand for something.
constexpr Run runs[] = {
    { 4, 4, 2, 13 }, // analog gains
    { 22, 2, 1, 3 }, // feedback canceler
    { 24, 3, 1, 5 }, // noise reduction
    { 32, 5, 6, 21 }, { 64, 5, 6, 21 }, { 96, 5, 4, 21 }, // equaliser
    { 116, 6, 7, 36 }, { 160, 6, 5, 36 }, { 192, 6, 4, 36 }, // compression ratios
    { 216, 4, 16, 9 }, // compression constants
    { 432, 3, 2, 4 }, // attack and release
    { 439, 5, 1, 5 }, // remote mix
    { 444, 4, 1, 10 }, // low-cut filter
};

std::uint64_t bitsOf(DataView bytes, std::size_t first, std::size_t width)
{
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < width; ++i)
        value |= std::uint64_t(bytes[(first + i) / 8] >> (first + i) % 8 & 1) << i;
    return value;
}

bool standsForSomething(DataView largeBlock)
{
    for (const auto& run : runs)
        for (std::size_t i = 0; i < run.count; ++i)
            if (bitsOf(largeBlock, run.firstBit + i * run.width, run.width) >= run.validValues)
                return false;
    return true;
}

/// What is wrong with a block for a program; nothing where it is right.
std::string problemOfBlock(const AuriskBlockFormat& format, DataView block)
{
    constexpr std::size_t largeBlockSize = 56;
    if (block.size() != format.programBlockSize)
        return fmt::format("must be {} bytes", format.programBlockSize);
    if (block.size() == largeBlockSize && !standsForSomething(block))
        return "holds bits that stand for nothing";
    return {};
}

/// What a value for a field must be; nothing where it is that.
std::string problemOfField(const AuriskProfileField& field, DataView value)
{
    if (!field.isText)
        return value.size() == reservedSize ? "" : fmt::format("must be {} bytes", reservedSize);
    try {
        nlohmann::json(std::string(value.begin(), value.end())).dump();
    } catch (const nlohmann::json::type_error&) {
        return "must be UTF-8";
    }
    return value.size() <= longestText ? "" : fmt::format("must be at most {} bytes", longestText);
}

const AuriskProfileField* profileField(std::uint8_t number)
{
    for (const auto& field : auriskProfileFields())
        if (field.number == number)
            return &field;
    return nullptr;
}

void completeBlocks(AuriskAidState& state, const AuriskBlockFormat& format, const std::string& place)
{
    const auto count = std::min(state.volumes.size(), mostProgramBlocks);
    auto& blocks = state.programBlocks;
    if (blocks.size() > count)
        failAt(place + ".programBlocks", fmt::format("must be at most {} blocks", count));
    for (std::size_t i = 0; i < blocks.size(); ++i)
        if (const auto problem = problemOfBlock(format, blocks[i]); !problem.empty())
            failAt(fmt::format("{}.programBlocks[{}]", place, i), problem);
    while (blocks.size() < count)
        blocks.push_back(factoryProgramBlock(state.chip, blocks.size()));

    if (state.globalBlock.empty())
        state.globalBlock = factoryGlobalBlock(state.chip, state.volumes.size());
    if (state.globalBlock.size() != format.globalBlockSize)
        failAt(place + ".globalBlock", fmt::format("must be {} bytes", format.globalBlockSize));
}

} // namespace

void completeMemory(AuriskAidState& state, const std::string& place)
{
    if (const auto* format = blockFormatOf(state.chip))
        completeBlocks(state, *format, place);
    else if (!state.programBlocks.empty() || !state.globalBlock.empty())
        failAt(place + (state.globalBlock.empty() ? ".programBlocks" : ".globalBlock"), "this chip has no blocks");

    state.profile.merge(factoryProfile(state));
    for (const auto& [number, value] : state.profile)
        if (const auto* field = profileField(number); !field)
            failAt(place + ".profile", fmt::format("has no field of the number {:#04x}", number));
        else if (const auto problem = problemOfField(*field, value); !problem.empty())
            failAt(fmt::format("{}.profile.{}", place, field->name), problem);
}

std::optional<Data> readBlock(const AuriskAidState& state, std::uint8_t number)
{
    const auto* format = blockFormatOf(state.chip);
    if (format && number == format->globalBlock)
        return state.globalBlock;
    if (number < state.programBlocks.size())
        return state.programBlocks[number];
    return std::nullopt;
}

bool writeBlock(AuriskAidState& state, std::uint8_t number, DataView block)
{
    const auto* format = blockFormatOf(state.chip);
    if (format && number == format->globalBlock && block.size() == format->globalBlockSize)
        state.globalBlock.assign(block.begin(), block.end());
    else if (number < state.programBlocks.size() && problemOfBlock(*format, block).empty())
        state.programBlocks[number].assign(block.begin(), block.end());
    else
        return false;
    return true;
}

std::optional<Data> readProfileField(const AuriskAidState& state, std::uint8_t number)
{
    const auto found = state.profile.find(number);
    return found == state.profile.end() ? std::nullopt : std::optional(found->second);
}

bool writeProfileField(AuriskAidState& state, std::uint8_t number, DataView value)
{
    const auto* field = profileField(number);
    if (!field || !problemOfField(*field, value).empty())
        return false;
    state.profile[number].assign(value.begin(), value.end());
    return true;
}

} // namespace aurisk
