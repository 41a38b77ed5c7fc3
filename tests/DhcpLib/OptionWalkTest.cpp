#include "DhcpLib/OptionParser/OptionWalk.h"

#include <gtest/gtest.h>

#include "Bytes.h"
#include "Recorders.h"

using namespace DhcpLib;
using namespace DhcpTest;

namespace {

TEST(OptionWalk, EveryReaderTracesWhyItFails) {
    const std::string noSpace = "DHCP packet has no space for option fields",
                      noCookie = "DHCP packet missing magic cookie", noEnd = " DHCP packet missing end option";
    const struct {
        Octets bytes;
        std::string failure;  // trace text of the failure; empty if there is none
        const char* type;     // "name/number"
    } rows[] = {
        {Octets(236, scratch), noSpace, "INVALID DHCP/99"},
        {Octets(236, scratch) + hex("63"), noCookie, "BOOTP/99"},
        {message(""), noEnd, "INVALID DHCP/99"},
        {message("35 01 01 0C 04 61 FF"), noEnd, "INVALID DHCP/99"},
        {message("35 01 0E FF"), "", "/99"},
        {message("35 00 0D 00 FF"), "", "DHCPLEASEACTIVE/13"},
    };
    for (const auto& row : rows) {
        std::vector<std::string> lines;
        if (!row.failure.empty())
            lines = {
                "1 bool DhcpLib::parseDhcpOptions(const Ptr&, U32, std::vector<DhcpLib::DhcpSingleOptionWithCode>&)" +
                row.failure};
        const PktPtr pkt = packet(hex("00*77") + row.bytes);
        TraceRecorder trace(4);
        std::vector<DhcpSingleOptionWithCode> none;
        EXPECT_EQ(parseDhcpOptions(pkt, 77, none), lines.empty());
        EXPECT_EQ(trace.lines(), lines);
        EXPECT_EQ(dhcpOptionBasicCheck(pkt, 77), lines.empty());
        EXPECT_EQ(trace.lines(), lines);
        const Kcore::String name = getDhcpMsgType(pkt, 77);
        if (row.failure == noCookie) lines.clear();
        EXPECT_EQ(trace.lines(), lines);
        U8 type = 99;
        EXPECT_EQ(getDhcpMsgTypeStringAndOpt(pkt, 77, type), name);
        EXPECT_EQ(name.str() + '/' + std::to_string(type), row.type);
    }
}

TEST(OptionWalk, OneCodeAskedForTwiceIsTheFirstOrBoth) {
    DhcpSingleOption *one = nullptr, *two = nullptr;
    std::vector<DhcpSingleOptionWithCode> wanted{{53, &one}, {53, &two}};
    const PktPtr pkt = packet(message("35 01 05 FF"));
    EXPECT_TRUE(parseDhcpOptions(pkt, 0, wanted));
    EXPECT_TRUE(one != nullptr && two == nullptr);
    Octets subOptions = hex("35 01 05 35 00");
    EXPECT_TRUE(parseDhcpSubOptsInOption(reinterpret_cast<DhcpSingleOption*>(subOptions.data()), 5, wanted));
    EXPECT_TRUE(one == two && reinterpret_cast<U8*>(one) == subOptions.data() + 3);
}

TEST(OptionWalk, AddressesComeFromOptionsOfLengthFour) {
    const struct {
        const char *options, *requested, *server;
    } rows[] = {{"32 04 0A 00 00 01 36 04 0A 00 00 02 FF", "10.0.0.1", "10.0.0.2"},
                {"36 04 0A 00 00 02 36 04 0A 00 00 03 FF", "0.0.0.0", "10.0.0.3"},
                {"32 04 0A 00 00 01 32 03 0A 00 00 36 05 0A 00 00 02 00 FF", "0.0.0.0", "0.0.0.0"},
                {"32 04 0A 00 00 01 36 04 0A 00 00 02", "0.0.0.0", "0.0.0.0"},
                {"00*70000 36 04 0A 00 00 02 FF", "0.0.0.0", "10.0.0.2"}};
    for (const auto& row : rows) {
        const PktPtr pkt = packet(message(row.options));
        EXPECT_EQ(Kcore::textOf(getRequestedIpOption(pkt, BootpOption::bootpRequest)), row.requested) << row.options;
        EXPECT_EQ(Kcore::textOf(getServerId(pkt)), row.server) << row.options;
        TraceRecorder trace(1);
        EXPECT_TRUE(getRequestedIpOption(pkt, BootpOption::bootpReply).isAny());
        EXPECT_EQ(trace.lines().size(), hex(row.options).back() == 255 ? 0u : 1u);  // it walks a reply, too
    }
}

TEST(OptionWalk, OptionPointersNeedACompleteArea) {
    const std::string signature =
        "void DhcpLib::getDhcpOptions(const Ptr&, U32, DhcpLib::DhcpOptions*&, DhcpLib::DhcpSingleOption*&, "
        "DhcpLib::DhcpSingleOption*&, DhcpLib::DhcpSingleOption*&)";
    for (const bool cookie : {false, true}) {
        const PktPtr pkt = packet(hex("EE") + (cookie ? message("52 01 61") : Octets(300, 0)));
        DhcpOptions* options = nullptr;
        DhcpSingleOption *info = nullptr, *end = nullptr, *packetEnd = nullptr;
        TraceRecorder trace(4);
        EXPECT_EQ(assertionOf([&] { getDhcpOptions(pkt, 1, options, info, end, packetEnd); }),
                  "DhcpLib/OptionParser|" + signature + "|0");
        std::vector<std::string> lines;
        if (!cookie) lines = {"2 " + signature + " DHCP packet missing magic cookie"};
        EXPECT_EQ(trace.lines(), lines);
    }
}

TEST(OptionWalk, HelpersKeepTheirArithmetic) {
    Octets bytes = hex("00 0C FF");
    auto* pad = reinterpret_cast<DhcpSingleOption*>(bytes.data());
    EXPECT_EQ(getDhcpNextOpt(pad), static_cast<void*>(bytes.data() + 1));
    EXPECT_EQ(getDhcpNextOpt(getDhcpNextOpt(pad)), static_cast<void*>(bytes.data() + 1 + 2 + 255));
    U8 total = 250;
    increaseAddedOptLen(total, 5);
    EXPECT_EQ(total, 1);
    char out[6] = {'<', 0, 0, 0, 0, '>'};
    u32ToNetworkBytes(0x01020384, out + 1);
    EXPECT_EQ(std::string_view(out, 6), std::string_view("<\1\2\3\x84>", 6));
}

}  // namespace
