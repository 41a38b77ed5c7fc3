#pragma once

#include <set>

#include "DhcpLib/PacketView.h"
#include "Kcore/Duration.h"
#include "Kitnet/EthAddr.h"
#include "Kitnet/IpAddr.h"

namespace DhcpLib {

/// Creates a DHCPLEASEQUERY (RFC 4388) that asks for options 51, 91 and 92: a packet of 300 bytes that starts at the
/// BOOTP header. With `queryByMAC` it asks for `chaddr` and ignores `ciaddr`, otherwise the other way round. `giaddr`
/// is the address to whose UDP port 67 the server answers; `xid` is in host order.
DHCPLIB_EXPORT PktPtr buildDhcpLeaseQuery(bool queryByMAC, Kitnet::IpAddr giaddr, Kitnet::EthAddr chaddr,
                                          Kitnet::IpAddr ciaddr, U32 xid);

/// Reads the reply to a lease query whose BOOTP header starts at `offset`.
///    option 51  leaseTime, seconds; 0 if the option is absent or its length is not 4
///    option 91  lastTransactionTime, seconds; 0 if the option is absent or its length is not 4
///    option 92  associatedIps; addresses are added to the set, or none if the length is not a multiple of 4
///    option 54  serverId; unchanged if the option is absent or its length is not 4
/// A `...Present` flag is true if the option occurs, whatever its length
/// (docs/compatibility.md#presence-without-value). If the options area is malformed, returns false and changes no
/// output. If it throws std::bad_alloc, it changes no output either.
DHCPLIB_EXPORT bool parseLeaseQueryOpts(const PktPtr& pkt, Kcore::Duration& leaseTime,
                                        Kcore::Duration& lastTransactionTime, std::set<Kitnet::IpAddr>& associatedIps,
                                        Kitnet::IpAddr& serverId, bool& leaseTimePresent,
                                        bool& lastTransactionTimePresent, bool& serverIdPresent, U32 offset);

}  // namespace DhcpLib
