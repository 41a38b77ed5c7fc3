#pragma once

#include <set>

#include "DhcpLib/PacketView.h"
#include "Kcore/Duration.h"
#include "Kitnet/EthAddr.h"
#include "Kitnet/IpAddr.h"

namespace DhcpLib {

/// A DHCPLEASEQUERY (RFC 4388): a new packet of 300 bytes that starts at the BOOTP header, asking for options 51, 91
/// and
/// 92. By MAC address `chaddr` is asked for and `ciaddr` ignored, otherwise the other way round.
DHCPLIB_EXPORT PktPtr buildDhcpLeaseQuery(bool queryByMAC, Kitnet::IpAddr giaddr, Kitnet::EthAddr chaddr,
                                          Kitnet::IpAddr ciaddr, U32 xid);

/// Reads the reply to a lease query whose BOOTP header starts at `offset`: lease time (51) and client last transaction
/// time (91) in seconds, 0 where their length is not 4; associated addresses (92), added to the set, ignored where the
/// length is no multiple of 4; server identifier (54), left as it is where its length is not 4. The `Present` flags
/// tell whether the option occurs at all. False, and every output as it was, where the options cannot be walked.
DHCPLIB_EXPORT bool parseLeaseQueryOpts(const PktPtr& pkt, Kcore::Duration& leaseTime,
                                        Kcore::Duration& lastTransactionTime, std::set<Kitnet::IpAddr>& associatedIps,
                                        Kitnet::IpAddr& serverId, bool& leaseTimePresent,
                                        bool& lastTransactionTimePresent, bool& serverIdPresent, U32 offset);

}  // namespace DhcpLib
