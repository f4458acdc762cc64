#pragma once

#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskDsp.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskGlobalDsp.h"
#include "Tools/aurisk/Output.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

/// The settings blocks of all chips under one roof, their fields as the tables beside the blocks describe them.

namespace aurisk::tool {

using SettingsBlock = std::variant<AuriskA4Dsp, AuriskA16Dsp, AuriskA4GlobalDsp, AuriskA16GlobalDsp>;

template <typename Block>
concept ProgramBlock = requires(const Block& block)
{
    block.frequences();
};

/// Which block of a device: that of a program, counted from 0, or the one that all programs share.
struct BlockPlace {
    std::optional<int> program = {}; ///< none: the shared one
};

enum class BlockKind { program, global };

inline BlockKind kindOf(const BlockPlace& place) { return place.program ? BlockKind::program : BlockKind::global; }

/// One member of a block.
struct BlockField {
    struct Case {
        std::string_view name;
        std::string label; ///< what a fitter sees
    };

    std::string_view name;
    int most = 0; ///< the largest raw value
    std::vector<Case> cases = {}; ///< by raw value; none: a plain number
    bool isList = false;
    std::size_t size = 1; ///< of the list: one value a band
    int (*get)(const SettingsBlock&, std::size_t index) = nullptr; ///< the raw value
    void (*set)(SettingsBlock&, std::size_t index, int raw) = nullptr; ///< of a raw value up to `most`

    std::string label(int raw) const { return cases.empty() ? std::to_string(raw) : cases[std::size_t(raw)].label; }
    Json value(int raw) const { return cases.empty() ? Json(raw) : Json(cases[std::size_t(raw)].name); }
};

/// The fields of a block of that type, in the order in which they travel.
const std::vector<BlockField>& fieldsOf(const SettingsBlock& block);

/// The field with that name; null where there is none. The number of programs goes by one name on all chips.
const BlockField* fieldOf(const SettingsBlock& block, std::string_view name);

/// The centres of the bands in Hz; none in a block that has no bands.
std::vector<int> frequenciesOf(const SettingsBlock& block);

/// What a fitter sees of several fields together. None of them in the shared block.
struct Derived {
    std::string_view name;
    std::string text;
    Json value;
};
std::vector<Derived> derivedOf(const SettingsBlock& block);

/// A block as that chip has it, with every field at its default. None for a chip that is unassigned.
std::optional<SettingsBlock> defaultBlock(BlockKind kind, AuriskChip chip);

/// None where the bytes hold no such block.
std::optional<SettingsBlock> decodeBlock(BlockKind kind, AuriskChip chip, DataView bytes);

/// The fields under their names, with the names of cases.
Json fieldsToJson(const SettingsBlock& block);

/// Sets the fields that an object names. Throws codec::Unusable, or PreconditionStop for a list of the wrong length or
/// a number that is too large, and leaves the block as it was then. `place` is the object's.
void setFields(SettingsBlock& block, const nlohmann::json& object, const std::string& place);

} // namespace aurisk::tool
