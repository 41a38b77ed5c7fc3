#include "DhcpLib/OptionParser/Profiling.h"

#include <gtest/gtest.h>

#include "OptionModel.h"

using namespace DhcpLib;
using namespace DhcpTest;

namespace {

/// Each output holds "-" before the call.
TEST(Profiling, ReadsBytesAsTheyStandAndCodesAsText) {
    struct Row {
        const char *rule, *options;
        Model::Profile profile;
    };
    std::string allCodes;
    for (int code = 0; code < 255; ++code)
        allCodes += (code == 0 ? "-0" : ",") + (code == 0 ? "" : std::to_string(code));
    std::string allHex = "37 FF";
    for (int code = 0; code < 255; ++code) {
        constexpr char digits[] = "0123456789ABCDEF";
        allHex.append({' ', digits[code >> 4], digits[code & 15]});
    }
    allHex += " FF";
    const Row rows[] = {
        {"all three", "0C 02 'pc' 37 04 01 03 06 0F 3C 04 'MSFT' FF", {true, "pc", "-1,3,6,15", "MSFT"}},
        {"none", "35 01 01 FF", {true, "", "", ""}},
        {"empty ones", "0C 00 37 00 3C 00 FF", {true, "", "", ""}},
        {"raw bytes", "0C 03 61 00 FF 3C 01 1B FF", {true, std::string("a\0\xff", 3), "", "\x1b"}},
        {"one, two and three digits", "37 05 00 09 0A 63 64 FF", {true, "", "-0,9,10,99,100", ""}},
        {"every code", allHex.c_str(), {true, "", allCodes, ""}},
        {"the last of two", "0C 01 'a' 37 01 01 0C 01 'b' 37 02 79 FF FF", {true, "b", "-121,255", ""}},
        {"no end option", "0C 02 'pc' 37 01 01 3C 01 'x'", {false, "-", "-", "-"}},
    };
    for (const Row& row : rows)
        for (const U32 offset : {0u, 42u})
            for (const PktPtr& pkt : packets(Octets(offset, scratch) + message(row.options)))
                EXPECT_EQ(Model::readProfile(pkt, offset), row.profile) << row.rule;
}

TEST(Profiling, AppendsTheListAndReplacesTheOthers) {
    Kcore::String host = "old", list, vendorClass = "old";
    const PktPtr pkt = packet(message("0C 01 'a' 37 02 01 03 FF"));
    for (const char* expected : {"1,3", "1,31,3"}) {
        EXPECT_TRUE(parseDot1xProfilingOpts(pkt, host, list, vendorClass, 0));
        EXPECT_EQ(list, expected);
    }
    EXPECT_TRUE(host == "a" && vendorClass.empty());
}

}  // namespace
