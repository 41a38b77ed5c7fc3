#pragma once

#include "Links.h"

namespace DhcpRelay {

/// A frame as it came from a client link.
struct ArrivedFrame {
    PktPtr pkt;
    bool checksumReady = true;  ///< false: the sender's kernel has not filled the UDP checksum in
};

/// What a frame is to the agent.
struct Receipt {
    bool isOurs = false;           ///< false: not for a relay agent here; no drop, nothing to count
    Reason reason = Reason::none;  ///< why it is dropped all the same
};

/// Receives a frame of the client link: walks Ethernet, one VLAN tag, IP and UDP, checks lengths and checksums, fills
/// the transaction's first part in, and cuts off what stands behind the datagram.
Receipt receiveFrame(const ArrivedFrame& frame, const Links& links, std::size_t link, Transaction& t);

/// Where a datagram for a client goes.
struct Destination {
    EthAddr srcMac, dstMac;
    VlanTag tag;
    IpGenAddr src, dst;
    U16 srcPort = 0, dstPort = 0;
};

/// Puts UDP, IP and Ethernet headers before the message that is the whole packet. An IP packet larger than `mtu`
/// becomes several frames (RFC 791, RFC 8200).
std::vector<PktPtr> framesOf(const PktPtr& message, const Destination& to, U32 mtu);

}  // namespace DhcpRelay
