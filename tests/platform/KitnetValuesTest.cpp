#include <gtest/gtest.h>

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

struct Good {
    const char* text;
    std::string wire;
    const char* printed = nullptr;  // null: printed as it was parsed
};

template <class T>
void expectTextForm(const std::vector<Good>& good, const std::vector<std::string>& bad) {
    for (const auto& [text, wire, printed] : good) {
        const T value = T::fromText(text);
        EXPECT_EQ(std::string(value.bytes(), value.bytes() + T::wireBytes), wire) << text;
        EXPECT_EQ(Kcore::textOf(value), printed != nullptr ? printed : text);
        EXPECT_EQ(T::fromText(Kcore::textOf(value)), value);
    }
    for (const std::string& text : bad) {
        T value = T::fromText(good.back().text);
        EXPECT_FALSE(T::parse(text, &value)) << text;
        EXPECT_EQ(value, T::fromText(good.back().text)) << text;
    }
}

TEST(KitnetText, IsParsedOrRefused) {
    expectTextForm<IpAddr>({{"255.255.255.255", "\xff\xff\xff\xff"}, {"10.0.0.1", "\n\0\0\1"s}},
                           {"", "10.0.0", "10.0.0.256", "10.0.0.1 ", "10.0.0.1\0"s});
    const std::string zeros(16, '\0'), dbl("\x20\1\r\xb8");
    expectTextForm<Ip6Addr>(
        {{"::", zeros},
         {"1::", "\0\1"s + zeros.substr(2)},
         {"2001:DB8:0:0:1:0:0:1", dbl + "\0\0\0\0\0\1\0\0\0\0\0\1"s, "2001:db8::1:0:0:1"},
         {"2001:db8::1:1:1:1:1", dbl + "\0\0\0\1\0\1\0\1\0\1\0\1"s, "2001:db8:0:1:1:1:1:1"},
         {"0:0:1:0:0:0:1:1", "\0\0\0\0\0\1\0\0\0\0\0\0\0\1\0\1"s, "0:0:1::1:1"},
         {"1:2:3:4:5:6:7::", "\0\1\0\2\0\3\0\4\0\5\0\6\0\7\0\0"s, "1:2:3:4:5:6:7:0"},
         {"::ffff:10.0.0.1", zeros.substr(6) + "\xff\xff\n\0\0\1"s},
         {"64:ff9b::10.0.0.1", "\0\x64\xff\x9b"s + zeros.substr(8) + "\n\0\0\1"s, "64:ff9b::a00:1"}},
        {"", "1::2::3", "fe80::1%eth0", "::1\0"s, std::string(46, '0')});
    expectTextForm<EthAddr>({{"00:1C:73:aB:cd:EF", "\0\x1c\x73\xab\xcd\xef"s, "00:1c:73:ab:cd:ef"}},
                            {"", "00:1c:73:ab:cd", "00-1c-73-ab-cd-ef", "0:11c:73:ab:cd:ef", "00:1c:73:ab:cd:-1"});
    const std::vector<std::string> bad = {"", " 1", "1 ", "+1", "-1", "0x10", "4294967296"};
    expectTextForm<NetU32>({{"4294967295", "\xff\xff\xff\xff"}, {"16909060", "\1\2\3\4"}}, bad);
    expectTextForm<UdpPort>({{"258", "\1\2"}}, {"65536"});
    expectTextForm<IpProtocolNumber>({{"255", "\xff"}}, {"256"});
    // Unprintable bytes are escaped in the message.
    EXPECT_EQ(refusalOf([] { Ip6Addr::fromText("\x1b[2J"); }), "Kitnet::Ip6Addr: \"\\x1b[2J\" is not valid");
}

TEST(KitnetIpGenAddr, HoldsOneFamilyAtATime) {
    const struct {
        IpGenAddr address;
        AddressFamily family;
        bool usable;
        const char* text;
    } rows[] = {{IpGenAddr(), AddressFamily::unset, false, ""},
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
    EXPECT_NE(refusalOf([&] { address = IpGenAddr::fromText("10.0.0"); }), "");
    address.handleV6Addr({});
    EXPECT_EQ(address, IpGenAddr(AddressFamily::ipv6));
}

TEST(KitnetWireBytes, OverlayOrderAndHash) {
    struct Record {
        U8 op;
        NetU16 secs;
        NetU32 xid;
    };
    static_assert(sizeof(Record) == 7 && alignof(Record) == 1);
    U8 bytes[8] = {0xa5, 1, 0x12, 0x34, 0x89, 0xab, 0xcd, 0xef};
    auto& record = *reinterpret_cast<Record*>(bytes + 1);
    EXPECT_EQ(record.xid.value(), 0x89abcdefu);
    record.secs.valueIs(0xfedc);
    EXPECT_TRUE(bytes[1] == 1 && bytes[2] == 0xfe && bytes[3] == 0xdc && bytes[4] == 0x89);

    const std::set<IpAddr> addresses{IpAddr(0xffffffff), IpAddr(0x0a000001), IpAddr(0x09ffffff), IpAddr(0x0a000001)};
    EXPECT_EQ(Kcore::textOf(addresses), "[9.255.255.255, 10.0.0.1, 255.255.255.255]");
    std::unordered_set<Ip6Addr> seen;
    for (std::size_t i = 0; i < 16; ++i) {
        Ip6Addr address;
        address.byteIs(i, 1);
        EXPECT_TRUE(seen.insert(address).second && !seen.insert(address).second);
        EXPECT_FALSE(address.isUnspecified());
    }
    EthAddr mac;
    EXPECT_EQ(refusalOf([&] { mac.byte(6); }), "Kitnet::EthAddr::byte > 5 not allowed");
    EXPECT_EQ(refusalOf([&] { mac.byteIs(6, 9); }), "Kitnet::EthAddr::byte > 5 not allowed");
    EXPECT_TRUE(mac.isZero());
}

TEST(KitnetIntfId, TakesValidNamesAndShortensTheNumberedKinds) {
    std::map<std::string, std::string> shortNames = {{"Ethernet49/1.100", "Et49/1.100"},
                                                     {"Port-Channel2", "Po2"},
                                                     {"Management1", "Ma1"},
                                                     {"Vlan10", "Vl10"},
                                                     {"Loopback0", "Lo0"},
                                                     {"Vxlan1", "Vx1"}};
    for (const std::string& own :
         {"Ethernet"s, "EthernetX1"s, "ethernet1"s, "eth0.10_a-b/c"s, "E" + std::string(62, '9')})
        shortNames[own] = own;
    for (const auto& [name, shortName] : shortNames) {
        EXPECT_EQ(IntfId(name).name(), name);
        EXPECT_EQ(IntfId(name).shortName(), shortName);
    }
    for (const std::string& name :
         {""s, "1Ethernet"s, "-a"s, "a b"s, "a:1"s, "a\0"s, "a\n"s, "a\x80"s, "E" + std::string(63, '9')}) {
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
            IntfId intf("Port-Channel1000");  // a longer name that was stored before must not leave bytes behind
            intf.handleInitialized(name);
            EXPECT_TRUE(intf == IntfId(name) && intf.hash() == IntfId(name).hash());
            EXPECT_TRUE(seen.insert(intf).second) << name;
        }
}

}  // namespace
