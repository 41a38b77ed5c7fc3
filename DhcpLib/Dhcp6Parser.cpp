#include "DhcpLib/Dhcp6Parser.h"

#include <charconv>
#include <limits>

#include "DhcpLib/Dhcp6Hdr/RemoteId.h"
#include "DhcpLib/internal/FrameHeaders.h"
#include "DhcpLib/internal/Trace.h"

namespace DhcpLib {

namespace {

constexpr char parseSignature[] = "bool DhcpLib::Dhcp6PacketParser::doParseDhcp6(const Ptr&, Kitnet::IntfId)";

constexpr U16 ipv6EtherType = 0x86dd;
constexpr U32 ipv6HeaderBytes = 40;  // RFC 8200, section 3
constexpr U32 ipv6NextHeaderAt = 6, ipv6SourceAt = 8, ipv6DestinationAt = 24;
constexpr U32 udpLengthAt = 4;
constexpr U16 firstVlan = 1, lastVlan = 4094;

constexpr U32 setOf(std::initializer_list<Dhcp6MsgType> types) {
    U32 set = 0;
    for (const Dhcp6MsgType type : types) set |= 1u << static_cast<U32>(type);
    return set;
}
using enum Dhcp6MsgType;
constexpr U32 clientMsgs = setOf({solicit, request, renew, rebind, release, infoRequest});
// Clients send confirm and decline, too (docs/compatibility.md#client-message-set).
constexpr U32 otherMsgs = setOf({advertise, confirm, reply, decline, reconfigure});

const Kcore::ModuleTypes<Dhcp6PacketParser> registration{"DhcpLib/Dhcp6Parser"};

template <class... Args>
void trace(int level, Tyk::TraceText<std::type_identity_t<Args>...> text, const Args&... args) {
    Tyk::fmtrace(traceHandle(), level, {parseSignature}, text, args...);
}

/// As strtoul reads a decimal number: blanks, a sign, digits; no digits are 0, a number too large the largest, and a
/// minus sign turns the number into its complement.
unsigned long leadingNumber(std::string_view text) {
    const std::size_t start = std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size());
    const char* at = text.data() + start;
    const char* const end = text.data() + text.size();
    const bool negative = at != end && *at == '-';
    if (at != end && (*at == '-' || *at == '+')) ++at;
    unsigned long number = 0;
    if (std::from_chars(at, end, number).ec == std::errc::result_out_of_range)
        return std::numeric_limits<unsigned long>::max();
    return negative ? -number : number;
}

/// Reads "<interface>:<VLAN>"; the outputs are set only when both are good.
bool decodeIntfVlan(std::string_view intfVlanStr, Kitnet::IntfId& decodedIntf, Bridging::VlanId& decodedVlanId) {
    const std::size_t colon = intfVlanStr.find(':');
    if (colon == intfVlanStr.npos) {
        trace(TraceLevel::failure, "intrfaceVlanTlv is in unknown format, colon is missing");
        return false;
    }
    if (colon == 0 || intfVlanStr.back() == ':') {
        trace(TraceLevel::failure, "Invalid interfaceVlan format, start/ends with ':' ");
        return false;
    }
    const std::string_view intfText = intfVlanStr.substr(0, colon), vlanText = intfVlanStr.substr(colon + 1);
    const unsigned long vlan = leadingNumber(vlanText);
    if (vlan < firstVlan || vlan > lastVlan) {
        trace(TraceLevel::failure, "intrfaceVlan has invalid Vlan Id, VlanId in remoteId: {}", vlanText);
        return false;
    }
    if (!Kitnet::IntfId::parse(intfText, &decodedIntf)) {
        trace(TraceLevel::failure, "interfaceVlan has invalid interface: {}", intfText);
        return false;
    }
    decodedVlanId.valueIs(static_cast<unsigned>(vlan));
    trace(TraceLevel::verbose, " intfVlanStr {} decodedIntf {}decodedVlanId {}, Decoded VlanId: {}", intfVlanStr,
          decodedIntf, vlanText, decodedVlanId);
    return true;
}

}  // namespace

bool Dhcp6PacketParser::doParseDhcp6(const PktPtr& pkt, Kitnet::IntfId srcIntfName) {
    trace(TraceLevel::verbose, "{} for srcIntf: {}", std::string_view(parseSignature), srcIntfName);
    U16 ipAt = 0;
    if (!parseEthernet(*pkt, srcIntfName, bridgingConfig_.get(), ether_, ipAt)) return false;
    if (ether_.etherType != ipv6EtherType) {
        trace(TraceLevel::rejection, "Ethernet payload is not IPv6, Ethertype: {}", ether_.etherType);
        return false;
    }
    isIp6_ = true;
    const Wire::ByteView bytes(*pkt);
    const U32 udpAt = ipAt + ipv6HeaderBytes, msgAt = udpAt + udpHeaderBytes;
    if (!parseIp6Hdr(bytes) || !parseUdpHdr(bytes, udpAt) || !parseMsgHdr(bytes, msgAt)) return false;
    dhcp6OptionsOffset_ = packetPosition(msgAt + Dhcp6Const::reghdr_size);
    parseOptions(bytes);
    return true;
}

bool Dhcp6PacketParser::parseIp6Hdr(Wire::ByteView bytes) {
    const U32 ipAt = ether_.etherHdrLen, udpAt = ipAt + ipv6HeaderBytes;
    if (!hasHeader(bytes, ipAt, ipv6HeaderBytes, "IPv6")) return false;
    ipProtocol_ = bytes.load<Kitnet::IpProtocolNumber>(ipAt + ipv6NextHeaderAt);
    srcIp6_ = bytes.load<Kitnet::Ip6Addr>(ipAt + ipv6SourceAt);
    dstIp6_ = bytes.load<Kitnet::Ip6Addr>(ipAt + ipv6DestinationAt);
    ip6HdrLen_ = ipv6HeaderBytes;
    trace(TraceLevel::verbose, "Ethernet payload is IPv6, protocol: {}IP6 HdrLen {}", ipProtocol_, ip6HdrLen_);
    if (ipProtocol_.value() == udpProtocol && bytes.has(udpAt, udpHeaderBytes)) return true;
    trace(TraceLevel::rejection, "{}{}, remaining{}", notUdpText, ipProtocol_, bytes.from(udpAt));
    return false;
}

bool Dhcp6PacketParser::parseUdpHdr(Wire::ByteView bytes, U32 udpAt) {
    isUdp_ = true;
    udp_.src = bytes.load<Kitnet::UdpPort>(udpAt);
    udp_.dst = bytes.load<Kitnet::UdpPort>(udpAt + U32{sizeof(Kitnet::UdpPort)});
    udpLen_ = bytes.load<U16>(udpAt + udpLengthAt);
    return areDhcpPorts(udp_, udpLen_, Constants::dhcp6ServerPort, Constants::dhcp6ClientPort);
}

bool Dhcp6PacketParser::parseMsgHdr(Wire::ByteView bytes, U32 msgAt) {
    if (!bytes.has(msgAt, Dhcp6Const::reghdr_size)) {
        trace(TraceLevel::rejection, "Can't parse DHCP6 payload, remaining:{}", bytes.from(msgAt));
        return false;
    }
    isDhcp6_ = true;
    const U8 type = bytes.load<U8>(msgAt + Dhcp6Const::msgtype_offset);
    dhcp6MsgType_ = static_cast<Dhcp6MsgType>(type);
    dhcp6Xid_ = bytes.load<Dhcp6Xid>(msgAt + Dhcp6Const::xid_offset);
    trace(TraceLevel::verbose, "UDP payload is DHCP6, DHCP6 Msg type: {}, XID: {}", dhcp6MsgType_, dhcp6Xid_);
    const U32 bit = type < std::numeric_limits<U32>::digits ? 1u << type : 0;
    if (((clientMsgs | otherMsgs) & bit) == 0) {
        trace(TraceLevel::rejection, "Received Invalid MSG type{}", dhcp6MsgType_);
        return false;
    }
    dhcp6ClientMsg_ = (clientMsgs & bit) != 0;
    return true;
}

/// Finds what Dhcp6Options would hold of the two options, without making a view of any.
void Dhcp6PacketParser::parseOptions(Wire::ByteView bytes) {
    FoundOption cId, rId;
    walkDhcp6Options(bytes, dhcp6OptionsOffset_, [&](const auto& head) {
        if (head.code == static_cast<U16>(Dhcp6OptionType::clientId) && !cId.present) cId = {true, head.len, head.at};
        if (head.code == static_cast<U16>(Dhcp6OptionType::remoteId) && !rId.present) rId = {true, head.len, head.at};
        return !(cId.present && rId.present);
    });
    cId_.found.present = cId.present;
    if (!cId.present) {
        trace(TraceLevel::verbose, "ClientId option doesn't exist");
        return;
    }
    cId_.found = cId;
    parseClientId(bytes);
    rId_.found.present = rId.present;
    if (!rId.present) {
        trace(TraceLevel::verbose, "Option-37 doesn't exist");
        return;
    }
    rId_.found = rId;
    parseRemoteId(bytes);
}

void Dhcp6PacketParser::parseClientId(Wire::ByteView bytes) {
    const DuidFields duid = decodeDuid(bytes, packetPosition(cId_.found.offset), Dhcp6Const::optdata_offset);
    const U16 len = cId_.found.len;
    const bool isEn = duid.duidType == Dhcp6Const::duidType_en;
    if (!isEn && len != Dhcp6Const::duidll_size && len != Dhcp6Const::duidllt_size && len != Dhcp6Const::duiduuid_size)
        return;
    cId_.duidType = duid.duidType;
    cId_.duidHwType = duid.hardwareType;
    if (DuidFields::hasLinkLayer(duid.duidType)) cId_.duidllAddr = duid.llAddr;
    if (duid.duidType == Dhcp6Const::duidType_uuid) cId_.duidUuid = duid.uuid;
    if (isEn) {
        cId_.duidEntno = duid.entno;
        cId_.duidEntId = duid.entId;
    }
}

void Dhcp6PacketParser::parseRemoteId(Wire::ByteView bytes) {
    const U16 option = packetPosition(rId_.found.offset);
    const DuidFields duid = decodeDuid(bytes, option, Dhcp6Const::duid_offset);
    const RemoteIdFields remoteId = decodeRemoteId(bytes, option, rId_.found.len);
    rId_.entno = remoteId.entno;
    rId_.duidType = duid.duidType;
    rId_.duidHwType = duid.hardwareType;
    rId_.duidllAddr = duid.llAddr;
    rId_.l3IntfId = remoteId.interfaceId;
    l2PortInfoValid_ = remoteId.subOptType == Dhcp6Const::rIdSubOptIntfVlan &&
                       decodeIntfVlan(remoteId.subOptValue, rId_.l2IntfId, rId_.vlanId);
    if (!l2PortInfoValid_)
        trace(TraceLevel::failure, "Can't parse L2 Port info subOptType: {} subOptValue: {}", remoteId.subOptType,
              remoteId.subOptValue);
}

}  // namespace DhcpLib
