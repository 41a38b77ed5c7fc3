#pragma once

#include <utility>

#include "Bridging/Config.h"
#include "DhcpLib/DhcpHdr/Header.h"
#include "DhcpLib/FrameFields.h"
#include "DhcpLib/FrameRejection.h"
#include "Kcore/Assert.h"
#include "Kcore/Duration.h"
#include "Kcore/FlatMap.h"
#include "Kitnet/IntfId.h"

namespace DhcpLib {

namespace Detail {

/// The attributes of a PacketParser that own no memory, in one object that reset() assigns with few instructions.
struct PacketParserNumbers {
    EthernetFields ether_;
    U32 ipHdrLen_ = 0;
    U32 udpHdrLen_ = 0;
    bool isIp_ = false;
    bool isUdp_ = false;
    bool isDhcp_ = false;
    BootpOpType dhcpOpType_ = BootpOpType::bootpOpUnknown;
    U8 dhcpMsgTypeOpt_ = 0;
    bool serverIdExist_ = false;
    bool leaseTimeExist_ = false;
    bool lastTransactionTimeExist_ = false;
    FrameRejection rejection_ = FrameRejection::none;
    Kitnet::IpProtocolNumber ipProtocol_;
    Kitnet::EthAddr chaddr_;
    UdpPorts udp_;
    U16 offset_ = 0;
    Kitnet::NetU32 xid_;
    Kitnet::IpAddr srcIp_;
    Kitnet::IpAddr dstIp_;
    Kitnet::IpAddr ciaddr_;
    Kitnet::IpAddr yiaddr_;
    Kitnet::IpAddr giaddr_;
    Kitnet::IpAddr serverId_;
    Kcore::Duration leaseTime_{0};
    Kcore::Duration lastTransactionTime_{0};
};

}  // namespace Detail

/// Parser of received frames for DHCPv4 snooping. Takes a frame that starts at its Ethernet header and stores its
/// fields as attributes. A parse resets only `offset` and `rejection`: attributes that it does not reach keep their
/// values, and `associatedIps` only grows (docs/compatibility.md#attributes-are-kept). For clean results use a fresh
/// parser per frame, or call reset(). A reference that an accessor returns is valid until the next parse or reset().
/// Traces to the handle "DhcpLib": progress at level 4, rejected frames at 2, failed parts of a parse at 1.
class DHCPLIB_EXPORT PacketParser : private Detail::PacketParserNumbers {
public:
    using HN_AssociatedIps = Kcore::FlatSet<Kitnet::IpAddr>;  ///< a set of addresses that keeps the order of insertion

    /// `bridgingConfig` may be null for frames without a receiving interface.
    explicit PacketParser(Kcore::Ptr<const Bridging::Config> bridgingConfig)
        : bridgingConfig_(std::move(bridgingConfig)) {}
    /// For frames without a receiving interface.
    explicit PacketParser(std::nullptr_t) : PacketParser(Kcore::Ptr<const Bridging::Config>()) {}
    /// Fails an assertion: a parser has no text form.
    explicit PacketParser(const Kcore::CharRange& text);
    PacketParser(const char*) = delete;

    /// Makes all attributes those of a new parser with the same `bridgingConfig`. Costs no more than a new parser.
    void reset() {
        static_cast<Numbers&>(*this) = Numbers();
        associatedIps_.clear();
        for (Kcore::String* text :
             {&dhcpMsgType_, &circuitId_, &remoteId_, &hostname_, &paramReqList_, &vendorClassId_})
            text->clear();
    }

    /// Parses Ethernet, IPv4, UDP and the DHCP message. With `dhcpHdrOnly` the packet starts at the BOOTP header, and
    /// the options are searched after the header lengths of the previous parse
    /// (docs/compatibility.md#header-only-uses-old-lengths). Returns true for DHCP, and for plain BOOTP, which sets
    /// `isDhcp` to false and `dhcpMsgType` to "BOOTP" (docs/compatibility.md#bootp-is-accepted). Returns false after a
    /// trace line if it refused the frame; `rejection` gives the reason. Throws Kcore::RangeException for a tag with
    /// VLAN 4095. `srcIntfName` is the receiving interface; with an empty one no configuration is needed, and the
    /// native VLAN is 0.
    bool doParse(const PktPtr& pkt, Kitnet::IntfId srcIntfName, bool dhcpHdrOnly);
    /// Parses the Ethernet header alone, at byte 0. This function and the next two are for agents that run single
    /// stages: each sets `offset` to the end of its header, and `rejection`. If the header does not fit into the frame,
    /// no other attribute changes. `resetOffset` sets `offset` to 0 first, which makes a difference only if the frame
    /// is refused. Throws Kcore::RangeException for a tag with VLAN 4095.
    bool doParseEthHdr(const PktPtr& pkt, Kitnet::IntfId srcIntfName, bool resetOffset);
    /// Parses the fixed IPv4 header (RFC 791) at `offset`; its options are skipped.
    bool doParseIpHdr(const PktPtr& pkt);
    /// Parses the UDP header (RFC 768) at `offset`.
    bool doParseUdpHdr(const PktPtr& pkt);
    /// Why the last call of one of these functions refused the frame: `none` if it returned true, `reservedVlan` if it
    /// threw. It is not an attribute: equality, hash and attribute table ignore it.
    FrameRejection rejection() const { return rejection_; }
    /// Adds `n` to `offset`, modulo 65536, and returns the sum.
    U16 offsetInc(U16 n) { return offset_ = static_cast<U16>(offset_ + n); }

    /// The VLAN settings given to the constructor.
    const Kcore::Ptr<const Bridging::Config>& bridgingConfig() const { return bridgingConfig_; }
    /// The EtherType of the payload; in a tagged frame the one after the tag.
    U16 etherType() const { return ether_.etherType; }
    /// Source MAC address of the frame.
    const Kitnet::EthAddr& srcMac() const { return ether_.srcMac; }
    /// Destination MAC address of the frame.
    const Kitnet::EthAddr& dstMac() const { return ether_.dstMac; }
    /// Whether the frame has a tag of TPID 0x8100, in the frame or out of band
    /// (docs/compatibility.md#one-tag-of-0x8100); always false on a port in the mode `dot1qTunnel`.
    bool tagged() const { return ether_.tagged; }
    /// The VLAN of the tag; without a tag, and for VLAN 0, the native VLAN of the receiving interface, which is 0 if no
    /// interface was given.
    Bridging::VlanId vlanId() const { return ether_.vlanId; }
    /// Size of the Ethernet header in bytes: 14, or 18 with a tag in the frame.
    U32 etherHdrLen() const { return ether_.etherHdrLen; }
    /// Whether the payload is IPv4.
    bool isIp() const { return isIp_; }
    /// The protocol of the IPv4 header; 17 is UDP.
    Kitnet::IpProtocolNumber ipProtocol() const { return ipProtocol_; }
    /// Source address of the IPv4 header.
    Kitnet::IpAddr srcIp() const { return srcIp_; }
    /// Destination address of the IPv4 header.
    Kitnet::IpAddr dstIp() const { return dstIp_; }
    /// Size of the IPv4 header with its options, in bytes.
    U32 ipHdrLen() const { return ipHdrLen_; }
    /// Whether the protocol is UDP.
    bool isUdp() const { return isUdp_; }
    /// Source port of the UDP header.
    Kitnet::UdpPort udpSrcPort() const { return udp_.src; }
    /// Destination port of the UDP header.
    Kitnet::UdpPort udpDstPort() const { return udp_.dst; }
    /// Size of the UDP header in bytes: 8.
    U32 udpHdrLen() const { return udpHdrLen_; }
    /// Whether the UDP destination port is 67 or 68 and the message is not plain BOOTP. Use it only if doParse()
    /// returned true. A parse with `dhcpHdrOnly` never sets it to true.
    bool isDhcp() const { return isDhcp_; }
    /// Request or reply; `bootpOpUnknown` for any `op` byte but 1 and 2.
    BootpOpType dhcpOpType() const { return dhcpOpType_; }
    /// Name of the message type, such as "DHCPDISCOVER"; "BOOTP" for plain BOOTP; "INVALID DHCP" for a malformed
    /// options area; empty if option 53 is absent or not 1 to 13.
    const Kcore::String& dhcpMsgType() const { return dhcpMsgType_; }
    /// Number of the message type, 1 to 13 (RFC 2132, section 9.6; RFC 3203; RFC 4388); see `dhcpMsgType`.
    U8 dhcpMsgTypeOpt() const { return dhcpMsgTypeOpt_; }
    /// Transaction id.
    Kitnet::NetU32 xid() const { return xid_; }
    /// MAC address of the client.
    const Kitnet::EthAddr& chaddr() const { return chaddr_; }
    /// Address of a client that has one already.
    Kitnet::IpAddr ciaddr() const { return ciaddr_; }
    /// Address that the server gives to the client.
    Kitnet::IpAddr yiaddr() const { return yiaddr_; }
    /// Address of the first relay agent, else 0.0.0.0.
    Kitnet::IpAddr giaddr() const { return giaddr_; }
    /// Circuit-id of option 82, as raw bytes from the network: quote it before printing (Kcore::appendQuoted()). This
    /// text and those below are empty if a message without them has been parsed.
    const Kcore::String& circuitId() const { return circuitId_; }
    /// Remote-id of option 82, as raw bytes from the network.
    const Kcore::String& remoteId() const { return remoteId_; }
    /// Server identifier (option 54), or the override in option 82 (RFC 5107). 0.0.0.0 if the message has neither,
    /// or an option 54 whose length is not 4.
    Kitnet::IpAddr serverId() const { return serverId_; }
    /// Whether the message has either of them, whatever its length (docs/compatibility.md#presence-without-value).
    bool serverIdExist() const { return serverIdExist_; }
    /// Lease time (option 51) in seconds; 0 if it is absent or its length is not 4.
    Kcore::Duration leaseTime() const { return leaseTime_; }
    /// Whether the message has an option 51, whatever its length.
    bool leaseTimeExist() const { return leaseTimeExist_; }
    /// Client last transaction time (option 91, RFC 4388) in seconds; 0 if it is absent or its length is not 4.
    Kcore::Duration lastTransactionTime() const { return lastTransactionTime_; }
    /// Whether the message has an option 91, whatever its length.
    bool lastTransactionTimeExist() const { return lastTransactionTimeExist_; }
    /// Addresses of the client (option 92, RFC 4388). A parse adds to them and never removes one.
    const HN_AssociatedIps& associatedIps() const { return associatedIps_; }
    /// Adds an address.
    void associatedIpsIs(Kitnet::IpAddr ip) { associatedIps_.insert(ip); }
    /// Removes an address.
    void associatedIpsDel(Kitnet::IpAddr ip) { associatedIps_.erase(ip); }
    /// Removes all addresses.
    void associatedIpsDelAll() { associatedIps_.clear(); }
    /// Whether `ip` is one of the addresses.
    bool associatedIpsHas(Kitnet::IpAddr ip) const { return associatedIps_.contains(ip); }
    /// Host name (option 12), as raw bytes from the network.
    const Kcore::String& hostname() const { return hostname_; }
    /// Parameter request list (option 55) as decimal numbers separated by commas.
    const Kcore::String& paramReqList() const { return paramReqList_; }
    /// Vendor class identifier (option 60), as raw bytes from the network.
    const Kcore::String& vendorClassId() const { return vendorClassId_; }
    /// Position after the headers that were read: after doParse() that of the BOOTP header.
    U16 offset() const { return offset_; }

    /// Whether any attribute differs from those of a fresh parser with a null configuration.
    explicit operator bool() const { return !(*this == PacketParser(nullptr)); }
    friend bool operator==(const PacketParser& a, const PacketParser& b) { return Kcore::equalAttributes(a, b); }
    std::size_t hash() const { return Kcore::hashAttributes(*this); }
    static constexpr auto declaration() {
        using Kcore::attribute;
        using P = PacketParser;
        return Kcore::declare(
            "PacketParser", attribute("bridgingConfig", &P::bridgingConfig), attribute("etherType", &P::etherType),
            attribute("srcMac", &P::srcMac), attribute("dstMac", &P::dstMac), attribute("tagged", &P::tagged),
            attribute("vlanId", &P::vlanId), attribute("etherHdrLen", &P::etherHdrLen), attribute("isIp", &P::isIp),
            attribute("ipProtocol", &P::ipProtocol), attribute("srcIp", &P::srcIp), attribute("dstIp", &P::dstIp),
            attribute("ipHdrLen", &P::ipHdrLen), attribute("isUdp", &P::isUdp), attribute("udpSrcPort", &P::udpSrcPort),
            attribute("udpDstPort", &P::udpDstPort), attribute("udpHdrLen", &P::udpHdrLen),
            attribute("isDhcp", &P::isDhcp), attribute("dhcpOpType", &P::dhcpOpType),
            Kcore::text("dhcpMsgType", &P::dhcpMsgType), attribute("dhcpMsgTypeOpt", &P::dhcpMsgTypeOpt),
            attribute("xid", &P::xid), attribute("chaddr", &P::chaddr), attribute("ciaddr", &P::ciaddr),
            attribute("yiaddr", &P::yiaddr), attribute("giaddr", &P::giaddr), attribute("circuitId", &P::circuitId),
            attribute("remoteId", &P::remoteId), attribute("serverId", &P::serverId),
            attribute("serverIdExist", &P::serverIdExist), attribute("leaseTime", &P::leaseTime),
            attribute("leaseTimeExist", &P::leaseTimeExist), attribute("lastTransactionTime", &P::lastTransactionTime),
            attribute("lastTransactionTimeExist", &P::lastTransactionTimeExist),
            attribute("associatedIps", &P::associatedIps), attribute("hostname", &P::hostname),
            Kcore::text("paramReqList", &P::paramReqList), attribute("vendorClassId", &P::vendorClassId),
            attribute("offset", &P::offset));
    }

private:
    using Numbers = Detail::PacketParserNumbers;

    bool refuse(FrameRejection why) {
        rejection_ = why;
        return false;
    }
    bool parseEthHdr(const Kitnet::Pkt* pkt, const Kitnet::IntfId& srcIntf, bool resetOffset);
    bool parseIpHdr(Wire::ByteView bytes);
    bool parseUdpHdr(Wire::ByteView bytes);
    bool parseBootpHdr(Wire::ByteView bytes);
    bool parseOptions(const class OptionIndex& index);
    void takeLeaseQuery(const OptionIndex& index);
    void takeAssociatedIps(const struct LeaseQueryOptions& options);
    void parseInfoOption(const OptionIndex& index);
    void takeProfiling(const OptionIndex& index);

    Kcore::Ptr<const Bridging::Config> bridgingConfig_;
    HN_AssociatedIps associatedIps_;
    Kcore::String dhcpMsgType_;
    Kcore::String circuitId_;
    Kcore::String remoteId_;
    Kcore::String hostname_;
    Kcore::String paramReqList_;
    Kcore::String vendorClassId_;
};

}  // namespace DhcpLib
