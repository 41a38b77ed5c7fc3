#include "exchange/EventReader.h"

#include <algorithm>

#include "Kcore/Text.h"
#include "exchange/Exchange.h"

namespace DhcpTool {

namespace {

using DhcpLib::Constants;
using DhcpLib::Dhcp6OptionType;
using enum MessageKind;

constexpr MessageKinds leaseQueries = kinds(leaseQuery, leaseUnassigned, leaseUnknown, leaseActive);

constexpr U8 hostNameOption = 12, rapidCommitOption = 80;

template <class Address>
std::string_view bytesOf(const Address& address) {
    return {reinterpret_cast<const char*>(address.bytes()), Address::wireBytes};
}

/// A relay agent on the way to the server has set giaddr, and the next ones count the hops. Servers answer to the port
/// of relay agents, and these to the port of clients.
U8 relaysOf4(const Message& message, bool fromServer) {
    if (fromServer) return message.headers.ports.dst.value() == Constants::dhcpServerPort ? 1 : 0;
    if (message.header.giaddr().isAny()) return 0;
    return static_cast<U8>(std::clamp<unsigned>(message.header.hops(), 1, 255));
}

/// Whether its contents can be used, although a parser may refuse the frame because the end is cut off.
bool isReadable(const Message& message) {
    if (message.verdict == Message::Verdict::accepted) return !message.isDhcp6() || message.innermost() != nullptr;
    if (message.verdict == Message::Verdict::other) return false;
    return message.isDhcp6() ? message.innermost() != nullptr : message.typeNumber() != 0;
}

}  // namespace

Event* EventReader::read(const Message& message) {
    if (!isReadable(message)) return nullptr;
    std::vector<Assigned> assigned = std::move(event_.assigned);
    std::vector<StatusCode> statuses = std::move(event_.statuses);
    assigned.clear();
    statuses.clear();
    event_ = {};
    event_.assigned = std::move(assigned);
    event_.statuses = std::move(statuses);

    const Headers& headers = message.headers;
    event_.time = message.arrival.time;
    event_.xid = message.xid();
    event_.clientId = message.clientId();
    event_.clientMac = message.clientMac();
    event_.vlan = message.vlan().value();
    event_.port = message.circuitId();
    event_.relayInfo = !event_.port.empty();
    event_.sourceMac = headers.srcMac;
    event_.source = headers.srcIp;
    event_.destination = headers.dstIp;
    if (message.arrival.live) {
        interface_ = Kcore::textOf(message.arrival.intf);
        event_.interface = interface_;
    } else if (message.arrival.ifIndex != 0) {
        interface_ = std::to_string(message.arrival.ifIndex);
        event_.interface = interface_;
    }
    message.isDhcp6() ? read6(message) : read4(message);
    return &event_;
}

void EventReader::read4(const Message& message) {
    const DhcpLib::DhcpHdr& header = message.header;
    event_.kind = messageKind(false, message.typeNumber(), header.bootpOp() == DhcpLib::BootpOpType::bootpRep);
    const bool fromServer = roleOf(event_.kind).fromServer;
    event_.relays = relaysOf4(message, fromServer);
    if (!header.giaddr().isAny()) event_.relay = header.giaddr();
    if (!header.ciaddr().isAny()) event_.ciaddr = header.ciaddr();
    event_.relayInfo = !message.relayInfo.empty();
    event_.hostname = message.optionData(hostNameOption);
    event_.rapidCommit = message.option(rapidCommitOption) != nullptr;
    event_.text = message.text();
    identify4(message);
    const Kitnet::IpAddr yiaddr = header.yiaddr();
    if (fromServer && (!yiaddr.isAny() || event_.kind == leaseActive))
        event_.assigned.push_back({yiaddr.isAny() ? header.ciaddr() : yiaddr, std::nullopt, message.leaseTime()});
    if (fromServer) return;
    const auto requested = message.requestedAddress();
    if (requested || event_.ciaddr.isUsable())
        event_.assigned.push_back({requested.value_or(header.ciaddr()), std::nullopt, std::nullopt});
}

/// A lease query is the transaction of a relay agent. Clients without a hardware address are told apart by their
/// identifier, or by the transaction alone, since not every server repeats the identifier.
void EventReader::identify4(const Message& message) {
    const DhcpLib::DhcpHdr& header = message.header;
    if (contains(leaseQueries, event_.kind))
        client_ = std::string(bytesOf(header.giaddr())).append(bytesOf(header.xid()));
    else if (!header.chaddr().isZero())
        client_ = bytesOf(header.chaddr());
    else
        client_ = bytesOf(header.xid());
    event_.client = client_;
    if (const auto id = message.serverId())
        server_ = bytesOf(*id);
    else
        server_ = roleOf(event_.kind).fromServer && event_.relays == 0 ? bytesOf(message.headers.srcIp.v4Addr())
                                                                       : std::string_view();
    event_.serverId = server_;
}

void EventReader::read6(const Message& message) {
    const Layer6& outer = message.layers.front();
    const Layer6& inner = *message.innermost();
    const bool toClient = outer.isRelay() ? outer.type == DhcpLib::Dhcp6MsgType::relayReply
                                          : message.headers.ports.dst.value() == Constants::dhcp6ClientPort;
    event_.kind = messageKind(true, static_cast<U8>(inner.type), toClient);
    event_.relays = static_cast<U8>(std::min<std::size_t>(message.layers.size() - 1, 255));
    Kitnet::IpGenAddr client = toClient ? event_.destination : event_.source;
    if (event_.relays != 0) {
        const Layer6& nearest = message.layers[message.layers.size() - 2];
        event_.relay = nearest.linkAddr.isUnspecified() ? client : Kitnet::IpGenAddr(nearest.linkAddr);
        client = nearest.peerAddr;
    }
    // An INFORMATION-REQUEST may come without a client identifier; the client then is its address.
    client_ = event_.clientId.empty() ? bytesOf(client.v6Addr()) : event_.clientId.substr(0, Exchange::longestText);
    event_.client = client_;
    event_.serverId = message.serverDuid();
    event_.rapidCommit = message.option(inner, Dhcp6OptionType::rapidCommit) != nullptr;
    for (const Lease6& lease : message.leases6)
        event_.assigned.push_back({lease.address, lease.prefixBits, lease.valid});
    message.forEachStatus([&](const Status6& status) {
        if (status.code != 0) event_.statuses.push_back({status.code, status.text});
    });
}

}  // namespace DhcpTool
