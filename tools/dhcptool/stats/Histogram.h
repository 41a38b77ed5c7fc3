#pragma once

#include <array>

#include "exchange/Event.h"

namespace DhcpTool {

/// Counts times in buckets of fixed size, 32 to each doubling from 1.024 us to 18 minutes. A percentile is the middle
/// of its bucket, so it is at most 1.6 % off; shorter and longer times count in the first and the last bucket.
class Histogram {
public:
    /// Ignores a time below zero: the clocks of two captures differ.
    void add(Nanoseconds time);
    void add(const Histogram& other);
    U64 count() const { return count_; }
    /// The shortest time that is not exceeded by `share` (0 to 1) of all. Zero if there is none.
    Nanoseconds percentile(double share) const;

    /// The numbers of times in coarser steps, for a picture. Bar n starts at `barStart(n)`: 1, 2, 5, 10, 20, ...
    /// microseconds. The first and the last one have no other limit.
    static constexpr std::size_t barCount = 28;
    std::array<U64, barCount> bars() const;
    static Nanoseconds barStart(std::size_t bar);

private:
    static constexpr unsigned fineBits = 5, firstBits = 10, lastBits = 40;
    static constexpr std::size_t buckets = (lastBits - firstBits) << fineBits;

    static std::size_t bucketOf(U64 nanoseconds);
    static Nanoseconds middleOf(std::size_t bucket);

    std::array<U32, buckets> counts_{};
    U64 count_ = 0;
};

}  // namespace DhcpTool
