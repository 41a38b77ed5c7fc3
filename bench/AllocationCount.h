#pragma once

#include <cstdint>

namespace DhcpBench {

/// Number of calls of operator new in the whole process, libraries included, and the bytes they asked for.
struct AllocationCount {
    std::uint64_t calls = 0;
    std::uint64_t bytes = 0;
};

AllocationCount allocationCount();

}  // namespace DhcpBench
