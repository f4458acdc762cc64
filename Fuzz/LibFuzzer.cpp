// The entry point of a libFuzzer program; its build names the target.

#include "Fuzz/FuzzTargets.h"

#include <cstddef>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    aurisk::fuzz::AURISK_FUZZ_TARGET({ bytes, size });
    return 0;
}
