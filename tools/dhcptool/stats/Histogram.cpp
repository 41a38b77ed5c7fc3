#include "stats/Histogram.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace DhcpTool {

/// A time of n bits belongs to the n-th doubling; its `fineBits` bits below the highest one tell the bucket in it.
std::size_t Histogram::bucketOf(U64 nanoseconds) {
    const auto bits = static_cast<unsigned>(std::bit_width(nanoseconds));
    if (bits <= firstBits) return 0;
    if (bits > lastBits) return buckets - 1;
    const U64 fine = nanoseconds >> (bits - 1 - fineBits) & ((1U << fineBits) - 1);
    return (std::size_t{bits - 1 - firstBits} << fineBits) + fine;
}

Nanoseconds Histogram::middleOf(std::size_t bucket) {
    const std::size_t fine = bucket & ((1U << fineBits) - 1), doubling = bucket >> fineBits;
    const auto width = U64{1} << (firstBits + doubling - fineBits);
    const U64 start = ((U64{1} << fineBits) + fine) * width;
    return Nanoseconds(start + width / 2);
}

void Histogram::add(Nanoseconds time) {
    if (time.count() < 0) return;
    ++counts_[bucketOf(static_cast<U64>(time.count()))];
    ++count_;
}

void Histogram::add(const Histogram& other) {
    for (std::size_t at = 0; at < buckets; ++at) counts_[at] += other.counts_[at];
    count_ += other.count_;
}

Nanoseconds Histogram::percentile(double share) const {
    const auto rank = static_cast<U64>(std::ceil(share * static_cast<double>(count_)));
    U64 below = 0;
    for (std::size_t at = 0; at < buckets; ++at) {
        below += counts_[at];
        if (below != 0 && below >= rank) return middleOf(at);
    }
    return Nanoseconds(0);
}

Nanoseconds Histogram::barStart(std::size_t bar) {
    constexpr std::array<Nanoseconds::rep, 3> steps{1, 2, 5};
    Nanoseconds start = std::chrono::microseconds(steps[bar % steps.size()]);
    for (std::size_t decade = 0; decade < bar / steps.size(); ++decade) start *= 10;
    return start;
}

std::array<U64, Histogram::barCount> Histogram::bars() const {
    std::array<U64, barCount> bars{};
    std::size_t bar = 0;
    for (std::size_t at = 0; at < buckets; ++at) {
        while (bar + 1 < barCount && middleOf(at) >= barStart(bar + 1)) ++bar;
        bars[bar] += counts_[at];
    }
    return bars;
}

}  // namespace DhcpTool
