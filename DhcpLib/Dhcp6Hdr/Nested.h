#pragma once

#include <vector>

#include "DhcpLib/Dhcp6Hdr/IdentityAssociation.h"

namespace DhcpLib {

/// Position of a DHCPv6 message in a packet: from its message type up to `end`, exclusive.
struct Dhcp6MessagePlace {
    U16 offset = 0;  ///< of the message type
    U32 end = 0;     ///< after the last byte

    friend bool operator==(const Dhcp6MessagePlace&, const Dhcp6MessagePlace&) = default;
    static constexpr auto declaration() {
        return Kcore::declare("Dhcp6MessagePlace", Kcore::attribute("offset", &Dhcp6MessagePlace::offset),
                              Kcore::attribute("end", &Dhcp6MessagePlace::end));
    }
};

/// All options of a message in wire order, repeated codes included. The list ends before an option that passes the end
/// of the message, the end of the packet or position 65535, and before code 0.
DHCPLIB_EXPORT std::vector<Dhcp6Option::Ptr> dhcp6MessageOptions(const PktPtr& pkt, const Dhcp6MessagePlace& message);
/// The options nested in the data of `opt` from option offset `first` on (RFC 8415, section 21), listed as those of a
/// message.
DHCPLIB_EXPORT std::vector<Dhcp6Option::Ptr> dhcp6NestedOptions(const Dhcp6OptionPtr& opt, U8 first);
/// The options nested in an IA_NA or IA_PD.
DHCPLIB_EXPORT std::vector<Dhcp6Option::Ptr> dhcp6NestedOptions(const Dhcp6Ia& ia);

/// A message and the messages relayed inside it, outermost first: of each relay message, the one in its first relay
/// message option (RFC 8415, section 19). At most dhcp6HopCountLimit levels deep. A longer chain, or one whose last
/// relay message holds no whole message, ends with a relay message. Empty if `outermost` has no whole header, and for a
/// null packet.
DHCPLIB_EXPORT std::vector<Dhcp6MessagePlace> dhcp6RelayChain(const PktPtr& pkt, const Dhcp6MessagePlace& outermost);

}  // namespace DhcpLib
