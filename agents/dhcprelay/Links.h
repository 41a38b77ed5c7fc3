#pragma once

#include <string>

#include "Kcore/FlatMap.h"
#include "KernelNetInfo/Addresses.h"
#include "KernelNetInfo/IntfStatus.h"
#include "Transaction.h"

namespace DhcpRelay {

inline bool isLinkLocal(const Ip6Addr& a) { return a.byte(0) == 0xfe && (a.byte(1) & 0xc0) == 0x80; }
inline bool isMulticast(const Ip6Addr& a) { return a.byte(0) == 0xff; }

/// A client link as the operator configured it, and as the kernel has it at present.
struct Link {
    ClientLink config;
    KernelNetInfo::IntfStatus device;  ///< all zero while there is none
    IpAddr address4;                   ///< the first; 0.0.0.0 without one
    Ip6Addr linkLocal, global;         ///< the first of each kind; :: without one
    std::vector<IpAddr> broadcasts;    ///< of its IPv4 subnets

    std::string_view name() const { return config.name.name(); }
    bool isUp() const { return device.ifIndex() != 0 && device.operUp(); }
};

/// The client links, the server-side interface and this host's addresses. Knows the kernel only through what it is told
/// of it, and counts how often that changed.
class Links {
public:
    explicit Links(const Settings& settings);

    const std::vector<Link>& clients() const { return clients_; }
    const Link& of(const Port& port) const { return clients_[port.link]; }
    bool isOwn(const IpAddr& address) const { return isOwn(IpGenAddr(address)); }
    bool isOwn(const Ip6Addr& address) const { return isOwn(IpGenAddr(address)); }
    /// giaddr for requests from a port: the operator's choice, else the link's address; 0.0.0.0 without either.
    IpAddr giaddr(const Port& port) const;
    /// link-address likewise.
    Ip6Addr linkAddress(const Port& port) const;
    /// Whether a reply may name this address as the relay's.
    bool isRelayAddress(const IpGenAddr& address) const;
    /// 0 while the server-side interface is missing, or none is named.
    U32 serverIfIndex() const { return serverDevice_.ifIndex(); }
    /// What an IP packet to a server may have.
    U32 serverMtu() const;
    /// The port of an untagged client of a link, and that of a VLAN whose tag a frame would have to carry.
    Port nativePort(std::size_t link) const { return {static_cast<U16>(link), nativeVlan_, {}}; }
    Port portOf(std::size_t link, U16 vlan) const;
    bool serves(const Port& port) const;

    /// The kernel's news. `device`: all zero where there is none.
    void deviceIs(std::string_view name, const KernelNetInfo::IntfStatus& device);
    void addressesAre(const std::vector<KernelNetInfo::HostAddress>& addresses);
    U32 changes() const { return changes_; }

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
    U32 changes_ = 0;
};

}  // namespace DhcpRelay
