#include "DhcpLib/Dhcp6Hdr.h"
#include "Message6.h"
#include "Steps.h"

namespace DhcpRelay {

namespace {

using DhcpLib::Dhcp6Const;
using DhcpLib::Wire::ByteView;

U8 typeAt(const Transaction& t, U32 at) { return ByteView(*t.pkt).load<U8>(at); }

/// The key of a request or a reply, taken from the message that a relay message contains, at `messageAt`.
TransactionKey keyOf(const Transaction& t, const Ip6Addr& peer, U32 messageAt, bool isRelayed) {
    TransactionKey key;
    key.protocol = Protocol::dhcp6;
    std::copy_n(t.relayAddress.v6Addr().bytes(), sizeof(Ip6Addr), key.relayAddress.begin());
    std::copy_n(peer.bytes(), sizeof(Ip6Addr), key.client.begin());
    const std::string_view id =
        isRelayed ? ByteView(*t.pkt).text(messageAt + Dhcp6Const::linkaddr_offset, 2 * sizeof(Ip6Addr))
                  : ByteView(*t.pkt).text(messageAt + Dhcp6Const::xid_offset, Dhcp6Const::xid_size);
    std::copy(id.begin(), id.end(), key.id.begin());
    return key;
}

/// Whether the message that starts at `at` has a complete header and its options end exactly at the packet's end.
bool isWellFormed(const Transaction& t, U32 at, U32 headerBytes) {
    const ByteView bytes(*t.pkt);
    if (bytes.from(at) < headerBytes) return false;
    U32 next = at + headerBytes;
    while (bytes.has(next, Dhcp6Const::optdata_offset))
        next += Dhcp6Const::optdata_offset + bytes.load<U16>(next + Dhcp6Const::optlen_offset);
    return next == bytes.size();
}

Reason validate(Transaction& t) {
    if (t.bytes() < Dhcp6Const::reghdr_size) return Reason::malformed;
    const Sender6 sender = senderOf(typeAt(t, t.at));
    if (t.side == Side::server) {
        if (sender != Sender6::relayReply) return Reason::clientMessage;
        return isWellFormed(t, t.at, Dhcp6Const::relayhdr_size) ? Reason::none : Reason::malformed;
    }
    if (sender == Sender6::server || sender == Sender6::relayReply) return Reason::serverMessage;
    if (sender == Sender6::unknown) return Reason::none;
    const U32 headerBytes = sender == Sender6::relayForward ? Dhcp6Const::relayhdr_size : Dhcp6Const::reghdr_size;
    return isWellFormed(t, t.at, headerBytes) ? Reason::none : Reason::malformed;
}

bool canBePeer(const Ip6Addr& peer, const Links& links) {
    return !peer.isUnspecified() && !isMulticast(peer) && !links.isOwn(peer) && peer != Ip6Addr::fromText("::1");
}

Reason decideRequest(Transaction& t, Context& c) {
    const Link& link = c.links.of(t.port);
    const Ip6Addr peer = t.src.v6Addr();
    if (t.dst.v6Addr() != allAgents && !c.links.isOwn(t.dst.v6Addr())) return Reason::routed;
    if (!canBePeer(peer, c.links)) return Reason::badPeer;
    const bool isRelayed = senderOf(typeAt(t, t.at)) == Sender6::relayForward;
    if (isRelayed) {
        if (!link.config.trusted) return Reason::untrustedRelay;
        if (typeAt(t, t.at + Dhcp6Const::hopcnt_offset) >= c.settings.hopLimit6) return Reason::hopLimit;
    }
    // A relay's own address says which link it is on unless it is link-local (RFC 8415, section 19.1.2).
    t.relayAddress = isRelayed && !isLinkLocal(peer) ? Ip6Addr() : c.links.linkAddress(t.port);
    if (!c.memory.remember(keyOf(t, peer, t.at, isRelayed), {t.port, t.srcMac, false}, c.now))
        t.remark(Reason::secondPort);
    return Reason::none;
}

/// Looks for the port first in our own interface-id, then in the memory, then in the link-address.
Port portOfReply(const Transaction& t, const Context& c, std::string_view interfaceId,
                 const TransactionMemory::Origin* remembered) {
    Port port = c.interfaceId.portOf(c.links, interfaceId);
    if (remembered != nullptr && (!port.isKnown() || port.isSame(remembered->port))) return remembered->port;
    const Ip6Addr linkAddress = t.relayAddress.v6Addr();
    if (port.isKnown() || linkAddress.isUnspecified()) return port;
    for (std::size_t i = 0; i < c.links.clients().size(); ++i) {
        const Port candidate = c.links.nativePort(i);
        if (c.links.linkAddress(candidate) != linkAddress) continue;
        if (port.isKnown() || c.links.of(candidate).config.taggedVlans.any()) return {};
        port = candidate;
    }
    return port;
}

/// The hardware address in an interface identifier that was made of one (RFC 4291, appendix A); zero for another.
EthAddr macOf(const Ip6Addr& a) {
    EthAddr mac;
    if (!isLinkLocal(a) || a.byte(11) != 0xff || a.byte(12) != 0xfe) return mac;
    constexpr std::size_t from[] = {8, 9, 10, 13, 14, 15};
    for (std::size_t i = 0; i < std::size(from); ++i) mac.byteIs(i, a.byte(from[i]));
    mac.byteIs(0, mac.byte(0) ^ 2);
    return mac;
}

Reason decideReply(Transaction& t, Context& c) {
    const ByteView bytes(*t.pkt);
    const Ip6Addr peer = bytes.load<Ip6Addr>(t.at + Dhcp6Const::peeraddr_offset);
    const Ip6Addr linkAddress = bytes.load<Ip6Addr>(t.at + Dhcp6Const::linkaddr_offset);
    if (!linkAddress.isUnspecified() && !c.links.isRelayAddress(IpGenAddr(linkAddress)))
        return Reason::foreignRelayAddress;
    if (!canBePeer(peer, c.links)) return Reason::badPeer;
    const RelayOptions options = relayOptionsOf(t.pkt, t.at);
    if (options.message.bytes < Dhcp6Const::reghdr_size) return Reason::notServerMessage;
    const Sender6 sender = senderOf(typeAt(t, options.message.at));
    if (sender == Sender6::client || sender == Sender6::relayForward) return Reason::notServerMessage;
    t.toRelay = sender == Sender6::relayReply;
    if (t.toRelay && options.message.bytes < Dhcp6Const::relayhdr_size) return Reason::notServerMessage;

    t.relayAddress = linkAddress;
    const auto* const remembered = c.memory.find(keyOf(t, peer, options.message.at, t.toRelay), c.now);
    t.port = portOfReply(t, c, bytes.text(options.interfaceId.at, options.interfaceId.bytes), remembered);
    if (!t.port.isKnown()) return Reason::noPort;
    const Link& link = c.links.of(t.port);
    if (t.toRelay && !link.config.trusted) return Reason::badPeer;
    if (!link.isUp()) return Reason::noLink;
    t.clientAddress = peer;
    t.clientMac = remembered != nullptr && remembered->port.isSame(t.port) ? remembered->mac : macOf(peer);
    if (t.clientMac.isZero() && t.port.tag.isPresent()) return Reason::noClientAddress;
    t.replyAt = options.message.at;
    t.replyBytes = options.message.bytes;
    return Reason::none;
}

Reason decide(Transaction& t, Context& c) { return t.side == Side::client ? decideRequest(t, c) : decideReply(t, c); }

Reason rewrite(Transaction& t, const Context& c) {
    if (t.side == Side::server) {
        t.pkt = Kitnet::globalPktManager().newPkt({t.pkt->data() + t.replyAt, t.replyBytes});
        t.at = 0;
        return Reason::none;
    }
    const bool isRelayed = senderOf(typeAt(t, t.at)) == Sender6::relayForward;
    RelayForward forward;
    forward.port = t.port;
    forward.hopCount = isRelayed ? static_cast<U8>(typeAt(t, t.at + Dhcp6Const::hopcnt_offset) + 1) : U8{0};
    forward.linkAddress = t.relayAddress.v6Addr();
    forward.peer = t.src.v6Addr();
    forward.interfaceId = c.interfaceId.textOf(c.links, t.port);
    if (!isRelayed) forward.clientMac = t.srcMac;
    forward.vrf = c.settings.vrf;
    const PktPtr relayed = relayForwardOf({t.pkt->data() + t.at, t.bytes()}, forward, c.links.of(t.port));
    if (!relayed) return Reason::notRewritable;
    t.pkt = relayed;
    t.at = 0;
    return Reason::none;
}

}  // namespace

const Steps steps6{validate, decide, rewrite};

}  // namespace DhcpRelay
