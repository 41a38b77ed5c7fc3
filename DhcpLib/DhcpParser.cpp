#include "DhcpLib/DhcpParser.h"

#include <algorithm>
#include <array>

#include "DhcpLib/OptionParser/internal/InfoReader.h"
#include "DhcpLib/OptionParser/internal/LeaseQueryReader.h"
#include "DhcpLib/OptionParser/internal/ProfilingReader.h"
#include "DhcpLib/internal/FrameHeaders.h"
#include "DhcpLib/internal/Trace.h"
#include "Kitnet/IpHdr.h"

namespace DhcpLib {

namespace {

constexpr char parseSignature[] = "bool DhcpLib::PacketParser::doParse(const Ptr&, Kitnet::IntfId, bool)";
constexpr char ethSignature[] = "bool DhcpLib::PacketParser::doParseEthHdr(const Ptr&, Kitnet::IntfId, bool)";
constexpr char ipSignature[] = "bool DhcpLib::PacketParser::doParseIpHdr(const Ptr&)";
constexpr char udpSignature[] = "bool DhcpLib::PacketParser::doParseUdpHdr(const Ptr&)";

constexpr U16 ipv4EtherType = 0x0800;
constexpr U32 ipv4FixedBytes = 20;  // RFC 791, section 3.1
constexpr U32 ipv4ProtocolAt = 9, ipv4SourceAt = 12, ipv4DestinationAt = 16;

const Kcore::ModuleTypes<FrameRejection, PacketParser> registration{"DhcpLib/DhcpParser"};

template <class... Args>
[[gnu::always_inline]] inline void trace(int level, Tyk::TraceText<std::type_identity_t<Args>...> text,
                                         const Args&... args) {
    Tyk::fmtrace(traceHandle(), level, {nullptr, text.caller()}, text, args...);
}

}  // namespace

PacketParser::PacketParser(const Kcore::CharRange&) {
    Kcore::assertionFailed("No String constructor for PacketParser - has collection",
                           "DhcpLib::PacketParser::PacketParser(Kcore::CharRange)", "DhcpLib/DhcpParser");
}

// Flattened: with all steps in one function it takes a tenth fewer instructions.
[[gnu::flatten]] bool PacketParser::doParse(const PktPtr& pkt, Kitnet::IntfId srcIntfName, bool dhcpHdrOnly) {
    trace(TraceLevel::verbose, "{}for srcIntf: {} dhcpHdrOnly: {}", std::string_view(parseSignature),
          ShortName{srcIntfName}, dhcpHdrOnly);
    const Wire::ByteView bytes(pkt.get());
    offset_ = 0;
    rejection_ = FrameRejection::none;
    if (!dhcpHdrOnly && !(parseEthHdr(pkt.get(), srcIntfName, false) && parseIpHdr(bytes) && parseUdpHdr(bytes)))
        return false;
    if (!parseBootpHdr(bytes)) return false;
    // Not `offset_`: with `dhcpHdrOnly` these lengths are those of the previous parse
    // (docs/compatibility.md#header-only-uses-old-lengths).
    return parseOptions(OptionIndex(bytes, ipHdrLen_ + ether_.etherHdrLen + udpHdrLen_));
}

bool PacketParser::doParseEthHdr(const PktPtr& pkt, Kitnet::IntfId srcIntfName, bool resetOffset) {
    rejection_ = FrameRejection::none;
    return parseEthHdr(pkt.get(), srcIntfName, resetOffset);
}

bool PacketParser::doParseIpHdr(const PktPtr& pkt) {
    rejection_ = FrameRejection::none;
    return parseIpHdr(Wire::ByteView(pkt.get()));
}

bool PacketParser::doParseUdpHdr(const PktPtr& pkt) {
    rejection_ = FrameRejection::none;
    return parseUdpHdr(Wire::ByteView(pkt.get()));
}

bool PacketParser::parseEthHdr(const Kitnet::Pkt* pkt, const Kitnet::IntfId& srcIntf, bool resetOffset) {
    Tyk::fmtrace(traceHandle(), TraceLevel::verbose, {ethSignature}, "{}for srcIntf: {} resetOffset: {}",
                 std::string_view(ethSignature), srcIntf, resetOffset);
    if (resetOffset) offset_ = 0;
    if (!parseEthernet(pkt, srcIntf, bridgingConfig_.get(), ether_, offset_, rejection_)) return false;
    if (ether_.etherType == ipv4EtherType) return isIp_ = true;
    trace(TraceLevel::rejection, "Ethernet payload is not IP, Ethertype: {}", ether_.etherType);
    return refuse(FrameRejection::notIp);
}

bool PacketParser::parseIpHdr(Wire::ByteView bytes) {
    Tyk::fmtrace(traceHandle(), TraceLevel::verbose, {ipSignature}, "{}", std::string_view(ipSignature));
    const U32 headerBytes = Kitnet::IpHdr::headerBytes(bytes.load<U8>(offset_));
    // A header length below 20 is used as it is; the fields of the fixed part are read all the same.
    if (!hasHeader(bytes, offset_, std::max(headerBytes, ipv4FixedBytes), "IPv4"))
        return refuse(FrameRejection::shortIpHeader);
    ipProtocol_ = bytes.load<Kitnet::IpProtocolNumber>(offset_ + ipv4ProtocolAt);
    srcIp_ = bytes.load<Kitnet::IpAddr>(offset_ + ipv4SourceAt);
    dstIp_ = bytes.load<Kitnet::IpAddr>(offset_ + ipv4DestinationAt);
    ipHdrLen_ = headerBytes;
    offsetInc(static_cast<U16>(headerBytes));
    trace(TraceLevel::verbose, "Ethernet payload is IP, IP protocol: {}, IP header len: {}", ipProtocol_, ipHdrLen_);
    if (ipProtocol_.value() == udpProtocol) return isUdp_ = true;
    trace(TraceLevel::rejection, "{}{}", notUdpText, ipProtocol_);
    return refuse(FrameRejection::notUdp);
}

bool PacketParser::parseUdpHdr(Wire::ByteView bytes) {
    Tyk::fmtrace(traceHandle(), TraceLevel::verbose, {udpSignature}, "{}", std::string_view(udpSignature));
    if (!hasHeader(bytes, offset_, udpHeaderBytes, "UDP")) return refuse(FrameRejection::shortUdpHeader);
    udp_.src = bytes.load<Kitnet::UdpPort>(offset_);
    udp_.dst = bytes.load<Kitnet::UdpPort>(offset_ + sizeof(Kitnet::UdpPort));
    udpHdrLen_ = udpHeaderBytes;
    offsetInc(static_cast<U16>(udpHeaderBytes));
    if (!areDhcpPorts(udp_, udpHdrLen_, Constants::dhcpServerPort, Constants::dhcpClientPort))
        return refuse(FrameRejection::notDhcpPort);
    return isDhcp_ = true;
}

bool PacketParser::parseBootpHdr(Wire::ByteView bytes) {
    if (!hasHeader(bytes, offset_, sizeof(DhcpHdr), "BOOTP")) return refuse(FrameRejection::shortMessageHeader);
    const DhcpHdr header = bytes.load<DhcpHdr>(offset_);
    dhcpOpType_ = header.bootpOp();
    trace(TraceLevel::verbose, "UDP payload is DHCP, DHCP Op type: {}", dhcpOpType_);
    xid_ = header.xid();
    ciaddr_ = header.ciaddr();
    yiaddr_ = header.yiaddr();
    giaddr_ = header.giaddr();
    chaddr_ = header.chaddr();
    return true;
}

bool PacketParser::parseOptions(const OptionIndex& index) {
    dhcpMsgTypeOpt_ = 0;
    dhcpMsgType_ = messageTypeOf(index, dhcpMsgTypeOpt_);
    if (index.state() == AreaState::noCookie) {
        trace(TraceLevel::verbose, "UDP payload is BOOTP, No DHCP cookie present ");
        isDhcp_ = false;
        return true;
    }
    traceAreaFailure(index.state());
    if (!index.wellFormed()) {
        trace(TraceLevel::rejection, "DHCP packet option format is invalid");
        return refuse(index.state() == AreaState::noSpace ? FrameRejection::noOptionSpace
                                                          : FrameRejection::noEndOption);
    }
    takeLeaseQuery(index);
    parseInfoOption(index);
    takeProfiling(index);
    return true;
}

void PacketParser::takeLeaseQuery(const OptionIndex& index) {
    const LeaseQueryOptions options(index);
    leaseTimeExist_ = static_cast<bool>(options.leaseTime);
    leaseTime_ = LeaseQueryOptions::seconds(options.leaseTime);
    lastTransactionTimeExist_ = static_cast<bool>(options.lastTransactionTime);
    lastTransactionTime_ = LeaseQueryOptions::seconds(options.lastTransactionTime);
    serverIdExist_ = static_cast<bool>(options.serverId);
    serverId_ = options.serverId.valueOr(Kitnet::IpAddr());

    if (options.associatedIps) takeAssociatedIps(options);
}

/// Inserts in ascending order, whatever the order in the packet. Numbers are sorted faster than addresses.
void PacketParser::takeAssociatedIps(const LeaseQueryOptions& options) {
    std::array<U32, 255 / sizeof(Kitnet::IpAddr)> ips;
    auto end = ips.begin();
    options.forEachAssociatedIp([&end](const Kitnet::IpAddr& ip) { *end++ = ip.value(); });
    if (!std::is_sorted(ips.begin(), end)) std::sort(ips.begin(), end);
    std::for_each(ips.begin(), end, [this](U32 ip) { associatedIpsIs(Kitnet::IpAddr(ip)); });
}

void PacketParser::parseInfoOption(const OptionIndex& index) {
    using Code = DhcpInformationSubOptionType;
    InfoSubOptions found(index.bytes());
    if (!readInfoNew(index, found)) {
        trace(TraceLevel::failure, "Could not parse Dhcp packet for Option-82 information");
        return;
    }
    // The block's contents are not kept; reading it traces malformed data.
    if (const RawOption vendorSpecific = found[Code::vendorSpecificSubOption]) readVendorBlockNew(vendorSpecific);
    circuitId_ = bytesOrNone(found[Code::circuitId]);
    remoteId_ = bytesOrNone(found[Code::remoteIdOpt]);
    const RawOption override82 = found[Code::serverIdOverride];
    const auto overrideIp = override82 ? override82.load<Kitnet::IpAddr>() : Kitnet::IpAddr();
    if (!overrideIp.isAny()) {
        trace(TraceLevel::failure, "server ID override{}", overrideIp);
        serverId_ = overrideIp;
        serverIdExist_ = true;
    }
    if (circuitId_.empty() || remoteId_.empty())
        trace(TraceLevel::failure,
              "Option-82 information does not have CircuitId and/or RemoteId, CircuitId len: {}, RemoteId len: {}",
              circuitId_.size(), remoteId_.size());
}

void PacketParser::takeProfiling(const OptionIndex& index) {
    const ProfilingOptions options(index);
    hostname_ = bytesOrNone(options.hostName);
    paramReqList_ = decimalList(bytesOrNone(options.paramReqList));
    vendorClassId_ = bytesOrNone(options.vendorClassId);
}

}  // namespace DhcpLib
