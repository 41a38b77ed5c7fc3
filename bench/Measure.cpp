#include "Measure.h"

namespace DhcpBench {

void reportAllocations(benchmark::State& state, const AllocationCount& before, std::size_t operations) {
    const AllocationCount now = allocationCount();
    state.counters["allocations"] = static_cast<double>(now.calls - before.calls) / static_cast<double>(operations);
    state.counters["bytes"] = static_cast<double>(now.bytes - before.bytes) / static_cast<double>(operations);
}

}  // namespace DhcpBench
