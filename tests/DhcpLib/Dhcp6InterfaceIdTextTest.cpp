#include "Dhcp6ViewRows.h"

using namespace DhcpLib;
using namespace DhcpTest;

namespace {

/// Before the toggle is read for the first time.
[[maybe_unused]] const int toggleIsOff = setenv("DHCPLIB_TOGGLE_DIR", DHCPLIB_TEST_DATA "/toggles-off", 1);

const ViewKind interfaceId = kindOf<Dhcp6InterfaceId>(dhcp6InterfaceIdFactory);

class Dhcp6InterfaceIdText : public testing::TestWithParam<ReadRow> {};
TEST_P(Dhcp6InterfaceIdText, TheseFieldsAndNothingBehindThePacket) { expectRead(GetParam()); }

ReadRow row(const char* rule, const std::string& option, const std::string& intfName, const std::string& vrfName) {
    return {rule, interfaceId, "00 12 " + option,
            "intfName=" + intfName + " vrfName=" + vrfName + " srcVtepIp= srcVtepMac=00:00:00:00:00:00"};
}

INSTANTIATE_TEST_SUITE_P(
    Text, Dhcp6InterfaceIdText,
    testing::Values(row("BothNames", "00 0E 'Ethernet1:blue' EE", "Ethernet1", "blue"),
                    row("FurtherColons", "00 05 'a:b:c'", "a", "b:c"), row("NoInterface", "00 05 ':blue'", "", ""),
                    row("NoVrf", "00 0A 'Ethernet1:'", "", ""), row("ColonAtTheEnd", "00 04 'a:b:'", "", ""),
                    row("NoColon", "00 09 'Ethernet1'", "", ""), row("ColonAlone", "00 01 ':'", "", ""),
                    row("Empty", "00 00 'a:b'", "", ""), row("CutAtThePacketsEnd", "FF FF 'a:b'", "a", "b"),
                    row("LongestVrf", "00 66 'a:' 'v'*100", "a", std::string(100, 'v')),
                    row("NoElements", "00 05 01 03 'Et1'", "", "")),
    [](const auto& named) { return named.param.rule; });

TEST(Dhcp6InterfaceIdText, RaisesForAVrfNameOfMoreThan100Bytes) {
    const PktPtr pkt = packet(hex("00 12 00 67 'a:' 'v'*101"));
    EXPECT_NE(refusalOf([&] { dhcp6InterfaceIdFactory(dhcp6OptionFactory(pkt, 0)); }), "");
}

TEST(Dhcp6InterfaceIdText, WritesAllOrNothing) {
    for (const std::size_t room : {7u, 8u, 9u}) {
        const Octets before = hex("A5 00 12 00 00") + Octets(room, scratch);
        const PktPtr pkt = packet(before);
        const auto view = dhcp6InterfaceIdFactory(dhcp6OptionFactory(pkt, 1));
        view->intfNameIs("Et1");
        view->srcVtepIpIs(Kitnet::IpGenAddr::fromText("10.0.0.1"));
        EXPECT_EQ(internalErrorOf([&] { view->setInterfaceIdDataInPkt(); }), "Intf Name or Vrf Name is not set");
        view->vrfNameIs("blue");
        EXPECT_EQ(internalErrorOf([&] { view->setInterfaceIdDataInPkt(); }), room < 8 ? noRoom : "");
        EXPECT_EQ(bytesOf(*pkt), room < 8 ? before : hex("A5 00 12 00 00 'Et1:blue'") + Octets(room - 8, scratch));
    }
}

}  // namespace
