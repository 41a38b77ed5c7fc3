#pragma once

#include "Kcore/Types.h"
#include "Kitnet/SockFilter.h"

namespace Interface {

using Kcore::U16;
using Kcore::U32;
using Kcore::U64;

/// Settings of the packet sockets of one agent.
struct PacketSocketSettings {
    U16 protocol = 0;       ///< EtherType in host order; ETH_P_ALL (3) receives every protocol, 0 receives nothing
    U32 receiveBuffer = 0;  ///< in bytes; 0 keeps the system's default
    Kitnet::SockFilterProgram filterProgram{};  ///< what the sockets receive; no instructions: everything
};

}  // namespace Interface
