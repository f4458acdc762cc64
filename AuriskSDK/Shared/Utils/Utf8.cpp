#include "AuriskSDK/Shared/Utils/Utf8.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace aurisk {

namespace {

/// Characters whose first byte lies within some bounds. What follows is one byte within bounds of its own, which leave
/// out overlong forms, surrogates and what lies beyond the last character, and then any continuation bytes.
struct Form {
    std::uint8_t firstLow, firstHigh, secondLow, secondHigh;
    std::size_t size;

    bool begins(DataView bytes) const
    {
        const auto within
            = [&](std::size_t i, std::uint8_t low, std::uint8_t high) { return bytes[i] >= low && bytes[i] <= high; };
        if (bytes.size() < size || !within(0, firstLow, firstHigh))
            return false;
        for (std::size_t i = 1; i < size; ++i)
            if (!(i == 1 ? within(i, secondLow, secondHigh) : within(i, 0x80, 0xBF)))
                return false;
        return true;
    }
};

constexpr auto forms = std::to_array<Form>({
    { 0x00, 0x7F, 0, 0, 1 },
    { 0xC2, 0xDF, 0x80, 0xBF, 2 },
    { 0xE0, 0xE0, 0xA0, 0xBF, 3 },
    { 0xE1, 0xEC, 0x80, 0xBF, 3 },
    { 0xED, 0xED, 0x80, 0x9F, 3 },
    { 0xEE, 0xEF, 0x80, 0xBF, 3 },
    { 0xF0, 0xF0, 0x90, 0xBF, 4 },
    { 0xF1, 0xF3, 0x80, 0xBF, 4 },
    { 0xF4, 0xF4, 0x80, 0x8F, 4 },
});

} // namespace

std::optional<std::string> utf8Text(DataView bytes)
{
    for (auto rest = bytes; !rest.empty();) {
        const auto* form
            = std::find_if(forms.begin(), forms.end(), [&](const auto& each) { return each.begins(rest); });
        if (form == forms.end())
            return std::nullopt;
        rest = rest.subspan(form->size);
    }
    return std::string(bytes.begin(), bytes.end());
}

} // namespace aurisk
