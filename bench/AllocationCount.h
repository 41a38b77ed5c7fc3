#pragma once

#include <cstdint>

namespace DhcpBench {

/// How often the process, its libraries included, has called operator new, and for how many bytes in all.
struct AllocationCount {
    std::uint64_t calls = 0;
    std::uint64_t bytes = 0;
};

AllocationCount allocationCount();

}  // namespace DhcpBench
