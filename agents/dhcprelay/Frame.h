#pragma once

#include "Links.h"

namespace DhcpRelay {

/// A frame received from a client link.
struct ArrivedFrame {
    PktPtr pkt;
    bool checksumReady = true;  ///< false: the sender's kernel left the UDP checksum to the hardware
};

/// Result of receiveFrame.
struct Receipt {
    bool isOurs = false;           ///< false: the frame is not for this agent; it is not counted as dropped
    Reason reason = Reason::none;  ///< why one of our frames is dropped; `none` if it is accepted
};

/// Parses a frame of the client link: Ethernet, one VLAN tag, IP and UDP. Checks lengths and checksums, sets the
/// fields of the transaction's first part, and removes the bytes after the datagram.
Receipt receiveFrame(const ArrivedFrame& frame, const Links& links, std::size_t link, Transaction& t);

/// Addresses, ports and VLAN tag of a datagram for a client.
struct Destination {
    EthAddr srcMac, dstMac;
    VlanTag tag;
    IpGenAddr src, dst;
    U16 srcPort = 0, dstPort = 0;
};

/// Adds UDP, IP and Ethernet headers to `message`, a packet that contains only the DHCP message. An IP packet larger
/// than `mtu` becomes several frames (RFC 791, RFC 8200).
std::vector<PktPtr> framesOf(const PktPtr& message, const Destination& to, U32 mtu);

}  // namespace DhcpRelay
