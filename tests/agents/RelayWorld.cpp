#include "RelayWorld.h"

#include "DhcpLib/Dhcp6Hdr.h"
#include "DhcpLib/DhcpHdr.h"
#include "DhcpLib/OptionParser.h"
#include "Message6.h"

namespace DhcpTest {

namespace {

constexpr char linkMac[] = "02:00:00:00:00:";

KernelNetInfo::IntfStatus deviceOf(U32 ifIndex) {
    return {ifIndex, EthAddr::fromText(linkMac + std::string("0") + std::to_string(ifIndex)), true, true, 1500};
}

void describe4(const Transaction& t, std::string& out) {
    const auto header = DhcpLib::Wire::load<DhcpLib::DhcpHdr>(*t.pkt, t.at);
    Tyk::String circuitId, remoteId, vrf, intfName;
    bool vss = false;
    IpAddr serverId, link;
    IpGenAddr vtep;
    DhcpLib::parseInfoOptNew(t.pkt, circuitId, remoteId, vrf, vss, serverId, link, intfName, vtep, t.at);
    out += " giaddr " + Kcore::textOf(header.giaddr()) + " hops " + std::to_string(header.hops());
    out += circuitId.empty() ? " no option 82" : " circuit-id " + circuitId.str();
}

void describe6(const Transaction& t, std::string& out) {
    const auto header = DhcpLib::Dhcp6RelayHdr(t.pkt, static_cast<U16>(t.at));
    const RelayOptions options = relayOptionsOf(t.pkt, t.at);
    const DhcpLib::Wire::ByteView bytes(*t.pkt);
    out += " hops " + std::to_string(header.hopCount()) + " link " + Kcore::textOf(header.linkAddr()) + " peer " +
           Kcore::textOf(header.peerAddr()) + " interface-id " +
           std::string(bytes.text(options.interfaceId.at, options.interfaceId.bytes)) + " message " +
           std::to_string(bytes.load<U8>(options.message.at));
}

}  // namespace

Settings usualSettings() {
    Settings s;
    s.ipv4 = s.ipv6 = true;
    for (const char* name : {"eth1", "eth2", "eth3"}) s.clients.push_back({IntfId(name), false, {}});
    s.clients[0].taggedVlans.set(20);
    s.clients[1].trusted = true;
    s.servers4 = {IpAddr::fromText(server4)};
    s.servers6 = {Ip6Addr::fromText(server6)};
    s.transactions = 16;
    return s;
}

World::World(const Settings& settings) : context(settings) {
    context.now = 1000;
    std::vector<KernelNetInfo::HostAddress> addresses{{9, IpAddr::fromText("10.82.0.1"), 24},
                                                      {1, IpAddr::fromText("10.20.0.1"), 24},
                                                      {2, IpAddr::fromText("10.30.0.1"), 24}};
    for (U32 i = 1; i <= 3; ++i) {
        const std::string n = std::to_string(i);
        context.links.deviceIs("eth" + n, deviceOf(i));
        addresses.push_back({i, Ip6Addr::fromText("fe80::" + n), 64});
        addresses.push_back({i, Ip6Addr::fromText("2001:db8:" + n + "::1"), 64});
    }
    context.links.addressesAre(addresses);
}

std::string World::outcome(Reason reason) const {
    std::string out = reason != Reason::none ? std::string(rowOf(reason).name) : describe(last);
    for (std::size_t i = 0; i < reasonCount; ++i)
        if (last.remarks[i]) out += " +" + std::string(rowOf(static_cast<Reason>(i)).name);
    return out;
}

std::string World::arrives(std::size_t link, const PktPtr& frame, bool checksumReady) {
    last = {};
    const Receipt receipt = receiveFrame({frame, checksumReady}, context.links, link, last);
    if (!receipt.isOurs) return "ignored";
    return outcome(receipt.reason != Reason::none ? receipt.reason : process(last, context));
}

std::string World::arrives(const Octets& datagram, const char* from, U32 ifIndex) {
    last = {};
    last.src = IpGenAddr::fromText(from);
    last.protocol = last.src.isV4() ? Protocol::dhcp4 : Protocol::dhcp6;
    last.side = Side::server;
    last.pkt = packet(datagram);
    last.ifIndex = ifIndex;
    return outcome(process(last, context));
}

std::string describe(const Transaction& t) {
    std::string out = t.side == Side::client ? "relayed" : "delivered";
    if (t.side == Side::server) {
        out += " to " + Kcore::textOf(t.clientAddress) + " " + Kcore::textOf(t.clientMac) + " on eth" +
               std::to_string(t.port.link + 1) + " vlan " + std::to_string(t.port.vlan);
        if (t.port.tag.isPresent()) out += t.port.tag.tpid == 0x88a8 ? " tag 88a8" : " tag 8100";
        if (t.port.tag.tci >> 13 != 0) out += " priority " + std::to_string(t.port.tag.tci >> 13);
        return out + (t.toRelay ? " port 547" : "");
    }
    (t.protocol == Protocol::dhcp4 ? describe4 : describe6)(t, out);
    return out;
}

PktPtr frameOf(const SentFrame& sent, const Octets& message) {
    const std::string src = sent.src;
    const bool isV4 = src.find(':') == src.npos;
    const std::string dst = *sent.dst != '\0' ? sent.dst : isV4 ? "255.255.255.255" : "ff02::1:2";
    const std::string dstMac = *sent.dstMac != '\0' ? sent.dstMac : isV4 ? "ff:ff:ff:ff:ff:ff" : "33:33:00:01:00:02";
    Destination to;
    to.srcMac = EthAddr::fromText(sent.srcMac);
    to.dstMac = EthAddr::fromText(dstMac);
    to.tag = sent.tag;
    to.src = IpGenAddr::fromText(src.empty() ? "0.0.0.0" : src);
    to.dst = IpGenAddr::fromText(dst);
    to.srcPort = isV4 ? 68 : 546;
    to.dstPort = isV4 ? 67 : 547;
    return framesOf(packet(message), to, 0).front();
}

Octets bytesOf(const Message4& m) {
    Octets bytes(236, 0);
    const auto put = [&](std::size_t at, const auto& field) {
        std::copy_n(field.bytes(), sizeof field, bytes.begin() + static_cast<std::ptrdiff_t>(at));
    };
    bytes[0] = m.op;
    bytes[1] = 1;
    bytes[2] = 6;
    bytes[3] = m.hops;
    put(4, Kitnet::NetU32(m.xid));
    put(10, Kitnet::NetU16(m.flags));
    put(12, IpAddr::fromText(m.ciaddr));
    put(16, IpAddr::fromText(m.yiaddr));
    put(24, IpAddr::fromText(m.giaddr));
    put(28, EthAddr::fromText(m.chaddr));
    const Octets file = hex(m.file);
    std::copy(file.begin(), file.end(), bytes.begin() + 108);
    return bytes + hex(m.options);
}

}  // namespace DhcpTest
