#include "FailingAllocations.h"
#include "RelayRewriteRows.h"

using namespace DhcpTest;

namespace {

TEST(AllocationFailure, LeavesAPacketAsItWasBeforeARewrite) {
    using namespace Relay;
    const RelayRewrite add{.circuitId = "ab", .linkselectionId = linkAddress, .vendorSpecificSubOptIntfName = "Et1"};
    const RelayRewrite remove{.op = reply, .vendorSpecificSubOptIntfName = "Et1"};
    const Octets ends[] = {hex("FF"), hex("FF EE*400"), hex("2B FE 11*254 2B FE 22*254 2B FE 33*254 2B FE 44*254 FF")};
    int failures = 0;
    for (const char* const info : {"", "52 0D 09 07 00 00 00 09 02 'AB' 01 02 'xy'"})
        for (const Octets& end : ends)
            for (const auto storage : {Kitnet::Pkt::Storage::tight, Kitnet::Pkt::Storage::roomy})
                for (const RelayRewrite& args : {add, remove})
                    for (const Generation generation : {oldGeneration, newGeneration}) {
                        const Octets before = message(hex(info) + end);
                        const PktPtr pkt = packet(before, storage), unhindered = packet(before, storage);
                        EXPECT_TRUE(relayRewrite(unhindered, args, generation));
                        failures += failEachAllocation([&] { relayRewrite(pkt, args, generation); },
                                                       [&] { expectBytes(*pkt, before); });
                        expectBytes(*pkt, bytesOf(*unhindered));
                    }
    EXPECT_GE(failures, 10);
}

}  // namespace
