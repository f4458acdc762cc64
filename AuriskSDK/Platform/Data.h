#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace aurisk {

/// Bytes that somebody owns.
using Data = std::vector<std::uint8_t>;

/// Bytes that somebody else owns, for the length of a call.
using DataView = std::span<const std::uint8_t>;

} // namespace aurisk
