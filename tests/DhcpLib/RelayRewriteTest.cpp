#include "RelayRewriteRows.h"

using namespace DhcpTest;
using namespace DhcpTest::Relay;

namespace {

const RelayRewrite nothing, ids{.circuitId = "ab", .remoteId = "c"}, reachBack{.linkselectionId = linkAddress},
    relayed{.vpnId = "red", .serverId = serverAddress, .linkselectionId = linkAddress},
    relayedPlain{.vpnId = "red", .serverId = serverAddress, .linkselectionId = linkAddress, .vssControlDisable = true},
    named{.vpnId = "red", .linkselectionId = linkAddress},
    namedPlain{.vpnId = "red", .linkselectionId = linkAddress, .vssControlDisable = true},
    served{.serverId = serverAddress, .linkselectionId = linkAddress}, fromPort{.vendorSpecificSubOptIntfName = "Et1"},
    reachBackFromPort{.linkselectionId = linkAddress, .vendorSpecificSubOptIntfName = "Et1"},
    back{.op = reply, .circuitId = "ab"}, off{.infoOpt = false}, neither{.op = BootpOption{3}, .circuitId = "ab"},
    everything{.circuitId = "ab",
               .remoteId = "c",
               .vpnId = "red",
               .serverId = serverAddress,
               .linkselectionId = linkAddress,
               .vendorSpecificSubOptIntfName = "Et1",
               .vendorSpecificSubOptSrcVtepIp = tunnelAddress};

TEST(PreparePacket, CreatesOption82WhereTheEndOptionStood) {
    const Rewritten rows[] = {
        {"PadsAreUsedFirst", ids, "39 02 05 DC 2B 50 11*80 FF EE*4",
         "39 02 05 DC 2B 50 11*80 52 07 01 02 'ab' 02 01 'c' FF", 336},
        {"EverySubOption", everything, "FF",
         "52 2C 01 02 'ab' 02 01 'c' 09 10 00 00 7E D9 0B 01 03 'Et1' 02 04 0A 00 09 01 "
         "05 04 0A 00 05 01 0B 04 0A 00 0B 01 97 03 'red' 98 00 FF",
         548},
        {"NotBehindTheEnd", ids, "35 01 01 FF 00 52 03 01 01 'x' FF 00", "35 01 01 52 07 01 02 'ab' 02 01 'c' FF", 548,
         Verdict::infoOptionBehindEnd},
        {"Option57BehindTheEndIsPadding", ids, "FF 00 39 02 05 DC 00", "52 07 01 02 'ab' 02 01 'c' FF", 548},
    };
    for (const Rewritten& row : rows) expectRewritten(row, oldGeneration);
}

TEST(PreparePacket, AddsToOption82) {
    const Rewritten rows[] = {
        {"KeepsItsIds", ids, "52 05 01 03 'xyz' FF", "52 05 01 03 'xyz' FF", 548},
        {"BehindItsIds", relayed, "52 04 01 02 'ab' FF",
         "52 17 01 02 'ab' 05 04 0A 00 05 01 0B 04 0A 00 0B 01 97 03 'red' 98 00 FF", 548},
        {"ToTheLastByte", reachBack, "52 F9 06 F7 61*247 FF", "52 FF 06 F7 61*247 05 04 0A 00 05 01 FF", 548},
        {"TheLastOfTwo", reachBack, "52 03 01 01 'x' 52 04 01 02 'ab' FF",
         "52 03 01 01 'x' 52 0A 01 02 'ab' 05 04 0A 00 05 01 FF", 548},
        {"CutsOffWhatStandsBehind", nothing, "35 01 01 52 04 01 02 'ab' 0C 02 'hi' 00 FF FA",
         "35 01 01 52 04 01 02 'ab' FF", 548, Verdict::infoOptionNotLast},
        {"OwnBlockBehindAnother", fromPort, "52 12 09 10 00 00 00 09 02 'AB' 00 00 7E D9 04 01 02 'Et' FF",
         "52 12 09 10 00 00 00 09 02 'AB' 00 00 7E D9 04 01 02 'Et' FF", 548},
        {"OwnBlockInAnOptionBehind", fromPort, "52 04 01 02 'ab' 09 0A 00 00 7E D9 05 01 03 'old' FF",
         "52 04 01 02 'ab' FF", 548, wouldBreak},
        {"PadsBehindAreNoOptions", reachBack, "52 04 01 02 'ab' 00 00 00 FF", "52 0A 01 02 'ab' 05 04 0A 00 05 01 FF",
         548},
        {"ForeignVendorInFrontOfOthers", fromPort, "52 0D 09 07 00 00 00 09 02 'AB' 01 02 'ab' FF",
         "52 17 09 11 00 00 00 09 02 'AB' 00 00 7E D9 05 01 03 'Et1' 01 02 'ab' FF", 548},
        {"LastForeignVendor", fromPort, "52 14 09 07 00 00 00 09 02 'AB' 09 07 00 00 00 0A 02 'CD' 01 00 FF",
         "52 1E 09 07 00 00 00 09 02 'AB' 09 11 00 00 00 0A 02 'CD' 00 00 7E D9 05 01 03 'Et1' 01 00 FF", 548},
        {"LastForeignVendorIsEmpty", fromPort, "52 0F 09 07 00 00 00 09 02 'AB' 09 00 01 02 'ab' FF",
         "52 19 09 07 00 00 00 09 02 'AB' 09 0A 00 00 7E D9 05 01 03 'Et1' 01 02 'ab' FF", 548},
        {"ForeignVendorMovesWhatIsReused", reachBackFromPort, "52 0F 09 07 00 00 00 09 02 'AB' 05 04 07 07 07 07 FF",
         "52 19 09 11 00 00 00 09 02 'AB' 00 00 7E D9 05 01 03 'Et1' 05 04 0A 00 05 01 FF", 548},
    };
    for (const Rewritten& row : rows) expectRewritten(row, oldGeneration);
}

TEST(PreparePacket, ReusesOrCutsTheSubOptionsOfAnEarlierRelay) {
    const Rewritten rows[] = {
        {"InTheirPlaces", relayed, "52 17 01 02 'ab' 05 04 07*4 0B 04 08*4 97 03 'old' 98 00 FF",
         "52 17 01 02 'ab' 05 04 0A 00 05 01 0B 04 0A 00 0B 01 97 03 'old' 98 00 FF", 548},
        {"ShorterName", relayed, "52 15 05 04 07*4 0B 04 08*4 97 05 'older' 98 00 FF",
         "52 13 05 04 0A 00 05 01 0B 04 0A 00 0B 01 97 03 'red' 98 00 FF", 548},
        {"LongerName", relayed, "52 12 05 04 07*4 0B 04 08*4 97 02 'bl' 98 00 FF",
         "52 13 05 04 0A 00 05 01 0B 04 0A 00 0B 01 97 03 'red' 98 00 FF", 548},
        {"NewOnesBehindAShorterName", relayedPlain, "52 06 97 04 'blue' FF",
         "52 11 97 03 'red' 05 04 0A 00 05 01 0B 04 0A 00 0B 01 FF", 548},
        {"NewOneInPlaceOfAName", reachBack, "52 06 97 04 'blue' FF", "52 06 05 04 0A 00 05 01 FF", 548},
        {"ControlIsAdded", named, "52 0B 05 04 07*4 97 03 'red' FF", "52 0D 05 04 0A 00 05 01 97 03 'red' 98 00 FF",
         548},
        {"ControlIsCut", namedPlain, "52 0D 05 04 07*4 97 03 'old' 98 00 FF", "52 0B 05 04 0A 00 05 01 97 03 'old' FF",
         548},
        {"ControlWithDataCountsAsTwo", named, "52 0E 05 04 07*4 97 03 'old' 98 01 07 FF",
         "52 0E 05 04 0A 00 05 01 97 03 'old' 98 01 07 FF", 548},
        {"ControlWithDataCountsAsTwoWhenCut", namedPlain, "52 0E 05 04 07*4 97 03 'old' 98 01 07 FF",
         "52 0C 05 04 0A 00 05 01 97 03 'old' 00 FF", 548, wouldBreak},
        {"WithoutServerTheirsIsRemovedAndTheNameAdded", namedPlain, "52 0C 05 04 07*4 0B 04 08*4 FF",
         "52 0B 05 04 0A 00 05 01 97 03 'red' FF", 548},
        {"WithoutServerTheirsIsRemoved", reachBack, "52 11 0B 05 08*5 05 04 07*4 01 02 'ab' FF",
         "52 0A 05 04 0A 00 05 01 01 02 'ab' FF", 548},
        {"EmptyNameIsRemoved", reachBack, "52 02 97 00 FF", "52 06 05 04 0A 00 05 01 FF", 548},
        {"NewOnesBehindTheName",
         {.vpnId = "r", .serverId = serverAddress, .linkselectionId = linkAddress},
         "52 09 05 04 01*4 97 01 'r' FF",
         "52 11 05 04 0A 00 05 01 97 01 'r' 0B 04 0A 00 0B 01 98 00 FF",
         548},
        {"NewOnesBehindVendorData",
         {.vpnId = "red", .linkselectionId = linkAddress, .vendorSpecificSubOptIntfName = "Et1"},
         "52 06 05 04 01*4 FF",
         "52 19 05 04 0A 00 05 01 09 0A 00 00 7E D9 05 01 03 'Et1' 97 03 'red' 98 00 FF",
         548},
        {"FirstOfTwoAndTheSumOfBoth", reachBack, "52 10 05 04 07*4 01 02 'ab' 05 04 08*4 FF",
         "52 0A 05 04 0A 00 05 01 01 02 'ab' FF", 548},
        {"RepeatsAreRemoved", served, "52 0C 05 04 07*4 05 04 08*4 FF", "52 0C 05 04 0A 00 05 01 0B 04 0A 00 0B 01 FF",
         548},
        {"TwoNames", namedPlain, "52 10 05 04 07*4 97 03 'old' 97 03 'new' FF",
         "52 0B 05 04 0A 00 05 01 97 03 'old' FF", 548},
        {"CutWithoutLinkSelection", nothing, "52 17 01 02 'ab' 05 04 07*4 0B 04 08*4 97 03 'old' 98 00 FF",
         "52 04 01 02 'ab' FF", 548},
        {"CutsIntoAnother", nothing, "52 0F 05 04 00*4 01 07 'circuit' FF", "52 09 05 04 00*4 01 07 'c' FF", 548,
         wouldBreak},
        {"CutsAnotherAway", nothing, "52 0C 05 04 00*4 01 04 'abcd' FF", "52 06 05 04 00*4 FF", 548, wouldBreak},
        {"AddsBehindWhatOverruns", reachBack, "52 03 01 07 63 FF", "52 09 01 07 63 05 04 0A 00 05 01 FF", 548,
         wouldBreak},
        {"AddsToBlocksThatOverrun", fromPort, "52 09 09 07 00 00 00 09 03 'AB' FF",
         "52 13 09 11 00 00 00 09 03 'AB' 00 00 7E D9 05 01 03 'Et1' FF", 548, wouldBreak},
        {"OwnBlockOverruns", fromPort, "52 07 09 05 00 00 7E D9 01 FF", "52 07 09 05 00 00 7E D9 01 FF", 548,
         wouldBreak},
        {"KeptWhereNoneOfThemSelectsTheLink", nothing, "52 0F 01 02 'ab' 0B 04 08*4 97 03 'old' FF",
         "52 0F 01 02 'ab' 0B 04 08*4 97 03 'old' FF", 548},
        {"CutBeforeVendorDataIsAdded", fromPort, "52 0A 01 02 'ab' 05 04 07*4 FF",
         "52 10 01 02 'ab' 09 0A 00 00 7E D9 05 01 03 'Et1' FF", 548},
    };
    for (const Rewritten& row : rows) expectRewritten(row, oldGeneration);
}

TEST(PreparePacket, RemovesOption82FromReplies) {
    const Rewritten rows[] = {
        {"AmongOthers", back, "35 01 05 52 04 01 02 'ab' 36 04 0A 00 0B 01 00 FF", "35 01 05 36 04 0A 00 0B 01 00 FF",
         300, Verdict::infoOptionNotLast},
        {"TheLastOfTwo", back, "52 02 06 00 52 04 01 02 'ab' FF", "52 02 06 00 FF", 300},
        {"BehindTheEndItIsPadding", back, "35 01 05 FF 00 52 04 01 02 'ab' FF 00", "35 01 05 FF", 300,
         Verdict::infoOptionBehindEnd},
    };
    for (const Rewritten& row : rows) expectRewritten(row, oldGeneration);
}

TEST(PreparePacket, BringsAMessageToItsSmallestSize) {
    const Rewritten rows[] = {
        {"TrimsPads", off, "2B FE 11*254 2B 15 22*21 FF EE*80", "2B FE 11*254 2B 15 22*21 FF", 548},
        {"TrimsNothingElse", off, "2B FE 11*254 2B 51 22*81 FF EE*20", "2B FE 11*254 2B 51 22*81 FF", 580},
        {"NeitherRequestNorReply", neither, "52 04 01 02 'xy' FF EE*400", "52 04 01 02 'xy' FF", 300},
    };
    for (const Rewritten& row : rows)
        for (const Generation generation : {oldGeneration, newGeneration}) expectRewritten(row, generation);
}

TEST(PreparePacket, LeavesWhatItRefusesAsItWas) {
    const Tyk::String longText(std::string(256, 'x'));
    const RelayRewrite longRemoteId{.remoteId = longText}, longPort{.vendorSpecificSubOptIntfName = longText},
        longName{.vpnId = longText, .linkselectionId = linkAddress};
    constexpr auto tooLong = Verdict::infoOptionTooLong, overrun = Verdict::infoOptionOverrun,
                   behind = Verdict::infoSubOptionBehind;
    constexpr char tooLongText[] = "preparePacket refused: infoOptionTooLong",
                   overrunText[] = "preparePacket refused: infoOptionOverrun",
                   behindText[] = "preparePacket refused: infoSubOptionBehind",
                   emptyText[] = "preparePacketInfo opt present but length is zero";
    const std::string parser =
        "bool DhcpLib::parseDhcpOptions(const Ptr&, U32, std::vector<DhcpLib::DhcpSingleOptionWithCode>&)";
    const std::string noSpace = parser + "DHCP packet has no space for option fields",
                      noCookie = parser + "DHCP packet missing magic cookie",
                      noEnd = parser + " DHCP packet missing end option";
    const Stopped rows[] = {
        {"PartOfTheSum", reachBack, message("52 FA 06 F8 61*248 FF"), tooLong, tooLongText},
        {"IdsThatAreNotUsed", longRemoteId, message("52 02 06 00 FF"), tooLong, tooLongText},
        {"VendorSubOption", longPort, message("FF"), tooLong, tooLongText},
        {"ReplyWithoutUseForIt", {.op = reply, .vpnId = longText}, message("FF"), tooLong, tooLongText},
        {"BeforeTheAssertion", longName, message("52 02 98 00 FF"), tooLong, tooLongText},
        {"LinkOverruns", reachBack, message("52 09 01 02 'ab' 05 04 07*3 FF 00 00"), overrun, overrunText},
        {"OptionBehindIsReadAsOne", nothing, message("52 04 01 02 'ab' 05 04 07*4 FF"), behind, behindText},
        {"VendorSubOptionBehind", fromPort, message("52 04 01 02 'ab' 09 07 00 00 00 09 02 'AB' FF"), behind,
         behindText},
        {"VendorOverruns", fromPort, message("52 06 09 05 00 00 00 09 00 FF"), overrun, overrunText},
        {"LinkOfThreeBytes", reachBack, message("52 05 05 03 07*3 FF"), overrun, overrunText},
        {"ServerOfFiveBytes", relayed, message("52 07 0B 05 08*5 FF"), overrun, overrunText},
        {"NoSpace", ids, Octets(236, scratch), Verdict::notDhcp, noSpace.c_str()},
        {"NoCookie", ids, Octets(236, scratch) + hex("63 82 53 64 FF"), Verdict::notDhcp, noCookie.c_str()},
        {"NoEnd", ids, message("35 01 01 52 04 01 02 'ab'"), Verdict::notDhcp, noEnd.c_str()},
        {"Empty", ids, message("35 01 01 52 00 FF"), Verdict::infoOptionEmpty, emptyText},
        {"ControlWithoutName", relayed, message("52 06 01 02 'ab' 98 00 FF"), Verdict::assertion, "!vssControlOpt"},
        {"NothingButOldOnes", nothing, message("52 0C 05 04 07*4 0B 04 08*4 FF"), Verdict::assertion,
         "tempInfoOpt->length > oldSubOptLen"},
    };
    for (const Stopped& row : rows) expectStopped(row, oldGeneration);
}

TEST(PreparePacket, TracesEachStep) {
    const struct {
        const RelayRewrite& args;
        const char* before;
        std::vector<std::string> lines;  // after the first line, which names the function and its arguments
    } rows[] = {
        {everything,
         "FF",
         {"4 preparePacketadded opt len 46 currentPadding0", "4 adding 46 bytes to pkt(241)",
          "4 preparePacket Inserted Option 82 vendor-specific suboption information len: 18",
          "4 preparePacketInserted Option 82 link selection information",
          "4 preparePacketInserted Option 82 VRF information", "4 (final)adding 261 bytes to pkt(287)"}},
        {fromPort,
         "52 0E 09 0A 00 00 7E D9 05 01 03 'old' 09 00 FF",
         {"4 preparePacketVendor-specific subopt with Quorva's data already present",
          "4 preparePacketadded opt len 2 currentPadding0", "4 adding 2 bytes to pkt(257)",
          "4 (final)adding 289 bytes to pkt(259)"}},
        {back,
         "52 0C 09 0A 00 00 7E D9 05 01 03 'old' FF",
         {"4 preparePacketVendor-specific subopt with Quorva's data already present",
          "4 preparePacket Deleted Option 82 information", "4 (final)adding 45 bytes to pkt(255)"}},
    };
    for (const auto& row : rows) {
        const PktPtr pkt = packet(message(row.before));
        TraceRecorder trace(4);
        EXPECT_TRUE(relayRewrite(pkt, row.args, oldGeneration));
        const std::vector<std::string> lines = trace.lines();
        EXPECT_EQ(std::vector(lines.begin() + 1, lines.end()), row.lines) << row.before;
    }
}

}  // namespace
