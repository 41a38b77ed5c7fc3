#pragma once

#include <vector>

#include "DhcpLib/Dhcp6Hdr/IdentityAssociation.h"

namespace DhcpLib {

/// Position of a DHCPv6 message in a packet: from its message type up to `end`, exclusive.
struct Dhcp6MessagePlace {
    U16 offset = 0;
    U32 end = 0;

    friend bool operator==(const Dhcp6MessagePlace&, const Dhcp6MessagePlace&) = default;
};

/// All options of a message in wire order, repeated codes included. The list ends before an option that passes the end
/// of the message, the end of the packet or position 65535, and before code 0.
DHCPLIB_EXPORT std::vector<Dhcp6Option::Ptr> dhcp6MessageOptions(const PktPtr& pkt, const Dhcp6MessagePlace& message);
/// The options nested in the data of `opt` from option offset `first` on (RFC 8415, section 21), listed as those of a
/// message.
DHCPLIB_EXPORT std::vector<Dhcp6Option::Ptr> dhcp6NestedOptions(const Dhcp6OptionPtr& opt, U8 first);
/// The options nested in an IA_NA or IA_PD.
DHCPLIB_EXPORT std::vector<Dhcp6Option::Ptr> dhcp6NestedOptions(const Dhcp6Ia& ia);

/// The message at `outermost` and those relayed in it, outermost first: each relay message is followed by the message
/// in its first relay message option (RFC 8415, section 19). Stops at depth dhcp6HopCountLimit. If the chain is longer,
/// or a relay message contains no whole message, the last element is a relay message. Empty if `outermost` has no whole
/// header.
DHCPLIB_EXPORT std::vector<Dhcp6MessagePlace> dhcp6RelayChain(const PktPtr& pkt, const Dhcp6MessagePlace& outermost);

/// Whether a client/server or relay message starts at `offset` and its options fill the packet exactly. Otherwise false
/// after a trace line.
DHCPLIB_EXPORT bool dhcp6OptionBasicCheck(const PktPtr& pkt, U32 offset);

}  // namespace DhcpLib
