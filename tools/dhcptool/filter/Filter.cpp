#include "filter/Filter.h"

#include <algorithm>
#include <cctype>

#include "message/TypeNames.h"

namespace DhcpTool {

namespace {

using DhcpLib::Dhcp6OptionType;
using Kitnet::IpGenAddr;

constexpr std::string_view prefix = "DHCP";

char lower(char c) { return static_cast<char>(std::tolower(static_cast<U8>(c))); }

bool equalsLowerCase(std::string_view name, std::string_view lowerCase) {
    return std::ranges::equal(name, lowerCase, {}, lower);
}

/// Whether a type is called that, with or without "DHCP" in front.
bool isCalled(std::string_view name, std::string_view wanted) {
    return equalsLowerCase(name, wanted) ||
           (name.starts_with(prefix) && equalsLowerCase(name.substr(prefix.size()), wanted));
}

bool hasType(const Message& message, std::string_view wanted) {
    if (!message.isDhcp6()) return isCalled(message.typeName(), wanted);
    return std::ranges::any_of(
        message.layers, [&](const Layer6& layer) { return isCalled(typeName6(static_cast<U8>(layer.type)), wanted); });
}

bool hasMac(const Message& message, const Kitnet::EthAddr& mac) {
    return message.clientMac() == mac || message.headers.srcMac == mac || message.headers.dstMac == mac;
}

bool hasIp4(const Message& message, const Kitnet::IpAddr& ip) {
    const DhcpLib::DhcpHdr& header = message.header;
    return header.ciaddr() == ip || header.yiaddr() == ip || header.siaddr() == ip || header.giaddr() == ip ||
           message.requestedAddress() == ip || message.serverId() == ip || message.serverIdOverride() == ip ||
           message.linkSelection() == ip || message.parser.associatedIpsHas(ip);
}

bool isInside(const Kitnet::Ip6Addr& ip, const Lease6& lease) {
    const unsigned bits = std::min<unsigned>(lease.prefixBits.value_or(128), 128), wholeBytes = bits / 8;
    if (!std::equal(ip.bytes(), ip.bytes() + wholeBytes, lease.address.bytes())) return false;
    const unsigned rest = bits % 8;
    return rest == 0 || (ip.bytes()[wholeBytes] ^ lease.address.bytes()[wholeBytes]) >> (8 - rest) == 0;
}

bool hasIp6(const Message& message, const Kitnet::Ip6Addr& ip) {
    const auto isOfRelay = [&](const Layer6& layer) {
        return layer.isRelay() && (layer.linkAddr == ip || layer.peerAddr == ip);
    };
    return std::ranges::any_of(message.layers, isOfRelay) ||
           std::ranges::any_of(message.leases6, [&](const Lease6& lease) { return isInside(ip, lease); });
}

bool hasIp(const Message& message, const IpGenAddr& ip) {
    if (message.headers.srcIp == ip || message.headers.dstIp == ip) return true;
    if (message.isDhcp6()) return ip.isV6() && hasIp6(message, ip.v6Addr());
    return ip.isV4() && hasIp4(message, ip.v4Addr());
}

bool hasCircuitId(const Message& message, std::string_view id) {
    if (!message.isDhcp6()) return message.circuitId() == id;
    return std::ranges::any_of(message.layers, [&](const Layer6& layer) {
        const Item* const item = message.option(layer, Dhcp6OptionType::interfaceId);
        return item != nullptr && item->data == id;
    });
}

bool hasServer(const Message& message, const IpGenAddr& server) {
    if ((message.isFromServer() ? message.headers.srcIp : message.headers.dstIp) == server) return true;
    return !message.isDhcp6() && server.isV4() &&
           (message.serverId() == server.v4Addr() || message.serverIdOverride() == server.v4Addr());
}

}  // namespace

std::vector<std::string> typeNames() {
    std::vector<std::string> names;
    const auto add = [&](std::string_view name) {
        if (name.starts_with(prefix)) name.remove_prefix(prefix.size());
        std::ranges::transform(name, std::back_inserter(names.emplace_back()), lower);
    };
    for (unsigned type = 1; type <= 255; ++type) {
        add(typeName4(static_cast<U8>(type)));
        add(typeName6(static_cast<U8>(type)));
    }
    using enum DhcpLib::BootpOpType;
    for (const auto operation : {bootpReq, bootpRep, bootpOpUnknown})
        for (const bool isBootp : {false, true}) add(operationName(operation, isBootp));
    return names;
}

bool Filter::isEmpty() const { return !mac && !ip && !xid && type.empty() && !vlan && !circuitId && !duid && !server; }

bool Filter::matches(const Message& message) const {
    return (!mac || hasMac(message, *mac)) && (!ip || hasIp(message, *ip)) && (!xid || message.xid() == *xid) &&
           (type.empty() || hasType(message, type)) && (!vlan || message.vlan().value() == *vlan) &&
           (!circuitId || hasCircuitId(message, *circuitId)) &&
           (!duid || message.clientId() == *duid || (message.isDhcp6() && message.serverDuid() == *duid)) &&
           (!server || hasServer(message, *server));
}

}  // namespace DhcpTool
