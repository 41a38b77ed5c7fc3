#pragma once

#include <array>
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

/// A number from 0 to `n` - 1 for the calling thread. The first `n` threads that ask get different numbers.
DHCPPLATFORM_EXPORT std::size_t threadNumber(std::size_t n);

/// Counts the live objects of a class.
class AllocationTracker {
public:
    /// Number of live objects.
    Kcore::U32 live() const {
        Kcore::U32 sum = 0;  // counts of single threads wrap if another thread destroys their objects, the sum does not
        for (const Share& share : shares_) sum += share.count.value();
        return sum;
    }
    /// One more object. For Tracked.
    void created() { own().count.increment(); }
    /// One object less. For Tracked.
    void destroyed() { own().count.decrement(); }

private:
    /// The count of some threads, in a cache line of its own, so that threads do not slow each other down.
    struct alignas(64) Share {
        Kcore::Counter count;
    };

    Share& own() { return shares_[Kcore::ThreadControl::multiThreaded() ? threadNumber(shares_.size()) : 0]; }

    std::array<Share, 8> shares_;
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
