#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Text below and beside other text, for people.

namespace aurisk::tool {

constexpr std::size_t widestLine = 80;

using Table = std::vector<std::vector<std::string>>;

/// The rows with their columns below each other, two blanks in front. Numbers stand to the right. Characters beyond
/// ASCII belong into the last column.
std::vector<std::string> aligned(const Table& rows);

/// A character, that many times.
std::string times(std::string_view character, std::size_t count);

std::string withoutTrailingBlanks(std::string text);

} // namespace aurisk::tool
