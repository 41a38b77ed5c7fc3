#include "KitSlab/Slab.h"

#include <array>
#include <atomic>
#include <new>

namespace KitSlab {

namespace {

// KITSLAB_OFF is for builds that run in valgrind.
#if defined(KITSLAB_OFF) || defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool slabsInUse = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
constexpr bool slabsInUse = false;
#else
constexpr bool slabsInUse = true;
#endif
#else
constexpr bool slabsInUse = true;
#endif

constexpr std::size_t grain = 16;
constexpr std::size_t keptPerSize = 1024;  // per list, so that a burst does not keep memory forever

struct FreeSlot {
    FreeSlot* next;
};

struct FreeList {
    FreeSlot* first = nullptr;
    std::size_t count = 0;
};

struct FreeLists {
    std::array<FreeList, largestSlab / grain + 1> bySize;
    ~FreeLists();
};

// Objects may outlive the thread's lists while the thread ends. They are then freed by the ordinary allocator.
thread_local bool listsGone = false;
thread_local FreeLists lists;

FreeLists::~FreeLists() {
    listsGone = true;
    for (FreeList& list : bySize)
        while (FreeSlot* slot = list.first) {
            list.first = slot->next;
            ::operator delete(slot);
        }
}

bool isSlab(std::size_t size) { return slabsInUse && size <= largestSlab && !listsGone; }
std::size_t rounded(std::size_t size) { return (size + grain - 1) / grain * grain; }
FreeList& listOf(std::size_t size) { return lists.bySize[(size + grain - 1) / grain]; }

std::atomic<std::size_t> lastNumber = 0;
constinit thread_local std::size_t number = 0;  // 0 until the thread asks for it

}  // namespace

std::size_t threadNumber(std::size_t n) {
    if (number == 0) number = lastNumber.fetch_add(1, std::memory_order_relaxed) + 1;
    return number % n;
}

void* slabAlloc(std::size_t size) {
    if (!isSlab(size)) return ::operator new(rounded(size));
    FreeList& list = listOf(size);
    if (list.first == nullptr) return ::operator new(rounded(size));
    --list.count;
    FreeSlot* slot = list.first;
    list.first = slot->next;
    return slot;
}

void slabFree(void* memory, std::size_t size) noexcept {
    if (memory == nullptr) return;
    if (!isSlab(size)) return ::operator delete(memory);
    FreeList& list = listOf(size);
    if (list.count == keptPerSize) return ::operator delete(memory);
    ++list.count;
    list.first = new (memory) FreeSlot{list.first};
}

}  // namespace KitSlab
