#pragma once

#include "AuriskSDK/Platform/Data.h"

#include <cstdint>
#include <optional>
#include <string>

namespace aurisk {

struct AuriskAidState;
struct AuriskProfileField;

/// Gives the blocks and profile fields that are empty what the factory gives them. Throws SimulatedWorldError for those
/// that the aid could not hold; `place` is what it calls the state.
void completeMemory(AuriskAidState& state, const std::string& place);

/// The block of a program, counted from 0, or by its own number the global one; none where the aid has no such block.
std::optional<Data> readBlock(const AuriskAidState& state, std::uint8_t number);

/// False, and nothing changes, where the aid has no such block, or this one is not of its form: of another length or,
/// on an a16, with bits that stand for nothing.
bool writeBlock(AuriskAidState& state, std::uint8_t number, DataView block);

/// None for an unknown number.
std::optional<Data> readProfileField(const AuriskAidState& state, std::uint8_t number);

/// False, and nothing changes, for an unknown number, for a text that is no UTF-8 or too long for the frame that would
/// carry it, and for a reserved field that has not its 20 bytes.
bool writeProfileField(AuriskAidState& state, std::uint8_t number, DataView value);

} // namespace aurisk
