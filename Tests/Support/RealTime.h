#pragma once

#include "AuriskSDK/Platform/Asio/MainQueue.h"
#include "AuriskSDK/Platform/Dispatch.h"

#include <asio/io_context.hpp>

#include <chrono>
#include <functional>

/// The main queue in real time, for tests with another process at the other end.

namespace aurisk::tests {

/// Runs the main queue until `condition` holds; false where it does not within `limit`.
inline bool until(const std::function<bool()>& condition, Seconds limit)
{
    auto& loop = mainQueueContext();
    for (const auto end = DispatchQueue::main().now() + limit; !condition();) {
        if (DispatchQueue::main().now() >= end)
            return false;
        loop.restart();
        loop.run_one_for(std::chrono::milliseconds(10));
    }
    return true;
}

/// Runs the main queue for a while.
inline void pass(Seconds span)
{
    until([] { return false; }, span);
}

} // namespace aurisk::tests
