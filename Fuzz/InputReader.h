#pragma once

#include "AuriskSDK/Platform/Data.h"

#include <algorithm>

namespace aurisk::fuzz {

/// Takes an input apart from its front. Past its end there are zeros, and pieces are empty.
class InputReader {
public:
    explicit InputReader(DataView input)
        : _rest(input)
    {
    }

    bool isEmpty() const { return _rest.empty(); }

    std::uint8_t byte()
    {
        const auto piece = take(1);
        return piece.empty() ? std::uint8_t(0) : piece.front();
    }

    DataView take(std::size_t count)
    {
        const auto piece = _rest.first(std::min(count, _rest.size()));
        _rest = _rest.subspan(piece.size());
        return piece;
    }

    /// A piece whose length is its first byte.
    DataView counted() { return take(byte()); }

    DataView rest() { return take(_rest.size()); }

private:
    DataView _rest;
};

} // namespace aurisk::fuzz
