#pragma once

#include <cstddef>

#include "Kcore/Counter.h"
#include "Kcore/Export.h"

namespace KitSlab {

/// Memory for a small object from the calling thread's free lists. Sizes above `largestSlab`, and every size under the
/// sanitizers (which then see a use after free), come from the ordinary allocator.
DHCPPLATFORM_EXPORT void* slabAlloc(std::size_t size);
/// Requires: `memory` came from slabAlloc(`size`), on whichever thread. Null is fine.
DHCPPLATFORM_EXPORT void slabFree(void* memory, std::size_t size) noexcept;

inline constexpr std::size_t largestSlab = 256;

/// Counts the live instances of one class.
class AllocationTracker {
public:
    Kcore::U32 live() const { return live_.value(); }
    void created() { live_.increment(); }
    void destroyed() { live_.decrement(); }

private:
    Kcore::Counter live_;
};

/// Member of a class that has a static `memAllocationTracker_`: keeps it up to date.
template <class T>
class Tracked {
public:
    Tracked() { T::memAllocationTracker_.created(); }
    Tracked(const Tracked&) : Tracked() {}
    Tracked& operator=(const Tracked&) = default;
    ~Tracked() { T::memAllocationTracker_.destroyed(); }
};

/// Base whose heap objects live in the slabs.
class SlabObject {
public:
    static void* operator new(std::size_t size) { return slabAlloc(size); }
    static void operator delete(void* memory, std::size_t size) noexcept { slabFree(memory, size); }
};

}  // namespace KitSlab
