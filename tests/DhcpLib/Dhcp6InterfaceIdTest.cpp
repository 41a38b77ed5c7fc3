#include "Dhcp6ViewRows.h"

using namespace DhcpLib;
using namespace DhcpTest;

namespace {

const ViewKind interfaceId = kindOf<Dhcp6InterfaceId>(dhcp6InterfaceIdFactory);
constexpr char nothing[] = "intfName= vrfName= srcVtepIp= srcVtepMac=00:00:00:00:00:00";

class Dhcp6InterfaceIdRead : public testing::TestWithParam<ReadRow> {};
TEST_P(Dhcp6InterfaceIdRead, TheseFieldsAndNothingBehindThePacket) { expectRead(GetParam()); }

ReadRow row(const char* rule, const std::string& option, const std::string& attributes) {
    return {rule, interfaceId, "00 12 " + option, attributes};
}

INSTANTIATE_TEST_SUITE_P(
    Elements, Dhcp6InterfaceIdRead,
    testing::Values(row("AllFour", "00 19 01 03 'Et1' 02 04 'blue' 03 04 0A 00 00 01 04 06 02 C1 00 00 0C 01",
                        "intfName=Et1 vrfName=blue srcVtepIp=10.0.0.1 srcVtepMac=02:c1:00:00:0c:01"),
                    row("UnknownTypeSpoilsAll",
                        "00 1B 01 03 'Et1' 02 04 'blue' 03 04 0A 00 00 01 04 06 02 C1 00 00 0C 01 05 00", nothing),
                    row("TypeZeroDoes", "00 07 01 03 'Et1' 00 00", nothing),
                    row("OverrunSpoilsAll", "00 0A 01 03 'Et1' 02 04 'blu' 65", nothing),
                    row("TypeWithoutLength", "00 06 01 03 'Et1' 02 00", nothing),
                    row("Ipv6AndOrder", "00 17 03 10 20 01 0D B8 00*11 01 01 03 'Et1' EE",
                        "intfName=Et1 vrfName= srcVtepIp=2001:db8::1 srcVtepMac=00:00:00:00:00:00"),
                    row("OddSizesArePassedOver", "00 15 03 05 0A 00 00 01 02 04 05 02 C1 00 00 0C 02 01 'r' 01 00",
                        "intfName= vrfName=r srcVtepIp= srcVtepMac=00:00:00:00:00:00"),
                    row("LongMacIsCut", "00 0D 04 07 02 C1 00 00 0C 01 FF 02 02 'vr'",
                        "intfName= vrfName=vr srcVtepIp= srcVtepMac=02:c1:00:00:0c:01"),
                    row("LastOfTwoWins", "00 0A 01 03 'Et1' 01 03 'Et2'",
                        "intfName=Et2 vrfName= srcVtepIp= srcVtepMac=00:00:00:00:00:00"),
                    row("CutAtThePacketsEnd", "FF FF 01 03 'Et1'",
                        "intfName=Et1 vrfName= srcVtepIp= srcVtepMac=00:00:00:00:00:00"),
                    row("Empty", "00 00 01 03 'Et1'", nothing),
                    row("EndsAt255", "00 FF 01 FB 'n'*251 02 00",
                        "intfName=" + std::string(251, 'n') + " vrfName= srcVtepIp= srcVtepMac=00:00:00:00:00:00"),
                    // The 8-bit position would come back to 0, or to 1.
                    row("WrapsAt256", "01 00 01 FE 'n'*254", nothing),
                    row("WrapsBehind256", "01 08 01 FF 'n'*255 02 05 'bluee'", nothing)),
    [](const auto& named) { return named.param.rule; });

TEST(Dhcp6InterfaceId, RaisesForAVrfNameOfMoreThan100Bytes) {
    const auto make = [](const std::string& option) {
        return refusalOf([&] { Dhcp6InterfaceId(dhcp6OptionFactory(packet(hex(option)), 0)); });
    };
    EXPECT_EQ(make("00 12 00 67 02 65 'v'*101"), "Tyk::String::bytes > maxLength() not allowed");
    EXPECT_EQ(make("00 12 00 66 02 64 'v'*100"), "");
    // A name that is replaced or thrown away does no harm.
    EXPECT_EQ(make("00 12 00 6A 02 65 'v'*101 02 01 'v'"), "");
    EXPECT_EQ(make("00 12 00 69 02 65 'v'*101 05 00"), "");
}

void set(Dhcp6InterfaceId& view, std::size_t intfName, std::size_t vrfName, const char* ip, const char* mac) {
    view.intfNameIs(std::string(intfName, 'i'));
    view.vrfNameIs(std::string(vrfName, 'v'));
    view.srcVtepIpIs(*ip != 0 ? Kitnet::IpGenAddr::fromText(ip) : Kitnet::IpGenAddr());
    view.srcVtepMacIs(Kitnet::EthAddr::fromText(mac));
    view.setInterfaceIdDataInPkt();
}

struct Written {
    const char* rule;
    std::size_t intfName, vrfName;
    const char* ip;
    const char* mac;
    std::string data;  ///< empty where it is refused
};
class Dhcp6InterfaceIdWrite : public testing::TestWithParam<Written> {};

TEST_P(Dhcp6InterfaceIdWrite, AllOrNothing) {
    const auto& [rule, intfName, vrfName, ip, mac, data] = GetParam();
    const std::string head = "A5*3 00 12 00 00 ";
    const Octets before = hex(head + "A5*400"), written = hex(head + data);
    const Octets after = data.empty() ? before : written + Octets(before.size() - written.size(), scratch);
    for (const std::size_t size : {before.size(), written.size(), written.size() - 1}) {
        const Octets cut(before.begin(), before.begin() + static_cast<std::ptrdiff_t>(size));
        const PktPtr pkt = packet(cut);
        const auto view = dhcp6InterfaceIdFactory(dhcp6OptionFactory(pkt, 3));
        const bool fits = !data.empty() && size >= written.size();
        EXPECT_EQ(internalErrorOf([&] { set(*view, intfName, vrfName, ip, mac); }), fits ? "" : noRoom);
        EXPECT_EQ(bytesOf(*pkt), fits ? Octets(after.begin(), after.begin() + static_cast<std::ptrdiff_t>(size)) : cut);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Elements, Dhcp6InterfaceIdWrite,
    testing::Values(Written{"AllFour", 3, 4, "10.0.0.1", "02:c1:00:00:0c:01",
                            "01 03 'iii' 02 04 'vvvv' 03 04 0A 00 00 01 04 06 02 C1 00 00 0C 01"},
                    Written{"Ipv6", 1, 1, "2001:db8::1", "00:00:00:00:00:00",
                            "01 01 'i' 02 01 'v' 03 10 20 01 0D B8 00*11 01"},
                    Written{"NoUsableAddresses", 1, 1, "0.0.0.0", "00:00:00:00:00:00", "01 01 'i' 02 01 'v'"},
                    Written{"UnspecifiedIpv6", 1, 1, "::", "00:00:00:00:00:00", "01 01 'i' 02 01 'v'"},
                    Written{"UnsetAddress", 1, 1, "", "00:00:00:00:00:01", "01 01 'i' 02 01 'v' 04 06 00*5 01"},
                    Written{"LongestElement", 255, 1, "", "00:00:00:00:00:00", "01 02 01 'v' 'i'*253"},
                    Written{"TooLongAnElement", 256, 1, "", "00:00:00:00:00:00", ""},
                    // The third element starts at 200 + 2 + 60 + 2 - 256 = 8, over the first one's value.
                    Written{"PositionsWrapAt256", 200, 60, "10.0.0.1", "00:00:00:00:00:00",
                            "01 C8 'i'*6 03 04 0A 00 00 01 'i'*188 02 3C 'v'*60"}),
    [](const auto& named) { return named.param.rule; });

TEST(Dhcp6InterfaceId, WhatIsWrittenIsRead) {
    const PktPtr pkt = packet(hex("00 12 00 00 A5*25"));
    const auto opt = dhcp6OptionFactory(pkt, 0);
    const auto view = Dhcp6InterfaceId::Dhcp6InterfaceIdIs(opt);
    EXPECT_EQ(attributesOf(*view), nothing);
    set(*view, 3, 4, "10.0.0.1", "02:c1:00:00:0c:01");
    opt->lenIs(25);
    EXPECT_EQ(attributesOf(Dhcp6InterfaceId(opt)), attributesOf(*view));
}

TEST(Dhcp6InterfaceId, NeedsBothNames) {
    const PktPtr pkt = packet(hex("00 12 00 00 A5*25"));
    const auto view = dhcp6InterfaceIdFactory(dhcp6OptionFactory(pkt, 0));
    for (const auto& [intfName, vrfName] : {std::pair(0, 0), std::pair(0, 1), std::pair(1, 0)})
        EXPECT_EQ(internalErrorOf([&] { set(*view, intfName, vrfName, "10.0.0.1", "02:c1:00:00:0c:01"); }),
                  "Intf Name or Vrf Name is not set");
    EXPECT_EQ(bytesOf(*pkt), hex("00 12 00 00 A5*25"));
}

}  // namespace
