#pragma once

#include "DhcpLib/Dhcp6Hdr/RemoteId.h"
#include "DhcpLib/Dhcp6Identifiers.h"

namespace DhcpLib {

/// Reads the client identifier at `id.option` into the other fields; those that it does not have keep their values.
void readClientIdentifier(Wire::ByteView bytes, Dhcp6ClientIdentifier& id);
/// Likewise for the remote-id; returns the fields that were decoded, for tracing.
RemoteIdFields readRemoteIdentifier(Wire::ByteView bytes, Dhcp6RemoteIdentifier& id);

/// The two sides of the first colon in the text "<interface>:<VLAN>". Requires: a colon.
struct PortText {
    explicit PortText(std::string_view text)
        : intf(text.substr(0, text.find(':'))), vlan(text.substr(text.find(':') + 1)) {}

    std::string_view intf;
    std::string_view vlan;
};

}  // namespace DhcpLib
