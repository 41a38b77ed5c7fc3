#include "message/Message6.h"

#include "DhcpLib/Dhcp6Hdr.h"
#include "common/Printable.h"

namespace DhcpTool {

namespace {

using namespace DhcpLib;

constexpr U32 optionHeaderBytes = Dhcp6Const::optdata_offset;

bool isWhole(const DuidFields& duid, std::size_t bytes) {
    switch (duid.duidType) {
        case Dhcp6Const::duidType_llt:
            return bytes == Dhcp6Const::duidllt_size && duid.hardwareType == Constants::hardwareTypeEthernet;
        case Dhcp6Const::duidType_ll:
            return bytes == Dhcp6Const::duidll_size && duid.hardwareType == Constants::hardwareTypeEthernet;
        case Dhcp6Const::duidType_uuid:
            return bytes == Dhcp6Const::duiduuid_size;
        case Dhcp6Const::duidType_en:
            return bytes >= Dhcp6Const::baseDuiden_size;
        default:
            return false;
    }
}

Message6::Duid duidOf(const Dhcp6Option& option) {
    const std::string_view bytes = option.dataText();
    const auto end = static_cast<U32>(option.offset() + optionHeaderBytes + bytes.size());
    const DuidFields fields = decodeDuid({option.pkt()->data(), end}, option.offset(), Dhcp6Const::optdata_offset);
    return {bytes, isWhole(fields, bytes.size()) ? std::optional(fields) : std::nullopt};
}

std::optional<Message6::Lease> leaseOf(const Dhcp6Option::Ptr& option) {
    if (option->optType() == Dhcp6OptionType::iaAddress && option->len() >= Dhcp6Const::iaaddropt_minlen) {
        const Dhcp6IaAddr address(option);
        return Message6::Lease{address.pfxAddr(), std::nullopt, address.prefLifetime(), address.validLifetime()};
    }
    if (option->optType() == Dhcp6OptionType::iaPrefix && option->len() >= Dhcp6Const::iapfxopt_minlen) {
        const Dhcp6IaPfx prefix(option);
        return Message6::Lease{prefix.pfxAddr(), prefix.pfxLen(), prefix.prefLifetime(), prefix.validLifetime()};
    }
    return std::nullopt;
}

std::vector<Message6::Lease> leasesOf(const Dhcp6Option::Ptr& association, U8 first) {
    std::vector<Message6::Lease> leases;
    for (const Dhcp6Option::Ptr& nested : dhcp6NestedOptions(association, first))
        if (const auto lease = leaseOf(nested)) leases.push_back(*lease);
    return leases;
}

template <class View>
void addIa(Message6& message, std::string_view kind, const Dhcp6Option::Ptr& option) {
    if (option->len() < Dhcp6Const::ianaopt_minlen) return;
    const View view(option);
    message.ias.push_back(
        {kind, view.iaid(), view.lifetimeT1(), view.lifetimeT2(), leasesOf(option, Dhcp6Const::ianadata_offset)});
}

/// IAID (4), then nested options (RFC 8415, section 21.5).
void addIaTa(Message6& message, const Dhcp6Option::Ptr& option) {
    constexpr U8 iaidBytes = 4, dataAt = Dhcp6Const::optdata_offset + iaidBytes;
    if (option->len() < iaidBytes) return;
    const U32 iaid = Wire::load<U32>(*option->pkt(), option->offset() + optionHeaderBytes);
    message.ias.push_back({"IA_TA", iaid, 0, 0, leasesOf(option, dataAt)});
}

std::optional<Message6::RemoteId> remoteIdOf(const Dhcp6Option::Ptr& option) {
    if (option->len() < Dhcp6Const::entno_size) return std::nullopt;
    return Message6::RemoteId{option->dataText(), dhcp6RemoteIdentifier(option)};
}

void takeOption(Message6& message, const Dhcp6Option::Ptr& option) {
    switch (option->optType()) {
        case Dhcp6OptionType::clientId:
            if (!message.clientId) message.clientId = duidOf(*option);
            break;
        case Dhcp6OptionType::serverId:
            if (!message.serverId) message.serverId = duidOf(*option);
            break;
        case Dhcp6OptionType::iana:
            return addIa<Dhcp6Iana>(message, "IA_NA", option);
        case Dhcp6OptionType::iapd:
            return addIa<Dhcp6Iapd>(message, "IA_PD", option);
        case Dhcp6OptionType::iata:
            return addIaTa(message, option);
        case Dhcp6OptionType::interfaceId:
            // Decodes without a view, which would throw for some malformed data.
            if (!message.interfaceId) message.interfaceId = {option->dataText(), decodeInterfaceId(option->dataText())};
            break;
        case Dhcp6OptionType::remoteId:
            if (!message.remoteId) message.remoteId = remoteIdOf(option);
            break;
        default:
            break;
    }
}

Message6 messageAt(const PktPtr& pkt, const Dhcp6MessagePlace& place) {
    Message6 message;
    message.type = Dhcp6HdrBase(pkt, place.offset).msgType();
    if (message.isRelay()) {
        const Dhcp6RelayHdr header(pkt, place.offset);
        message.hopCount = header.hopCount();
        message.linkAddr = header.linkAddr();
        message.peerAddr = header.peerAddr();
    } else
        message.xid = Dhcp6RegHdr(pkt, place.offset).xid();
    for (const Dhcp6Option::Ptr& option : dhcp6MessageOptions(pkt, place)) takeOption(message, option);
    return message;
}

/// Bytes behind the UDP datagram are not part of the message. An implausible UDP length is ignored.
Dhcp6MessagePlace placeOf(const Kitnet::Pkt& pkt, const Dhcp6PacketParser& parser) {
    const U32 udpAt = parser.etherHdrLen() + parser.ip6HdrLen(), at = udpAt + udpHeaderBytes;
    const bool sound = parser.udpLen() >= udpHeaderBytes + Dhcp6Const::reghdr_size;
    return {static_cast<U16>(at), sound ? std::min(udpAt + parser.udpLen(), pkt.bytes()) : pkt.bytes()};
}

}  // namespace

std::string_view duidTypeName(U16 type) {
    constexpr std::string_view names[] = {"LLT", "EN", "LL", "UUID"};
    return names[type - Dhcp6Const::duidType_llt];
}

std::string uuidText(std::string_view uuid) {
    std::string text = hex(uuid);
    constexpr std::size_t dashes[] = {20, 16, 12, 8};
    for (const std::size_t at : dashes) text.insert(at, 1, '-');
    return text;
}

std::vector<Message6> messages6(const PktPtr& pkt, const Dhcp6PacketParser& parser) {
    std::vector<Message6> messages;
    for (const Dhcp6MessagePlace& place : dhcp6RelayChain(pkt, placeOf(*pkt, parser)))
        messages.push_back(messageAt(pkt, place));
    return messages;
}

}  // namespace DhcpTool
