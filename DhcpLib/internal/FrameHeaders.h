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

/// Whether the packet has `needed` bytes at `pos`; if not, traces the header's name and the bytes that are there.
bool hasHeader(Wire::ByteView bytes, U32 pos, U32 needed, std::string_view header);

/// Reads the Ethernet header at the packet's start and resolves the VLAN. An out-of-band tag is used rather than one
/// inside the frame, only 0x8100 is a tag, there is no second one, and a port in dot1qTunnel mode ignores tags.
/// `payload` becomes the position behind the header. False, after a trace line and with `rejection` set, for an
/// interface without configuration and for a frame that is too short; no other output is set then. Raises
/// Kcore::RangeException for the VLAN 4095, with `rejection` set to reservedVlan.
bool parseEthernet(const Kitnet::Pkt& pkt, const Kitnet::IntfId& srcIntf, const Bridging::Config* config,
                   EthernetFields& fields, U16& payload, FrameRejection& rejection);

/// Whether `dst` is one of the two ports; traces the ports.
bool areDhcpPorts(const UdpPorts& ports, U32 headerLen, U16 firstPort, U16 secondPort);

}  // namespace DhcpLib
