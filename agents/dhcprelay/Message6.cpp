#include "Message6.h"

#include "DhcpLib/Dhcp6MessageBuilder.h"

namespace DhcpRelay {

namespace {

using DhcpLib::Dhcp6Const;
using DhcpLib::Dhcp6MsgType;
using DhcpLib::Dhcp6OptionType;
using DhcpLib::Wire::ByteView;

constexpr U32 largestUdpPayload = 65527;

/// The link's MAC address and number, and the port as a text (RFC 4649).
bool addRemoteId(DhcpLib::Dhcp6MessageBuilder& builder, const Link& link, U16 vlan) {
    const std::string port = std::string(link.name()) + ":" + std::to_string(vlan);
    const auto option = builder.add(Dhcp6OptionType::remoteId, Dhcp6Const::minRIdWSubOpt_size + port.size());
    if (!option) return false;
    const auto remoteId = DhcpLib::dhcp6RemoteIdFactory(option);
    remoteId->entnoIs(Dhcp6Const::entno);
    const auto duid = remoteId->duidIs(option, Dhcp6Const::duid_offset);
    duid->duidTypeIs(Dhcp6Const::duidType_ll);
    duid->hardwareTypeIs(DhcpLib::Constants::hardwareTypeEthernet);
    duid->llAddrIs(link.device.macAddr());
    remoteId->interfaceIdIs(link.device.ifIndex());
    remoteId->subOptValueIs(port);
    return true;
}

bool addVrf(DhcpLib::Dhcp6MessageBuilder& builder, std::string_view vrf) {
    const auto option = builder.add(Dhcp6OptionType::vss, 1 + vrf.size());
    if (!option) return false;
    const auto vss = DhcpLib::dhcp6VirtualSubnetSelectionFactory(option);
    vss->vssTypeIs(0);  // an NVT ASCII name
    vss->vrfNameIs(L3::VrfName(vrf));
    return true;
}

bool addClientMac(DhcpLib::Dhcp6MessageBuilder& builder, const EthAddr& mac) {
    const auto option =
        builder.add(Dhcp6OptionType::linkLayerAddr, Dhcp6Const::llAddrType_size + Dhcp6Const::llAddr_size);
    if (!option) return false;
    const auto view = DhcpLib::dhcpLinkLayerAddrFactory(option);
    view->llAddrTypeIs(DhcpLib::Constants::hardwareTypeEthernet);
    view->llAddrIs(mac);
    return true;
}

}  // namespace

Sender6 senderOf(U8 messageType) {
    switch (messageType) {
        case 1:   // solicit
        case 3:   // request
        case 4:   // confirm
        case 5:   // renew
        case 6:   // rebind
        case 8:   // release
        case 9:   // decline
        case 11:  // information-request
        case 14:  // leasequery (RFC 5007)
        case 18:  // reconfigure-request (RFC 6977)
        case 20:  // DHCPv4-query (RFC 7341)
        case 22:  // active leasequery (RFC 7653)
        case 36:  // address registration (RFC 9686)
            return Sender6::client;
        case 12:
            return Sender6::relayForward;
        case 2:   // advertise
        case 7:   // reply
        case 10:  // reconfigure
        case 15:  // leasequery-reply
        case 16:  // leasequery-done
        case 17:  // leasequery-data
        case 19:  // reconfigure-reply
        case 21:  // DHCPv4-response
        case 37:  // answer to an address registration
            return Sender6::server;
        case 13:
            return Sender6::relayReply;
        default:
            return Sender6::unknown;
    }
}

RelayOptions relayOptionsOf(const PktPtr& pkt, U32 at) {
    RelayOptions found;
    const auto keepFirst = [](RelayOptions::Place& place, const auto& head) {
        if (place.at == 0) place = {head.at + Dhcp6Const::optdata_offset, head.len};
    };
    DhcpLib::walkDhcp6Options(ByteView(*pkt), DhcpLib::packetPosition(at + Dhcp6Const::relayhdr_size),
                              [&](const auto& head) {
                                  if (head.code == static_cast<U32>(Dhcp6OptionType::relayMsg))
                                      keepFirst(found.message, head);
                                  if (head.code == static_cast<U32>(Dhcp6OptionType::interfaceId))
                                      keepFirst(found.interfaceId, head);
                                  return true;
                              });
    return found;
}

PktPtr relayForwardOf(std::span<const U8> message, const RelayForward& forward, const Link& link) {
    DhcpLib::Dhcp6MessageBuilder builder(Dhcp6MsgType::relayForward, forward.hopCount, forward.linkAddress,
                                         forward.peer, largestUdpPayload);
    const std::span id(reinterpret_cast<const U8*>(forward.interfaceId.data()), forward.interfaceId.size());
    const bool isWhole = builder.addMessage(message) && builder.add(Dhcp6OptionType::interfaceId, id) &&
                         addRemoteId(builder, link, forward.port.vlan) &&
                         (forward.vrf.empty() || addVrf(builder, forward.vrf)) &&
                         (forward.clientMac.isZero() || addClientMac(builder, forward.clientMac));
    return isWhole ? builder.pkt() : nullptr;
}

}  // namespace DhcpRelay
