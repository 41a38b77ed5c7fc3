// Adds option 82 to the requests in captures, and takes it out of the replies: option82 FILE...

#include <iostream>

#include "DhcpLib/DhcpParser.h"
#include "DhcpLib/OptionParser.h"
#include "Frames.h"
#include "Kitnet/UdpMend.h"

namespace {

using namespace DhcpLib;

// [rewrite]
/// A request gets option 82, a reply loses it. `offset` is the position of the BOOTP header.
bool rewrite(const PktPtr& pkt, BootpOption op, U32 offset, const Kitnet::IntfId& port) {
    const RelayRewrite how{.op = op, .circuitId = port.name(), .remoteId = "access-sw1", .offset = offset};
    constexpr auto generation = RelayGeneration::preparePacketNew;
    const RelayRewriteForecast forecast = relayRewriteCheck(pkt, how, generation);  // does not change the packet
    if (forecast.isRewritable()) return relayRewrite(pkt, how, generation);
    std::cout << "refused: " << forecast.verdict << '\n';
    return false;
}
// [/rewrite]

// [frame]
void relay(const PktPtr& pkt, const Kitnet::IntfId& port) {
    PacketParser parser(nullptr);
    if (!accepted([&] { return parser.doParse(pkt, {}, false); }) || !parser.isDhcp()) return;
    const U32 offset = parser.offset(), before = pkt->bytes() - offset;
    const bool isRequest = parser.dhcpOpType() == BootpOpType::bootpReq;
    if (isRequest && !parser.giaddr().isAny()) return;  // another relay agent was first
    if (!rewrite(pkt, isRequest ? BootpOption::bootpRequest : BootpOption::bootpReply, offset, port)) return;
    Kitnet::mendUdp(*pkt, parser.etherHdrLen());  // lengths and checksums of IPv4 and UDP
    const FoundOption info = findOption(pkt, offset, DhcpOptionType::infoOpt);
    std::cout << parser.dhcpMsgType() << ": message " << before << " -> " << pkt->bytes() - offset << " bytes, ";
    if (info)
        std::cout << "option 82 of " << +info.len() << " bytes\n";
    else
        std::cout << "no option 82\n";
}
// [/frame]

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) return std::cerr << "usage: option82 FILE...\n", 2;
    for (int i = 1; i < argc; ++i)
        for (const PktPtr& frame : framesOf(argv[i])) relay(frame, Kitnet::IntfId("Ethernet1"));
}
