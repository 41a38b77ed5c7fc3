#pragma once

#include <atomic>

#include "Kcore/Export.h"
#include "Kcore/Types.h"

namespace Kcore {

/// Whether the process has more than one thread. Set it before the second thread starts, and never reset it.
class DHCPPLATFORM_EXPORT ThreadControl {
public:
    /// Whether the process has more than one thread.
    static bool multiThreaded() { return multiThreaded_.load(std::memory_order_relaxed); }
    /// Sets the flag.
    static void multiThreadedIs(bool on) { multiThreaded_.store(on, std::memory_order_relaxed); }

private:
    static std::atomic<bool> multiThreaded_;
};

/// A use count or instance count. Atomic once the process is multi-threaded.
class Counter {
public:
    /// A count of `start`.
    explicit constexpr Counter(U32 start = 0) : count_(start) {}
    Counter(const Counter&) = delete;
    Counter& operator=(const Counter&) = delete;

    /// The present count.
    U32 value() const { return count_.load(std::memory_order_relaxed); }
    /// Adds one.
    void increment() {
        if (ThreadControl::multiThreaded()) [[unlikely]]
            count_.fetch_add(1, std::memory_order_relaxed);
        else
            count_.store(value() + 1, std::memory_order_relaxed);
    }
    /// Returns the new count. The thread that reaches 0 sees all writes of the other threads.
    U32 decrement() {
        if (ThreadControl::multiThreaded()) [[unlikely]]
            return count_.fetch_sub(1, std::memory_order_acq_rel) - 1;
        const U32 left = value() - 1;
        count_.store(left, std::memory_order_relaxed);
        return left;
    }

private:
    std::atomic<U32> count_;
};

}  // namespace Kcore
