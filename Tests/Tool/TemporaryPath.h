#pragma once

#include <gtest/gtest.h>

#include <string>

#include <unistd.h>

namespace aurisk::tests {

/// A place for a file of this process alone: tests run side by side.
inline std::string temporaryPath(const std::string& name)
{
    return testing::TempDir() + "aurisk-" + std::to_string(::getpid()) + "-" + name;
}

} // namespace aurisk::tests
