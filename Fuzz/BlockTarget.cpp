#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskDataLog.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskDsp.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskGlobalDsp.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskProfile.h"
#include "Fuzz/FuzzTargets.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace aurisk::fuzz {

namespace {

template <typename Block> Data bytesOf(const Block& block)
{
    if constexpr (requires { block.toBytes(); })
        return block.toBytes();
    else
        return block.toData();
}

template <typename Block> bool isAsGiven(const Block& block, DataView bytes)
{
    const auto encoded = bytesOf(block);
    return std::equal(encoded.begin(), encoded.end(), bytes.begin());
}

/// What the strict and the tolerant decoder make of the same bytes; they agree, and what they decode can be encoded.
template <typename Block> std::optional<Block> decodedTwice(DataView bytes)
{
    const auto tolerant = Block::decode(bytes);
    const auto strict = contained([&] { return Block(bytes); });
    require(strict == tolerant, "the strict and the tolerant decoder disagree");
    if (tolerant)
        require(Block::decode(bytesOf(*tolerant)) == tolerant, "a block did not survive being encoded and decoded");
    return tolerant;
}

} // namespace

void block(DataView input)
{
    const auto a4 = decodedTwice<AuriskA4Dsp>(input);
    require(a4.has_value() == (input.size() >= 12), "an A4 block is one by its length alone");
    const auto a16 = decodedTwice<AuriskA16Dsp>(input);
    require(!a16 || isAsGiven(*a16, input), "an A16 block came out as another");
    const auto globalA4 = decodedTwice<AuriskA4GlobalDsp>(input);
    require(globalA4.has_value() == (input.size() >= 9), "a global block is one by its length alone");
    require(!globalA4 || isAsGiven(*globalA4, input), "an A4 global block came out as another");
    const auto globalA16 = decodedTwice<AuriskA16GlobalDsp>(input);
    require(!globalA16 || isAsGiven(*globalA16, input), "an A16 global block came out as another");

    for (const auto& dsp :
        { a4 ? std::optional<AuriskDsp>(*a4) : std::nullopt, a16 ? std::optional<AuriskDsp>(*a16) : std::nullopt }) {
        if (!dsp)
            continue;
        auto changed = *dsp;
        changed.setDirection(changed.direction()); // what is read can be written, and changes nothing
        require(changed == *dsp, "a direction that was read changed the block when it was written");
        for (const auto frequency : changed.frequences())
            changed.setEq(*changed.getEq(frequency), frequency);
        require(changed == *dsp, "an equaliser that was read changed the block when it was written");
        require(!description(changed).empty(), "a block without a description");
    }
    const auto reserved = AuriskProfileReservedField::decode(input);
    require(reserved.has_value() == (input.size() >= 20), "a reserved field is one by its length alone");
    if (reserved) {
        const auto encoded = reserved->toData();
        require(std::equal(encoded.begin(), encoded.end(), input.begin()), "a reserved field came out as another");
    }
    if (input.size() >= 228)
        require(AuriskSummaryDataLog::decode(input).has_value(), "a summary is one by its length alone");
}

/// A profile from a file is one, or is refused; one that came from a device, a field at a time, can be kept in a file.
void profile(DataView input)
{
    const auto json = nlohmann::json::parse(input.begin(), input.end(), nullptr, false);
    if (!json.is_discarded())
        try {
            const auto given = AuriskProfile::fromJson(json);
            require(
                AuriskProfile::fromJson(given.toJson()) == given, "a profile did not survive being written and read");
        } catch (const JsonError&) {
        }
    AuriskProfile told;
    for (const auto& field : enumCases<AuriskProfileType>)
        told.set(field.value, input);
    require(AuriskProfile::fromJson(nlohmann::json::parse(told.toJson().dump())) == told,
        "a profile that a device told cannot be kept in a file");
}

} // namespace aurisk::fuzz
