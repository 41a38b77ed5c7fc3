#include <cstdlib>

#include "RelayRewriteRows.h"

using namespace DhcpTest;
using namespace DhcpTest::Relay;

namespace {

// Selects the toggle file. Must run before the toggle is first read.
[[maybe_unused]] const int toggleIsOff = setenv("DHCPLIB_TOGGLE_DIR", DHCPLIB_TEST_DATA "/toggles-off", 1);

const RelayRewrite fromPort{.vendorSpecificSubOptIntfName = "Et1"},
    fromLongPort{.vendorSpecificSubOptIntfName = Tyk::String(std::string(250, 'x'))};

TEST(RelayRewriteText, IsWhatPreparePacketAddsWhileTheToggleIsOff) {
    const Rewritten rows[] = {
        {"NoNameForATunnel", {.vendorSpecificSubOptSrcVtepIp = tunnelAddress}, "FF", "52 08 09 06 '32473' 00 FF", 548},
        {"BehindOtherText", fromPort, "52 08 09 02 'me' 01 02 'ab' FF",
         "52 11 09 0B 'me' '32473' 03 'Et1' 01 02 'ab' FF", 548},
        {"NextToAnEmptyOne", fromPort, "52 06 01 02 'ab' 09 00 FF", "52 0F 01 02 'ab' 09 09 '32473' 03 'Et1' FF", 548},
        {"OwnTextIsThere", fromPort, "52 0A 09 08 'me324735' FF", "52 0A 09 08 'me324735' FF", 548},
        {"BinaryBlockIsForeign", fromPort, "52 0C 09 0A 00 00 7E D9 05 01 03 'Et1' FF",
         "52 15 09 13 00 00 7E D9 05 01 03 'Et1' '32473' 03 'Et1' FF", 548},
        {"CutBeforeItIsAdded", fromPort, "52 0A 01 02 'ab' 05 04 07*4 FF", "52 0F 01 02 'ab' 09 09 '32473' 03 'Et1' FF",
         548},
    };
    for (const Rewritten& row : rows) expectRewritten(row, oldGeneration);
    expectRewritten({"NotByTheNewGeneration", fromPort, "FF", "52 0C 09 0A 00 00 7E D9 05 01 03 'Et1' FF", 548},
                    newGeneration);
    expectStopped({"TooLong", fromLongPort, message("FF"), Verdict::infoOptionTooLong,
                   "preparePacket refused: infoOptionTooLong"},
                  oldGeneration);
}

}  // namespace
