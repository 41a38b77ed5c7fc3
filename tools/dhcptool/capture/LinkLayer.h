#pragma once

#include <optional>
#include <span>
#include <vector>

#include "Kcore/Types.h"

namespace DhcpTool {

using Kcore::U32;
using Kcore::U8;

/// A frame with an Ethernet header. `bytes` are the captured ones.
struct EthernetFrame {
    std::span<const U8> bytes;
    U32 sentBytes = 0;
    U32 ifIndex = 0;        ///< number of the interface on the host that captured it; 0 if the capture does not have it
    bool outgoing = false;  ///< that host sent it
};

/// Gives the frames of a capture an Ethernet header in place of the link header that they have.
class LinkLayer {
public:
    /// The kinds of link header, by the numbers that libpcap has for them (DLT_EN10MB and so on): Ethernet, Linux
    /// cooked capture (both versions), none in front of IP, and the address family (BSD loopback). None for others.
    static std::optional<LinkLayer> of(int linkType);

    /// The frame's captured bytes and the number of bytes that were sent, with the link header. The result is valid
    /// until the next call and as long as `bytes`. A frame that is cut within its link header has no bytes.
    ///
    /// A new Ethernet header has the sender's address if the capture has it, the broadcast address as destination if
    /// the frame was sent to all, and zeros for the addresses that are not known.
    EthernetFrame ethernet(std::span<const U8> bytes, U32 sentBytes);

private:
    enum class Kind : U8 { ethernet, cooked, cooked2, ip, family };

    LinkLayer(Kind kind, U32 headerBytes) : kind_(kind), headerBytes_(headerBytes) {}

    Kind kind_;
    U32 headerBytes_;
    std::vector<U8> frame_;
};

}  // namespace DhcpTool
