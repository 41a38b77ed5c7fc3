#include "DhcpLib/OptionParser/VendorSubOption.h"

#include <gtest/gtest.h>

#include "Bytes.h"
#include "Recorders.h"

using namespace DhcpLib;
using namespace DhcpTest;
using Kitnet::IpGenAddr;

namespace {

const IpGenAddr none, zero4 = Kitnet::IpAddr(), zero6 = Kitnet::Ip6Addr(), v4 = Kitnet::IpAddr::fromText("10.0.0.4"),
                      v6 = Kitnet::Ip6Addr::fromText("2001:db8::1");

Octets octets(const Kcore::Bytes& bytes) { return {bytes.begin(), bytes.end()}; }
DhcpSingleOption* overlay(U8* at) { return reinterpret_cast<DhcpSingleOption*>(at); }

TEST(VendorSubOption, WhatIsWrittenIsMeasuredFirst) {
    struct Row {
        std::string name;
        IpGenAddr vtep;
        Octets block;  // as it stands in the packet
    };
    const Row rows[] = {
        {"abc", none, hex("00 00 7E D9 05 01 03 'abc'")},
        {"", v4, hex("00 00 7E D9 06 02 04 0A 00 00 04")},
        {"a", v6, hex("00 00 7E D9 15 01 01 'a' 02 10 20 01 0D B8 00*11 01")},
        {"", zero4, {}},
        {"", zero6, {}},
        {"", none, {}},
        {std::string(200, 'n'), zero6, hex("00 00 7E D9 CA 01 C8") + Octets(200, 'n')},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name + Kcore::textOf(row.vtep));
        const auto d = static_cast<U32>(row.block.empty() ? 0 : row.block.size() - 5);
        EXPECT_EQ(quorvaVendorSpecificSubOptLen(row.name, row.vtep), d);
        EXPECT_EQ(getVendorSpecificSubOptionLenAdd(row.name, row.vtep, "", 99), d + 7);
        EXPECT_EQ(getVendorSpecificSubOptionLenAdd(row.name, row.vtep, "x", 99), d + 5);

        Kcore::Bytes buf;
        buf.append(hex("A5*3"));
        U32 pos = 1;
        EXPECT_EQ(addVendorSpecificSubOptLen(buf, pos, 4, true, row.name, row.vtep), 3u);
        EXPECT_EQ(addVendorSpecificSubOptLen(buf, pos, 4, false, row.name, row.vtep), 4u);
        addQuorvaVendorSpecificSubOpt(buf, pos, row.name, row.vtep);
        EXPECT_EQ(pos, buf.size());
        EXPECT_EQ(octets(buf), Octets({scratch, static_cast<U8>(d + 9), scratch, 4}) +
                                   (row.block.empty() ? hex("00 00 7E D9 00") : row.block));

        const U32 size = static_cast<U32>(row.block.size());
        Octets fresh = hex("52 03 01 01 61") + Octets(300, scratch);
        Octets expected = fresh;
        if (size != 0) std::ranges::copy(Octets{9, static_cast<U8>(size)} + row.block, expected.begin() + 5);
        EXPECT_EQ(addVendorSpecificSubOption(overlay(fresh.data()), 3, nullptr, row.name, row.vtep),
                  size == 0 ? 0 : size + 2);
        EXPECT_EQ(fresh, expected);

        Octets other = hex("52 0D 09 0B 00 00 00 09 06 'sixsix'") + Octets(300, scratch);
        expected = other;
        expected[3] = static_cast<U8>(11 + size);
        std::ranges::copy(row.block, expected.begin() + 15);
        EXPECT_EQ(addVendorSpecificSubOption(overlay(other.data()), 13, overlay(&other[2]), row.name, row.vtep), size);
        EXPECT_EQ(other, expected);
        if (size == 0) continue;
        auto view = dhcpInformationSubOptionFactory(packet(other), 2);
        auto vendor = dhcpVendorSpecificSubOptFactory(view);
        EXPECT_EQ(calculateNonQuorvaVendorLen(view, vendor), 11u);
        Kcore::String name = "-";
        IpGenAddr vtep = v4;
        parseVendorSpecificSubOpt(overlay(&other[2]), name, vtep);
        EXPECT_EQ(name, row.name.empty() ? "-" : row.name);
        EXPECT_EQ(vtep, row.vtep.isUsable() ? row.vtep : v4);
    }
}

TEST(VendorSubOption, AnItemIsPutWhereThePositionSays) {
    TraceRecorder trace(4);
    Kcore::Bytes buf;
    buf.append(hex("A5*2"));
    U32 pos = 2;
    setInfoData(buf, pos, 7, 3, hex("61 62 63").data());
    EXPECT_EQ(pos, 7u);
    setInfoData(buf, pos, 8, 0, nullptr);
    EXPECT_EQ(pos, 9u);
    EXPECT_EQ(octets(buf), hex("A5*2 07 03 'abc' 08 00"));
    EXPECT_EQ(trace.lines(),
              (std::vector<std::string>{"4 setInfoData subType 7 len 3", "4 setInfoData subType 8 len 0"}));
}

TEST(VendorSubOption, TheBlockIsFoundByItsNumber) {
    struct Row {
        const char* blocks;
        std::size_t total;
        int found;
    };
    for (const Row& row : {Row{"00 00 7E D9 00", 0, 0}, Row{"00 00 00 09 01 61 00 00 7E D9 00", 7, 6},
                           Row{"00 00 00 09 01 61 00 00 7E D9 00", 6, -1}, Row{"D9 7E 00 00 00", 5, -1},
                           Row{"00 00 00 09 FF 00 00 7E D9 00", 10, -1}}) {
        Octets bytes = hex(row.blocks) + Octets(300, U8{0});
        auto* first = reinterpret_cast<DhcpVendorSpecificEntOption*>(bytes.data());
        DhcpVendorSpecificEntOption* found = nullptr;
        EXPECT_EQ(isVendorSpecificQuorvaEntno(first, row.total, &found), row.found >= 0) << row.blocks;
        EXPECT_EQ(found, row.found < 0 ? nullptr : static_cast<void*>(bytes.data() + row.found)) << row.blocks;
        EXPECT_EQ(getNextVendorSpecificEntOpt(first), static_cast<void*>(bytes.data() + 5 + bytes[4]));
    }
}

TEST(VendorSubOption, ReadsTheBlockItemByItem) {
    struct Row {
        const char *rule, *bytes, *name, *vtep;
        std::vector<std::string> lines;
    };
    const std::string reader = "4 parseVendorSpecificSubOpt";
    const Row rows[] = {
        {"both items",
         "09 10 00 00 7E D9 0B 01 03 'abc' 02 04 0A 00 00 04",
         "abc",
         "10.0.0.4",
         {reader + " vs subopt intfName abc", reader + " vs subopt src vtep ipv4 10.0.0.4"}},
        {"the last of two", "09 0B 00 00 7E D9 06 01 01 'a' 01 01 'b'", "b", "-", {reader + " vs subopt intfName b"}},
        {"an address of IPv6",
         "09 17 00 00 7E D9 12 02 10 20 01 0D B8 00*11 01",
         "-",
         "2001:db8::1",
         {reader + " vs subopt src vtep ipv6 2001:db8::1"}},
        {"an address of neither",
         "09 08 00 00 7E D9 03 02 01 00",
         "-",
         "-",
         {"1 parseVendorSpecificSubOpt vs subopt src vtep malformed "}},
        {"the first item of an empty block",
         "09 05 00 00 7E D9 00 01 01 'x'",
         "x",
         "-",
         {reader + " vs subopt intfName x"}},
        {"a pad moves by one, and counts two and more",
         "09 0B 00 00 7E D9 06 00 01 01 'x' 01 01 'y'",
         "x",
         "-",
         {reader + " vs subopt intfName x"}},
        {"a name past the packet", "09 0A 00 00 7E D9 05 01 FF 'ab'", "ab", "-", {reader + " vs subopt intfName ab"}},
        {"nobody's block", "09 07 00 00 00 09 02 01 00", "-", "-", {}},
        {"a block that overruns", "09 0A 00 00 00 09 20 00 00 7E D9 00", "-", "-", {}},
        {"a header past the packet", "09 05 00 00 7E D9", "-", "-", {}},
    };
    for (const Row& row : rows) {
        const Octets bytes = hex(row.bytes);
        for (std::size_t size = 0; size <= bytes.size(); ++size) {
            std::vector<std::string> lines;
            for (const PktPtr& pkt :
                 packets(Octets(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)))) {
                TraceRecorder trace(4);
                Kcore::String name = "-";
                IpGenAddr vtep;
                parseVendorSpecificSubOpt(Wire::ByteView(*pkt), 0, name, vtep);
                if (lines.empty())
                    lines = trace.lines();
                else
                    EXPECT_EQ(trace.lines(), lines) << row.rule << " cut to " << size;
                if (size < bytes.size()) continue;
                EXPECT_EQ(name, row.name) << row.rule;
                EXPECT_EQ(Kcore::textOf(vtep), row.vtep == std::string("-") ? Kcore::textOf(none) : row.vtep)
                    << row.rule;
                EXPECT_EQ(lines, row.lines) << row.rule;
            }
        }
    }
}

}  // namespace
