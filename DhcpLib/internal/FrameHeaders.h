#pragma once

#include "Bridging/Config.h"
#include "DhcpLib/FrameFields.h"
#include "DhcpLib/Wire.h"
#include "Kitnet/IntfId.h"

namespace DhcpLib {

inline constexpr std::string_view notUdpText = "IP payload is not UDP, IP Protocol: ";

/// An interface's short name as a trace argument: worked out only when the line is wanted.
struct ShortName {
    const Kitnet::IntfId& intf;
    void appendText(std::string& out) const { intf.shortName().appendText(out); }
};

/// Whether `needed` bytes stand at `pos`; traces the header's name and what is at hand otherwise.
bool hasHeader(Wire::ByteView bytes, U32 pos, U32 needed, std::string_view header);

/// Walks the Ethernet header at the packet's start and resolves the VLAN: a tag delivered beside the frame goes before
/// one inside it, only 0x8100 is a tag, there is no second one, and a port in dot1qTunnel mode ignores tags.
/// `payload` becomes the position behind the header. False, after a trace line, for an interface without configuration
/// and for a frame that is too short; then nothing is set. Raises Kcore::RangeException for the VLAN 4095.
bool parseEthernet(const Kitnet::Pkt& pkt, const Kitnet::IntfId& srcIntf, const Bridging::Config* config,
                   EthernetFields& fields, U16& payload);

/// Traces the ports, and whether `dst` is one of the protocol's.
bool areDhcpPorts(const UdpPorts& ports, U32 headerLen, U16 firstPort, U16 secondPort);

}  // namespace DhcpLib
