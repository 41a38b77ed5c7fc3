#include "DhcpLib/OptionParser/VendorSubOption.h"

#include <gtest/gtest.h>

#include "Bytes.h"
#include "Recorders.h"

using namespace DhcpLib;
using namespace DhcpTest;

namespace {

TEST(VendorSubOption, SizesAndItemsAreWrittenAtThePosition) {
    const auto vtep = Kitnet::IpGenAddr::fromText("10.0.0.4");
    Kcore::Bytes buf;
    buf.append(hex("A5*3"));
    U32 pos = 1;
    EXPECT_EQ(addVendorSpecificSubOptLen(buf, pos, 4, true, "", vtep), 3u);
    EXPECT_EQ(addVendorSpecificSubOptLen(buf, pos, 4, false, "", vtep), 4u);
    TraceRecorder trace(4);
    setInfoData(buf, pos, 7, 3, hex("61 62 63").data());
    setInfoData(buf, pos, 8, 0, nullptr);
    EXPECT_EQ(pos, 11u);
    EXPECT_EQ(Octets(buf.begin(), buf.end()), hex("A5 0F A5 04 07 03 'abc' 08 00"));
    EXPECT_EQ(trace.lines(),
              (std::vector<std::string>{"4 setInfoData subType 7 len 3", "4 setInfoData subType 8 len 0"}));
    for (int i = 0; i < 300; ++i) setInfoData(buf, pos, 7, 3, buf.data() + 6);  // its own bytes, which move
    EXPECT_EQ(Octets(buf.end() - 5, buf.end()), hex("07 03 'abc'"));
    // Without contents only the headers count.
    EXPECT_EQ(getVendorSpecificSubOptionLenAdd("", {}, "", 99), 7u);
    auto view = dhcpInformationSubOptionFactory(packet(hex("09 10 00 00 00 09 02 'AB' 00 00 7E D9 04 01 02 'Et'")), 0);
    auto vendor = dhcpVendorSpecificSubOptFactory(view);
    EXPECT_EQ(calculateNonQuorvaVendorLen(view, vendor), 7u);
    auto foreign = dhcpInformationSubOptionFactory(packet(hex("09 07 00 00 00 09 02 'AB'")), 0);
    auto blockless = dhcpVendorSpecificSubOptFactory(foreign);
    EXPECT_EQ(calculateNonQuorvaVendorLen(foreign, blockless), 7u);
    foreign = nullptr, vendor = nullptr;
    EXPECT_EQ(calculateNonQuorvaVendorLen(view, vendor), 16u);
    EXPECT_EQ(calculateNonQuorvaVendorLen(foreign, vendor), 0u);
}

TEST(VendorSubOption, IsNotExtendedPast255Bytes) {
    for (const bool exists : {false, true}) {
        const std::size_t longest = 255 - 5 - 2 - (exists ? 2 : 0);  // after the headers of block and item
        for (const std::size_t size : {longest, longest + 1}) {
            Octets bytes = hex("52 02 09 02 'AB'") + Octets(300, scratch);
            if (!exists) bytes[2] = bytes[3] = scratch;
            const Octets before = bytes;
            auto* info = reinterpret_cast<DhcpSingleOption*>(bytes.data());
            auto* subOption = exists ? reinterpret_cast<DhcpSingleOption*>(&bytes[2]) : nullptr;
            const std::size_t added = addVendorSpecificSubOption(info, 0, subOption, std::string(size, 'x'), {});
            EXPECT_EQ(added, size > longest ? 0 : 7 + size + (exists ? 0 : 2));
            EXPECT_EQ(bytes == before, size > longest);
        }
    }
}

TEST(VendorSubOption, IsReadThroughAPointerByItsLengthsAlone) {
    const struct {
        const char *rule, *bytes, *name, *vtep;
    } rows[] = {
        {"both items", "09 10 00 00 7E D9 0B 01 03 'abc' 02 04 0A 00 00 04", "abc", "10.0.0.4"},
        {"behind another block", "09 13 00 00 00 09 04 'four' 00 00 7E D9 05 01 03 'abc'", "abc", ""},
        {"another block alone", "09 08 00 00 00 09 03 01 01 'a'", "-", ""},
        {"a name that passes the sub-option", "09 07 00 00 7E D9 02 01 04 'abcd'", "abcd", ""},
        {"an address of three bytes", "09 0A 00 00 7E D9 05 02 03 0A 00 00", "-", ""},
    };
    for (const auto& row : rows) {
        Octets bytes = hex(row.bytes) + Octets(300, U8{0});
        Kcore::String name("-");
        Kitnet::IpGenAddr vtep;
        parseVendorSpecificSubOpt(reinterpret_cast<DhcpSingleOption*>(bytes.data()), name, vtep);
        EXPECT_EQ(name, row.name) << row.rule;
        EXPECT_EQ(Kcore::textOf(vtep), row.vtep) << row.rule;
    }
}

TEST(VendorSubOption, ANullPointerHoldsNoBlock) {
    DhcpVendorSpecificEntOption* block = nullptr;
    EXPECT_FALSE(isVendorSpecificQuorvaEntno(nullptr, 11, &block));
    Kcore::String name("-");
    Kitnet::IpGenAddr vtep;
    parseVendorSpecificSubOpt(static_cast<DhcpSingleOption*>(nullptr), name, vtep);
    EXPECT_EQ(name, "-");
    EXPECT_EQ(addVendorSpecificSubOption(nullptr, 0, nullptr, "Et1", vtep), 0u);
}

TEST(VendorSubOption, TheBlockIsFoundByItsNumber) {
    const struct {
        const char* blocks;
        std::size_t total;
        int found;
    } rows[] = {{"00 00 7E D9 00", 0, 0},
                {"00 00 00 09 01 61 00 00 7E D9 00", 7, 6},
                {"00 00 00 09 01 61 00 00 7E D9 00", 6, -1},
                {"00 00 00 09 FF 00 00 7E D9 00", 10, -1}};
    for (const auto& row : rows) {
        Octets bytes = hex(row.blocks) + Octets(300, U8{0});
        auto* first = reinterpret_cast<DhcpVendorSpecificEntOption*>(bytes.data());
        DhcpVendorSpecificEntOption* found = nullptr;
        EXPECT_EQ(isVendorSpecificQuorvaEntno(first, row.total, &found), row.found >= 0) << row.blocks;
        EXPECT_EQ(found, row.found < 0 ? nullptr : static_cast<void*>(bytes.data() + row.found)) << row.blocks;
        EXPECT_EQ(getNextVendorSpecificEntOpt(first), static_cast<void*>(bytes.data() + 5 + bytes[4]));
    }
}

TEST(VendorSubOption, TracesWhatItReads) {
    const std::string reader = " parseVendorSpecificSubOpt vs subopt ";
    const struct {
        const char *rule, *bytes;
        std::vector<std::string> lines;
    } rows[] = {
        {"both items",
         "09 10 00 00 7E D9 0B 01 03 'abc' 02 04 0A 00 00 04",
         {"4" + reader + "intfName abc", "4" + reader + "src vtep ipv4 10.0.0.4"}},
        {"the last of two", "09 0B 00 00 7E D9 06 01 01 'a' 01 01 'b'", {"4" + reader + "intfName b"}},
        {"IPv6", "09 17 00 00 7E D9 12 02 10 20 01 0D B8 00*11 01", {"4" + reader + "src vtep ipv6 2001:db8::1"}},
        {"neither", "09 08 00 00 7E D9 03 02 01 00", {"1" + reader + "src vtep malformed "}},
        {"the first item of an empty block", "09 05 00 00 7E D9 00 01 01 'x'", {"4" + reader + "intfName x"}},
        {"a pad moves by one, and counts two and more",
         "09 0B 00 00 7E D9 06 00 01 01 'x' 01 01 'y'",
         {"4" + reader + "intfName x"}},
        {"a name past the packet", "09 0A 00 00 7E D9 05 01 FF 'ab'", {"4" + reader + "intfName ab"}},
        {"a block that overruns", "09 0A 00 00 00 09 20 00 00 7E D9 00", {}},
    };
    for (const auto& row : rows) {
        TraceRecorder trace(4);
        Kcore::String name;
        Kitnet::IpGenAddr vtep;
        parseVendorSpecificSubOpt(Wire::ByteView(*packet(hex(row.bytes))), 0, name, vtep);
        EXPECT_EQ(trace.lines(), row.lines) << row.rule;
    }
}

}  // namespace
