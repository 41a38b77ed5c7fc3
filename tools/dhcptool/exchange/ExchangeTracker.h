#pragma once

#include <functional>
#include <list>
#include <map>

#include "exchange/Exchange.h"

namespace DhcpTool {

/// Times are positive.
struct TrackerSettings {
    Nanoseconds timeout = std::chrono::seconds(30);  ///< after its last message an unfinished exchange ends
    Nanoseconds linger = std::chrono::seconds(3);    ///< a finished one waits as long for late answers
    std::size_t mostOpen = 8192;                     ///< exchanges that have not been reported
    std::size_t mostDone = 1024;                     ///< finished ones among them
};

/// Assembles messages into exchanges. A message belongs to an exchange by client and transaction, or by client alone if
/// it continues the last one, such as a DHCPv6 REQUEST after an ADVERTISE. Copies of a message on both sides of a relay
/// agent are one message.
///
/// Memory is bounded whatever arrives: above `mostOpen` and `mostDone` the oldest exchanges are reported early,
/// finished ones first, and a client has at most 16 open ones. Time is that of the messages. It does not run backwards
/// here: a message that is older than the one before it counts as simultaneous.
class ExchangeTracker {
public:
    /// Calls `report` for each exchange when it ends.
    ExchangeTracker(const TrackerSettings& settings, std::function<void(const Exchange&)> report);
    ExchangeTracker(const ExchangeTracker&) = delete;
    ExchangeTracker& operator=(const ExchangeTracker&) = delete;

    void take(const Event& event);
    /// Reports the exchanges that have ended at `now`, which is compared with the times of messages.
    void timeIs(Nanoseconds now);
    /// Reports all open exchanges, the one that has waited longest first.
    void finish();

private:
    static constexpr std::size_t mostPerClient = 16;

    struct Open;
    using Opens = std::list<Open>;
    using Index = std::multimap<std::string_view, Opens::iterator>;

    /// An exchange that has not been reported. It is in `done_` or `pending_`, each in the order of the last message.
    struct Open {
        Exchange exchange;
        U64 touched = 0;  ///< `clock_` at the last message
        bool done = false;
        Index::iterator entry;
    };

    template <class Wanted>
    std::optional<Opens::iterator> newest(std::string_view client, Wanted wanted);
    Opens::iterator exchangeOf(const Event& event);
    Opens::iterator openFor(const Event& event);
    U64 age(const Open& open) const { return clock_ - open.touched; }
    void makeRoom(std::string_view client);
    void touch(Opens::iterator open);
    void report(Opens::iterator open);
    void reportEarly(Opens::iterator open);
    Kitnet::IpGenAddr answeringServer(const Exchange& exchange);

    const TrackerSettings settings_;
    const std::function<void(const Exchange&)> report_;
    Opens done_, pending_;
    Index index_;  ///< by client; the keys point into the exchanges
    std::map<std::pair<bool, U16>, Kitnet::IpGenAddr>
        answering_;                      ///< by protocol and VLAN the server that answered last
    U64 clock_ = 0;                      ///< ns; sum of all steps forward in time, may wrap
    std::optional<Nanoseconds> latest_;  ///< time of the last message
};

}  // namespace DhcpTool
