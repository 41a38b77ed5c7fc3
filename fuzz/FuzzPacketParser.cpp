// PacketParser: neither bytes after the frame nor calling the stages one by one changes what it finds. reset() clears
// everything.

#include "DhcpLib/DhcpParser.h"
#include "Kcore/Exception.h"
#include "OptionsInput.h"
#include "SwitchPorts.h"

using namespace DhcpLib;
using namespace DhcpTest;
using namespace DhcpTest::Fuzz;

namespace {

/// How a frame arrives. Bits 0 and 1: the port. Bit 2: a message without headers. Bit 3: a tag beside the frame. Bit 4:
/// with another TPID.
struct Arrival {
    U8 how;
    bool bare() const { return (how & 4) != 0; }
    const Kitnet::IntfId& port() const { return ports[how & 3]; }
    void apply(Kitnet::Pkt& pkt) const {
        if ((how & 8) != 0) pkt.vlanTagIs((how & 16) != 0 ? 0x88a8 : 0x8100, static_cast<U16>(how * 0x0111));
    }
};

enum class Outcome : U8 { refused, accepted, raised };

template <class Parse>
Outcome outcomeOf(Parse parse) {
    try {
        return parse() ? Outcome::accepted : Outcome::refused;
    } catch (const Kcore::RangeException&) {  // a tag with VLAN 4095
        return Outcome::raised;
    }
}

void checkStages(const PktPtr& pkt, const Arrival& arrival, const PacketParser& whole, Outcome outcome) {
    PacketParser staged(whole.bridgingConfig());
    const Outcome headers = outcomeOf([&] {
        return staged.doParseEthHdr(pkt, arrival.port(), true) && staged.doParseIpHdr(pkt) && staged.doParseUdpHdr(pkt);
    });
    expect(headers == outcome || (headers == Outcome::accepted && outcome == Outcome::refused));
    expect(staged.offset() == whole.offset() && staged.vlanId() == whole.vlanId() && staged.tagged() == whole.tagged());
    expect(staged.srcIp() == whole.srcIp() && staged.udpDstPort() == whole.udpDstPort());
    if (outcome != Outcome::accepted) return;
    expect(whole.offset() == whole.etherHdrLen() + whole.ipHdrLen() + whole.udpHdrLen());
    expect(whole.isDhcp() == (whole.dhcpMsgType() != "BOOTP"));
    expect(whole.dhcpMsgTypeOpt() <= 13 && whole.vlanId().value() <= 4094);
}

/// The attributes are what the readers find in the same options area.
void checkOptions(const PktPtr& pkt, const PacketParser& p) {
    const U32 offset = p.offset();
    U8 type = 0;
    expect(p.dhcpMsgType() == getDhcpMsgTypeStringAndOpt(pkt, offset, type) && p.dhcpMsgTypeOpt() == type);
    if (!p.isDhcp()) return;
    Model::LeaseReply lease;
    lease.serverId = {};
    lease = Model::readLeaseQuery(pkt, offset, lease);
    const Model::RelayInfo info = Model::readInfo(parseInfoOptNew, pkt, offset);
    if (!info.serverIdOverride.isAny()) {
        lease.serverId = info.serverIdOverride;
        lease.serverIdPresent = true;
    }
    expect(p.leaseTimeExist() == lease.leaseTimePresent && p.leaseTime() == lease.leaseTime);
    expect(p.lastTransactionTimeExist() == lease.lastTransactionTimePresent);
    expect(p.lastTransactionTime() == lease.lastTransactionTime);
    expect(p.serverIdExist() == lease.serverIdPresent && p.serverId() == lease.serverId);
    const auto& ips = p.associatedIps();
    expect(std::equal(ips.begin(), ips.end(), lease.ips.begin(), lease.ips.end()));
    expect(info.circuitId == "-" || p.circuitId() == info.circuitId);
    expect(info.remoteId == "-" || p.remoteId() == info.remoteId);
    Kcore::String host, list, vendorClass;
    parseDot1xProfilingOpts(pkt, host, list, vendorClass, offset);
    expect(p.hostname() == host && p.paramReqList() == list && p.vendorClassId() == vendorClass);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const U8* data, std::size_t size) {
    if (size < 2) return 0;
    const Arrival arrival{data[0]};
    const Octets frame(data + 2, data + size);
    const std::size_t second = frame.size() * data[1] / 256;  // where a second frame starts, for a reused parser
    const auto bridging = config();
    PacketParser first(bridging), kept(bridging);
    Outcome outcome = Outcome::refused;
    bool any = false;
    for (const PktPtr& pkt : packets(frame)) {
        arrival.apply(*pkt);
        PacketParser parser(bridging);
        const Outcome here = outcomeOf([&] { return parser.doParse(pkt, arrival.port(), arrival.bare()); });
        expect(!any || (parser == first && here == outcome && parser.hash() == first.hash()));
        expect(bytesOf(*pkt) == frame);
        if (!arrival.bare()) checkStages(pkt, arrival, parser, here);
        if (here == Outcome::accepted) checkOptions(pkt, parser);
        first = parser;
        outcome = here;
        any = true;
    }
    const auto parseKept = [&](const Octets& bytes, bool bare) {
        outcomeOf([&] { return kept.doParse(packet(bytes), arrival.port(), bare); });
    };
    parseKept(Octets(frame.begin() + static_cast<std::ptrdiff_t>(second), frame.end()), false);
    const auto ips = kept.associatedIps();
    parseKept(frame, true);  // uses the header lengths of the previous frame
    for (const auto& ip : ips) expect(kept.associatedIpsHas(ip));
    kept.reset();
    expect(kept == PacketParser(bridging));
    return 0;
}
