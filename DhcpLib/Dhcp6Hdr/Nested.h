#pragma once

#include <vector>

#include "DhcpLib/Dhcp6Hdr/IdentityAssociation.h"

namespace DhcpLib {

/// Where a DHCPv6 message lies in a packet: from its message type up to, and without, `end`.
struct Dhcp6MessagePlace {
    U16 offset = 0;
    U32 end = 0;

    friend bool operator==(const Dhcp6MessagePlace&, const Dhcp6MessagePlace&) = default;
};

/// The options of one message in the order of the wire, each of several of one code too. Only whole ones: the list ends
/// at one that passes the message's or the packet's end or position 65535, and at the code 0.
DHCPLIB_EXPORT std::vector<Dhcp6Option::Ptr> dhcp6MessageOptions(const PktPtr& pkt, const Dhcp6MessagePlace& message);
/// The options nested in the data of `opt` from option offset `first` on (RFC 8415, section 21), as those of a message.
DHCPLIB_EXPORT std::vector<Dhcp6Option::Ptr> dhcp6NestedOptions(const Dhcp6OptionPtr& opt, U8 first);
/// The options nested in an IA_NA or IA_PD.
DHCPLIB_EXPORT std::vector<Dhcp6Option::Ptr> dhcp6NestedOptions(const Dhcp6Ia& ia);

/// A message and, as long as the last one found is a relay message, the one in its first relay message option
/// (RFC 8415, section 19), outermost first. Goes at most dhcp6HopCountLimit deep: a chain that is longer, or has a
/// relay message without a whole message in it, ends with a relay message. Empty where `outermost` has no whole header.
DHCPLIB_EXPORT std::vector<Dhcp6MessagePlace> dhcp6RelayChain(const PktPtr& pkt, const Dhcp6MessagePlace& outermost);

/// Whether a client/server or relay message starts at `offset` whose options fill the packet exactly; false after a
/// trace line otherwise.
DHCPLIB_EXPORT bool dhcp6OptionBasicCheck(const PktPtr& pkt, U32 offset);

}  // namespace DhcpLib
