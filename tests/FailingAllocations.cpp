#include "FailingAllocations.h"

#include <cstdlib>

namespace {

constexpr int never = -1;
int allocationsUntilFailure = never;
long blocks = 0;

void letGo(void* block) {
    if (block != nullptr) --blocks;
    std::free(block);
}

}  // namespace

[[gnu::noinline]] void* operator new(std::size_t size) {
    if (allocationsUntilFailure != never && allocationsUntilFailure-- == 0) {
        allocationsUntilFailure = never;
        throw std::bad_alloc();
    }
    void* const block = std::malloc(size);
    if (block == nullptr) throw std::bad_alloc();
    ++blocks;
    return block;
}
// The sanitizers replace the forms for arrays, too, which would not fail.
[[gnu::noinline]] void* operator new[](std::size_t size) { return operator new(size); }
[[gnu::noinline]] void operator delete[](void* block) noexcept { letGo(block); }
[[gnu::noinline]] void operator delete[](void* block, std::size_t) noexcept { letGo(block); }
[[gnu::noinline]] void operator delete(void* block) noexcept { letGo(block); }
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept { letGo(block); }

namespace DhcpTest {

long liveBlocks() { return blocks; }

Ending actWithFailure(int n, const std::function<void()>& act) {
    allocationsUntilFailure = n;
    try {
        act();
    } catch (const std::bad_alloc&) {
        return Ending::threw;
    }
    const bool failed = allocationsUntilFailure == never;
    allocationsUntilFailure = never;
    return failed ? Ending::wentOn : Ending::complete;
}

int failEachAllocation(const std::function<void()>& act, const std::function<void()>& unchanged) {
    for (int failures = 0;; ++failures) {
        if (actWithFailure(failures, act) != Ending::threw) return failures;
        unchanged();
    }
}

}  // namespace DhcpTest
