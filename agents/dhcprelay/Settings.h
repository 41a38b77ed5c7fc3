#pragma once

#include <array>
#include <bitset>
#include <optional>
#include <string>
#include <vector>

#include "Kitnet/EthAddr.h"
#include "Kitnet/IntfId.h"
#include "Kitnet/IpGenAddr.h"

namespace DhcpRelay {

using Kcore::U16;
using Kcore::U32;
using Kcore::U64;
using Kcore::U8;
using Kitnet::EthAddr;
using Kitnet::IntfId;
using Kitnet::Ip6Addr;
using Kitnet::IpAddr;
using Kitnet::IpGenAddr;

/// How to treat a request that has no relay address but an option 82 (RFC 3046, section 2.1.1).
enum class InfoPolicy : U8 { discard, replace, keep };

enum class StatsFormat : U8 { text, json };

/// A set of tagged VLANs, by number: 1 to 4094.
using VlanSet = std::bitset<4096>;

/// A configured relay address for every port, for the ports of one link, or for one VLAN of a link.
struct RelayAddress {
    IntfId link;   ///< empty: every link
    U16 vlan = 0;  ///< 0: every VLAN
    IpGenAddr address;
};

struct ClientLink {
    IntfId name;
    bool trusted = false;
    VlanSet taggedVlans;  ///< VLANs whose tagged frames are served; untagged frames always are
};

/// The settings from the command line and the configuration file, after all checks.
struct Settings {
    bool ipv4 = false, ipv6 = false;
    std::vector<ClientLink> clients;
    std::vector<IpAddr> servers4;
    std::vector<Ip6Addr> servers6;
    std::vector<IpGenAddr> replySources;  ///< other addresses from which replies are accepted
    std::optional<IntfId> serverInterface;
    U16 nativeVlan = 1;

    std::vector<RelayAddress> giaddrs, linkAddresses;
    std::string circuitId = "%i:%v", interfaceId = "%i:%v", remoteId = "%m";
    std::string vrf;
    bool vssControl = true;
    bool linkSelectionIsLinks = false;  ///< sub-option 5 holds the client link's own address
    IpAddr linkSelection;
    bool serverIdOverride = false;

    InfoPolicy untrustedInfo = InfoPolicy::discard, trustedInfo = InfoPolicy::keep;
    U8 hopLimit4 = 16, hopLimit6 = 8;
    U32 mtu = 0;  ///< MTU towards the servers; 0: that of the server-side interface, or 1500 without one
    U32 rate = 1000;
    U32 rememberSeconds = 60, transactions = 16384;

    U32 statsSeconds = 0;
    StatsFormat statsFormat = StatsFormat::text;
    bool verbose = false;
    bool checkOnly = false;
};

}  // namespace DhcpRelay
