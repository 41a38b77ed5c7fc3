#include "DhcpLib/internal/FrameHeaders.h"

#include "DhcpLib/internal/Trace.h"

namespace DhcpLib {

namespace {

constexpr U32 macsBytes = 12;  // both MAC addresses; EtherType or tag follows
constexpr U32 etherHeaderBytes = 14;
constexpr U32 tagBytes = 4;
constexpr U16 dot1qTpid = 0x8100;  // IEEE 802.1Q
constexpr U16 vlanMask = 0x0fff;

/// How the receiving port assigns a VLAN.
struct PortRules {
    Bridging::VlanId nativeVlan;
    bool ignoresTags = false;
};

bool findPortRules(const Kitnet::IntfId& srcIntf, const Bridging::Config* config, PortRules& rules) {
    if (srcIntf.isEmpty()) return true;
    const Bridging::SwitchIntfConfig* entry = config != nullptr ? config->switchIntfConfig(srcIntf).get() : nullptr;
    if (entry == nullptr) {
        Tyk::fmtrace(traceHandle(), TraceLevel::failure, {},
                     "Missing switchIntfConfig for {}, cannot find Native VlanId, aborting parse", srcIntf);
        return false;
    }
    rules = {entry->nativeVlan(), entry->switchportMode() == Bridging::SwitchportMode::dot1qTunnel};
    Tyk::fmtrace(traceHandle(), TraceLevel::verbose, {}, "Native VlanId is {} for intf: {}", rules.nativeVlan,
                 ShortName{srcIntf});
    return true;
}

void setUntagged(EthernetFields& fields, Bridging::VlanId nativeVlan) {
    Tyk::fmtrace(traceHandle(), TraceLevel::verbose, {}, "Untagged packet, using native VlanId: {}", nativeVlan);
    fields.tagged = false;
    fields.vlanId = nativeVlan;
}

void setTagged(EthernetFields& fields, U16 tci, Bridging::VlanId nativeVlan, FrameRejection& rejection) {
    const unsigned vid = tci & vlanMask;
    if (vid > Bridging::VlanIdOrNone::maxValue) rejection = FrameRejection::reservedVlan;  // the next line throws
    const Bridging::VlanIdOrNone vlan(vid);
    if (vlan.value() == 0)
        Tyk::fmtrace(traceHandle(), TraceLevel::verbose, {},
                     "Tagged packet with no VlanId in packet, using native VlanId: {}", nativeVlan);
    else
        Tyk::fmtrace(traceHandle(), TraceLevel::verbose, {}, "Tagged packet, VlanId in packet: {}", vlan);
    fields.tagged = true;
    fields.vlanId = vlan.value() == 0 ? nativeVlan : Bridging::VlanId(vlan);
}

}  // namespace

void traceShortHeader(std::string_view header, U32 bytes) {
    Tyk::fmtrace(traceHandle(), TraceLevel::rejection, {}, "Frame too short for {} header, bytes at hand: {}", header,
                 bytes);
}

bool parseEthernet(const Kitnet::Pkt* pkt, const Kitnet::IntfId& srcIntf, const Bridging::Config* config,
                   EthernetFields& fields, U16& payload, FrameRejection& rejection) {
    PortRules port;
    if (!findPortRules(srcIntf, config, port)) {
        rejection = FrameRejection::portNotConfigured;
        return false;
    }
    const Wire::ByteView bytes(pkt);
    const bool outOfBand = pkt != nullptr && pkt->vlanTagPresent();
    const bool inFrame = !outOfBand && bytes.load<U16>(macsBytes) == dot1qTpid;
    const U32 headerBytes = etherHeaderBytes + (inFrame ? tagBytes : 0);
    if (!hasHeader(bytes, 0, headerBytes, "Ethernet")) {
        rejection = FrameRejection::shortEthernetHeader;
        return false;
    }

    payload = static_cast<U16>(headerBytes);
    fields.dstMac = bytes.load<Kitnet::EthAddr>(0);
    fields.srcMac = bytes.load<Kitnet::EthAddr>(sizeof(Kitnet::EthAddr));
    fields.etherType = bytes.load<U16>(headerBytes - U32{sizeof(U16)});
    fields.etherHdrLen = headerBytes;
    const bool hasTag = inFrame || (outOfBand && pkt->vlanTagTpid() == dot1qTpid);
    if (hasTag)
        Tyk::fmtrace(traceHandle(), TraceLevel::verbose, {}, "Tagged packet with Ethertype: {}", fields.etherType);
    else
        Tyk::fmtrace(traceHandle(), TraceLevel::verbose, {}, "Untagged packet with Ethertype: {}", fields.etherType);
    if (hasTag && !port.ignoresTags)
        setTagged(fields, inFrame ? bytes.load<U16>(etherHeaderBytes) : pkt->vlanTagTci(), port.nativeVlan, rejection);
    else
        setUntagged(fields, port.nativeVlan);
    return true;
}

bool areDhcpPorts(const UdpPorts& ports, U32 headerLen, U16 firstPort, U16 secondPort) {
    Tyk::fmtrace(traceHandle(), TraceLevel::verbose, {},
                 "IP payload is UDP, UDP src port: {}, UDP dst port: {}, UDP header len: {}", ports.src, ports.dst,
                 headerLen);
    if (ports.dst.value() == firstPort || ports.dst.value() == secondPort) return true;
    Tyk::fmtrace(traceHandle(), TraceLevel::rejection, {},
                 "UDP payload is not DHCP packet, UDP src port: {}, UDP dst port: {}", ports.src, ports.dst);
    return false;
}

}  // namespace DhcpLib
