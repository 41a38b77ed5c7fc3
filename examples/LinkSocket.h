#pragma once

#include <string>

#include "Kitnet/EthAddr.h"
#include "Kitnet/IpAddr.h"
#include "Kitnet/Pkt.h"

/// A client-facing interface: whole frames in and out of a packet socket (packet(7)). Needs CAP_NET_RAW.
class LinkSocket {
public:
    /// Frames of that EtherType only. Raises std::system_error, saying what failed for which interface.
    LinkSocket(const std::string& interfaceName, Kitnet::U16 etherType);
    LinkSocket(const LinkSocket&) = delete;
    LinkSocket& operator=(const LinkSocket&) = delete;
    ~LinkSocket();

    int fd() const { return fd_; }
    const std::string& name() const { return name_; }
    unsigned index() const { return index_; }
    const Kitnet::EthAddr& mac() const { return mac_; }
    /// The interface's first IPv4 address; 0.0.0.0 where it has none.
    const Kitnet::IpAddr& address() const { return address_; }

    /// The next frame that came in from the link, with the tag that the kernel took out of it beside it; null where
    /// none waits. Frames that the host itself sends are passed over.
    Kcore::Ptr<Kitnet::Pkt> receive();
    /// False where the kernel does not take the frame.
    bool send(const Kitnet::Pkt& frame);

private:
    std::string name_;
    int fd_;
    unsigned index_ = 0;
    Kitnet::EthAddr mac_;
    Kitnet::IpAddr address_;
};

/// Where a UDP datagram goes and comes from.
struct UdpFlow {
    Kitnet::EthAddr srcMac, dstMac;
    Kitnet::IpAddr src, dst;
    Kitnet::U16 srcPort, dstPort;
    int vlan = 0;  ///< 0: untagged
};

/// Puts UDP, IPv4, and Ethernet headers with right lengths and checksums in front of the payload that `pkt` holds.
void frameUdp(Kitnet::Pkt& pkt, const UdpFlow& flow);
