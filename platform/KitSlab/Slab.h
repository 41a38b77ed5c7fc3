#pragma once

#include <cstddef>

#include "Kcore/Counter.h"
#include "Kcore/Export.h"

namespace KitSlab {

/// Allocates a small object from the thread's free lists. The ordinary allocator is used for sizes above `largestSlab`,
/// and for all sizes under the sanitizers, so that they detect a use after free.
DHCPPLATFORM_EXPORT void* slabAlloc(std::size_t size);
/// Requires: `memory` came from slabAlloc(`size`), on any thread, or is null.
DHCPPLATFORM_EXPORT void slabFree(void* memory, std::size_t size) noexcept;

inline constexpr std::size_t largestSlab = 256;  ///< largest size of the free lists, in bytes

/// Counts the live objects of a class.
class AllocationTracker {
public:
    /// Number of live objects.
    Kcore::U32 live() const { return live_.value(); }
    /// One more object. For Tracked.
    void created() { live_.increment(); }
    /// One object less. For Tracked.
    void destroyed() { live_.decrement(); }

private:
    Kcore::Counter live_;
};

/// Member of a class with a static `memAllocationTracker_`. Keeps the count up to date.
template <class T>
class Tracked {
public:
    Tracked() { T::memAllocationTracker_.created(); }
    /// The copy is one more object.
    Tracked(const Tracked&) : Tracked() {}
    Tracked& operator=(const Tracked&) = default;
    ~Tracked() { T::memAllocationTracker_.destroyed(); }
};

/// Base class of objects that slabAlloc() allocates.
class SlabObject {
public:
    /// Allocates with slabAlloc().
    static void* operator new(std::size_t size) { return slabAlloc(size); }
    /// Frees with slabFree().
    static void operator delete(void* memory, std::size_t size) noexcept { slabFree(memory, size); }
};

}  // namespace KitSlab
