#include "Kitnet/UdpMend.h"

#include <gtest/gtest.h>

#include "Bytes.h"
#include "platform/Refusal.h"

using namespace DhcpTest;

namespace {

TEST(KitnetUdpMend, SetsLengthsAndChecksums) {
    const struct {
        const char *rule, *before, *after;
    } rows[] = {
        {"OddPayload", "45 00 EE EE 12 34 00 00 40 11 EE EE 0A 00 00 01 0A 00 00 02 00 44 00 43 EE*4 61 62 63",
         "45 00 00 1F 12 34 00 00 40 11 54 98 0A 00 00 01 0A 00 00 02 00 44 00 43 00 0B 26 EC 61 62 63"},
        {"IpOptions",
         "47 00 00 00 12 34 00 00 40 11 00 00 0A 00 00 01 0A 00 00 02 07 07 04 00*5 00 44 00 43 00*4 61 62 63 64",
         "47 00 00 28 12 34 00 00 40 11 47 88 0A 00 00 01 0A 00 00 02 07 07 04 00*5 00 44 00 43 00 0C 26 86 61 62 63 "
         "64"},
        {"ZeroWouldSayThatThereIsNone",
         "45 00 00 00 12 34 00 00 40 11 54 99 0A 00 00 01 0A 00 00 02 00 44 00 43 00*4 EB 50",
         "45 00 00 1E 12 34 00 00 40 11 54 99 0A 00 00 01 0A 00 00 02 00 44 00 43 00 0A FF FF EB 50"},
    };
    for (const auto& row : rows)
        for (const PktPtr& pkt : packets(hex("EE*14") + hex(row.before))) {
            Kitnet::mendUdp(*pkt, 14);
            EXPECT_EQ(bytesOf(*pkt), hex("EE*14") + hex(row.after)) << row.rule;
        }
}

TEST(KitnetUdpMend, ChangesNothingIfItRefusesTheFrame) {
    constexpr char noRoom[] = "Kitnet::mendUdp: no room for an IPv4 and a UDP header";
    const std::tuple<Octets, U32, const char*> rows[] = {
        {hex("44 00*60"), 0, noRoom},          {hex("45 00*26"), 0, noRoom},
        {hex("46 00*30"), 0, noRoom},          {hex("45 00*60"), 61, noRoom},
        {hex("45 00*60"), 0xffffffff, noRoom}, {hex("45 00*65535"), 0, "Kitnet::mendUdp: datagram > 65535 not allowed"},
    };
    for (const auto& [bytes, ipAt, why] : rows) {
        const PktPtr pkt = packet(bytes);
        EXPECT_EQ(refusalOf([&, at = ipAt] { Kitnet::mendUdp(*pkt, at); }), why);
        EXPECT_EQ(bytesOf(*pkt), bytes);
    }
}

}  // namespace
