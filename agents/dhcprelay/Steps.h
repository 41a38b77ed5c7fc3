#pragma once

#include "Budget.h"
#include "Memory.h"
#include "PortName.h"

namespace DhcpRelay {

/// The state that the steps share.
struct Context {
    explicit Context(const Settings& s)
        : settings(s),
          links(s),
          memory(s.clients.size(), s.transactions, s.rememberSeconds),
          budgets(s.clients.size(), Budget(s.rate)),
          circuitId("circuit-id", s.circuitId),
          interfaceId("interface-id", s.interfaceId),
          remoteId("remote-id", s.remoteId) {}

    const Settings settings;
    Links links;
    TransactionMemory memory;
    std::vector<Budget> budgets;  ///< one for each client link
    const PortName circuitId, interfaceId, remoteId;
    Budget::Time time;  ///< of the present turn
    U32 now = 0;        ///< the same in seconds

    void timeIs(Budget::Time t) {
        time = t;
        now = static_cast<U32>(std::chrono::duration_cast<std::chrono::seconds>(t.time_since_epoch()).count());
    }
};

/// The steps of a protocol between receiving and sending. Each returns why the message is dropped, or `none`.
struct Steps {
    Reason (*validate)(Transaction& t);
    Reason (*decide)(Transaction& t, Context& context);
    Reason (*rewrite)(Transaction& t, const Context& context);
};

extern const Steps steps4, steps6;
inline const Steps& stepsOf(Protocol protocol) { return protocol == Protocol::dhcp4 ? steps4 : steps6; }

/// Checks that a datagram to the UDP socket comes from an address that replies may come from. It must have arrived on
/// the server-side interface or, if none is configured, not on an untrusted client link.
Reason checkServer(const Transaction& t, const Context& context);

/// Checks the sender, then runs all steps in order until one drops the message. Returns the reason.
Reason process(Transaction& t, Context& context);

}  // namespace DhcpRelay
