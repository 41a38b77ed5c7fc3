#pragma once

#include <string>

#include "Kitnet/EthAddr.h"
#include "Kitnet/IpAddr.h"
#include "Kitnet/Pkt.h"

/// A client-facing interface: sends and receives whole frames through a packet socket (packet(7)). Needs CAP_NET_RAW.
class LinkSocket {
public:
    /// Receives frames of this EtherType only. Throws std::system_error that names the interface and what failed.
    LinkSocket(const std::string& interfaceName, Kitnet::U16 etherType);
    LinkSocket(const LinkSocket&) = delete;
    LinkSocket& operator=(const LinkSocket&) = delete;
    ~LinkSocket();

    int fd() const { return fd_; }
    const std::string& name() const { return name_; }
    unsigned index() const { return index_; }
    const Kitnet::EthAddr& mac() const { return mac_; }
    /// The interface's first IPv4 address; 0.0.0.0 if it has none.
    const Kitnet::IpAddr& address() const { return address_; }

    /// The next received frame, with the tag that the kernel took out of it; null if none is waiting. Frames that the
    /// host itself sends are skipped.
    Kcore::Ptr<Kitnet::Pkt> receive();
    /// Returns false if the kernel refuses the frame.
    bool send(const Kitnet::Pkt& frame);

private:
    std::string name_;
    int fd_;
    unsigned index_ = 0;
    Kitnet::EthAddr mac_;
    Kitnet::IpAddr address_;
};

/// Source and destination of a UDP datagram.
struct UdpFlow {
    Kitnet::EthAddr srcMac, dstMac;
    Kitnet::IpAddr src, dst;
    Kitnet::U16 srcPort, dstPort;
    int vlan = 0;  ///< 0: untagged
};

/// Adds Ethernet, IPv4 and UDP headers in front of the payload in `pkt`, with correct lengths and checksums.
void frameUdp(Kitnet::Pkt& pkt, const UdpFlow& flow);
