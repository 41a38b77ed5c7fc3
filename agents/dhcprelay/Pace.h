#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>

namespace DhcpRelay {

/// Decides how long the agent rests between two turns of its loop. A process that wakes up for each message spends most
/// of its CPU time on waking up. So while messages follow each other quickly, the agent rests between its turns, and
/// serves several messages in each. A message that comes alone is served at once.
///
/// Clients that wait for a reply before they send more would be slowed down by that. So the agent measures the traffic
/// without rests first, then tries rests, and gives them up for a long time if messages become rare with them.
class Pace {
public:
    using Clock = std::chrono::steady_clock;

    /// How much longer a message may have to wait.
    static constexpr Clock::duration longestRest = std::chrono::milliseconds(2);

    /// The rest after a turn that began at `start` and served `messages` messages.
    Clock::duration restAfter(Clock::time_point start, std::size_t messages) {
        served_ += messages;
        if (served_ >= phase_) endPhase(start);
        return messages < wanted ? rest_ : Clock::duration{};
    }

private:
    static constexpr std::size_t wanted = 16;           // messages for one turn
    static constexpr std::size_t trial = 128;           // messages of a measurement, and of the first try with rests
    static constexpr std::size_t restful = 16 * trial;  // messages until the next measurement if rests do no harm
    static constexpr std::size_t awake = 128 * trial;   // the same if they do

    void endPhase(Clock::time_point now) {
        const Clock::duration gap = (now - begin_) / static_cast<Clock::rep>(served_);
        const bool rested = rest_ != Clock::duration{};
        const std::size_t before = phase_;
        begin_ = now;
        served_ = 0;
        phase_ = trial;
        if (!rested) {
            usualGap_ = gap;
            rest_ =
                gap < longestRest ? std::min(static_cast<Clock::rep>(wanted) * gap, longestRest) : Clock::duration{};
        } else if (gap > usualGap_ * 3 / 2) {
            rest_ = {};
            phase_ = awake;
        } else if (before == trial) {
            phase_ = restful;
        } else {
            rest_ = {};
        }
    }

    Clock::duration rest_{};
    Clock::duration usualGap_{};  // between two messages, without rests
    Clock::time_point begin_;     // of the phase
    std::size_t served_ = 0, phase_ = trial;
};

}  // namespace DhcpRelay
