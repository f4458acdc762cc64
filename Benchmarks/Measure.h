#pragma once

#include "AuriskSDK/Platform/Dispatch.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <ctime>

#include <malloc.h>

namespace aurisk::benchmarks {

/// The processor time that this thread has used.
inline Seconds processorTime()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

template <typename Action> Seconds timeOf(int count, Action&& action)
{
    const auto begin = processorTime();
    for (int i = 0; i < count; ++i)
        action();
    return processorTime() - begin;
}

/// Measures `subject` against `baseline`. The two take turns, a batch at a time, so that whatever slows the machine
/// slows both. Reports the processor time of one run of the subject, and `x_baseline`, how many times that of the
/// baseline it is.
template <typename Subject, typename Baseline>
void compare(benchmark::State& state, int batch, Subject&& subject, Baseline&& baseline)
{
    Seconds own{ 0 }, reference{ 0 };
    while (state.KeepRunningBatch(batch)) {
        reference += timeOf(batch, baseline);
        const auto took = timeOf(batch, subject);
        state.SetIterationTime(took.count());
        own += took;
    }
    state.counters["x_baseline"] = own / reference;
}

/// The bytes of the heap that are in use, with what the allocator adds to each piece.
inline double heapInUse()
{
    const auto info = mallinfo2();
    return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
}

/// By how many bytes the heap grows while `action` runs `count` times.
template <typename Action> double heapGrowth(int count, Action&& action)
{
    timeOf(1000, action); // lets the allocator's own caches settle
    const auto before = heapInUse();
    timeOf(count, action);
    return heapInUse() - before;
}

} // namespace aurisk::benchmarks
