// Says what kind of device sends the DHCP requests of captures: profiling FILE...

#include <iostream>
#include <set>
#include <string_view>

#include "DhcpLib/DhcpParser.h"
#include "DhcpLib/OptionParser.h"
#include "Frames.h"

namespace {

using namespace DhcpLib;

// [table]
/// Devices by the options that their DHCP clients ask for, in the order in which they ask.
struct Fingerprint {
    std::string_view paramReqList;   // option 55
    std::string_view vendorClassId;  // start of option 60
    std::string_view device;
};
constexpr Fingerprint fingerprints[] = {
    {"1,28,2,3,15,6,12,26,42", "", "Linux host"},
    {"1,3,6,12,15,28,42", "Acme:Laser", "laser printer"},
};
// [/table]

// [classify]
/// The device that sent the message whose BOOTP header is at `offset`.
std::string_view deviceOf(const PktPtr& pkt, U32 offset) {
    Kcore::String hostName, paramReqList, vendorClassId;  // start empty: parameters are appended to paramReqList
    if (!parseDot1xProfilingOpts(pkt, hostName, paramReqList, vendorClassId, offset)) return "malformed";
    for (const Fingerprint& each : fingerprints)
        if (paramReqList == each.paramReqList && vendorClassId.view().starts_with(each.vendorClassId))
            return each.device;
    return "unknown";
}
// [/classify]

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) return std::cerr << "usage: profiling FILE...\n", 2;
    std::set<Kitnet::EthAddr> known;
    for (int i = 1; i < argc; ++i) {
        for (const PktPtr& frame : framesOf(argv[i])) {
            PacketParser parser(nullptr);
            if (!accepted([&] { return parser.doParse(frame, {}, false); })) continue;
            if (parser.dhcpOpType() != BootpOpType::bootpReq || parser.paramReqList().empty() ||
                !known.insert(parser.chaddr()).second)
                continue;
            std::cout << parser.chaddr() << ": " << deviceOf(frame, parser.offset()) << " (asks for "
                      << parser.paramReqList() << ")\n";
        }
    }
}
