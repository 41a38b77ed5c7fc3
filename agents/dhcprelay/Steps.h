#pragma once

#include "Memory.h"
#include "PortName.h"

namespace DhcpRelay {

/// The state that the steps share. `now` is in seconds of a monotonic clock.
struct Context {
    explicit Context(const Settings& s)
        : settings(s),
          links(s),
          memory(s.clients.size(), s.transactions, s.rememberSeconds),
          circuitId("circuit-id", s.circuitId),
          interfaceId("interface-id", s.interfaceId),
          remoteId("remote-id", s.remoteId) {}

    const Settings settings;
    Links links;
    TransactionMemory memory;
    const PortName circuitId, interfaceId, remoteId;
    U32 now = 0;
};

/// The steps of a protocol between receiving and sending. Each returns why the message is dropped, or `none`.
struct Steps {
    Reason (*validate)(Transaction& t);
    Reason (*decide)(Transaction& t, Context& context);
    Reason (*rewrite)(Transaction& t, const Context& context);
};

extern const Steps steps4, steps6;
inline const Steps& stepsOf(Protocol protocol) { return protocol == Protocol::dhcp4 ? steps4 : steps6; }

/// Checks that a datagram to the UDP socket comes from a configured server and over the server-side interface.
Reason checkServer(const Transaction& t, const Context& context);

/// Runs all steps in order until one drops the message. Returns its reason.
Reason process(Transaction& t, Context& context);

}  // namespace DhcpRelay
