#include <gtest/gtest.h>

#include "Bytes.h"
#include "DhcpLib/Dhcp6Parser.h"
#include "DhcpLib/DhcpParser.h"
#include "DhcpLib/OptionParser.h"

using namespace DhcpLib;
using namespace DhcpTest;

namespace {

/// "position after the cookie + length = data", with '!' where the option is not whole; "none" for no option.
std::string textOf(const FoundOption& o) {
    if (!o) return "none";
    return std::to_string(o.offset() - 242) + '+' + std::to_string(o.len()) + '=' + std::string(o.data()) +
           (o.isWhole() ? "" : "!");
}

TEST(OptionLookup, FindsOptionsAndSubOptions) {
    struct Row {
        const char *rule, *options, *info, *circuitId, *list;
    };
    const Row rows[] = {
        {"last of two, not behind the end", "35 01 01 00 52 03 01 01 'a' 52 03 02 01 'b' FF 52 03 01 01 'c'",
         "9+3=\x02\x01"
         "b",
         "none", "11+1=b "},
        {"last sub-option of a code", "52 08 01 01 'a' 02 00 01 01 'b' FF",
         "0+8=\x01\x01"
         "a",
         "7+1=b", ""},
        {"sub-option that passes option 82", "52 05 02 00 01 03 'b' 'cd' FF", "", "4+3=b!", "2+0= 4+3=b! "},
        {"cut at the packet's end", "52 08 01 03 'ab'", "", "2+3=ab!", "2+3=ab! "},
        {"code alone", "35 01 01 52", "3+0=!", "none", ""},
        {"empty", "52 00 FF", "0+0=", "none", ""},
    };
    for (const Row& row : rows) {
        for (const PktPtr& pkt : packets(hex("FF FF") + message(row.options))) {
            const FoundOption info = findOption(pkt, 2, DhcpOptionType::infoOpt);
            std::string list;
            for (const FoundOption& s : subOptions(info)) list += textOf(s) + ' ';
            EXPECT_TRUE(textOf(info).starts_with(row.info)) << row.rule << ": " << textOf(info);
            EXPECT_TRUE(list.ends_with(row.list)) << row.rule << ": " << list;
            EXPECT_EQ(textOf(findInfoSubOption(pkt, 2, DhcpInformationSubOptionType::circuitId)), row.circuitId);
            EXPECT_FALSE(findOption(pkt, 2, DhcpOptionType::padOpt) || findOption(pkt, 3, DhcpOptionType::infoOpt));
        }
    }
}

TEST(InfoRemoval, LeavesNoOption82) {
    struct Row {
        const char *rule, *before, *after;
        AreaState area;
        U32 options;
    };
    constexpr auto wellFormed = AreaState::wellFormed;
    const Row rows[] = {
        {"none", "35 01 01 FF 07 07", "35 01 01 FF 07 07", wellFormed, 0},
        {"in front, between and at the end", "52 01 07 35 01 01 00 00 52 00 0C 01 'h' 52 02 01 00 FF 00",
         "35 01 01 00 00 0C 01 'h' FF 00*10", wellFormed, 3},
        {"what another option holds is none", "0C 03 52 01 FF 52 01 09 FF", "0C 03 52 01 FF FF 00*3", wellFormed, 1},
        {"behind the end option", "35 01 01 FF 00 52 01 09 FF", "35 01 01 FF 00*5", wellFormed, 1},
        {"its length passes the packet", "35 01 01 52 09 01 07 'abcde'", "", AreaState::noEnd, 0},
        {"no end option", "52 01 07 35 01 01", "", AreaState::noEnd, 0},
        {"nothing but option 82", "52 01 07 FF", "FF 00*3", wellFormed, 1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.rule);
        for (const PktPtr& pkt : packets(hex("FF FF") + message(row.before))) {
            EXPECT_EQ(optionsAreaState(pkt, 2), row.area);
            EXPECT_EQ(removeInfoOption(pkt, 2), (InfoRemoval{row.area, row.options}));
            EXPECT_EQ(bytesOf(*pkt), hex("FF FF") + message(*row.after != 0 ? row.after : row.before));
        }
    }
    const PktPtr bootp = packet(Octets(300)), cut = packet(Octets(236));
    EXPECT_EQ(removeInfoOption(bootp, 0), (InfoRemoval{AreaState::noCookie, 0}));
    EXPECT_EQ(removeInfoOption(cut, 0), (InfoRemoval{AreaState::noSpace, 0}));
}

TEST(NullPacket, IsTreatedAsEmpty) {
    const PktPtr none;
    EXPECT_FALSE(findOption(none, 0, DhcpOptionType::infoOpt));
    EXPECT_EQ(optionsAreaState(none, 0), AreaState::noSpace);
    EXPECT_EQ(removeInfoOption(none, 0).area, AreaState::noSpace);
    EXPECT_FALSE(dhcpOptionBasicCheck(none, 0) || setServerId(none, Kitnet::IpAddr(1)));
    for (const RelayGeneration generation : {RelayGeneration::preparePacket, RelayGeneration::preparePacketNew}) {
        EXPECT_EQ(relayRewriteCheck(none, {}, generation).verdict, RelayRewriteVerdict::notDhcp);
        EXPECT_FALSE(relayRewrite(none, {}, generation));
    }
    EXPECT_FALSE(dhcp6ClientIdentifier(nullptr).option.present || dhcp6RemoteIdentifier(nullptr).option.present);
    EXPECT_EQ(dhcp6RemoteIdentifier(dhcp6OptionFactory(none, 0)).portInfo, Dhcp6PortInfo::noPortText);
    PacketParser parser(nullptr);
    EXPECT_FALSE(parser.doParse(none, Kitnet::IntfId(), false));
    EXPECT_EQ(parser.rejection(), FrameRejection::shortEthernetHeader);
    Dhcp6PacketParser parser6(nullptr);
    EXPECT_FALSE(parser6.doParseDhcp6(none, Kitnet::IntfId()));
    EXPECT_EQ(parser6.rejection(), FrameRejection::shortEthernetHeader);
}

}  // namespace
