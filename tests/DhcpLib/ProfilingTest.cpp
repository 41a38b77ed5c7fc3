#include "DhcpLib/OptionParser/Profiling.h"

#include <gtest/gtest.h>

#include "Bytes.h"

using namespace DhcpTest;

namespace {

TEST(Profiling, AppendsTheListAndReplacesTheOthers) {
    Kcore::String host = "old", list, vendorClass = "old";
    const PktPtr pkt = packet(message("0C 01 'a' 37 04 01 0A 00 FF FF"));
    for (const char* expected : {"1,10,0,255", "1,10,0,2551,10,0,255"}) {
        EXPECT_TRUE(DhcpLib::parseDot1xProfilingOpts(pkt, host, list, vendorClass, 0));
        EXPECT_EQ(list, expected);
    }
    EXPECT_TRUE(host == "a" && vendorClass.empty());
}

}  // namespace
