#include "DhcpLib/OptionParser/OptionWalk.h"

#include <gtest/gtest.h>

#include "Bytes.h"
#include "Recorders.h"

using namespace DhcpLib;
using namespace DhcpTest;

namespace {

constexpr char signature[] =
    "bool DhcpLib::parseDhcpOptions(const Ptr&, U32, std::vector<DhcpLib::DhcpSingleOptionWithCode>&)";
constexpr char getOptionsSignature[] =
    "void DhcpLib::getDhcpOptions(const Ptr&, U32, DhcpLib::DhcpOptions*&, DhcpLib::DhcpSingleOption*&, "
    "DhcpLib::DhcpSingleOption*&, DhcpLib::DhcpSingleOption*&)";
constexpr char noSpace[] = "DHCP packet has no space for option fields";
constexpr char noCookie[] = "DHCP packet missing magic cookie";
constexpr char noEnd[] = " DHCP packet missing end option";

/// A request for each of `codes`, and "code@place" of those that `walk` fills, in their order.
template <class Walk>
std::string filled(const Octets& codes, const U8* start, Walk walk) {
    std::vector<DhcpSingleOption*> slots(codes.size(), nullptr);
    std::vector<DhcpSingleOptionWithCode> wanted;
    for (std::size_t i = 0; i < codes.size(); ++i) wanted.push_back({codes[i], &slots[i]});
    walk(wanted);
    std::string all;
    for (std::size_t i = 0; i < codes.size(); ++i) {
        if (slots[i] == nullptr) continue;
        all += (all.empty() ? "" : " ") + std::to_string(codes[i]) + '@' +
               std::to_string(reinterpret_cast<const U8*>(slots[i]) - start);
    }
    return all;
}

struct Area {
    const char* rule;
    Octets bytes;
    const char* places;   ///< of the pads, 12, 53, 82 and the end option
    const char* failure;  ///< what is traced; empty for none
    const char* type;     ///< "name/number"
};
class OptionWalk : public testing::TestWithParam<Area> {};

TEST_P(OptionWalk, EveryReaderSeesThis) {
    const Area& row = GetParam();
    const std::string failure = row.failure;
    TraceRecorder trace(4);
    const auto expectFailureTraced = [&](bool ok) {
        using Lines = std::vector<std::string>;
        EXPECT_EQ(ok, failure.empty());
        EXPECT_EQ(trace.lines(), failure.empty() ? Lines{} : Lines{std::string("1 ") + signature + failure});
    };
    for (const U32 offset : {0u, 77u}) {
        for (const PktPtr& pkt : packets(Octets(offset, U8{0}) + row.bytes)) {
            const std::string places = filled(hex("00 0C 35 52 FF 35"), pkt->data() + offset, [&](auto& wanted) {
                expectFailureTraced(parseDhcpOptions(pkt, offset, wanted));
            });
            EXPECT_EQ(places, row.places);
            expectFailureTraced(dhcpOptionBasicCheck(pkt, offset));
            U8 type = 99;
            const Kcore::String name = getDhcpMsgTypeStringAndOpt(pkt, offset, type);
            EXPECT_EQ(name.str() + '/' + std::to_string(type), row.type);
            trace.lines();
            EXPECT_EQ(getDhcpMsgType(pkt, offset), name);
            if (name == "BOOTP")
                EXPECT_EQ(trace.lines().size(), 0u);
            else
                expectFailureTraced(name != "INVALID DHCP");
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Areas, OptionWalk,
    testing::Values(Area{"HeaderOnly", Octets(236, scratch), "", noSpace, "INVALID DHCP/99"},
                    Area{"LessThanAHeader", Octets(100, scratch), "", noSpace, "INVALID DHCP/99"},
                    Area{"Nothing", {}, "", noSpace, "INVALID DHCP/99"},
                    Area{"AByteOfACookie", Octets(236, scratch) + hex("63"), "", noCookie, "BOOTP/99"},
                    Area{"NoCookie", Octets(300, 0), "", noCookie, "BOOTP/99"},
                    Area{"NothingBehindTheCookie", message(""), "", noEnd, "INVALID DHCP/99"},
                    Area{"TypeAndEnd", message("35 01 03 FF"), "53@240 255@243", "", "DHCPREQUEST/3"},
                    Area{"LastOfTwoWins", message("35 01 01 36 00 35 01 05 FF"), "53@245 255@248", "", "DHCPACK/5"},
                    Area{"PadsTakeOneByte", message("00 00 35 01 02 00 00 FF"), "0@246 53@242 255@247", "",
                         "DHCPOFFER/2"},
                    Area{"FirstEndEndsTheWalk", message("FF 35 01 01 52 00 FF"), "255@240", "", "/99"},
                    Area{"OverrunEndsIt", message("35 01 01 0C 04 61 FF"), "12@243 53@240", noEnd, "INVALID DHCP/99"},
                    Area{"ACodeAsTheLastByte", message("52 00 0C"), "12@242 82@240", noEnd, "INVALID DHCP/99"},
                    Area{"TypeZero", message("35 01 00 FF"), "53@240 255@243", "", "/99"},
                    Area{"TypeAboveTheTable", message("35 01 0E FF"), "53@240 255@243", "", "/99"},
                    Area{"TypeOfLengthZero", message("35 00 0D 00 FF"), "53@240 255@244", "", "DHCPLEASEACTIVE/13"}),
    [](const auto& row) { return row.param.rule; });

TEST(OptionWalkTypes, HaveTheirNames) {
    std::string names;
    for (U8 type = 1; type <= 13; ++type)
        names += getDhcpMsgType(packet(message(Octets{53, 1, type, 255})), 0).str() + ' ';
    EXPECT_EQ(names,
              "DHCPDISCOVER DHCPOFFER DHCPREQUEST DHCPDECLINE DHCPACK DHCPNAK DHCPRELEASE DHCPINFORM DHCPFORCERENEW "
              "DHCPLEASEQUERY DHCPLEASEUNASSIGNED DHCPLEASEUNKNOWN DHCPLEASEACTIVE ");
}

TEST(OptionWalkAddresses, ComeFromOptionsOfLengthFour) {
    struct Row {
        const char *options, *requested, *server;
    };
    for (const Row& row : {Row{"32 04 0A 00 00 01 36 04 0A 00 00 02 FF", "10.0.0.1", "10.0.0.2"},
                           Row{"36 04 0A 00 00 02 36 04 0A 00 00 03 FF", "0.0.0.0", "10.0.0.3"},
                           Row{"32 04 0A 00 00 01 32 03 0A 00 00 36 05 0A 00 00 02 00 FF", "0.0.0.0", "0.0.0.0"},
                           Row{"32 04 0A 00 00 01 36 04 0A 00 00 02", "0.0.0.0", "0.0.0.0"},
                           Row{"00*70000 36 04 0A 00 00 02 FF", "0.0.0.0", "10.0.0.2"}}) {
        const PktPtr pkt = packet(message(row.options));
        EXPECT_EQ(Kcore::textOf(getRequestedIpOption(pkt, BootpOption::bootpRequest)), row.requested) << row.options;
        EXPECT_EQ(Kcore::textOf(getServerId(pkt)), row.server) << row.options;
        TraceRecorder trace(1);
        EXPECT_TRUE(getRequestedIpOption(pkt, BootpOption::bootpReply).isAny());
        EXPECT_EQ(trace.lines().size(), hex(row.options).back() == 255 ? 0u : 1u);  // it walks all the same
    }
}

TEST(OptionWalkSubOptions, CountOneWayAndMoveAnother) {
    struct Row {
        const char* rule;
        const char* bytes;
        std::size_t total;
        const char* places;
    };
    for (const Row& row : {Row{"all of them, twice where asked twice", "01 01 61 02 00 03 00", 7, "1@0 2@3 1@0 3@5"},
                           Row{"the last of two", "01 00 02 00 01 00", 6, "1@4 2@2 1@4"},
                           Row{"the first in any case", "01 00 02 00", 0, "1@0 1@0"},
                           Row{"one that starts inside", "01 00 02 09 03 00", 3, "1@0 2@2 1@0"},
                           Row{"a pad moves by one, and counts four", "00 02 01 61 01 00 03 00", 8, "1@4 2@1 1@4"},
                           Row{"and three", "00 01 00 01 61 03 00", 6, "1@3 1@3"}}) {
        Octets bytes = hex(row.bytes) + Octets(300, U8{0});
        EXPECT_EQ(filled(hex("01 02 01 03"), bytes.data(),
                         [&](auto& wanted) {
                             EXPECT_TRUE(parseDhcpSubOptsInOption(reinterpret_cast<DhcpSingleOption*>(bytes.data()),
                                                                  row.total, wanted));
                         }),
                  row.places)
            << row.rule;
    }
}

TEST(OptionWalkPlaces, AreFoundOrTheAssertionFails) {
    struct Row {
        const char* rule;
        Octets bytes;
        std::ptrdiff_t info, end;  // from the cookie; -1: none
        std::vector<std::string> lines;
    };
    const std::string asserted = std::string("DhcpLib/OptionParser|") + getOptionsSignature + "|0";
    const std::vector<std::string> cookieLine{std::string("2 ") + getOptionsSignature + ' ' + noCookie};
    for (const Row& row :
         {Row{"the last option 82", message("52 01 61 00 52 00 FF 52 00"), 8, 10, {}},
          Row{"none", message("35 01 01 FF 52 00 FF"), -1, 7, {}}, Row{"no cookie", Octets(300, 0), 0, -1, cookieLine},
          Row{"no room", Octets(236, 0), 0, -1, cookieLine}, Row{"no end option", message("52 01 61"), 0, -1, {}}}) {
        const PktPtr pkt = packet(hex("EE") + row.bytes);
        DhcpOptions* options = nullptr;
        DhcpSingleOption *info = nullptr, *end = nullptr, *packetEnd = nullptr;
        TraceRecorder trace(4);
        EXPECT_EQ(assertionOf([&] { getDhcpOptions(pkt, 1, options, info, end, packetEnd); }),
                  row.end < 0 ? asserted : "")
            << row.rule;
        EXPECT_EQ(trace.lines(), row.lines) << row.rule;
        U8* const cookie = pkt->data() + 237;
        if (row.end < 0) continue;
        EXPECT_EQ(options, static_cast<void*>(cookie));
        EXPECT_EQ(info, row.info < 0 ? nullptr : static_cast<void*>(cookie + row.info));
        EXPECT_EQ(end, static_cast<void*>(cookie + row.end));
        EXPECT_EQ(packetEnd, static_cast<void*>(pkt->data() + pkt->bytes()));
    }
}

TEST(OptionWalkHelpers, KeepTheirArithmetic) {
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
