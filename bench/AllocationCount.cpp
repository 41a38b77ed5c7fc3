#include "AllocationCount.h"

#include <cstdlib>
#include <new>

namespace {

DhcpBench::AllocationCount count;

}  // namespace

DhcpBench::AllocationCount DhcpBench::allocationCount() { return count; }

// All other forms of operator new in the standard library call these.
void* operator new(std::size_t bytes) {
    ++count.calls;
    count.bytes += bytes;
    if (void* const memory = std::malloc(bytes != 0 ? bytes : 1)) return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
