// Prints DHCPv6 messages that were built with the views alone, each as a line of hex.
#include <cstdio>

#include "DhcpLib/Dhcp6Hdr.h"

namespace {

using namespace DhcpLib;
using Kitnet::EthAddr;
using Kitnet::Ip6Addr;

const EthAddr mac = EthAddr::fromText("02:c1:00:00:0a:01");
constexpr U16 iaBytes = 12, addressBytes = 24, prefixBytes = 25;

/// A message that grows option by option.
struct Built {
    PktPtr pkt = Kitnet::globalPktManager().newPkt();

    explicit Built(Dhcp6MsgType type) {
        pkt->newSharedTailData(Dhcp6Const::reghdr_size);
        const auto header = dhcp6RegHdrFactory(pkt, 0);
        header->msgTypeIs(type);
        header->xidIs(Dhcp6Xid(0x5e, 0xed, 0x06));
    }
    Built(Dhcp6MsgType type, const char* peer) {
        pkt->newSharedTailData(Dhcp6Const::relayhdr_size);
        const auto header = dhcp6RelayHdrFactory(pkt, 0);
        header->msgTypeIs(type);
        header->linkAddrIs(Ip6Addr::fromText("2001:db8:a::1"));
        header->peerAddrIs(Ip6Addr::fromText(peer));
    }

    Dhcp6Option::Ptr add(Dhcp6OptionType type, std::size_t len) {
        const U16 at = static_cast<U16>(pkt->bytes());
        pkt->newSharedTailData(static_cast<U32>(Dhcp6Const::optdata_offset + len));
        const auto option = dhcp6OptionFactory(pkt, at);
        option->optTypeIs(type);
        option->lenIs(static_cast<U16>(len));
        return option;
    }
    Dhcp6Duid::Ptr addDuid(Dhcp6OptionType type, U16 duidType, std::size_t len) {
        const auto duid = dhcp6DuidFactory(add(type, len), Dhcp6Const::optdata_offset);
        duid->duidTypeIs(duidType);
        return duid;
    }
    /// An association that holds one option; returns that.
    template <auto viewOf>
    Dhcp6Option::Ptr addIa(Dhcp6OptionType type, U32 iaid, Dhcp6OptionType nestedType, U16 nestedBytes) {
        const auto association = add(type, iaBytes);
        viewOf(association)->iaidIs(iaid);
        const auto nested = add(nestedType, nestedBytes);
        association->lenIs(static_cast<U16>(iaBytes + Dhcp6Const::optdata_offset + nestedBytes));
        return nested;
    }
    const Built& print() const {
        for (U32 i = 0; i < pkt->bytes(); ++i) std::printf("%02x", pkt->data()[i]);
        std::puts("");
        return *this;
    }
};

Built solicit() {
    Built message(Dhcp6MsgType::solicit);
    const auto client = message.addDuid(Dhcp6OptionType::clientId, Dhcp6Const::duidType_llt, 14);
    client->hardwareTypeIs(Constants::hardwareTypeEthernet);
    client->duidTimeIs(700000000);
    client->llAddrIs(mac);
    dhcp6IanaFactory(message.add(Dhcp6OptionType::iana, iaBytes))->iaidIs(0xa01);
    const auto vendor = message.add(Dhcp6OptionType::vendorOpts, 4 + 4 + 32);
    dhcp6VSIFactory(vendor)->entnoIs(Dhcp6Const::cableLabs_entno);
    const auto cores = cableLabsSubOptionFactory(message.pkt, static_cast<U16>(vendor->offset() + 8));
    cores->optTypeIs(CableLabsSubOptionType::ccapCoresOpt);
    cores->lenIs(32);
    cores->ip6AddrIs(Ip6Addr::fromText("2001:db8:c::1"), 4);
    cores->ip6AddrIs(Ip6Addr::fromText("2001:db8:c::2"), 20);
    return message;
}

Built reply() {
    Built message(Dhcp6MsgType::reply);
    message.addDuid(Dhcp6OptionType::clientId, Dhcp6Const::duidType_uuid, 18)->uuidIs("0123456789abcdef");
    const auto server = message.addDuid(Dhcp6OptionType::serverId, Dhcp6Const::duidType_en, 10);
    server->entnoIs(32473);
    server->entIdIs("spam");
    const auto leased = dhcp6IaAddrFactory(
        message.addIa<dhcp6IanaFactory>(Dhcp6OptionType::iana, 0xa01, Dhcp6OptionType::iaAddress, addressBytes));
    leased->pfxAddrIs(Ip6Addr::fromText("2001:db8:a::1001"));
    leased->validLifetimeIs(4000);
    const auto delegated = dhcp6IaPfxFactory(
        message.addIa<dhcp6IapdFactory>(Dhcp6OptionType::iapd, 0xa02, Dhcp6OptionType::iaPrefix, prefixBytes));
    delegated->pfxLenIs(56);
    delegated->pfxAddrIs(Ip6Addr::fromText("2001:db8:b:100::"));
    delegated->validLifetimeIs(5000);
    return message;
}

Built relayForward(const Built& inner) {
    Built message(Dhcp6MsgType::relayForward, "fe80::a01");
    message.add(Dhcp6OptionType::relayMsg, inner.pkt->bytes())->dataIs(inner.pkt->data());
    const auto interfaceId = dhcp6InterfaceIdFactory(message.add(Dhcp6OptionType::interfaceId, 2 + 9 + 2 + 3));
    interfaceId->intfNameIs("Ethernet1");
    interfaceId->vrfNameIs(L3::VrfName("red"));
    interfaceId->setInterfaceIdDataInPkt();
    const auto option = message.add(Dhcp6OptionType::remoteId, 22 + 2 + 12);
    const auto remoteId = dhcp6RemoteIdFactory(option);
    remoteId->entnoIs(32473);
    const auto duid = remoteId->duidIs(option, Dhcp6Const::duid_offset);
    duid->duidTypeIs(Dhcp6Const::duidType_ll);
    duid->hardwareTypeIs(Constants::hardwareTypeEthernet);
    duid->llAddrIs(mac);
    remoteId->interfaceIdIs(7);
    remoteId->subOptValueIs("Ethernet1:10");
    const auto vss = dhcp6VirtualSubnetSelectionFactory(message.add(Dhcp6OptionType::vss, 1 + 3));
    vss->vssTypeIs(0);
    vss->vrfNameIs(L3::VrfName("red"));
    const auto link = dhcpLinkLayerAddrFactory(message.add(Dhcp6OptionType::linkLayerAddr, 2 + 6));
    link->llAddrTypeIs(Constants::hardwareTypeEthernet);
    link->llAddrIs(mac);
    return message;
}

}  // namespace

int main() {
    relayForward(solicit().print()).print();
    reply().print();
}
