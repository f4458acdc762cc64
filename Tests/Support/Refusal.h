#pragma once

#include <exception>
#include <string>

namespace aurisk::tests {

/// The sentence with which `work` is refused, or "accepted".
template <typename Work> std::string refusalOf(Work&& work)
{
    try {
        work();
    } catch (const std::exception& error) {
        return error.what();
    }
    return "accepted";
}

} // namespace aurisk::tests
