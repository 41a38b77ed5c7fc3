#pragma once

#include <string_view>

#include "Kcore/Types.h"

namespace DhcpTool {

using Kcore::U16;
using Kcore::U32;

/// How the data of an option is laid out.
enum class Layout {
    hex,
    text,
    textOrHex,  ///< an identifier that may be text or binary
    empty,      ///< the option's presence says all
    flag,       ///< 1 byte
    number8,
    number16,
    number32,
    seconds,       ///< 4 bytes
    centiseconds,  ///< 2 bytes, in 10 ms
    codes8,        ///< list of option codes of 1 byte
    codes16,
    address,       ///< IPv4
    addresses,     ///< one or more
    addressPairs,  ///< IPv4, address and mask or gateway
    address6,
    addresses6,
    messageType,  ///< DHCPv4
    clientId,     ///< DHCPv4: hardware type and address, or another identifier (RFC 2132, section 9.14)
    fqdn,         ///< DHCPv4: flags, two codes, name (RFC 4702)
    relayInfo,    ///< sub-options
    vss,          ///< type of virtual subnet selection, and name or identifier (RFC 6607)
    duid,
    association,    ///< IA_NA and IA_PD
    associationTa,  ///< IA_TA
    leaseAddress,
    leasePrefix,
    status,
    relayMessage,
    interfaceId,
    remoteId,       ///< enterprise number, identifier
    userClass,      ///< items of 2 bytes length and data
    vendorClass,    ///< enterprise number, items of 2 bytes length and data
    vendorOptions,  ///< enterprise number, options
    linkLayer,      ///< hardware type, address
    fqdn6,          ///< flags, name in DNS format
    domains,        ///< names in DNS format
    messageType6,
};

/// An option as it is named in all output of dhcptool.
struct OptionInfo {
    U16 code;
    Layout layout;
    std::string_view name;
};

/// The row of a DHCPv4 option, a sub-option of option 82, or a DHCPv6 option; null if the code has no name.
const OptionInfo* optionInfo4(U16 code);
const OptionInfo* relayOptionInfo(U16 code);
const OptionInfo* optionInfo6(U16 code);

/// Whether data of `bytes` bytes can have this layout.
bool fits(Layout layout, U32 bytes);

}  // namespace DhcpTool
