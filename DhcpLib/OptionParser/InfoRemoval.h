#pragma once

#include "DhcpLib/OptionParser/OptionLookup.h"

namespace DhcpLib {

/// Result of removeInfoOption.
struct InfoRemoval {
    AreaState area = AreaState::wellFormed;  ///< for any other state the call was refused and the packet is unchanged
    U32 options = 0;                         ///< number of options 82 that were removed

    friend bool operator==(const InfoRemoval&, const InfoRemoval&) = default;
    static constexpr auto declaration() {
        return Kcore::declare("InfoRemoval", Kcore::attribute("area", &InfoRemoval::area),
                              Kcore::attribute("options", &InfoRemoval::options));
    }
};

/// Removes every option 82 (RFC 3046) from the message whose BOOTP header starts at `offset`, so that a relay agent can
/// insert its own instead of the client's. Later options, including the end option, move down. The packet keeps its
/// size. All bytes after the end option become pads (0), also if the only option 82 is there, since some readers
/// continue after the end option. Options in the `sname` and `file` fields (RFC 2132, section 9.3) are ignored.
/// Changes nothing if there is no option 82. Refuses, and changes nothing, if the options area is malformed.
DHCPLIB_EXPORT InfoRemoval removeInfoOption(const PktPtr& pkt, U32 offset);

}  // namespace DhcpLib
