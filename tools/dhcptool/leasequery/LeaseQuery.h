#pragma once

#include <string>
#include <variant>

#include "DhcpLib/PacketView.h"
#include "Kitnet/EthAddr.h"
#include "Kitnet/IpAddr.h"

namespace DhcpTool {

/// The bytes of a client identifier, option 61.
struct ClientId {
    static constexpr std::size_t mostBytes = 255;

    std::string bytes;

    /// Reads pairs of hexadecimal digits, with or without colons between them. Throws Kcore::RangeException if the text
    /// has other characters, or not 1 to 255 pairs.
    static ClientId fromText(const std::string& text);
};

/// What a lease query asks for: a client, by its MAC address or its identifier, or an address.
using LeaseSubject = std::variant<Kitnet::EthAddr, ClientId, Kitnet::IpAddr>;

/// The DHCPLEASEQUERY (RFC 4388, section 6.2), starting at the BOOTP header.
DhcpLib::PktPtr leaseQueryFor(const LeaseSubject& subject, Kitnet::IpAddr giaddr, Kcore::U32 xid);

}  // namespace DhcpTool
