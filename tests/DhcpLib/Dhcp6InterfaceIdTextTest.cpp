#include "Dhcp6ViewRows.h"

using namespace DhcpLib;
using namespace DhcpTest;

namespace {

/// Selects the toggle file. Must run before the toggle is first read.
[[maybe_unused]] const int toggleIsOff = setenv("DHCPLIB_TOGGLE_DIR", DHCPLIB_TEST_DATA "/toggles-off", 1);

TEST(Dhcp6InterfaceIdText, IsTwoNamesAroundAColon) {
    const struct {
        const char* option;
        std::string intfName, vrfName;
    } rows[] = {{"00 12 00 0E 'Ethernet1:blue' EE", "Ethernet1", "blue"},
                {"00 12 00 05 'a:b:c'", "a", "b:c"},
                {"00 12 00 05 ':blue'", "", ""},
                {"00 12 00 04 'a:b:'", "", ""},
                {"00 12 00 09 'Ethernet1'", "", ""},
                {"00 12 00 01 ':'", "", ""},
                {"00 12 00 00 'a:b'", "", ""},
                {"00 12 FF FF 'a:b'", "a", "b"},
                {"00 12 00 66 'a:' 'v'*100", "a", std::string(100, 'v')},
                {"00 12 00 05 01 03 'Et1'", "", ""}};
    for (const auto& row : rows) {
        const Dhcp6InterfaceId view(dhcp6OptionFactory(packet(hex(row.option)), 0));
        EXPECT_EQ(view.intfName(), row.intfName) << row.option;
        EXPECT_EQ(view.vrfName(), row.vrfName) << row.option;
    }
    EXPECT_NE(refusalOf([] { Dhcp6InterfaceId(dhcp6OptionFactory(packet(hex("00 12 00 67 'a:' 'v'*101")), 0)); }), "");
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
        EXPECT_EQ(interfaceIdBytes({"Et1", "blue", {}, {}}), 8);
        EXPECT_EQ(bytesOf(*pkt), room < 8 ? before : hex("A5 00 12 00 00 'Et1:blue'") + Octets(room - 8, scratch));
    }
}

}  // namespace
