#pragma once

#include <cstddef>

namespace asio {
class io_context;
}

/// How a host runs the main queue in real time. It does one of three things:
///   - hand its thread over: `runMainQueue()`;
///   - pump from a loop of its own: `pollMainQueue()`, now and again;
///   - own the loop: `useMainQueue(context)` before anything else of this library, then run `context` itself.
/// Only `stopMainQueue()` may be called from a thread that does not run the queue.

namespace aurisk {

/// Runs the main queue on this thread until `stopMainQueue()`, waiting while there is nothing to do.
void runMainQueue();

/// Runs what is due, without waiting. Returns 0 where nothing was, and otherwise how much the loop had to do.
std::size_t pollMainQueue();

/// Makes `runMainQueue()` return after the work under way; where it does not run, the next call of it returns once it
/// has run what is due by now. What still waits stays, and runs when the queue is run again.
void stopMainQueue();

/// Puts the main queue on `context`, which has to outlive every use of it. Called once, before the first use of the
/// main queue; later is a broken precondition.
void useMainQueue(asio::io_context& context);

/// The loop that the main queue runs on, for backends that wait for descriptors on it.
asio::io_context& mainQueueContext();

} // namespace aurisk
