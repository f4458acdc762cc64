#include "AuriskSDK/Shared/Utils/Precondition.h"

#include "AuriskSDK/Platform/Dispatch.h"
#include "AuriskSDK/Shared/Utils/AuriskLog.h"

#include <atomic>
#include <cstdlib>
#include <string>

#include <unistd.h>

namespace aurisk {

namespace {

std::atomic<PreconditionPolicy> currentPolicy = PreconditionPolicy::stop;
thread_local int containments = 0;

} // namespace

void setPreconditionPolicy(PreconditionPolicy policy) { currentPolicy = policy; }

PreconditionPolicy preconditionPolicy() { return currentPolicy; }

ScopedContainment::ScopedContainment() { ++containments; }

ScopedContainment::~ScopedContainment() { --containments; }

bool isContained() { return containments > 0; }

void preconditionFailure(std::string_view message)
{
    if (isContained())
        throw PreconditionStop(std::string(message));
    const auto line = fmt::format("AuriskSDK: broken precondition: {}\n", message);
    [[maybe_unused]] const auto written = ::write(STDERR_FILENO, line.data(), line.size());
    std::abort();
}

#ifndef NDEBUG
void expectMainQueue()
{
    precondition(DispatchQueue::main().isCurrent(), "called on a thread that does not run the main queue");
}
#endif

void logContained(std::string_view what, const PreconditionStop& stop)
{
    AuriskLog::log(fmt::format("{} dropped: {}", what, stop.what()));
}

} // namespace aurisk
