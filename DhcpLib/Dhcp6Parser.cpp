#include "DhcpLib/Dhcp6Parser.h"

#include <limits>

#include "DhcpLib/internal/Dhcp6Identifiers.h"
#include "DhcpLib/internal/FrameHeaders.h"
#include "DhcpLib/internal/Trace.h"
#include "Kcore/Assert.h"

namespace DhcpLib {

namespace {

constexpr char parseSignature[] = "bool DhcpLib::Dhcp6PacketParser::doParseDhcp6(const Ptr&, Kitnet::IntfId)";

constexpr U16 ipv6EtherType = 0x86dd;
constexpr U32 ipv6HeaderBytes = 40;  // RFC 8200, section 3
constexpr U32 ipv6NextHeaderAt = 6, ipv6SourceAt = 8, ipv6DestinationAt = 24;
constexpr U32 udpLengthAt = 4;

constexpr U32 setOf(std::initializer_list<Dhcp6MsgType> types) {
    U32 set = 0;
    for (const Dhcp6MsgType type : types) set |= 1u << static_cast<U32>(type);
    return set;
}
using enum Dhcp6MsgType;
constexpr U32 clientMsgs = setOf({solicit, request, renew, rebind, release, infoRequest});
// Clients send confirm and decline, too (docs/compatibility.md#client-message-set).
constexpr U32 otherMsgs = setOf({advertise, confirm, reply, decline, reconfigure});
constexpr U32 relayMsgs = setOf({relayForward, relayReply});

const Kcore::ModuleTypes<Dhcp6PortInfo, Dhcp6PacketParser> registration{"DhcpLib/Dhcp6Parser"};

template <class... Args>
[[gnu::always_inline]] inline void trace(int level, Tyk::TraceText<std::type_identity_t<Args>...> text,
                                         const Args&... args) {
    Tyk::fmtrace(traceHandle(), level, {nullptr, text.caller()}, text, args...);
}

/// Traces the result of decoding the remote-id's sub-option. Log readers rely on the spelling
/// (docs/compatibility.md#trace-texts).
void tracePortInfo(const RemoteIdFields& fields, const Dhcp6RemoteIdentifier& id) {
    const std::string_view text = fields.subOptValue;
    switch (id.portInfo) {
        case Dhcp6PortInfo::decoded:
            trace(TraceLevel::verbose, " intfVlanStr {} decodedIntf {}decodedVlanId {}, Decoded VlanId: {}", text,
                  id.l2IntfId, VlanText{text}, id.vlanId);
            return;
        case Dhcp6PortInfo::noColon:
            trace(TraceLevel::failure, "intrfaceVlanTlv is in unknown format, colon is missing");
            break;
        case Dhcp6PortInfo::colonAtEdge:
            trace(TraceLevel::failure, "Invalid interfaceVlan format, start/ends with ':' ");
            break;
        case Dhcp6PortInfo::invalidVlan:
            trace(TraceLevel::failure, "intrfaceVlan has invalid Vlan Id, VlanId in remoteId: {}", VlanText{text});
            break;
        case Dhcp6PortInfo::invalidInterface:
            trace(TraceLevel::failure, "interfaceVlan has invalid interface: {}", intfTextOf(text));
            break;
        case Dhcp6PortInfo::noPortText:
            break;
    }
    trace(TraceLevel::failure, "Can't parse L2 Port info subOptType: {} subOptValue: {}", fields.subOptType, text);
}

}  // namespace

Dhcp6PacketParser::Dhcp6PacketParser(const Kcore::CharRange&) {
    Kcore::assertionFailed("No String constructor for Dhcp6PacketParser",
                           "DhcpLib::Dhcp6PacketParser::Dhcp6PacketParser(Kcore::CharRange)", "DhcpLib/Dhcp6Parser");
}

// Flattened: with all steps in one function it takes a tenth fewer instructions.
[[gnu::flatten]] bool Dhcp6PacketParser::doParseDhcp6(const PktPtr& pkt, Kitnet::IntfId srcIntfName) {
    trace(TraceLevel::verbose, "{} for srcIntf: {}", std::string_view(parseSignature), srcIntfName);
    rejection_ = FrameRejection::none;
    U16 ipAt = 0;
    if (!parseEthernet(pkt.get(), srcIntfName, bridgingConfig_.get(), ether_, ipAt, rejection_)) return false;
    if (ether_.etherType != ipv6EtherType) {
        trace(TraceLevel::rejection, "Ethernet payload is not IPv6, Ethertype: {}", ether_.etherType);
        return refuse(FrameRejection::notIp);
    }
    isIp6_ = true;
    const Wire::ByteView bytes(pkt.get());
    const U32 udpAt = ipAt + ipv6HeaderBytes, msgAt = udpAt + udpHeaderBytes;
    if (!parseIp6Hdr(bytes) || !parseUdpHdr(bytes, udpAt) || !parseMsgHdr(bytes, msgAt)) return false;
    dhcp6OptionsOffset_ = packetPosition(msgAt + Dhcp6Const::reghdr_size);
    parseOptions(bytes);
    return true;
}

bool Dhcp6PacketParser::parseIp6Hdr(Wire::ByteView bytes) {
    const U32 ipAt = ether_.etherHdrLen, udpAt = ipAt + ipv6HeaderBytes;
    if (!hasHeader(bytes, ipAt, ipv6HeaderBytes, "IPv6")) return refuse(FrameRejection::shortIpHeader);
    ipProtocol_ = bytes.load<Kitnet::IpProtocolNumber>(ipAt + ipv6NextHeaderAt);
    srcIp6_ = bytes.load<Kitnet::Ip6Addr>(ipAt + ipv6SourceAt);
    dstIp6_ = bytes.load<Kitnet::Ip6Addr>(ipAt + ipv6DestinationAt);
    ip6HdrLen_ = ipv6HeaderBytes;
    trace(TraceLevel::verbose, "Ethernet payload is IPv6, protocol: {}IP6 HdrLen {}", ipProtocol_, ip6HdrLen_);
    const bool isUdp = ipProtocol_.value() == udpProtocol;
    if (isUdp && bytes.has(udpAt, udpHeaderBytes)) return true;
    trace(TraceLevel::rejection, "{}{}, remaining{}", notUdpText, ipProtocol_, bytes.from(udpAt));
    return refuse(isUdp ? FrameRejection::shortUdpHeader : FrameRejection::notUdp);
}

bool Dhcp6PacketParser::parseUdpHdr(Wire::ByteView bytes, U32 udpAt) {
    isUdp_ = true;
    udp_.src = bytes.load<Kitnet::UdpPort>(udpAt);
    udp_.dst = bytes.load<Kitnet::UdpPort>(udpAt + U32{sizeof(Kitnet::UdpPort)});
    udpLen_ = bytes.load<U16>(udpAt + udpLengthAt);
    if (areDhcpPorts(udp_, udpLen_, Constants::dhcp6ServerPort, Constants::dhcp6ClientPort)) return true;
    return refuse(FrameRejection::notDhcpPort);
}

bool Dhcp6PacketParser::parseMsgHdr(Wire::ByteView bytes, U32 msgAt) {
    if (!bytes.has(msgAt, Dhcp6Const::reghdr_size)) {
        trace(TraceLevel::rejection, "Can't parse DHCP6 payload, remaining:{}", bytes.from(msgAt));
        return refuse(FrameRejection::shortMessageHeader);
    }
    isDhcp6_ = true;
    const U8 type = bytes.load<U8>(msgAt + Dhcp6Const::msgtype_offset);
    dhcp6MsgType_ = static_cast<Dhcp6MsgType>(type);
    dhcp6Xid_ = bytes.load<Dhcp6Xid>(msgAt + Dhcp6Const::xid_offset);
    trace(TraceLevel::verbose, "UDP payload is DHCP6, DHCP6 Msg type: {}, XID: {}", dhcp6MsgType_, dhcp6Xid_);
    const U32 bit = type < std::numeric_limits<U32>::digits ? 1u << type : 0;
    if (((clientMsgs | otherMsgs) & bit) == 0) {
        trace(TraceLevel::rejection, "Received Invalid MSG type{}", dhcp6MsgType_);
        return refuse((relayMsgs & bit) != 0 ? FrameRejection::relayMessage : FrameRejection::unknownMessageType);
    }
    dhcp6ClientMsg_ = (clientMsgs & bit) != 0;
    return true;
}

/// Looks up the two options as Dhcp6Options would, without creating views.
void Dhcp6PacketParser::parseOptions(Wire::ByteView bytes) {
    Dhcp6OptionPlace cId, rId;
    walkDhcp6Options(bytes, dhcp6OptionsOffset_, [&](const auto& head) {
        const bool isClientId = head.code == static_cast<U16>(Dhcp6OptionType::clientId);
        if (!isClientId && head.code != static_cast<U16>(Dhcp6OptionType::remoteId)) return true;
        Dhcp6OptionPlace& place = isClientId ? cId : rId;
        if (!place.present) place = {true, head.len, head.at};
        return !(cId.present && rId.present);
    });
    cId_.option.present = cId.present;
    if (!cId.present) {
        trace(TraceLevel::verbose, "ClientId option doesn't exist");
        return;
    }
    cId_.option = cId;
    parseClientId(bytes);
    rId_.option.present = rId.present;
    if (!rId.present) {
        trace(TraceLevel::verbose, "Option-37 doesn't exist");
        return;
    }
    rId_.option = rId;
    parseRemoteId(bytes);
}

void Dhcp6PacketParser::parseClientId(Wire::ByteView bytes) { readClientIdentifier(bytes, cId_); }

void Dhcp6PacketParser::parseRemoteId(Wire::ByteView bytes) { tracePortInfo(readRemoteIdentifier(bytes, rId_), rId_); }

}  // namespace DhcpLib
