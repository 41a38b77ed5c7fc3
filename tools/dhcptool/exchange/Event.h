#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "Kitnet/EthAddr.h"
#include "Kitnet/IpGenAddr.h"
#include "common/Nanoseconds.h"
#include "exchange/MessageKind.h"

namespace DhcpTool {

/// An address or a delegated prefix that a server assigns or a client names.
struct Assigned {
    Kitnet::IpGenAddr address;
    std::optional<U8> prefixBits;  ///< unset for an address
    std::optional<U32> seconds;    ///< lease time or valid lifetime; unset if the message does not say it

    friend bool operator==(const Assigned&, const Assigned&) = default;
};

/// A DHCPv6 status code other than success (RFC 8415, section 21.13).
struct StatusCode {
    U16 code;
    std::string_view text;
};

/// What following an exchange needs of one message. A relayed DHCPv6 message counts as the message inside it. Texts
/// point into the frame.
struct Event {
    Nanoseconds time{};  ///< since 1970
    MessageKind kind{};
    /// 0 on the client's link. Behind a relay agent larger, the more the nearer to the server.
    U8 relays = 0;
    U32 xid = 0;
    /// Identifies the client among those of its protocol: hardware address, DUID, or what stands for them.
    std::string_view client;

    std::string_view clientId;  ///< client identifier or DUID
    std::optional<Kitnet::EthAddr> clientMac;
    std::string_view hostname;
    U16 vlan = 0;
    std::string_view port;       ///< circuit-id or interface-id
    std::string_view interface;  ///< on which the frame arrived: name or number; empty if it is not known

    Kitnet::EthAddr sourceMac;
    Kitnet::IpGenAddr source, destination;
    Kitnet::IpGenAddr relay;    ///< giaddr or link-address; unset without a relay agent
    bool relayInfo = false;     ///< there is an option 82 or an interface-id
    std::string_view serverId;  ///< server identifier; for BOOTP the address of the server
    Kitnet::IpGenAddr ciaddr;   ///< the address that the client uses; unset without one
    bool rapidCommit = false;
    bool selected = true;  ///< the message passes the user's filter

    std::vector<Assigned> assigned;    ///< in a request those that the client asks for
    std::vector<StatusCode> statuses;  ///< at all levels of a DHCPv6 message
    std::string_view text;             ///< message of the server (DHCPv4 option 56)
};

}  // namespace DhcpTool
