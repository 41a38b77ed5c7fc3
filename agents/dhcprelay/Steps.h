#pragma once

#include "Memory.h"
#include "PortName.h"

namespace DhcpRelay {

/// What the steps need beside the message. `now` in seconds of a clock that only goes forward.
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

/// A protocol's steps between receiving and sending. Each tells why the message is dropped; `none`: it goes on.
struct Steps {
    Reason (*validate)(Transaction& t);
    Reason (*decide)(Transaction& t, Context& context);
    Reason (*rewrite)(Transaction& t, const Context& context);
};

extern const Steps steps4, steps6;
inline const Steps& stepsOf(Protocol protocol) { return protocol == Protocol::dhcp4 ? steps4 : steps6; }

/// Whether a datagram to the UDP socket comes from where a server's reply may come from.
Reason checkServer(const Transaction& t, const Context& context);

/// All steps in turn, until one drops the message.
Reason process(Transaction& t, Context& context);

}  // namespace DhcpRelay
