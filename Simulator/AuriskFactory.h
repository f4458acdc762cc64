#pragma once

#include "AuriskSDK/Platform/Data.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>

namespace aurisk {

struct AuriskAidState;

/// What the parameter blocks of one chip look like.
struct AuriskBlockFormat {
    std::uint8_t chip = 0;
    std::size_t programBlockSize = 0;
    std::size_t globalBlockSize = 0;
    std::uint8_t globalBlock = 0; ///< the number by which requests name the global block
};

/// None for a chip that has no blocks: any but a4, h01 and a16.
const AuriskBlockFormat* blockFormatOf(std::uint8_t chip);

/// As the aid is fitted when it leaves the factory: the first four programs for quiet, television, meetings and a talk
/// face to face, and those after them again so. For a chip that has blocks.
Data factoryProgramBlock(std::uint8_t chip, std::size_t program);
Data factoryGlobalBlock(std::uint8_t chip, std::size_t programCount);

/// One field of a profile.
struct AuriskProfileField {
    std::uint8_t number = 0; ///< by which requests name it
    const char* name = nullptr; ///< by which a world names it
    bool isText = true; ///< else 20 bytes
};

std::span<const AuriskProfileField> auriskProfileFields();

/// The value of every field, by its number.
std::map<std::uint8_t, Data> factoryProfile(const AuriskAidState& state);

} // namespace aurisk
