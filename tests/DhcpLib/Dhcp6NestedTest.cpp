#include <gtest/gtest.h>

#include "Bytes.h"
#include "DhcpLib/Dhcp6Hdr.h"
#include "Recorders.h"

using namespace DhcpLib;
using namespace DhcpTest;

namespace {

std::string listOf(const std::vector<Dhcp6Option::Ptr>& options) {
    std::string all;
    for (const auto& option : options)
        all += (all.empty() ? "" : " ") + std::to_string(option->opt()) + '@' + std::to_string(option->offset()) + '+' +
               std::to_string(option->len());
    return all;
}
std::string messageAt(const PktPtr& pkt, U16 offset) {
    return listOf(dhcp6MessageOptions(pkt, {offset, pkt->bytes()}));
}
std::string nestedAt(const PktPtr& pkt, U16 offset) {
    return listOf(dhcp6NestedOptions(*dhcp6IapdFactory(dhcp6OptionFactory(pkt, offset))));
}
/// "offset-end" of each message of the chain.
std::string chainAt(const PktPtr& pkt, U16 offset) {
    std::string all;
    for (const Dhcp6MessagePlace& message : dhcp6RelayChain(pkt, {offset, pkt->bytes()}))
        all += (all.empty() ? "" : " ") + std::to_string(message.offset) + '-' + std::to_string(message.end);
    return all;
}
std::string checkAt(const PktPtr& pkt, U16 offset) { return dhcp6OptionBasicCheck(pkt, offset) ? "good" : "bad"; }

struct Row {
    const char* rule;
    std::string (*read)(const PktPtr&, U16 offset);
    U16 offset;
    const char* bytes;
    const char* found;
};
class Dhcp6Nested : public testing::TestWithParam<Row> {};

TEST_P(Dhcp6Nested, FindsTheseAndReadsNothingBehindThePacket) {
    const Row& row = GetParam();
    const Octets bytes = hex(row.bytes);
    for (std::size_t size = 0; size <= bytes.size(); ++size) {
        const Octets cut(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
        const std::string alone = row.read(packet(cut), row.offset);
        for (const PktPtr& pkt : packets(cut)) {
            EXPECT_EQ(row.read(pkt, row.offset), alone) << "cut to " << size << " bytes, with others behind";
            EXPECT_EQ(bytesOf(*pkt), cut);
        }
        if (size == bytes.size()) {
            EXPECT_EQ(alone, row.found);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Messages, Dhcp6Nested,
    testing::Values(Row{"ClientServer", messageAt, 1, "EE 01*4 00 01 00 01 61 00 03 00 00 00 01 00 00",
                        "1@5+1 3@10+0 1@14+0"},
                    Row{"Relay", messageAt, 0, "0D*34 00 12 00 01 61", "18@34+1"},
                    Row{"EndsBeforeAnOverrun", messageAt, 0, "01*4 00 01 00 00 00 03 00 01", "1@4+0"},
                    Row{"EndsBeforeCode0", messageAt, 0, "01*4 00 01 00 00 00*4 00 01 00 00", "1@4+0"},
                    Row{"NoMessage", messageAt, 0, "00*4 00 01 00 00", ""},
                    Row{"NestedInAnIa", nestedAt, 1, "EE 00 19 00 16 EE*12 00 1A 00 00 00 1A 00 02 61 62 00 01 00 00",
                        "26@17+0 26@21+2"},
                    Row{"NestedPassesTheIa", nestedAt, 0, "00 19 00 11 EE*12 00 1A 00 02 61 62", ""},
                    Row{"IaTooShortToNest", nestedAt, 0, "00 19 00 0B EE*12 00 1A 00 00", ""},
                    Row{"IaPassesThePacket", nestedAt, 0, "00 19 FF FF EE*12 00 1A 00 00 00 1A 00 01", "26@16+0"}),
    [](const auto& row) { return row.param.rule; });

INSTANTIATE_TEST_SUITE_P(
    Chains, Dhcp6Nested,
    testing::Values(Row{"NotRelayed", chainAt, 1, "EE 01*4 00 09 00 04 01*4", "1-13"},
                    Row{"BehindAnotherOption", chainAt, 0, "0C*34 00 12 00 01 61 00 09 00 04 01*4 00 12 00 00",
                        "0-51 43-47"},
                    Row{"TheFirstOfTwo", chainAt, 0, "0C*34 00 09 00 04 01*4 00 09 00 04 02*4", "0-50 38-42"},
                    Row{"Twice", chainAt, 0, "0C*34 00 09 00 2A 0C*34 00 09 00 04 01*4", "0-80 38-80 76-80"},
                    Row{"InnerPassesItsOption", chainAt, 0, "0C*34 00 09 00 28 0C*34 00 09 00 04 01*4", "0-80 38-78"},
                    Row{"NoRelayMessage", chainAt, 0, "0D*34 00 12 00 00", "0-38"},
                    Row{"RelayMessagePassesThePacket", chainAt, 0, "0D*34 00 09 00 05 01*4", "0-42"},
                    Row{"NoWholeHeaderInside", chainAt, 0, "0D*34 00 09 00 03 01*3", "0-41"},
                    Row{"NoWholeRelayHeaderInside", chainAt, 0, "0D*34 00 09 00 21 0C*33", "0-71"},
                    Row{"AnUnknownMessageInside", chainAt, 0, "0D*34 00 09 00 04 0E*4", "0-42"},
                    Row{"NoWholeHeader", chainAt, 0, "0C*33", ""}),
    [](const auto& row) { return row.param.rule; });

INSTANTIATE_TEST_SUITE_P(
    Check, Dhcp6Nested,
    testing::Values(Row{"ClientServerIsGood", checkAt, 1, "EE 0B*4 00 01 00 02 61 62 FF FF 00 00", "good"},
                    Row{"RelayIsGood", checkAt, 0, "0C*34 00 12 00 01 61", "good"},
                    Row{"NoOptionsAreGood", checkAt, 0, "01*4", "good"},
                    Row{"BytesLeftOver", checkAt, 0, "01*4 00 01 00 00 00 02", "bad"},
                    Row{"OverrunByOne", checkAt, 4, "EE*4 01*4 00 01 00 02 61", "bad"},
                    Row{"Code0", checkAt, 0, "01*4 00 00 00 00", "bad"}, Row{"ShortHeader", checkAt, 0, "01*3", "bad"},
                    Row{"ShortRelayHeader", checkAt, 0, "0D*33", "bad"},
                    Row{"UnknownMessage", checkAt, 0, "0E*4", "bad"},
                    Row{"BehindThePacket", checkAt, 9, "01*4", "bad"}),
    [](const auto& row) { return row.param.rule; });

Octets relayed(const Octets& inner) {
    Octets message = hex("0C*34 00 09");
    message.push_back(static_cast<U8>(inner.size() >> 8));
    message.push_back(static_cast<U8>(inner.size()));
    return message + inner;
}

TEST(Dhcp6RelayChain, EndsAtTheHopCountLimit) {
    Octets message = hex("01*4");
    for (unsigned relays = 1; relays <= 40; ++relays) {
        message = relayed(message);
        const auto chain = dhcp6RelayChain(packet(message), {0, static_cast<U32>(message.size())});
        EXPECT_EQ(chain.size(), std::min<std::size_t>(relays, Constants::dhcp6HopCountLimit) + 1);
    }
}

TEST(Dhcp6RelayChain, StaysWithin16BitPositions) {
    // The inner message would start at 65536, that is, at the outer one.
    const PktPtr pkt = packet(hex("0C*34 00 12 FF D6") + Octets(0xffd6, 0) + hex("00 09 00 00"));
    EXPECT_EQ(pkt->bytes(), 65536u);
    EXPECT_EQ(chainAt(pkt, 0), "0-65536");
    EXPECT_EQ(messageAt(pkt, 0), "18@34+65494");
}

TEST(Dhcp6OptionBasicCheck, TracesARefusal) {
    TraceRecorder trace(1);
    dhcp6OptionBasicCheck(packet(hex("01*4")), 0);
    dhcp6OptionBasicCheck(packet(hex("01*5")), 0);
    EXPECT_EQ(trace.lines(), (std::vector<std::string>{"1 dhcp6OptionBasicCheck no DHCPv6 message whose options end "
                                                       "with the packet"}));
}

}  // namespace
