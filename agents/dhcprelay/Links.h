#pragma once

#include <string>

#include "Kcore/FlatMap.h"
#include "KernelNetInfo/Addresses.h"
#include "KernelNetInfo/IntfStatus.h"
#include "Transaction.h"

namespace DhcpRelay {

/// All_DHCP_Relay_Agents_and_Servers (RFC 8415, section 7.1).
inline const Ip6Addr allAgents = Ip6Addr::fromText("ff02::1:2");

inline bool isLinkLocal(const Ip6Addr& a) { return a.byte(0) == 0xfe && (a.byte(1) & 0xc0) == 0x80; }
inline bool isMulticast(const Ip6Addr& a) { return a.byte(0) == 0xff; }

/// A client link: its settings and its present state in the kernel.
struct Link {
    ClientLink config;
    KernelNetInfo::IntfStatus device;  ///< all zero while the device does not exist
    IpAddr address4;                   ///< the first IPv4 address; 0.0.0.0 if there is none
    Ip6Addr linkLocal, global;         ///< the first address of each kind; :: if there is none
    std::vector<IpAddr> broadcasts;    ///< broadcast addresses of its IPv4 subnets

    std::string_view name() const { return config.name.name(); }
    bool isUp() const { return device.ifIndex() != 0 && device.operUp(); }
};

/// The client links, the server-side interface and this host's addresses. Does not ask the kernel: the owner calls
/// deviceIs and addressesAre at each change.
class Links {
public:
    explicit Links(const Settings& settings);

    const std::vector<Link>& clients() const { return clients_; }
    const Link& of(const Port& port) const { return clients_[port.link]; }
    bool isOwn(const IpAddr& address) const { return isOwn(IpGenAddr(address)); }
    bool isOwn(const Ip6Addr& address) const { return isOwn(IpGenAddr(address)); }
    /// giaddr for requests from a port: the configured one, else the link's address, else 0.0.0.0.
    IpAddr giaddr(const Port& port) const;
    /// link-address for requests from a port: the configured one, else the link's global address, else `::`.
    Ip6Addr linkAddress(const Port& port) const;
    /// Whether a reply may have this address as its relay address.
    bool isRelayAddress(const IpGenAddr& address) const;
    /// 0 if no server-side interface is configured, or while it does not exist.
    U32 serverIfIndex() const { return serverDevice_.ifIndex(); }
    bool isUntrustedClientLink(U32 ifIndex) const;
    /// Largest size of an IP packet to a server, in bytes.
    U32 serverMtu() const;
    /// The port of untagged clients of a link. portOf gives the port of a VLAN, with the tag that its frames carry.
    Port nativePort(std::size_t link) const { return {static_cast<U16>(link), nativeVlan_, {}}; }
    Port portOf(std::size_t link, U16 vlan) const;
    bool serves(const Port& port) const;

    /// Report a change in the kernel. `device` is all zero if the device does not exist any more.
    void deviceIs(std::string_view name, const KernelNetInfo::IntfStatus& device);
    void addressesAre(const std::vector<KernelNetInfo::HostAddress>& addresses);

private:
    bool isOwn(const IpGenAddr& address) const;
    IpGenAddr configured(const std::vector<RelayAddress>& addresses, const Port& port) const;
    void deriveAddresses();

    const std::vector<RelayAddress> giaddrs_, linkAddresses_;
    const std::optional<IntfId> serverInterface_;
    const U16 nativeVlan_;
    const U32 mtu_;
    std::vector<Link> clients_;
    KernelNetInfo::IntfStatus serverDevice_;
    std::vector<KernelNetInfo::HostAddress> addresses_;
    Kcore::FlatSet<IpGenAddr> own_, relayAddresses_;
};

}  // namespace DhcpRelay
