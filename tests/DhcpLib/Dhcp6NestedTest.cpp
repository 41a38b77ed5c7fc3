#include "AreaRows.h"
#include "DhcpLib/Dhcp6Hdr.h"
#include "DhcpLib/OptionParser.h"
#include "Recorders.h"

using namespace DhcpLib;
using namespace DhcpTest;

namespace {

std::string listOf(const std::vector<Dhcp6Option::Ptr>& options) {
    std::string all;
    for (const auto& option : options) all += placeOf(*option);
    return all;
}
std::string messageAt(const PktPtr& pkt, U16 offset) {
    return listOf(dhcp6MessageOptions(pkt, {offset, pkt->bytes()}));
}
/// "offset-end" of each message of the chain.
std::string chainAt(const PktPtr& pkt, U16 offset) {
    std::string all;
    for (const Dhcp6MessagePlace& message : dhcp6RelayChain(pkt, {offset, pkt->bytes()}))
        all += std::to_string(message.offset) + '-' + std::to_string(message.end) + ' ';
    return all;
}

TEST(Dhcp6Nested, FindsTheOptionsOfAMessage) {
    const Area rows[] = {
        {"client/server", 1, "EE 01*4 00 01 00 01 61 00 03 00 00 00 01 00 00", "1@5+1 3@10+0 1@14+0 "},
        {"relay", 0, "0D*34 00 12 00 01 61", "18@34+1 "},
        {"ends before an overrun", 0, "01*4 00 01 00 00 00 03 00 01", "1@4+0 "},
        {"ends before code 0", 0, "01*4 00 01 00 00 00*4 00 01 00 00", "1@4+0 "},
        {"no message", 0, "00*4 00 01 00 00", ""},
    };
    expectFound(rows, messageAt);
}

TEST(Dhcp6Nested, FindsTheOptionsOfAnIa) {
    const Area rows[] = {
        {"two", 1, "EE 00 19 00 16 EE*12 00 1A 00 00 00 1A 00 02 61 62 00 01 00 00", "26@17+0 26@21+2 "},
        {"one passes the IA", 0, "00 19 00 11 EE*12 00 1A 00 02 61 62", ""},
        {"the IA is too short", 0, "00 19 00 0B EE*12 00 1A 00 00", ""},
        {"the IA passes the packet", 0, "00 19 FF FF EE*12 00 1A 00 00 00 1A 00 01", "26@16+0 "},
    };
    expectFound(rows, [](const PktPtr& pkt, U16 offset) {
        return listOf(dhcp6NestedOptions(*dhcp6IapdFactory(dhcp6OptionFactory(pkt, offset))));
    });
}

TEST(Dhcp6Nested, FindsTheMessagesOfAChain) {
    const Area rows[] = {
        {"behind another option", 0, "0C*34 00 12 00 01 61 00 09 00 04 01*4 00 12 00 00", "0-51 43-47 "},
        {"the first of two", 0, "0C*34 00 09 00 04 01*4 00 09 00 04 02*4", "0-50 38-42 "},
        {"twice", 0, "0C*34 00 09 00 2A 0C*34 00 09 00 04 01*4", "0-80 38-80 76-80 "},
        {"the inner one passes its option", 0, "0C*34 00 09 00 28 0C*34 00 09 00 04 01*4", "0-80 38-78 "},
        {"relay message passes the packet", 0, "0D*34 00 09 00 05 01*4", "0-42 "},
        {"no whole relay header inside", 0, "0D*34 00 09 00 21 0C*33", "0-71 "},
        {"an unknown message inside", 0, "0D*34 00 09 00 04 0E*4", "0-42 "},
    };
    expectFound(rows, chainAt);
    // The inner message would start at 65536, that is, at the outer one.
    const PktPtr pkt = packet(hex("0C*34 00 12 FF D6") + Octets(0xffd6, 0) + hex("00 09 00 00"));
    EXPECT_EQ(chainAt(pkt, 0), "0-65536 ");
    EXPECT_EQ(messageAt(pkt, 0), "18@34+65494 ");
}

TEST(Dhcp6Nested, ChecksTheOptionsOfAMessage) {
    const Area rows[] = {
        {"client/server", 1, "EE 0B*4 00 01 00 02 61 62 FF FF 00 00", "good"},
        {"relay", 0, "0C*34 00 12 00 01 61", "good"},
        {"bytes left over", 0, "01*4 00 01 00 00 00 02", "bad"},
        {"overrun by one", 4, "EE*4 01*4 00 01 00 02 61", "bad"},
        {"code 0", 0, "01*4 00 00 00 00", "bad"},
        {"short header", 0, "01*3", "bad"},
        {"unknown message", 0, "0E*4", "bad"},
    };
    expectFound(rows, [](const PktPtr& pkt, U16 offset) {
        TraceRecorder trace(1);
        const bool good = dhcp6OptionBasicCheck(pkt, offset);
        const auto lines = trace.lines();
        EXPECT_EQ(lines.empty() ? "" : lines[0],
                  good ? "" : "1 dhcp6OptionBasicCheck no DHCPv6 message whose options end with the packet");
        return std::string(good ? "good" : "bad");
    });
}

TEST(Dhcp6Nested, ChainsEndAtTheHopCountLimit) {
    Octets message = hex("01*4");
    for (unsigned relays = 1; relays <= 40; ++relays) {
        message = hex("0C*34 00 09") + Octets{static_cast<U8>(message.size() >> 8), static_cast<U8>(message.size())} +
                  message;
        const auto chain = dhcp6RelayChain(packet(message), {0, static_cast<U32>(message.size())});
        EXPECT_EQ(chain.size(), std::min<std::size_t>(relays, Constants::dhcp6HopCountLimit) + 1);
    }
}

}  // namespace
