#pragma once

#include <chrono>

namespace DhcpTool {

/// A time since 1970, or the time between two events.
using Nanoseconds = std::chrono::nanoseconds;

/// `to` - `from`. Times in a capture may be anything, so the result stops at the limits of its type.
constexpr Nanoseconds timeBetween(Nanoseconds from, Nanoseconds to) {
    Nanoseconds::rep difference = 0;
    if (!__builtin_sub_overflow(to.count(), from.count(), &difference)) return Nanoseconds(difference);
    return to > from ? Nanoseconds::max() : Nanoseconds::min();
}

}  // namespace DhcpTool
