#pragma once

#include "AuriskSDK/Platform/Data.h"

#include <cstddef>
#include <sstream>
#include <stdexcept>
#include <string>

namespace aurisk::tests {

/// Bytes as a person writes them: "FE 68 11"_bytes. Read by code of its own, so that it cannot share a fault with the
/// library.
inline Data operator""_bytes(const char* text, std::size_t size)
{
    Data bytes;
    std::istringstream pairs(std::string(text, size));
    for (std::string pair; pairs >> pair;) {
        if (pair.size() != 2 || pair.find_first_not_of("0123456789ABCDEF") != pair.npos)
            throw std::invalid_argument(pair + " is no byte");
        bytes.push_back(static_cast<std::uint8_t>(std::stoul(pair, nullptr, 16)));
    }
    return bytes;
}

} // namespace aurisk::tests
