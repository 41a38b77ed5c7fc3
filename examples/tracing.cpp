// Shows what the library tells about a frame that it refuses: tracing FILE

#include <cstddef>
#include <iostream>
#include <string>

#include "DhcpLib/DhcpParser.h"
#include "DhcpLib/OptionParser.h"
#include "Frames.h"
#include "Kcore/Assert.h"
#include "Kcore/Encoding.h"
#include "Tyk/Trace.h"

namespace {

using namespace DhcpLib;

// [sink]
/// Sends the library's trace lines of levels 1 and 2 (failures, refused frames) to standard output.
void traceToStandardOutput() {
    Tyk::TraceHandle("DhcpLib", false).levelIs(2);
    Tyk::traceSinkIs([](const Tyk::TraceLine& line) {
        std::string text;
        Kcore::appendQuoted(text, line.text);  // it can contain bytes from the network
        std::cout << line.handle << " level " << line.level << ": " << text << '\n';
    });
}
// [/sink]

// [rejection]
/// Asks the parser itself. An agent counts these and needs no trace for it.
void parse(const PktPtr& frame) {
    PacketParser parser(nullptr);
    if (!accepted([&] { return parser.doParse(frame, {}, false); }))
        std::cout << "refused: " << parser.rejection() << '\n';
}
// [/rejection]

// [assertion]
/// Makes a failed assertion an exception, which the agent's loop catches. The packet is then unchanged.
void assertionsThrow() {
    Kcore::assertionHandlerIs([](const Kcore::Assertion& failed) { throw Kcore::AssertionError(failed); });
}
// [/assertion]

/// A header view needs 34 bytes.
void breakAnInvariant() {
    try {
        const DhcpHdrWrapper header(Kitnet::globalPktManager().newPkt(), 0);
    } catch (const Kcore::AssertionError& failed) {
        std::cout << "assertion: " << failed.expression() << '\n';
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return std::cerr << "usage: tracing FILE\n", 2;
    traceToStandardOutput();
    assertionsThrow();
    for (const PktPtr& frame : framesOf(argv[1])) parse(frame);
    breakAnInvariant();
    // [ring]
    std::size_t kept = 0;
    Tyk::RingTrace::visit([&](const Tyk::RingTrace::Record&) { ++kept; });  // RingTrace::dump prints them
    // [/ring]
    std::cout << kept << " recent messages in memory\n";
}
