#pragma once

#include <algorithm>
#include <chrono>

namespace DhcpRelay {

/// The number of requests that a link may still send. It grows with time, up to the number allowed in one second.
class Budget {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// `rate` is in requests per second; 0 for no limit.
    explicit Budget(double rate) : rate_(rate), requests_(rate) {}

    /// Whether one more request is allowed. `now` must not be earlier than in the last call.
    bool spend(Time now) {
        if (rate_ == 0) return true;
        requests_ = std::min(rate_, requests_ + rate_ * std::chrono::duration<double>(now - since_).count());
        since_ = now;
        if (requests_ < 1) return false;
        requests_ -= 1;
        return true;
    }

private:
    double rate_, requests_;
    Time since_;
};

}  // namespace DhcpRelay
