#include "Links.h"

#include <algorithm>

namespace DhcpRelay {

namespace {

constexpr U32 usualMtu = 1500;
constexpr U16 usualTpid = 0x8100;

IpAddr broadcastOf(const KernelNetInfo::HostAddress& address) {
    const U32 hostBits = address.prefixBits >= 32 ? 0 : 0xffffffffu >> address.prefixBits;
    return IpAddr(address.address.v4Addr().value() | hostBits);
}

}  // namespace

Links::Links(const Settings& settings)
    : giaddrs_(settings.giaddrs),
      linkAddresses_(settings.linkAddresses),
      serverInterface_(settings.serverInterface),
      nativeVlan_(settings.nativeVlan),
      mtu_(settings.mtu) {
    for (const ClientLink& client : settings.clients) clients_.push_back({client, {}, {}, {}, {}, {}});
    deriveAddresses();
}

/// Returns the address of the most specific entry that matches the port; no address if none does.
IpGenAddr Links::configured(const std::vector<RelayAddress>& addresses, const Port& port) const {
    IpGenAddr found;
    int exactness = -1;
    for (const RelayAddress& choice : addresses) {
        if (!choice.link.isEmpty() && choice.link != of(port).config.name) continue;
        if (choice.vlan != 0 && choice.vlan != port.vlan) continue;
        const int exact = (choice.link.isEmpty() ? 0 : 1) + (choice.vlan != 0 ? 1 : 0);
        if (exact <= exactness) continue;
        exactness = exact;
        found = choice.address;
    }
    return found;
}

IpAddr Links::giaddr(const Port& port) const {
    const IpGenAddr chosen = giaddrs_.empty() ? IpGenAddr() : configured(giaddrs_, port);
    return chosen.isUsable() ? chosen.v4Addr() : of(port).address4;
}

Ip6Addr Links::linkAddress(const Port& port) const {
    const IpGenAddr chosen = linkAddresses_.empty() ? IpGenAddr() : configured(linkAddresses_, port);
    return chosen.isUsable() ? chosen.v6Addr() : of(port).global;
}

bool Links::isOwn(const IpGenAddr& address) const { return own_.contains(address); }

bool Links::isRelayAddress(const IpGenAddr& address) const { return relayAddresses_.contains(address); }

bool Links::isUntrustedClientLink(U32 ifIndex) const {
    return std::any_of(clients_.begin(), clients_.end(), [ifIndex](const Link& link) {
        return link.device.ifIndex() == ifIndex && !link.config.trusted;
    });
}

U32 Links::serverMtu() const {
    if (mtu_ != 0) return mtu_;
    return serverDevice_.mtu() != 0 ? serverDevice_.mtu() : usualMtu;
}

Port Links::portOf(std::size_t link, U16 vlan) const {
    return {static_cast<U16>(link), vlan, vlan == nativeVlan_ ? VlanTag{} : VlanTag{usualTpid, vlan}};
}

bool Links::serves(const Port& port) const {
    return port.vlan == nativeVlan_ || (port.vlan < VlanSet().size() && of(port).config.taggedVlans[port.vlan]);
}

void Links::deviceIs(std::string_view name, const KernelNetInfo::IntfStatus& device) {
    for (Link& link : clients_)
        if (link.name() == name) link.device = device;
    if (serverInterface_ && serverInterface_->name() == name) serverDevice_ = device;
    deriveAddresses();
}

void Links::addressesAre(const std::vector<KernelNetInfo::HostAddress>& addresses) {
    addresses_ = addresses;
    deriveAddresses();
}

void Links::deriveAddresses() {
    own_.clear();
    relayAddresses_.clear();
    for (const auto& found : addresses_) own_.insert(found.address);
    for (const auto* choices : {&giaddrs_, &linkAddresses_})
        for (const RelayAddress& choice : *choices) relayAddresses_.insert(choice.address);
    for (Link& link : clients_) {
        link.address4 = {};
        link.linkLocal = link.global = {};
        link.broadcasts.clear();
        for (const auto& found : addresses_) {
            if (found.ifIndex != link.device.ifIndex()) continue;
            if (found.address.isV4()) {
                if (link.address4.isAny()) link.address4 = found.address.v4Addr();
                link.broadcasts.push_back(broadcastOf(found));
                continue;
            }
            Ip6Addr& first = isLinkLocal(found.address.v6Addr()) ? link.linkLocal : link.global;
            if (first.isUnspecified()) first = found.address.v6Addr();
        }
        if (!link.address4.isAny()) relayAddresses_.insert(IpGenAddr(link.address4));
        if (!link.global.isUnspecified()) relayAddresses_.insert(IpGenAddr(link.global));
    }
}

}  // namespace DhcpRelay
