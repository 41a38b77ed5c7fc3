#pragma once

#include <utility>

#include "Bridging/Config.h"
#include "DhcpLib/Dhcp6Hdr/Headers.h"
#include "DhcpLib/Dhcp6Identifiers.h"
#include "DhcpLib/FrameFields.h"
#include "DhcpLib/FrameRejection.h"

namespace DhcpLib {

namespace Detail {

/// The attributes of a Dhcp6PacketParser that own no memory, in one object that reset() assigns with few instructions.
struct Dhcp6PacketParserNumbers {
    EthernetFields ether_;
    bool isIp6_ = false;
    bool isUdp_ = false;
    bool isDhcp6_ = false;
    bool dhcp6ClientMsg_ = false;
    FrameRejection rejection_ = FrameRejection::none;
    Kitnet::IpProtocolNumber ipProtocol_;
    Kitnet::Ip6Addr srcIp6_;
    Kitnet::Ip6Addr dstIp6_;
    U32 ip6HdrLen_ = 0;
    UdpPorts udp_;
    U32 udpLen_ = 0;
    Dhcp6MsgType dhcp6MsgType_{};
    Dhcp6Xid dhcp6Xid_;
    U16 dhcp6OptionsOffset_ = 0;
    Dhcp6RemoteIdentifier rId_;
};

}  // namespace Detail

/// Parser of received frames for DHCPv6 snooping. Takes a frame that starts at its Ethernet header and stores its
/// fields as attributes. A parse resets only `rejection`: attributes that it does not reach keep their values
/// (docs/compatibility.md#attributes-are-kept). For clean results use a fresh parser per frame, or call reset().
/// A reference that an accessor returns is valid until the next parse or reset().
/// Traces to the handle "DhcpLib": progress at level 4, rejected frames at 2, failed parts of a parse at 1.
class DHCPLIB_EXPORT Dhcp6PacketParser : private Detail::Dhcp6PacketParserNumbers {
public:
    /// `bridgingConfig` may be null for frames without a receiving interface.
    explicit Dhcp6PacketParser(Kcore::Ptr<const Bridging::Config> bridgingConfig)
        : bridgingConfig_(std::move(bridgingConfig)) {}
    /// For frames without a receiving interface.
    explicit Dhcp6PacketParser(std::nullptr_t) : Dhcp6PacketParser(Kcore::Ptr<const Bridging::Config>()) {}
    /// Fails an assertion: a parser has no text form.
    explicit Dhcp6PacketParser(const Kcore::CharRange& text);
    Dhcp6PacketParser(const char*) = delete;

    /// Makes all attributes those of a new parser with the same `bridgingConfig`. Costs no more than a new parser.
    void reset() {
        static_cast<Numbers&>(*this) = Numbers();
        cId_ = {};
    }

    /// Parses Ethernet, the fixed IPv6 header, UDP and the header of a client/server message. Then reads the client
    /// identifier (1) and, if there is one, the remote-id (37) in the layout `intfIdFormat`
    /// (docs/compatibility.md#remote-id-needs-a-client-id). Does not walk IPv6 extension headers and does not unwrap
    /// relay messages; for a message without a frame call dhcp6Identifiers. Returns true if it examined the options of
    /// a message. Returns false after a trace line if it refused the frame; `rejection` gives the reason. Throws
    /// Kcore::RangeException for a tag with VLAN 4095.
    bool doParseDhcp6(const PktPtr& pkt, Kitnet::IntfId srcIntfName);
    /// Why the last parse refused the frame: `none` if it returned true, `reservedVlan` if it threw. It is not an
    /// attribute: equality, hash and attribute table ignore it.
    FrameRejection rejection() const { return rejection_; }

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
    /// Whether the payload is IPv6.
    bool isIp6() const { return isIp6_; }
    /// The next header field of the IPv6 header; 17 is UDP.
    Kitnet::IpProtocolNumber ipProtocol() const { return ipProtocol_; }
    /// Source address of the IPv6 header.
    const Kitnet::Ip6Addr& srcIp6() const { return srcIp6_; }
    /// Destination address of the IPv6 header.
    const Kitnet::Ip6Addr& dstIp6() const { return dstIp6_; }
    /// Size of the IPv6 header in bytes: 40.
    U32 ip6HdrLen() const { return ip6HdrLen_; }
    /// Whether the next header is UDP.
    bool isUdp() const { return isUdp_; }
    /// Source port of the UDP header.
    Kitnet::UdpPort udpSrcPort() const { return udp_.src; }
    /// Destination port of the UDP header.
    Kitnet::UdpPort udpDstPort() const { return udp_.dst; }
    /// The UDP header's length field.
    U32 udpLen() const { return udpLen_; }
    /// Whether it is a DHCPv6 message with a whole header, of any type.
    bool isDhcp6() const { return isDhcp6_; }
    /// The message type.
    Dhcp6MsgType dhcp6MsgType() const { return dhcp6MsgType_; }
    /// The transaction id.
    const Dhcp6Xid& dhcp6Xid() const { return dhcp6Xid_; }
    /// Whether the type is one of most that clients send (docs/compatibility.md#client-message-set).
    bool dhcp6ClientMsg() const { return dhcp6ClientMsg_; }
    /// Position of the first option in the packet.
    U16 dhcp6OptionsOffset() const { return dhcp6OptionsOffset_; }
    /// Whether the message has a remote-id (option 37) that was read.
    bool rIdOption() const { return rId_.option.present; }
    /// Position of the option in the packet.
    U32 rIdOptOffset() const { return rId_.option.offset; }
    /// The length field of the remote-id: number of data bytes.
    U16 rIdOptLen() const { return rId_.option.len; }
    /// IANA enterprise number of the remote-id.
    U32 rIdEntno() const { return rId_.entno; }
    /// DUID type of the remote-id.
    U16 rIdDuidType() const { return rId_.duidType; }
    /// Hardware type of the remote-id's DUID; 1 is Ethernet.
    U16 rIdDuidHwType() const { return rId_.duidHwType; }
    /// MAC address of the remote-id's DUID.
    const Kitnet::EthAddr& rIdDuidllAddr() const { return rId_.duidllAddr; }
    /// Number of the layer 3 interface in the remote-id.
    U64 rIdL3IntfId() const { return rId_.l3IntfId; }
    /// Interface name in the remote-id's text; valid if `l2PortInfoValid`.
    const Kitnet::IntfId& rIdL2IntfId() const { return rId_.l2IntfId; }
    /// VLAN in the remote-id's text; valid if `l2PortInfoValid`.
    Bridging::VlanId rIdVlanId() const { return rId_.vlanId; }
    /// Whether the interface and VLAN in the remote-id's text could be decoded.
    bool l2PortInfoValid() const { return rId_.l2PortInfoValid(); }
    /// Whether the message has a client identifier (option 1).
    bool cIdOption() const { return cId_.option.present; }
    /// Position of the option in the packet.
    U32 cIdOptOffset() const { return cId_.option.offset; }
    /// The length field of the client identifier: number of data bytes.
    U16 cIdOptLen() const { return cId_.option.len; }
    /// DUID type of the client identifier: 1 to 4 (RFC 8415, section 11; RFC 6355).
    U16 cIdDuidType() const { return cId_.duidType; }
    /// Hardware type of a DUID-LL or DUID-LLT; 1 is Ethernet.
    U16 cIdDuidHwType() const { return cId_.duidHwType; }
    /// MAC address of a DUID-LL or DUID-LLT.
    const Kitnet::EthAddr& cIdDuidllAddr() const { return cId_.duidllAddr; }
    /// The 16 bytes of a DUID-UUID.
    const Kcore::String& cIdDuidUuid() const { return cId_.duidUuid; }
    /// IANA enterprise number of a DUID-EN.
    U32 cIdDuidEntno() const { return cId_.duidEntno; }
    /// Identifier of a DUID-EN.
    const Kcore::String& cIdDuidEntId() const { return cId_.duidEntId; }

    /// Whether any attribute differs from those of a fresh parser with a null configuration.
    explicit operator bool() const { return !(*this == Dhcp6PacketParser(Kcore::Ptr<const Bridging::Config>())); }
    friend bool operator==(const Dhcp6PacketParser& a, const Dhcp6PacketParser& b) {
        return Kcore::equalAttributes(a, b);
    }
    std::size_t hash() const { return Kcore::hashAttributes(*this); }
    static constexpr auto declaration() {
        using Kcore::attribute;
        using P = Dhcp6PacketParser;
        return Kcore::declare(
            "Dhcp6PacketParser", attribute("bridgingConfig", &P::bridgingConfig), attribute("etherType", &P::etherType),
            attribute("srcMac", &P::srcMac), attribute("dstMac", &P::dstMac), attribute("tagged", &P::tagged),
            attribute("vlanId", &P::vlanId), attribute("etherHdrLen", &P::etherHdrLen), attribute("isIp6", &P::isIp6),
            attribute("ipProtocol", &P::ipProtocol), attribute("srcIp6", &P::srcIp6), attribute("dstIp6", &P::dstIp6),
            attribute("ip6HdrLen", &P::ip6HdrLen), attribute("isUdp", &P::isUdp),
            attribute("udpSrcPort", &P::udpSrcPort), attribute("udpDstPort", &P::udpDstPort),
            attribute("udpLen", &P::udpLen), attribute("isDhcp6", &P::isDhcp6),
            attribute("dhcp6MsgType", &P::dhcp6MsgType), attribute("dhcp6Xid", &P::dhcp6Xid),
            attribute("dhcp6ClientMsg", &P::dhcp6ClientMsg), attribute("dhcp6OptionsOffset", &P::dhcp6OptionsOffset),
            attribute("rIdOption", &P::rIdOption), attribute("rIdOptOffset", &P::rIdOptOffset),
            attribute("rIdOptLen", &P::rIdOptLen), attribute("rIdEntno", &P::rIdEntno),
            attribute("rIdDuidType", &P::rIdDuidType), attribute("rIdDuidHwType", &P::rIdDuidHwType),
            attribute("rIdDuidllAddr", &P::rIdDuidllAddr), attribute("rIdL3IntfId", &P::rIdL3IntfId),
            attribute("rIdL2IntfId", &P::rIdL2IntfId), attribute("rIdVlanId", &P::rIdVlanId),
            attribute("l2PortInfoValid", &P::l2PortInfoValid), attribute("cIdOption", &P::cIdOption),
            attribute("cIdOptOffset", &P::cIdOptOffset), attribute("cIdOptLen", &P::cIdOptLen),
            attribute("cIdDuidType", &P::cIdDuidType), attribute("cIdDuidHwType", &P::cIdDuidHwType),
            attribute("cIdDuidllAddr", &P::cIdDuidllAddr), attribute("cIdDuidUuid", &P::cIdDuidUuid),
            attribute("cIdDuidEntno", &P::cIdDuidEntno), attribute("cIdDuidEntId", &P::cIdDuidEntId));
    }

private:
    using Numbers = Detail::Dhcp6PacketParserNumbers;

    bool refuse(FrameRejection why) {
        rejection_ = why;
        return false;
    }
    bool parseIp6Hdr(Wire::ByteView bytes);
    bool parseUdpHdr(Wire::ByteView bytes, U32 udpAt);
    bool parseMsgHdr(Wire::ByteView bytes, U32 msgAt);
    void parseOptions(Wire::ByteView bytes);
    void parseClientId(Wire::ByteView bytes);
    void parseRemoteId(Wire::ByteView bytes);

    Kcore::Ptr<const Bridging::Config> bridgingConfig_;
    Dhcp6ClientIdentifier cId_;
};

}  // namespace DhcpLib
