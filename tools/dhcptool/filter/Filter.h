#pragma once

#include <string>

#include "message/Message.h"

namespace DhcpTool {

/// Selects messages. A message must fulfil all conditions that are set.
struct Filter {
    std::optional<Kitnet::EthAddr> mac;   ///< the client's, or source or destination of the frame
    std::optional<Kitnet::IpGenAddr> ip;  ///< anywhere in the message or its IP header
    std::optional<U32> xid;
    std::string type;  ///< as typeNames() has it, or with "dhcp" in front; empty for all types
    std::optional<unsigned> vlan;
    std::optional<std::string> circuitId;     ///< or interface-id: the bytes
    std::optional<std::string> duid;          ///< of client or server: the bytes
    std::optional<Kitnet::IpGenAddr> server;  ///< server identifier, or address of the server in the IP header

    bool isEmpty() const;
    bool matches(const Message& message) const;
};

/// The names that Filter::type can have: "discover", "solicit", "bootp bootpreq".
std::vector<std::string> typeNames();

}  // namespace DhcpTool
