#include "message/OptionTable.h"

#include <algorithm>
#include <array>

namespace DhcpTool {

namespace {

using enum Layout;

// In ascending order of codes.
constexpr OptionInfo options4[] = {
    {1, address, "subnet-mask"},
    {2, number32, "time-offset"},
    {3, addresses, "routers"},
    {4, addresses, "time-servers"},
    {5, addresses, "name-servers"},
    {6, addresses, "dns-servers"},
    {7, addresses, "log-servers"},
    {12, text, "hostname"},
    {13, number16, "boot-file-size"},
    {15, text, "domain"},
    {17, text, "root-path"},
    {19, flag, "ip-forwarding"},
    {22, number16, "max-reassembly"},
    {23, number8, "ttl"},
    {26, number16, "mtu"},
    {28, address, "broadcast"},
    {31, flag, "router-discovery"},
    {33, addressPairs, "static-routes"},
    {35, seconds, "arp-timeout"},
    {40, text, "nis-domain"},
    {41, addresses, "nis-servers"},
    {42, addresses, "ntp-servers"},
    {43, hex, "vendor-specific"},
    {44, addresses, "wins-servers"},
    {46, number8, "netbios-node"},
    {47, text, "netbios-scope"},
    {50, address, "requested"},
    {51, seconds, "lease-time"},
    {52, number8, "overload"},
    {53, messageType, "message-type"},
    {54, address, "server-id"},
    {55, codes8, "params"},
    {56, text, "message"},
    {57, number16, "max-size"},
    {58, seconds, "T1"},
    {59, seconds, "T2"},
    {60, text, "vendor-class"},
    {61, clientId, "client-id"},
    {66, text, "tftp-server"},
    {67, text, "boot-file"},
    {77, textOrHex, "user-class"},
    {80, empty, "rapid-commit"},
    {81, fqdn, "fqdn"},
    {82, relayInfo, "relay-info"},
    {90, hex, "authentication"},
    {91, seconds, "last-transaction"},
    {92, addresses, "associated"},
    {93, number16, "architecture"},
    {94, hex, "network-interface-id"},
    {97, hex, "machine-id"},
    {100, text, "posix-timezone"},
    {101, text, "timezone"},
    {108, seconds, "ipv6-only-preferred"},
    {114, text, "captive-portal"},
    {116, flag, "auto-configure"},
    {117, hex, "name-service-search"},
    {118, address, "subnet-selection"},
    {119, domains, "domain-search"},
    {120, hex, "sip-servers"},
    {121, hex, "classless-routes"},
    {124, hex, "vendor-identifying-class"},
    {125, hex, "vendor-identifying-options"},
    {138, addresses, "capwap-servers"},
    {145, hex, "forcerenew-nonce"},
    {150, addresses, "tftp-servers"},
    {151, hex, "query-status"},
    {152, seconds, "base-time"},
    {153, seconds, "start-time"},
    {154, seconds, "query-start-time"},
    {155, seconds, "query-end-time"},
    {156, number8, "lease-state"},
    {157, number8, "data-source"},
    {161, text, "mud-url"},
    {208, hex, "boot-magic"},
    {209, text, "boot-configuration"},
    {210, text, "boot-path-prefix"},
    {211, seconds, "reboot-time"},
    {221, vss, "vrf"},
    {252, text, "proxy-autodiscovery"},
};

constexpr OptionInfo relayOptions[] = {
    {1, textOrHex, "circuit-id"},
    {2, textOrHex, "remote-id"},
    {4, number32, "docsis-class"},
    {5, address, "link-selection"},
    {6, textOrHex, "subscriber-id"},
    {7, hex, "radius-attributes"},
    {8, hex, "authentication"},
    {9, hex, "vendor-specific"},
    {10, number8, "relay-flags"},
    {11, address, "server-override"},
    {12, textOrHex, "relay-id"},
    {19, number16, "relay-source-port"},
    {151, vss, "vrf"},
    {152, empty, "vrf-control"},
};

constexpr OptionInfo options6[] = {
    {1, duid, "client-id"},
    {2, duid, "server-id"},
    {3, association, "IA_NA"},
    {4, associationTa, "IA_TA"},
    {5, leaseAddress, "address"},
    {6, codes16, "params"},
    {7, number8, "preference"},
    {8, centiseconds, "elapsed"},
    {9, relayMessage, "relay-message"},
    {11, hex, "authentication"},
    {12, address6, "server-unicast"},
    {13, status, "status"},
    {14, empty, "rapid-commit"},
    {15, userClass, "user-class"},
    {16, vendorClass, "vendor-class"},
    {17, vendorOptions, "vendor-options"},
    {18, interfaceId, "interface-id"},
    {19, messageType6, "reconfigure-message"},
    {20, empty, "reconfigure-accept"},
    {21, domains, "sip-domains"},
    {22, addresses6, "sip-servers"},
    {23, addresses6, "dns-servers"},
    {24, domains, "domain-search"},
    {25, association, "IA_PD"},
    {26, leasePrefix, "prefix"},
    {27, addresses6, "nis-servers"},
    {29, domains, "nis-domain"},
    {31, addresses6, "sntp-servers"},
    {32, seconds, "information-refresh"},
    {37, remoteId, "remote-id"},
    {38, textOrHex, "subscriber-id"},
    {39, fqdn6, "fqdn"},
    {41, text, "posix-timezone"},
    {42, text, "timezone"},
    {43, codes16, "relay-params"},
    {44, hex, "query"},
    {45, hex, "client-data"},
    {46, seconds, "last-transaction"},
    {47, hex, "query-relay-data"},
    {48, addresses6, "query-links"},
    {53, duid, "relay-id"},
    {56, hex, "ntp-server"},
    {59, text, "boot-file"},
    {60, userClass, "boot-file-parameters"},
    {61, number16, "architecture"},
    {62, hex, "network-interface-id"},
    {64, domains, "aftr-name"},
    {66, hex, "relay-supplied-options"},
    {67, empty, "prefix-exclude-request"},
    {68, vss, "vrf"},
    {79, linkLayer, "client-mac"},
    {82, seconds, "max-solicit-timeout"},
    {83, seconds, "max-information-timeout"},
    {103, text, "captive-portal"},
    {112, text, "mud-url"},
    {135, number16, "relay-source-port"},
};

template <std::size_t N>
constexpr bool isAscending(const OptionInfo (&table)[N]) {
    return std::ranges::is_sorted(table, std::ranges::less_equal{}, &OptionInfo::code);
}
static_assert(isAscending(options4) && isAscending(relayOptions) && isAscending(options6));

/// The rows of a table by code, so that a look-up takes one step.
template <std::size_t N>
constexpr auto indexOf(const OptionInfo (&table)[N]) {
    std::array<const OptionInfo*, 256> index{};
    for (const OptionInfo& row : table) index[row.code] = &row;
    return index;
}
constexpr auto index4 = indexOf(options4), relayIndex = indexOf(relayOptions), index6 = indexOf(options6);

constexpr U32 any = 0xffffffff;

/// Sizes of data: at least `least`, at most `most`, and a multiple of `unit`.
struct Sizes {
    U32 least, most, unit = 1;
};

constexpr Sizes sizesOf(Layout layout) {
    switch (layout) {
        case empty:
            return {0, 0};
        case flag:
        case number8:
        case messageType:
        case messageType6:
            return {1, 1};
        case number16:
        case centiseconds:
            return {2, 2};
        case number32:
        case seconds:
        case address:
            return {4, 4};
        case addresses:
            return {4, any, 4};
        case addressPairs:
            return {8, any, 8};
        case address6:
            return {16, 16};
        case addresses6:
            return {16, any, 16};
        case codes16:
            return {0, any, 2};
        case clientId:
        case status:
            return {2, any};
        case fqdn:
            return {3, any};
        case vss:
        case fqdn6:
            return {1, any};
        case duid:
            return {3, any};
        case association:
            return {12, any};
        case associationTa:
        case remoteId:
        case vendorClass:
        case vendorOptions:
            return {4, any};
        case leaseAddress:
            return {24, any};
        case leasePrefix:
            return {25, any};
        case linkLayer:
            return {3, any};
        default:
            return {0, any};
    }
}

const OptionInfo* rowOf(const std::array<const OptionInfo*, 256>& index, U16 code) {
    return code < index.size() ? index[code] : nullptr;
}

}  // namespace

const OptionInfo* optionInfo4(U16 code) { return rowOf(index4, code); }
const OptionInfo* relayOptionInfo(U16 code) { return rowOf(relayIndex, code); }
const OptionInfo* optionInfo6(U16 code) { return rowOf(index6, code); }

bool fits(Layout layout, U32 bytes) {
    const Sizes sizes = sizesOf(layout);
    return bytes >= sizes.least && bytes <= sizes.most && bytes % sizes.unit == 0;
}

}  // namespace DhcpTool
