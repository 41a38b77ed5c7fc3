#pragma once

#include "Bridging/Config.h"
#include "DhcpLib/FrameFields.h"
#include "DhcpLib/FrameRejection.h"
#include "DhcpLib/Wire.h"
#include "Kitnet/IntfId.h"

namespace DhcpLib {

inline constexpr std::string_view notUdpText = "IP payload is not UDP, IP Protocol: ";

/// An interface's short name as a trace argument: formatted only when the line is wanted.
struct ShortName {
    const Kitnet::IntfId& intf;
    void appendText(std::string& out) const { intf.shortName().appendText(out); }
};

/// Traces the header's name and the number of bytes that there are.
[[gnu::cold]] void traceShortHeader(std::string_view header, U32 bytes);
/// Whether `needed` bytes exist at `pos`. If not, traces it.
inline bool hasHeader(Wire::ByteView bytes, U32 pos, U32 needed, std::string_view header) {
    if (bytes.has(pos, needed)) [[likely]]
        return true;
    traceShortHeader(header, bytes.from(pos));
    return false;
}

/// Reads the Ethernet header at the packet's start and determines the VLAN. A tag beside the frame wins over one in it;
/// only TPID 0x8100 is a tag; there is no second one; a port in mode dot1qTunnel ignores tags
/// (docs/compatibility.md#one-tag-of-0x8100). Sets `payload` to the position after the header. If the interface has no
/// configuration, or the frame is null or too short, traces a line, sets only `rejection` and returns false. For VLAN
/// 4095 sets `rejection` to reservedVlan and throws Kcore::RangeException.
bool parseEthernet(const Kitnet::Pkt* pkt, const Kitnet::IntfId& srcIntf, const Bridging::Config* config,
                   EthernetFields& fields, U16& payload, FrameRejection& rejection);

/// Traces the ports. Returns whether the destination port is one of the two.
bool areDhcpPorts(const UdpPorts& ports, U32 headerLen, U16 firstPort, U16 secondPort);

}  // namespace DhcpLib
