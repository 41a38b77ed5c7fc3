#include "message/Message.h"

#include <algorithm>

#include "DhcpLib/Dhcp6Hdr/Duid.h"
#include "DhcpLib/OptionParser/OptionWalk.h"
#include "message/TypeNames.h"

namespace DhcpTool {

namespace {

using DhcpLib::Dhcp6Const;
using DhcpLib::Dhcp6OptionType;
using Code = DhcpLib::DhcpOptionType;
using SubCode = DhcpLib::DhcpInformationSubOptionType;

const Item* lastOf(const std::vector<Item>& items, U16 code) {
    const auto found = std::find_if(items.rbegin(), items.rend(), [&](const Item& item) { return item.code == code; });
    return found != items.rend() ? &*found : nullptr;
}

template <class T>
std::optional<T> valueOf(const Item* item) {
    if (item == nullptr || !item->isWhole() || item->length != sizeof(T)) return std::nullopt;
    return item->load<T>();
}

/// The MAC in a DUID of type LLT or LL for Ethernet.
std::optional<Kitnet::EthAddr> macOf(const Item& duid) {
    const U16 type = duid.load<U16>();
    if (!DhcpLib::DuidFields::hasLinkLayer(type)) return std::nullopt;
    const U32 at = DhcpLib::DuidFields::macAt(type);
    const bool ethernet =
        duid.load<U16>(DhcpLib::DuidFields::hardwareTypeAt) == DhcpLib::Constants::hardwareTypeEthernet;
    if (!ethernet || duid.data.size() != at + sizeof(Kitnet::EthAddr)) return std::nullopt;
    return duid.load<Kitnet::EthAddr>(at);
}

}  // namespace

const Item* Message::option(U8 code) const { return isDhcp6() ? nullptr : lastOf(options, code); }

const Item* Message::relaySubOption(U8 code) const { return lastOf(relayInfo, code); }

const Item* Message::option(const Layer6& layer, Dhcp6OptionType code) const {
    const std::span<const Item> all = optionsOf(layer);
    const auto found = std::ranges::find(all, static_cast<U16>(code), &Item::code);
    return found != all.end() ? &*found : nullptr;
}

std::optional<Kitnet::IpAddr> Message::addressOption(U8 code) const { return valueOf<Kitnet::IpAddr>(option(code)); }

std::optional<U32> Message::secondsOption(U8 code) const { return valueOf<U32>(option(code)); }

std::optional<Kitnet::IpAddr> Message::serverIdOverride() const {
    return valueOf<Kitnet::IpAddr>(relaySubOption(static_cast<U8>(SubCode::serverIdOverride)));
}

std::optional<Kitnet::IpAddr> Message::linkSelection() const {
    return valueOf<Kitnet::IpAddr>(relaySubOption(static_cast<U8>(SubCode::linkSelectionId)));
}

bool Message::isFromServer() const {
    using enum DhcpLib::Dhcp6MsgType;
    if (!isDhcp6()) return header.bootpOp() == DhcpLib::BootpOpType::bootpRep;
    if (layers.empty()) return false;
    const DhcpLib::Dhcp6MsgType type = layers.front().type;
    return type == advertise || type == reply || type == reconfigure || type == relayReply;
}

U8 Message::typeNumber() const {
    if (isDhcp6()) return layers.empty() ? U8{0} : static_cast<U8>(layers.back().type);
    const Item* const type = option(static_cast<U8>(Code::msgType));
    return type != nullptr ? type->load<U8>() : U8{0};
}

std::string_view Message::typeName() const {
    if (isDhcp6()) return typeName6(typeNumber());
    if (const U8 type = typeNumber(); type != 0) return typeName4(type);
    return operationName(header.bootpOp(), isBootp);
}

U32 Message::xid() const {
    if (!isDhcp6()) return header.xidU32();
    const Layer6* const message = innermost();
    if (message == nullptr) return 0;
    U32 xid = 0;
    for (const char byte : DhcpLib::Wire::imageOf(message->xid)) xid = xid << 8 | static_cast<U8>(byte);
    return xid;
}

std::optional<Kitnet::EthAddr> Message::clientMac() const {
    if (!isDhcp6()) return header.chaddr();
    constexpr U32 macAt = Dhcp6Const::llAddrType_size;
    if (const Layer6* const relay = nearestRelay())
        if (const Item* const found = option(*relay, Dhcp6OptionType::linkLayerAddr))
            if (found->data.size() == macAt + sizeof(Kitnet::EthAddr)) return found->load<Kitnet::EthAddr>(macAt);
    const Layer6* const message = innermost();
    const Item* const duid = message != nullptr ? option(*message, Dhcp6OptionType::clientId) : nullptr;
    return duid != nullptr ? macOf(*duid) : std::nullopt;
}

std::string_view Message::clientId() const {
    constexpr U8 clientIdOption = 61;
    return isDhcp6() ? optionData(innermost(), Dhcp6OptionType::clientId) : optionData(clientIdOption);
}

std::string_view Message::serverDuid() const { return optionData(innermost(), Dhcp6OptionType::serverId); }

bool Message::isRelayed() const { return isDhcp6() ? nearestRelay() != nullptr : !header.giaddr().isAny(); }

std::string_view Message::circuitId() const {
    return isDhcp6() ? optionData(nearestRelay(), Dhcp6OptionType::interfaceId)
                     : relayData(static_cast<U8>(SubCode::circuitId));
}

std::string_view Message::remoteId() const {
    return isDhcp6() ? optionData(nearestRelay(), Dhcp6OptionType::remoteId)
                     : relayData(static_cast<U8>(SubCode::remoteIdOpt));
}

U8 Message::hops() const {
    if (!isDhcp6()) return header.hops();
    return layers.empty() ? U8{0} : layers.front().hopCount;
}

const Layer6* Message::innermost() const {
    return layers.empty() || layers.back().isRelay() ? nullptr : &layers.back();
}

const Layer6* Message::nearestRelay() const {
    const auto found =
        std::find_if(layers.rbegin(), layers.rend(), [](const Layer6& layer) { return layer.isRelay(); });
    return found != layers.rend() ? &*found : nullptr;
}

}  // namespace DhcpTool
