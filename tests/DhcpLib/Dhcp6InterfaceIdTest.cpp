#include "Dhcp6ViewRows.h"

using namespace DhcpLib;
using namespace DhcpTest;

namespace {

std::string read(const std::string& intfName, const std::string& vrfName = "", const std::string& ip = "",
                 const std::string& mac = "00:00:00:00:00:00") {
    return "intfName=" + intfName + " vrfName=" + vrfName + " srcVtepIp=" + ip + " srcVtepMac=" + mac;
}

TEST(Dhcp6InterfaceId, ReadsElements) {
    const std::string four = " 01 03 'Et1' 02 04 'blue' 03 04 0A 00 00 01 04 06 02 C1 00 00 0C 01",
                      mac = "02:c1:00:00:0c:01";
    const ReadRow rows[] = {
        {"all four", "00 12 00 19" + four, read("Et1", "blue", "10.0.0.1", mac)},
        {"an unknown type spoils all", "00 12 00 1B" + four + " 05 00", read("")},
        {"so does the type 0", "00 12 00 07 01 03 'Et1' 00 00", read("")},
        {"so does an overrun", "00 12 00 0A 01 03 'Et1' 02 04 'blu' 65", read("")},
        {"so does a type without length", "00 12 00 06 01 03 'Et1' 02 00", read("")},
        {"IPv6, in any order", "00 12 00 17 03 10 20 01 0D B8 00*11 01 01 03 'Et1' EE", read("Et1", "", "2001:db8::1")},
        {"elements of wrong sizes are skipped",
         "00 12 00 26 03 05 0A 00 00 01 02 03 11 FF*17 04 05 02 C1 00 00 0C 02 01 'r' 01 00", read("", "r")},
        {"a long MAC is cut", "00 12 00 0D 04 07 02 C1 00 00 0C 01 FF 02 02 'vr'", read("", "vr", "", mac)},
        {"last of two wins", "00 12 00 0A 01 03 'Et1' 01 03 'Et2'", read("Et2")},
        {"cut at the packet's end", "00 12 FF FF 01 03 'Et1'", read("Et1")},
        {"empty", "00 12 00 00 01 03 'Et1'", read("")},
        {"ends at 255", "00 12 00 FF 01 FB 'n'*251 02 00", read(std::string(251, 'n'))},
        // The 8-bit offset would return to 0, or to 1.
        {"wraps at 256", "00 12 01 00 01 FE 'n'*254", read("")},
        {"wraps behind 256", "00 12 01 08 01 FF 'n'*255 02 05 'bluee'", read("")},
        {"a long VRF name that is replaced", "00 12 00 6A 02 65 'v'*101 02 01 'v'", read("", "v")},
        {"one that is thrown away", "00 12 00 69 02 65 'v'*101 05 00", read("")},
    };
    for (const ReadRow& row : rows) {
        const auto opt = dhcp6OptionFactory(packet(hex(row.option)), 0);
        EXPECT_EQ(attributesOf(*dhcp6InterfaceIdFactory(opt)), row.attributes) << row.rule;
    }
    EXPECT_EQ(refusalOf([] { Dhcp6InterfaceId(dhcp6OptionFactory(packet(hex("00 12 00 67 02 65 'v'*101")), 0)); }),
              "Tyk::String::bytes > maxLength() not allowed");
}

void set(Dhcp6InterfaceId& view, std::size_t intfName, std::size_t vrfName, const char* ip, const char* mac) {
    view.intfNameIs(std::string(intfName, 'i'));
    view.vrfNameIs(std::string(vrfName, 'v'));
    view.srcVtepIpIs(Kitnet::IpGenAddr::fromText(ip));
    view.srcVtepMacIs(Kitnet::EthAddr::fromText(mac));
    view.setInterfaceIdDataInPkt();
}

TEST(Dhcp6InterfaceId, WritesAllOrNothing) {
    const struct {
        std::size_t intfName, vrfName;
        const char *ip, *mac;
        std::string data;  // empty if the write is refused
    } rows[] = {
        {3, 4, "10.0.0.1", "02:c1:00:00:0c:01", "01 03 'iii' 02 04 'vvvv' 03 04 0A 00 00 01 04 06 02 C1 00 00 0C 01"},
        {1, 1, "2001:db8::1", "00:00:00:00:00:00", "01 01 'i' 02 01 'v' 03 10 20 01 0D B8 00*11 01"},
        {1, 1, "0.0.0.0", "00:00:00:00:00:01", "01 01 'i' 02 01 'v' 04 06 00*5 01"},
        {255, 1, "", "00:00:00:00:00:00", "01 02 01 'v' 'i'*253"},
        {256, 1, "", "00:00:00:00:00:00", ""},
        // The third element starts at 200 + 2 + 60 + 2 - 256 = 8, inside the first one.
        {200, 60, "10.0.0.1", "00:00:00:00:00:00", "01 C8 'i'*6 03 04 0A 00 00 01 'i'*188 02 3C 'v'*60"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.data);
        const Octets before = hex("A5*3 00 12 00 00 A5*400"), written = hex("A5*3 00 12 00 00 " + row.data);
        for (const std::size_t size : {before.size(), written.size(), written.size() - 1}) {
            const PktPtr pkt = packet(first(before, size));
            const auto view = dhcp6InterfaceIdFactory(dhcp6OptionFactory(pkt, 3));
            const bool fits = !row.data.empty() && size >= written.size();
            EXPECT_EQ(internalErrorOf([&] { set(*view, row.intfName, row.vrfName, row.ip, row.mac); }),
                      fits ? "" : noRoom);
            // No length is computed for the rows in which elements overwrite each other.
            EXPECT_EQ(interfaceIdBytes({view->intfName(), view->vrfName(), view->srcVtepIp(), view->srcVtepMac()}),
                      row.intfName < 200 ? std::optional<U16>(hex(row.data).size()) : std::nullopt);
            EXPECT_EQ(bytesOf(*pkt), fits ? written + Octets(size - written.size(), scratch) : first(before, size));
        }
    }
    const PktPtr pkt = packet(hex("00 12 00 00 A5*25"));
    const auto view = dhcp6InterfaceIdFactory(dhcp6OptionFactory(pkt, 0));
    for (const std::size_t nameBytes : {0U, 1U})
        EXPECT_EQ(internalErrorOf([&] { set(*view, nameBytes, 1 - nameBytes, "10.0.0.1", "02:c1:00:00:0c:01"); }),
                  "Intf Name or Vrf Name is not set");
    EXPECT_EQ(bytesOf(*pkt), hex("00 12 00 00 A5*25"));
}

}  // namespace
