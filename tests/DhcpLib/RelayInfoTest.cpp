#include "DhcpLib/OptionParser/RelayInfo.h"

#include <gtest/gtest.h>

#include "Bytes.h"
#include "Recorders.h"
#include "RelayInfoReader.h"

using namespace DhcpLib;
using namespace DhcpTest;

namespace {

/// The outputs that have changed.
std::string textOf(const RelayInfo& r) {
    const RelayInfo untouched;
    std::string out = r.ok ? "true" : "false";
    const auto add = [&](const char* name, const auto& value, const auto& before) {
        if (!(value == before)) Kcore::appendText(out.append(name), value);
    };
    add(" c=", r.circuitId, untouched.circuitId);
    add(" r=", r.remoteId, untouched.remoteId);
    add(" vpn=", r.vpnId, untouched.vpnId);
    add(" vss=", r.vssControl, untouched.vssControl);
    add(" s=", r.serverIdOverride, untouched.serverIdOverride);
    add(" l=", r.linkSelection, untouched.linkSelection);
    add(" i=", r.intfName, untouched.intfName);
    add(" v=", r.srcVtepIp, untouched.srcVtepIp);
    return out;
}

/// The part of each line after the signature, separated by semicolons.
std::string endsOf(const std::vector<std::string>& lines) {
    std::string out;
    for (const std::string& line : lines) {
        const auto end = line.rfind(')');
        out.append(out.empty() ? "" : ";").append(line.substr(end == line.npos ? 0 : end + 1));
    }
    return out;
}

TEST(RelayInfo, IsReadByBothGenerations) {
    constexpr char noEnd[] = "DHCP packet missing end option", spacedNoEnd[] = " DHCP packet missing end option";
    const struct {
        const char* rule;
        Octets bytes;
        const char *raw, *rawLines;      // parseInfoOpt: outputs, and its lines at level 1
        const char *views, *viewsLines;  // parseInfoOptNew
    } rows[] = {
        {"every sub-option",
         message("52 2C 01 03 'abc' 02 02 'de' 97 01 'f' 98 00 05 04 0A 00 00 02 0B 04 0A 00 00 03 "
                 "09 10 00 00 7E D9 0B 01 03 'ghi' 02 04 0A 00 00 04 FF 00"),
         "true c=abc r=de vpn=f vss=true s=10.0.0.3 l=10.0.0.2 i=ghi v=10.0.0.4", "",
         "true c=abc r=de vpn=f vss=true s=10.0.0.3 l=10.0.0.2 i=ghi v=10.0.0.4", ""},
        {"empty", message("52 00 01 01 61 FF 00"), "true", " Option 82 information length is 0", "false",
         "Info opt present but length is zero"},
        {"no option at all", message("00 00"), "false", spacedNoEnd, "false", "DHCP packet missing all options"},
        {"no end", message("52 03 01 01 61"), "false", spacedNoEnd, "false", noEnd},
        {"last and first sub-option", message("52 06 01 01 61 01 01 62 FF 00"), "true c=b", "", "true c=a", ""},
        {"last and first option 82", message("52 03 01 01 61 52 03 01 01 62 FF 00"), "true c=b", "", "true c=a", ""},
        {"an option behind option 82", message("52 04 01 02 'ab' 01 04 'mask' FF 00"), "true c=mask", "", "true c=ab",
         ""},
        {"an address of two bytes", message("52 09 0B 02 0A 00 01 03 'abc' FF 00"), "true c=abc s=10.0.1.3", "",
         "true c=abc s=10.0.1.3", ""},
        {"an end whose length overruns", message("52 03 01 01 61 FF FF"), "true c=a", "", "false", noEnd},
        {"source address of six bytes", message("52 12 09 10 00 00 7E D9 0B 02 06 0A 00 00 04 00 00 01 01 78 FF 00"),
         "true i=x", "1 parseVendorSpecificSubOpt vs subopt src vtep malformed ", "true i=x",
         "1 parseInfoOptNew vs subopt src vtep malformed "},
    };
    TraceRecorder trace(1);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.rule);
        for (const U32 offset : {0u, 7u}) {  // an option may overrun the packet by `offset` bytes
            const PktPtr pkt = packet(Octets(offset, scratch) + row.bytes);
            EXPECT_EQ(textOf(readInfo(parseInfoOpt, pkt, offset)), row.raw);
            EXPECT_EQ(endsOf(trace.lines()), row.rawLines);
            EXPECT_EQ(textOf(readInfo(parseInfoOptNew, pkt, offset)), row.views);
            EXPECT_EQ(endsOf(trace.lines()), row.viewsLines);
        }
    }
}

TEST(RelayInfoViews, SayWhatIsMissing) {
    // The collection is set unless the cookie is missing, the option only if the area is complete.
    const DhcpMsgOption::Ptr before = dhcpMsgOptionFactory(packet(message("FF")), 240);
    for (const Octets& bytes : {message("52 00"), message(""), Octets(300, 0)}) {
        DhcpMsgOptions::Ptr found;
        DhcpMsgOption::Ptr stays = before;
        EXPECT_FALSE(parseDhcpOptions(packet(bytes), 0, found, stays));
        EXPECT_EQ(stays, before);
        EXPECT_EQ(static_cast<bool>(found), bytes.size() < 300);
    }
    DhcpMsgOptions::Ptr area = dhcpMsgOptionsFactory(packet(message("52 00 FF 00")), 240);
    DhcpMsgOption::Ptr info;
    DhcpInformationSubOptions::Ptr subs;
    EXPECT_FALSE(parseInfoSubOptions(area, info, subs));
    EXPECT_TRUE(info == area->option(DhcpOptionType::infoOpt) && !subs);
    DhcpMsgOptions::Ptr none;
    EXPECT_TRUE(parseInfoSubOptions(none, info, subs));
    EXPECT_FALSE(infoSubOptPresent(nullptr, DhcpInformationSubOptionType::vpnId));
}

}  // namespace
