#pragma once

#include "DhcpLib/OptionParser/OptionLookup.h"

namespace DhcpLib {

/// What removeInfoOption did.
struct InfoRemoval {
    AreaState area = AreaState::wellFormed;  ///< any other state: refused, and the packet is untouched
    U32 options = 0;                         ///< how many option 82 were removed

    friend bool operator==(const InfoRemoval&, const InfoRemoval&) = default;
};

/// Removes every option 82 (RFC 3046) from the message whose BOOTP header starts at `offset`, so that a relay agent can
/// insert its own in place of whatever the client sent. Works in place: the options behind a removed one move down, the
/// end option too. The packet keeps its size, and all bytes behind the end option become pads (0), also where the
/// only option 82 lies there: some readers go on behind the end option. Options in the `sname` and `file` fields
/// (RFC 2132, section 9.3) are not looked at.
/// Without an option 82 the packet stays as it is. Refuses, and changes nothing, where the options area is not
/// well-formed.
DHCPLIB_EXPORT InfoRemoval removeInfoOption(const PktPtr& pkt, U32 offset);

}  // namespace DhcpLib
