#include <gtest/gtest.h>

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <unordered_set>
#include <vector>

#include "Kitnet/Kitnet.h"
#include "Refusal.h"

using namespace Kitnet;
using namespace std::string_literals;

namespace {

template <class T>
std::string hexOf(const T& value) {
    std::string out;
    for (std::size_t i = 0; i < T::wireBytes; ++i) {
        constexpr char digits[] = "0123456789abcdef";
        out.append({digits[value.bytes()[i] >> 4], digits[value.bytes()[i] & 15]});
    }
    return out;
}

struct Good {
    const char* text;
    const char* hex;                // on the wire
    const char* printed = nullptr;  // null: as it was read
};

template <class T>
void expectTextForm(const std::vector<Good>& good, const std::vector<std::string>& bad) {
    for (const auto& [text, hex, printed] : good) {
        const T value = T::fromText(text);
        EXPECT_EQ(hexOf(value), hex) << text;
        EXPECT_EQ(Kcore::textOf(value), printed != nullptr ? printed : text);
        EXPECT_EQ(T::fromText(Kcore::textOf(value)), value);
    }
    for (const std::string& text : bad) {
        T value = T::fromText(good.back().text);
        EXPECT_FALSE(T::parse(text, &value)) << text;
        EXPECT_EQ(value, T::fromText(good.back().text)) << text;
        EXPECT_NE(refusalOf([&] { T::fromText(text); }), "") << text;
    }
}

TEST(KitnetText, IpAddr) {
    expectTextForm<IpAddr>({{"0.0.0.0", "00000000"}, {"255.255.255.255", "ffffffff"}, {"10.0.0.1", "0a000001"}},
                           {"", ".", "10.0.0", "10.0.0.256", "10.0.0.1.2", "10.0.0.1 ", " 10.0.0.1", "010.0.0.1",
                            "10..0.1", "1.2.3.-4", "0x0a.0.0.1", "10.0.0.1\0"s, "10.0.0.1\0.9"s, "::1"});
}

TEST(KitnetText, Ip6Addr) {
    expectTextForm<Ip6Addr>({{"::", "00000000000000000000000000000000"},
                             {"::1", "00000000000000000000000000000001"},
                             {"1::", "00010000000000000000000000000000"},
                             {"2001:DB8:0:0:1:0:0:1", "20010db8000000000001000000000001", "2001:db8::1:0:0:1"},
                             {"2001:db8:0:1:1:1:1:1", "20010db8000000010001000100010001"},
                             {"2001:db8::1:1:1:1:1", "20010db8000000010001000100010001", "2001:db8:0:1:1:1:1:1"},
                             {"0:0:1:0:0:0:1:1", "00000000000100000000000000010001", "0:0:1::1:1"},
                             {"1:2:3:4:5:6:7::", "00010002000300040005000600070000", "1:2:3:4:5:6:7:0"},
                             {"1:2:3:4:5:6::", "00010002000300040005000600000000"},
                             {"::ffff:10.0.0.1", "00000000000000000000ffff0a000001"},
                             {"::1:2:3", "00000000000000000000000100020003"},
                             {"::10.0.0.1", "0000000000000000000000000a000001", "::a00:1"},
                             {"64:ff9b::10.0.0.1", "0064ff9b00000000000000000a000001", "64:ff9b::a00:1"},
                             {"fe80::21c:73ff:feab:cd01", "fe80000000000000021c73fffeabcd01"}},
                            {"", ":", ":::", "1::2::3", "1:2:3:4:5:6:7", "1:2:3:4:5:6:7:8:9", "12345::", "g::", ":1:2",
                             "fe80::1%eth0", " ::1", "::1 ", "::1\0"s, "::10.0.0", "10.0.0.1", std::string(46, '0')});
    // Bytes that are no text never reach a terminal through the message.
    EXPECT_EQ(refusalOf([] { Ip6Addr::fromText("\x1b[2J"); }), "Kitnet::Ip6Addr: \"\\x1b[2J\" is not valid");
}

TEST(KitnetText, EthAddr) {
    expectTextForm<EthAddr>(
        {{"00:00:00:00:00:00", "000000000000"}, {"00:1C:73:aB:cd:EF", "001c73abcdef", "00:1c:73:ab:cd:ef"}},
        {"", "00:1c:73:ab:cd", "00:1c:73:ab:cd:ef:", "00:1c:73:ab:cd:e", "00-1c-73-ab-cd-ef", "0:11c:73:ab:cd:ef",
         "00:1c:73:ab:cd:g0", "00:1c:73:ab:cd:-1", "00:1c:73:ab:cd:0x", "00:1c:73:ab:cd\0ef"s});
}

TEST(KitnetText, Integers) {
    const std::vector<std::string> bad = {"", " 1", "1 ", "+1", "-1", "0x10", "1.", "4294967296"};
    expectTextForm<NetU32>({{"0", "00000000"}, {"4294967295", "ffffffff"}, {"16909060", "01020304"}}, bad);
    expectTextForm<NetU16>({{"65535", "ffff"}, {"258", "0102"}}, bad);
    expectTextForm<UdpPort>({{"67", "0043"}}, {"65536"});
    expectTextForm<IpProtocolNumber>({{"255", "ff"}, {"17", "11"}}, {"256"});
}

TEST(KitnetIpGenAddr, HoldsOneFamilyAtATime) {
    struct {
        IpGenAddr address;
        AddressFamily family;
        bool usable;
        const char* text;
    } const rows[] = {{IpGenAddr(), AddressFamily::unset, false, ""},
                      {IpGenAddr(AddressFamily::ipv4), AddressFamily::ipv4, false, "0.0.0.0"},
                      {IpGenAddr(AddressFamily::ipv6), AddressFamily::ipv6, false, "::"},
                      {IpAddr(1), AddressFamily::ipv4, true, "0.0.0.1"},
                      {Ip6Addr::fromText("::1"), AddressFamily::ipv6, true, "::1"}};
    for (const auto& row : rows) {
        EXPECT_EQ(row.address.family(), row.family) << row.text;
        EXPECT_EQ(row.address.isUsable(), row.usable) << row.text;
        EXPECT_EQ(Kcore::textOf(row.address), row.text);
        for (const auto& other : rows) EXPECT_EQ(row.address == other.address, &row == &other);
        EXPECT_EQ(IpGenAddr::fromText(row.text), row.address);
    }
    IpGenAddr address = Ip6Addr::fromText("fe80::1");
    address.handleV4Addr(IpAddr(9));
    EXPECT_EQ(address, IpGenAddr(IpAddr(9)));
    EXPECT_EQ(address.hash(), IpGenAddr(IpAddr(9)).hash());
    EXPECT_EQ(refusalOf([&] { address = IpGenAddr::fromText("10.0.0"); }),
              "Kitnet::IpGenAddr: \"10.0.0\" is not valid");
    address.handleV6Addr({});
    EXPECT_EQ(address, IpGenAddr(AddressFamily::ipv6));
}

TEST(KitnetWireBytes, OverlayRecordsAtAnyAddress) {
    struct Record {
        U8 op;
        NetU16 secs;
        NetU32 xid;
        IpAddr ciaddr;
        EthAddr chaddr;
    };
    static_assert(sizeof(Record) == 17 && offsetof(Record, chaddr) == 11);
    U8 bytes[18] = {0xa5, 1, 0x12, 0x34, 0x89, 0xab, 0xcd, 0xef, 10, 0, 0, 1, 0, 0x1c, 0x73, 1, 2, 3};
    auto& record = *reinterpret_cast<Record*>(bytes + 1);
    EXPECT_EQ(record.secs.value(), 0x1234);
    EXPECT_EQ(record.xid.value(), 0x89abcdefu);
    EXPECT_EQ(record.ciaddr.value(), 0x0a000001u);
    EXPECT_EQ(record.chaddr, EthAddr::fromText("00:1c:73:01:02:03"));
    record.secs.valueIs(0xfedc);
    record.xid.valueIs(0x01020304);
    record.chaddr.byteIs(5, 0xff);
    const U8 expected[18] = {0xa5, 1, 0xfe, 0xdc, 1, 2, 3, 4, 10, 0, 0, 1, 0, 0x1c, 0x73, 1, 2, 0xff};
    EXPECT_TRUE(std::equal(bytes, bytes + 18, expected));
}

TEST(KitnetWireBytes, OrderAndHashFollowTheValue) {
    const std::set<IpAddr> addresses{IpAddr(0xffffffff), IpAddr(0x0a000001), IpAddr(0x09ffffff), IpAddr(0x0a000001)};
    EXPECT_EQ(Kcore::textOf(addresses), "[9.255.255.255, 10.0.0.1, 255.255.255.255]");
    EXPECT_TRUE(NetU16(255) < NetU16(256) && NetU32(0x01000000) > NetU32(0x00ffffff));
    std::unordered_set<Ip6Addr> seen;
    for (std::size_t i = 0; i < 16; ++i) {
        Ip6Addr address;
        address.byteIs(i, 1);
        EXPECT_TRUE(seen.insert(address).second && !seen.insert(address).second);
        EXPECT_FALSE(address.isUnspecified() || address.isEq(Ip6Addr()));
    }
    EXPECT_TRUE(IpAddr().isAny() && !IpAddr(1).isAny() && EthAddr().isZero());
    EXPECT_FALSE(EthAddr::fromText("00:00:00:00:00:01").isZero());
}

TEST(KitnetWireBytes, RefuseAByteOutsideThemselves) {
    EthAddr mac = EthAddr::fromText("00:1c:73:01:02:03");
    Ip6Addr ip6 = Ip6Addr::fromText("fe80::1");
    EXPECT_EQ(mac.byte(5), 3);
    EXPECT_EQ(ip6.byte(15), 1);
    EXPECT_EQ(refusalOf([&] { mac.byte(6); }), "Kitnet::EthAddr::byte > 5 not allowed");
    EXPECT_EQ(refusalOf([&] { mac.byteIs(6, 9); }), "Kitnet::EthAddr::byte > 5 not allowed");
    EXPECT_EQ(refusalOf([&] { ip6.byteIs(16, 9); }), "Kitnet::Ip6Addr::byte > 15 not allowed");
    EXPECT_EQ(refusalOf([&] { ip6.byteIs(static_cast<std::size_t>(-1), 9); }),
              "Kitnet::Ip6Addr::byte > 15 not allowed");
}

TEST(KitnetIntfId, TakesValidNamesAndShortensTheNumberedKinds) {
    std::map<std::string, std::string> shortNames = {{"Ethernet49/1.100", "Et49/1.100"},
                                                     {"Port-Channel2", "Po2"},
                                                     {"Management1", "Ma1"},
                                                     {"Vlan10", "Vl10"},
                                                     {"Loopback0", "Lo0"},
                                                     {"Vxlan1", "Vx1"}};
    for (const std::string& own :
         {"Ethernet"s, "EthernetX1"s, "ethernet1"s, "Et1"s, "eth0.10_a-b/c"s, "x"s, "Zz"s, "E" + std::string(62, '9')})
        shortNames[own] = own;
    for (const auto& [name, shortName] : shortNames) {
        const IntfId intf(name);
        EXPECT_EQ(intf.name(), name);
        EXPECT_EQ(Kcore::textOf(intf), name);
        EXPECT_EQ(intf.shortName(), shortName);
        EXPECT_FALSE(intf.isEmpty());
    }
    EXPECT_TRUE(IntfId().isEmpty() && IntfId().name().empty() && IntfId().shortName().empty());
}

TEST(KitnetIntfId, RefusesEveryOtherNameAndKeepsItsOwn) {
    for (const std::string& name : {""s, "1Ethernet"s, "-a"s, "/a"s, ".a"s, "_a"s, "a b"s, "a:1"s, "a\0"s, "a\n"s,
                                    "Ethernet1 "s, "a\x80"s, "\xc3\xa9"s, "E" + std::string(63, '9')}) {
        IntfId intf("Ethernet1");
        EXPECT_FALSE(IntfId::isValidName(name)) << name;
        EXPECT_NE(refusalOf([&] { intf.handleInitialized(name); }), "") << name;
        EXPECT_EQ(intf.name(), "Ethernet1");
        EXPECT_EQ(IntfId::parse(name, &intf), name.empty()) << name;
    }
    EXPECT_EQ(refusalOf([] { IntfId("a\n"); }), "Kitnet::IntfId: \"a\\x0a\" is not valid");
}

TEST(KitnetIntfId, DiffersInEveryCharacter) {
    std::unordered_set<IntfId> seen;
    for (std::size_t size = 1; size <= IntfId::maxNameBytes; ++size)
        for (const char last : {'a', 'b'}) {
            const std::string name = std::string(size - 1, 'a') + last;
            IntfId intf("Port-Channel1000");  // a longer name that was there before leaves nothing behind
            intf.handleInitialized(name);
            EXPECT_EQ(intf, IntfId(name));
            EXPECT_EQ(intf.hash(), IntfId(name).hash());
            EXPECT_TRUE(seen.insert(intf).second) << name;
        }
    EXPECT_TRUE(IntfId("Ethernet1") < IntfId("Ethernet10") && IntfId("Ethernet10") < IntfId("Ethernet2"));
}

}  // namespace
