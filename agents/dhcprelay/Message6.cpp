#include "Message6.h"

namespace DhcpRelay {

namespace {

using DhcpLib::Dhcp6Const;
using DhcpLib::Dhcp6MsgType;
using DhcpLib::Dhcp6OptionType;
using DhcpLib::Wire::ByteView;
using DhcpLib::Wire::store;

/// An empty option of that size at the packet's tail.
DhcpLib::Dhcp6Option::Ptr addOption(const PktPtr& pkt, Dhcp6OptionType type, std::size_t len) {
    const U16 at = static_cast<U16>(pkt->bytes());
    pkt->newSharedTailData(static_cast<U32>(Dhcp6Const::optdata_offset + len));
    DhcpLib::Dhcp6Option::Ptr option = DhcpLib::dhcp6OptionFactory(pkt, at);
    option->optTypeIs(type);
    option->lenIs(static_cast<U16>(len));
    return option;
}

void storeOptionHead(Kitnet::Pkt& pkt, U32 at, Dhcp6OptionType type, U32 len) {
    store<U16>(pkt, at, static_cast<U16>(type));
    store<U16>(pkt, at + Dhcp6Const::optlen_offset, static_cast<U16>(len));
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

std::string portOptions(const Links& links, const Port& port, std::string_view interfaceId, const std::string& vrf) {
    const PktPtr pkt = Kitnet::globalPktManager().newPkt();
    addOption(pkt, Dhcp6OptionType::interfaceId, interfaceId.size())
        ->dataIs(reinterpret_cast<const U8*>(interfaceId.data()));

    const Link& link = links.of(port);
    const std::string place = std::string(link.name()) + ":" + std::to_string(port.vlan);
    const auto option = addOption(pkt, Dhcp6OptionType::remoteId, Dhcp6Const::minRIdWSubOpt_size + place.size());
    const auto remoteId = DhcpLib::dhcp6RemoteIdFactory(option);
    remoteId->entnoIs(Dhcp6Const::entno);
    const auto duid = remoteId->duidIs(option, Dhcp6Const::duid_offset);
    duid->duidTypeIs(Dhcp6Const::duidType_ll);
    duid->hardwareTypeIs(DhcpLib::Constants::hardwareTypeEthernet);
    duid->llAddrIs(link.device.macAddr());
    remoteId->interfaceIdIs(link.device.ifIndex());
    remoteId->subOptValueIs(place);

    if (!vrf.empty()) {
        const auto vss =
            DhcpLib::dhcp6VirtualSubnetSelectionFactory(addOption(pkt, Dhcp6OptionType::vss, 1 + vrf.size()));
        vss->vssTypeIs(0);  // an NVT ASCII name
        vss->vrfNameIs(L3::VrfName(vrf));
    }
    return std::string(ByteView(*pkt).text(0, pkt->bytes()));
}

U32 wrap(Kitnet::Pkt& pkt, U32 at, const RelayForward& forward) {
    constexpr U32 room = Dhcp6Const::relayhdr_size + Dhcp6Const::optdata_offset;
    const U32 messageBytes = pkt.bytes() - at;
    if (at < room) {
        pkt.newSharedHeadData(room - at);
        at = room;
    }
    const U32 start = at - room;
    store<U8>(pkt, start, static_cast<U8>(Dhcp6MsgType::relayForward));
    store<U8>(pkt, start + Dhcp6Const::hopcnt_offset, forward.hopCount);
    store(pkt, start + Dhcp6Const::linkaddr_offset, forward.linkAddress);
    store(pkt, start + Dhcp6Const::peeraddr_offset, forward.peer);
    storeOptionHead(pkt, start + Dhcp6Const::relayhdr_size, Dhcp6OptionType::relayMsg, messageBytes);

    U32 tail = pkt.bytes();
    constexpr U32 macDataBytes = Dhcp6Const::llAddrType_size + Dhcp6Const::llAddr_size;
    const U32 macBytes = forward.clientMac.isZero() ? 0 : Dhcp6Const::optdata_offset + macDataBytes;
    pkt.newSharedTailData(static_cast<U32>(forward.options.size()) + macBytes);
    store(pkt, tail, forward.options);
    tail += static_cast<U32>(forward.options.size());
    if (macBytes == 0) return start;
    storeOptionHead(pkt, tail, Dhcp6OptionType::linkLayerAddr, macDataBytes);
    store<U16>(pkt, tail + Dhcp6Const::optdata_offset, DhcpLib::Constants::hardwareTypeEthernet);
    store(pkt, tail + Dhcp6Const::optdata_offset + Dhcp6Const::llAddrType_size, forward.clientMac);
    return start;
}

}  // namespace DhcpRelay
