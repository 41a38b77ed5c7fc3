// One relay agent handles frames and datagrams of clients and servers one after the other, so that a message meets the
// state that earlier ones left. The agent sends only well-formed messages that its rules allow.

#include "DhcpLib/DhcpHdr.h"
#include "DhcpLib/OptionParser.h"
#include "OptionsInput.h"
#include "agents/RelayWorld.h"

using namespace DhcpTest;
using namespace DhcpTest::Fuzz;

namespace {

/// How a message of the input arrives. Bits 0 and 1: the client link, or 3 for a server. Bit 2: a DHCPv6 server. Bit 3:
/// the UDP checksum is not set. Bit 4: a tag beside the frame. Bit 5: with another TPID.
struct Arrival {
    U8 how;
    bool isFromServer() const { return (how & 3) == 3; }
    std::size_t link() const { return how & 3; }
    const char* server() const { return (how & 4) != 0 ? server6 : server4; }
    bool checksumReady() const { return (how & 8) == 0; }
    void tag(Kitnet::Pkt& pkt) const {
        if ((how & 16) != 0) pkt.vlanTagIs((how & 32) != 0 ? 0x88a8 : 0x8100, 20);
    }
};

unsigned infoOptions(const Transaction& t) {
    if (DhcpLib::optionsAreaState(t.pkt, t.at) != DhcpLib::AreaState::wellFormed) return 0;  // BOOTP has no options
    const DhcpLib::Wire::ByteView bytes(*t.pkt);
    unsigned found = 0;
    U32 at = t.at + 240;
    for (U8 code; at < bytes.size() && (code = bytes.load<U8>(at)) != 255;) {
        if (code == 82) ++found;
        at += code == 0 ? 1u : 2u + bytes.load<U8>(at + 1);
    }
    return found;
}

void checkRelayed(const Transaction& t, const World& world) {
    const DhcpLib::Wire::ByteView bytes(*t.pkt);
    const Link& link = world.context.links.of(t.port);
    expect(t.at < bytes.size() && world.context.links.serves(t.port));
    if (t.protocol == Protocol::dhcp6) return expect(bytes.load<U8>(t.at) == 12);
    const auto header = bytes.load<DhcpLib::DhcpHdr>(t.at);
    expect(header.bootpOp() == DhcpLib::BootpOpType::bootpReq && !header.giaddr().isAny() && header.hops() != 0);
    expect(link.config.trusted || (world.context.links.isRelayAddress(header.giaddr()) && infoOptions(t) <= 1));
}

void checkDelivered(const Transaction& t, const World& world) {
    const Link& link = world.context.links.of(t.port);
    expect(link.isUp() && world.context.links.serves(t.port) && t.clientAddress.isUsable());
    Destination to;
    to.tag = t.port.tag;
    to.src = to.dst = t.clientAddress;
    for (const PktPtr& frame : framesOf(t.pkt, to, link.device.mtu())) expect(frame->bytes() <= link.device.mtu() + 14);
}

}  // namespace

/// The input is a list of messages, each an Arrival (1), a length (2) and that many bytes.
extern "C" int LLVMFuzzerTestOneInput(const U8* data, std::size_t size) {
    Settings settings = usualSettings();
    settings.untrustedInfo = InfoPolicy::replace;
    settings.vrf = "blue";
    settings.linkSelectionIsLinks = true;
    World world(settings);
    while (size >= 3) {
        const Arrival arrival{data[0]};
        const std::size_t length = std::min<std::size_t>(size - 3, data[1] * 256u + data[2]);
        const Octets bytes(data + 3, data + 3 + length);
        data += 3 + length;
        size -= 3 + length;
        if (arrival.isFromServer()) {
            const std::string outcome = world.arrives(bytes, arrival.server());
            if (outcome.starts_with("delivered")) checkDelivered(world.last, world);
            continue;
        }
        const PktPtr frame = packet(bytes);
        arrival.tag(*frame);
        const std::string outcome = world.arrives(arrival.link(), frame, arrival.checksumReady());
        if (outcome.starts_with("relayed")) checkRelayed(world.last, world);
    }
    return 0;
}
