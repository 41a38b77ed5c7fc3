#include "DhcpLib/Dhcp6Identifiers.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "DhcpLib/Dhcp6Hdr/internal/WholeOptions.h"
#include "DhcpLib/internal/Dhcp6Identifiers.h"

namespace DhcpLib {

namespace {

constexpr U16 firstVlan = 1, lastVlan = 4094;

constexpr bool isBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

/// Reads a decimal number like strtoull: optional blanks and sign, then digits. Returns 0 if there are no digits and
/// the largest number on overflow; a minus sign negates modulo 2^64 (docs/compatibility.md#vlan-text-as-strtoul).
U64 leadingNumber(std::string_view text) {
    const char* const end = text.data() + text.size();
    const char* at = std::find_if_not(text.data(), end, isBlank);
    const bool negative = at != end && *at == '-';
    if (at != end && (*at == '-' || *at == '+')) ++at;
    U64 number = 0;
    if (std::from_chars(at, end, number).ec == std::errc::result_out_of_range) return std::numeric_limits<U64>::max();
    return negative ? -number : number;
}

Dhcp6OptionPlace placeOf(const Dhcp6Option& option) { return {true, option.len(), option.offset()}; }

Wire::ByteView upToEndOf(const Dhcp6Option& option) {
    return upTo(option.pkt(), U32{option.offset()} + Dhcp6Const::optdata_offset + option.len());
}

}  // namespace

Dhcp6PortInfo decodeIntfVlan(std::string_view text, Kitnet::IntfId& intf, Bridging::VlanId& vlanId) {
    const std::size_t colon = text.find(':');
    if (colon == text.npos) return Dhcp6PortInfo::noColon;
    if (colon == 0 || text.back() == ':') return Dhcp6PortInfo::colonAtEdge;
    const U64 vlan = leadingNumber(text.substr(colon + 1));
    if (vlan < firstVlan || vlan > lastVlan) return Dhcp6PortInfo::invalidVlan;
    if (!Kitnet::IntfId::parse(text.substr(0, colon), &intf)) return Dhcp6PortInfo::invalidInterface;
    vlanId.valueIs(static_cast<unsigned>(vlan));
    return Dhcp6PortInfo::decoded;
}

Dhcp6ClientIdentifier dhcp6ClientIdentifier(const Dhcp6OptionPtr& opt) {
    Dhcp6ClientIdentifier id;
    if (!opt) return id;
    id.option = placeOf(*opt);
    readClientIdentifier(upToEndOf(*opt), id);
    return id;
}

Dhcp6RemoteIdentifier dhcp6RemoteIdentifier(const Dhcp6OptionPtr& opt) {
    Dhcp6RemoteIdentifier id;
    if (!opt) return id;
    id.option = placeOf(*opt);
    readRemoteIdentifier(upToEndOf(*opt), id);
    return id;
}

Dhcp6Identifiers dhcp6Identifiers(const PktPtr& pkt, const Dhcp6MessagePlace& message) {
    Dhcp6Identifiers found;
    for (const Dhcp6Option::Ptr& option : dhcp6MessageOptions(pkt, message)) {
        if (option->optType() == Dhcp6OptionType::clientId && !found.clientId.option.present)
            found.clientId = dhcp6ClientIdentifier(option);
        if (option->optType() == Dhcp6OptionType::remoteId && !found.remoteId.option.present)
            found.remoteId = dhcp6RemoteIdentifier(option);
    }
    return found;
}

}  // namespace DhcpLib
