#include "DhcpLib/DhcpHdr.h"
#include "DhcpLib/OptionParser.h"
#include "DhcpLib/Walk.h"
#include "Steps.h"

namespace DhcpRelay {

namespace {

using DhcpLib::BootpOpType;
using DhcpLib::Constants;
using DhcpLib::DhcpHdr;
using DhcpLib::Wire::ByteView;

constexpr U32 chaddrBytes = 16, ipAndUdpBytes = 28, chaddrAt = 28;
constexpr U8 nak = 6;  // DHCP message type, RFC 2132, section 9.6
constexpr U8 optionOverload = 52, endOption = 255;

DhcpHdr headerOf(const Transaction& t) { return ByteView(*t.pkt).load<DhcpHdr>(t.at); }

TransactionKey keyOf(const Transaction& t, const DhcpHdr& header) {
    TransactionKey key;
    const ByteView bytes(*t.pkt);
    std::copy_n(t.relayAddress.v4Addr().bytes(), sizeof(IpAddr), key.relayAddress.begin());
    // Servers may not return the bytes after the hardware address.
    const std::string_view chaddr = bytes.text(t.at + chaddrAt, header.hlen());
    std::copy(chaddr.begin(), chaddr.end(), key.client.begin());
    std::copy_n(header.xid().bytes(), sizeof(U32), key.id.begin());
    return key;
}

/// Whether a field of the header, which option 52 declares to hold options, holds an option 82.
bool hasInfoIn(const Transaction& t, U32 field, U32 size) {
    bool found = false;
    DhcpLib::walkItems<DhcpLib::PaddedItemShape>(
        ByteView(*t.pkt), t.at + field, U32{0}, [size](U32 cursor) { return cursor < size; },
        [&](const auto& head, U32) {
            found = head.code == static_cast<U8>(DhcpLib::DhcpOptionType::infoOpt);
            return !found && head.code != endOption;
        });
    return found;
}

/// No relay agent puts option 82 into these fields, but a client can, and some servers read it there.
bool hidesInfo(const Transaction& t) {
    constexpr U8 fileHoldsOptions = 1, snameHoldsOptions = 2;
    constexpr U32 snameAt = 44, snameBytes = 64, fileAt = 108, fileBytes = 128;
    const auto overload = DhcpLib::findOption(t.pkt, t.at, DhcpLib::DhcpOptionType{optionOverload});
    if (!overload || overload.len() == 0) return false;
    const U8 fields = ByteView(*t.pkt).load<U8>(overload.dataOffset());
    return ((fields & fileHoldsOptions) != 0 && hasInfoIn(t, fileAt, fileBytes)) ||
           ((fields & snameHoldsOptions) != 0 && hasInfoIn(t, snameAt, snameBytes));
}

OptionFacts factsOf(const Transaction& t) {
    OptionFacts facts;
    const DhcpLib::AreaState area = DhcpLib::optionsAreaState(t.pkt, t.at);
    facts.isBootp = area == DhcpLib::AreaState::noCookie || area == DhcpLib::AreaState::noSpace;
    if (facts.isBootp) return facts;
    facts.isWellFormed = area == DhcpLib::AreaState::wellFormed;
    facts.hasInfo = static_cast<bool>(DhcpLib::findOption(t.pkt, t.at, DhcpLib::DhcpOptionType::infoOpt));
    facts.hidesInfo = hidesInfo(t);
    const auto type = DhcpLib::findOption(t.pkt, t.at, DhcpLib::DhcpOptionType::msgType);
    if (type && type.len() == 1) facts.messageType = ByteView(*t.pkt).load<U8>(type.dataOffset());
    return facts;
}

/// The circuit-id in the message's option 82; empty if there is none.
std::string_view circuitIdOf(const Transaction& t) {
    return DhcpLib::findInfoSubOption(t.pkt, t.at, DhcpLib::DhcpInformationSubOptionType::circuitId).data();
}

Reason validate(Transaction& t) {
    if (t.bytes() < Constants::bootpHdrSize) return Reason::malformed;
    const DhcpHdr header = headerOf(t);
    if (header.bootpOp() == BootpOpType::bootpOpUnknown || header.hlen() > chaddrBytes) return Reason::malformed;
    const bool isRequest = header.bootpOp() == BootpOpType::bootpReq;
    if (isRequest && t.side == Side::server) return Reason::clientMessage;
    if (!isRequest && t.side == Side::client) return Reason::serverMessage;
    t.options = factsOf(t);
    return t.options.isWellFormed ? Reason::none : Reason::malformed;
}

/// Whether the request is sent to a relay agent. The kernel routes the others to their server.
bool isForAgent(const Transaction& t, const Links& links) {
    const IpAddr dst = t.dst.v4Addr();
    if (dst.value() == 0xffffffff || links.isOwn(dst)) return true;
    const auto& broadcasts = links.of(t.port).broadcasts;
    return std::find(broadcasts.begin(), broadcasts.end(), dst) != broadcasts.end();
}

/// Decides what to do with the request's own option 82 (RFC 3046, section 2.1.1).
Reason decideInfo(Transaction& t, const Context& c) {
    if (t.options.isBootp) return Reason::none;
    // Also if the request has none: another one may follow the end option, where some servers look for it.
    t.info = InfoAction::replace;
    const InfoPolicy policy = c.links.of(t.port).config.trusted ? c.settings.trustedInfo : c.settings.untrustedInfo;
    if (t.options.hidesInfo && policy != InfoPolicy::keep) return Reason::untrustedInfo;
    if (!t.options.hasInfo) return Reason::none;
    switch (policy) {
        case InfoPolicy::discard:
            return Reason::untrustedInfo;
        case InfoPolicy::replace:
            return Reason::none;
        case InfoPolicy::keep:
            break;
    }
    // A reply with such a circuit-id would be delivered to the port that it names.
    if (c.circuitId.isOfSomePort(c.links, circuitIdOf(t))) return Reason::forgedPort;
    t.info = InfoAction::leave;
    return Reason::none;
}

Reason decideRequest(Transaction& t, Context& c) {
    const DhcpHdr header = headerOf(t);
    if (!isForAgent(t, c.links)) return Reason::routed;
    if (header.hops() >= c.settings.hopLimit4) return Reason::hopLimit;
    if (!header.giaddr().isAny()) {
        if (c.links.isOwn(header.giaddr()) || c.links.isRelayAddress(header.giaddr())) return Reason::ownRelayAddress;
        if (!c.links.of(t.port).config.trusted) return Reason::untrustedRelay;
        t.relayAddress = header.giaddr();  // the server replies to that relay, so nothing is remembered
        return Reason::none;
    }
    const IpAddr giaddr = c.links.giaddr(t.port);
    if (giaddr.isAny()) return Reason::noRelayAddress;
    t.relayAddress = giaddr;
    if (const Reason reason = decideInfo(t, c); reason != Reason::none) return reason;
    const bool keepsInfo = t.options.hasInfo && t.info == InfoAction::leave;
    if (!c.memory.remember(keyOf(t, header), {t.port, t.srcMac, keepsInfo}, c.now)) t.remark(Reason::secondPort);
    return Reason::none;
}

/// Looks for the port first in our own circuit-id, then in the memory, then in the relay address.
Port portOfReply(const Transaction& t, const Context& c, const TransactionMemory::Origin* remembered) {
    Port port = remembered != nullptr && remembered->foreignInfo ? Port{} : c.circuitId.portOf(c.links, circuitIdOf(t));
    if (remembered != nullptr && (!port.isKnown() || port.isSame(remembered->port))) return remembered->port;
    if (port.isKnown()) return c.links.giaddr(port) == t.relayAddress.v4Addr() ? port : Port{};
    for (std::size_t i = 0; i < c.links.clients().size(); ++i) {
        const Port candidate = c.links.nativePort(i);
        if (c.links.giaddr(candidate) != t.relayAddress.v4Addr()) continue;
        if (port.isKnown() || c.links.of(candidate).config.taggedVlans.any()) return {};
        port = candidate;
    }
    return port;
}

/// RFC 2131, section 4.1, and RFC 1542, section 4.1.2.
void decideDestination(Transaction& t, const DhcpHdr& header, U8 messageType) {
    constexpr U32 everyone = 0xffffffff;
    const EthAddr chaddr = header.chaddr();
    const bool hasMac = header.htype() == Constants::hardwareTypeEthernet && header.hlen() == sizeof(EthAddr) &&
                        !chaddr.isZero() && (chaddr.byte(0) & 1) == 0;
    const bool asksForBroadcast = (header.flagsU16() & 0x8000) != 0;
    IpAddr dst(everyone);
    if (hasMac && messageType != nak) {
        if (!header.ciaddr().isAny())
            dst = header.ciaddr();
        else if (!asksForBroadcast && !header.yiaddr().isAny())
            dst = header.yiaddr();
    }
    t.clientAddress = dst;
    t.clientMac = dst.value() == everyone ? EthAddr::fromText("ff:ff:ff:ff:ff:ff") : chaddr;
}

Reason decideReply(Transaction& t, Context& c) {
    const DhcpHdr header = headerOf(t);
    if (!c.links.isRelayAddress(header.giaddr())) return Reason::foreignRelayAddress;
    t.relayAddress = header.giaddr();
    const TransactionMemory::Origin* const remembered = c.memory.find(keyOf(t, header), c.now);
    t.port = portOfReply(t, c, remembered);
    if (!t.port.isKnown()) return Reason::noPort;
    if (!c.links.of(t.port).isUp()) return Reason::noLink;
    if (DhcpLib::findInfoSubOption(t.pkt, t.at, DhcpLib::DhcpInformationSubOptionType::vssControl))
        t.remark(Reason::vrfNotUsed);
    const bool isKept = remembered != nullptr && remembered->foreignInfo;
    t.info = t.options.hasInfo && !isKept ? InfoAction::remove : InfoAction::leave;
    decideDestination(t, header, t.options.messageType);
    return Reason::none;
}

Reason decide(Transaction& t, Context& c) { return t.side == Side::client ? decideRequest(t, c) : decideReply(t, c); }

DhcpLib::RelayRewrite insertionFor(const Transaction& t, const Context& c) {
    const Settings& s = c.settings;
    const IpAddr linkAddress = c.links.of(t.port).address4;
    DhcpLib::RelayRewrite r;
    r.offset = t.at;
    r.circuitId = c.circuitId.textOf(c.links, t.port);
    r.remoteId = c.remoteId.textOf(c.links, t.port);
    r.linkselectionId = s.linkSelectionIsLinks ? linkAddress : s.linkSelection;
    if (s.serverIdOverride) r.serverId = linkAddress;
    r.vpnId = s.vrf;
    r.vssControlDisable = !s.vssControl;
    return r;
}

Reason addInfo(Transaction& t, const Context& c) {
    const DhcpLib::RelayRewrite insertion = insertionFor(t, c);
    constexpr auto generation = DhcpLib::RelayGeneration::preparePacket;
    const auto forecast = DhcpLib::relayRewriteCheck(t.pkt, insertion, generation);
    if (!forecast.isRewritable()) return Reason::notRewritable;
    if (forecast.messageBytes + ipAndUdpBytes > c.links.serverMtu()) {
        t.remark(Reason::pastMtu);
        return Reason::none;
    }
    return DhcpLib::relayRewrite(t.pkt, insertion, generation) ? Reason::none : Reason::notRewritable;
}

Reason rewrite(Transaction& t, const Context& c) {
    if (t.info != InfoAction::leave && DhcpLib::removeInfoOption(t.pkt, t.at).area != DhcpLib::AreaState::wellFormed)
        return Reason::notRewritable;
    if (t.side == Side::server) return Reason::none;
    if (t.info == InfoAction::replace)
        if (const Reason reason = addInfo(t, c); reason != Reason::none) return reason;
    DhcpHdr header = headerOf(t);
    header.hopsInc(1);
    header.giaddrIs(t.relayAddress.v4Addr());
    DhcpLib::Wire::store(*t.pkt, t.at, std::span(reinterpret_cast<const U8*>(&header), sizeof header));
    return Reason::none;
}

}  // namespace

const Steps steps4{validate, decide, rewrite};

}  // namespace DhcpRelay
