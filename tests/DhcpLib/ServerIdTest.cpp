#include "DhcpLib/OptionParser/ServerId.h"

#include <gtest/gtest.h>

#include "Bytes.h"
#include "Recorders.h"

using namespace DhcpTest;

namespace {

constexpr char signature[] = "bool DhcpLib::setServerId(const Ptr&, Kitnet::IpAddr)";

struct Row {
    const char* rule;
    const char* before;
    const char* after;  ///< null: the call returns false and changes nothing
    const char* why;    ///< level-1 trace text; null if there is none
};

TEST(SetServerId, WritesTheAddressOrSaysWhyNot) {
    const Row rows[] = {
        {"Replaced", "35 01 05 36 04 0A 00 0B 01 0C 01 'x' FF", "35 01 05 36 04 C0 00 02 01 0C 01 'x' FF", nullptr},
        {"TheLastOne", "36 04 0A 00 0B 01 36 04 0A 00 0B 02 FF", "36 04 0A 00 0B 01 36 04 C0 00 02 01 FF", nullptr},
        {"NotBehindTheEnd", "FF 36 04 0A 00 0B 01", "FF 36 04 0A 00 0B 01", " DHCP packet has no server identifier"},
        {"Absent", "35 01 05 FF", "35 01 05 FF", " DHCP packet has no server identifier"},
        {"ShortOneOverwritesTwoMore", "36 02 01 02 0C 01 'x' FF", "36 02 C0 00 02 01 'x' FF", nullptr},
        {"LongOne", "36 06 01 02 03 04 05 06 FF", "36 06 C0 00 02 01 05 06 FF", nullptr},
        {"FitsToTheLastByte", "36 03 01 02 03 FF", "36 03 C0 00 02 01", nullptr},
        {"DoesNotFit", "36 02 01 02 FF", nullptr, " Option 54 server id does not fit in the packet"},
        {"Empty", "36 00 FF 00*4", nullptr, " Option 54 server id length is 0"},
        {"NoEnd", "36 04 0A 00 0B 01", nullptr, nullptr},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.rule);
        for (const PktPtr& pkt : packets(message(row.before))) {
            TraceRecorder trace(4);
            EXPECT_EQ(DhcpLib::setServerId(pkt, Kitnet::IpAddr::fromText("192.0.2.1")), row.after != nullptr);
            EXPECT_TRUE(bytesOf(*pkt) == message(row.after != nullptr ? row.after : row.before));
            const auto lines = trace.lines();
            EXPECT_EQ(lines.at(0), std::string("4 ") + signature);
            if (row.why != nullptr) {
                EXPECT_EQ(lines.back(), std::string("1 ") + signature + row.why);
            }
        }
    }
    EXPECT_FALSE(DhcpLib::setServerId(packet(hex("00*300")), {}));
}

}  // namespace
