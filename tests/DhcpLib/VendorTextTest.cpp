#include <gtest/gtest.h>

#include "Recorders.h"
#include "RelayInfoReader.h"

using namespace DhcpLib;
using namespace DhcpTest;

namespace {

// Selects the toggle file. Must run before the toggle is first read.
[[maybe_unused]] const int toggleIsOff = setenv("DHCPLIB_TOGGLE_DIR", DHCPLIB_TEST_DATA "/toggles-off", 1);

TEST(VendorText, HoldsTheNameBehindTheNumberAndALength) {
    struct Row {
        const char *rule, *subOption, *name;
    };
    for (const Row& row :
         {Row{"alone", "09 09 '32473' 03 'Et1'", "Et1"}, Row{"behind other text", "09 0C 'me32473' 03 'Et1x'", "Et1"},
          Row{"a name without bytes", "09 06 '32473' 00", ""},
          Row{"the length passes the sub-option", "09 08 '32473' 09 'Et' 05 00", "Et"},
          Row{"no length byte", "09 05 '32473' 05 00", ""}, Row{"no number", "09 07 '3247' 03 'Et' 05 00", "-"},
          Row{"the other layout", "09 0A 00 00 7E D9 05 01 03 'Et1'", "-"}}) {
        const Octets subOption = hex(row.subOption);
        const Octets bytes = message(Octets{82, static_cast<U8>(subOption.size())} + subOption + hex("FF 00"));
        for (const PktPtr& pkt : packets(bytes)) {
            TraceRecorder trace(4);
            EXPECT_EQ(readInfo(parseInfoOpt, pkt, 0).intfName, row.name) << row.rule;
            std::vector<std::string> lines;
            if (row.name != std::string("-"))
                lines.push_back(
                    "4 parseVendorSpecificSubOptextracted subdata related to Quorva's enterprise number: "
                    "32473 " +
                    std::string(row.name));
            EXPECT_EQ(trace.lines(), lines) << row.rule;
        }
        // The views know the block layout only.
        const bool otherLayout = row.rule == std::string("the other layout");
        EXPECT_EQ(readInfo(parseInfoOptNew, packet(bytes), 0).intfName, otherLayout ? "Et1" : "-") << row.rule;
    }
}

TEST(VendorText, HasTheSizeThatTheCallerPasses) {
    EXPECT_EQ(getVendorSpecificSubOptionLenAdd("Et1", Kitnet::IpGenAddr(), "", 9), 11u);
    EXPECT_EQ(getVendorSpecificSubOptionLenAdd("Et1", Kitnet::IpGenAddr(), "me", 9), 9u);
}

}  // namespace
