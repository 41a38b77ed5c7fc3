#include "RelayRewriteRows.h"

using namespace DhcpTest;
using namespace DhcpTest::Relay;

namespace {

const RelayRewrite nothing, ids{.circuitId = "ab", .remoteId = "c"}, fromPort{.vendorSpecificSubOptIntfName = "Et1"},
    replied{.op = reply}, repliedToPort{.op = reply, .vendorSpecificSubOptIntfName = "Et1"},
    repliedToOthers{.op = reply, .infoOpt = false}, named{.vpnId = "red", .serverId = serverAddress},
    namedPlain{.vpnId = "red", .vssControlDisable = true}, passedOn{.infoOpt = false, .circuitId = "ab"};

TEST(PreparePacketNew, BuildsOption82OfARequest) {
    const Rewritten rows[] = {
        {"WithoutLinkSelection", named, "35 01 01 FF", "35 01 01 52 0D 0B 04 0A 00 0B 01 97 03 'red' 98 00 FF", 548},
        {"WithoutControl", namedPlain, "FF", "52 05 97 03 'red' FF", 548},
        {"TheirIdsWin", ids, "52 07 02 01 'y' 01 02 'xy' FF", "52 07 01 02 'xy' 02 01 'y' FF", 548},
        {"OneOfEach", ids, "52 05 02 03 'xyz' FF", "52 09 01 02 'ab' 02 03 'xyz' FF", 548},
        {"DropsOthers", nothing, "52 14 06 01 'x' 05 04 07*4 97 03 'old' 98 00 01 02 'xy' FF", "52 04 01 02 'xy' FF",
         548},
        {"DropsAll", nothing, "52 03 06 01 'x' FF", "52 00 FF", 548},
        {"AppendsToForeignVendor", fromPort, "52 0D 09 07 00 00 00 09 02 'AB' 02 02 'yz' FF",
         "52 17 02 02 'yz' 09 11 00 00 00 09 02 'AB' 00 00 7E D9 05 01 03 'Et1' FF", 548},
        {"KeepsForeignVendor", nothing, "52 09 09 07 00 00 00 09 02 'AB' FF", "52 09 09 07 00 00 00 09 02 'AB' FF",
         548},
        {"KeepsOwnVendor", fromPort, "52 0C 09 0A 00 00 7E D9 05 01 03 'old' FF",
         "52 0C 09 0A 00 00 7E D9 05 01 03 'old' FF", 548},
        {"KeepsWhatStandsBehind", ids, "52 03 06 01 'x' 0C 02 'hi' 00 00 0C 02 'yo' FF EE*4",
         "52 07 01 02 'ab' 02 01 'c' 0C 02 'hi' 00 00 0C 02 'yo' FF", 548, Verdict::infoOptionNotLast},
        {"OnlyPadsBehind", nothing, "52 02 01 00 00 00 FF", "52 02 01 00 00 00 FF", 548},
        {"DropsWhatOverruns", ids, "52 03 01 04 'x' 00 00 FF", "52 07 01 02 'ab' 02 01 'c' 00 00 FF", 548},
        {"AddsToBlocksThatOverrun", fromPort, "52 09 09 07 00 00 00 09 03 'AB' FF",
         "52 13 09 11 00 00 00 09 03 'AB' 00 00 7E D9 05 01 03 'Et1' FF", 548, wouldBreak},
        {"OwnBlockOverruns", fromPort, "52 07 09 05 00 00 7E D9 01 FF", "52 07 09 05 00 00 7E D9 01 FF", 548,
         wouldBreak},
        {"FirstOfTwo", nothing, "52 05 06 01 'x' 01 00 52 03 01 01 'y' FF", "52 02 01 00 52 03 01 01 'y' FF", 548,
         Verdict::infoOptionNotLast},
        {"BehindTheEndIsAbsent", ids, "35 01 01 FF 00 52 03 01 01 'x' FF 00", "35 01 01 52 07 01 02 'ab' 02 01 'c' FF",
         548, Verdict::infoOptionBehindEnd},
        {"Option57BehindTheEndCounts", ids, "FF 00 39 02 05 DC 00", "52 07 01 02 'ab' 02 01 'c' FF", 300},
        {"NotTheRelaysConcern", passedOn, "52 03 06 01 'x' FF", "52 03 06 01 'x' FF", 548},
    };
    for (const Rewritten& row : rows) expectRewritten(row, newGeneration);
}

TEST(PreparePacketNew, RemovesOnlyTheRelaysDataFromAReply) {
    const Rewritten rows[] = {
        {"NothingIsLeft", replied, "35 01 05 52 13 01 02 'ab' 02 01 'c' 05 04 07*4 0B 04 08*4 FF", "35 01 05 FF", 300},
        {"TheirIds", repliedToOthers, "52 0C 06 01 'x' 02 01 'c' 01 02 'ab' 98 00 FF", "52 07 01 02 'ab' 02 01 'c' FF",
         300},
        {"OwnVendorWithoutVendorData", replied, "52 10 01 02 'ab' 09 0A 00 00 7E D9 05 01 03 'Et1' FF",
         "52 0C 09 0A 00 00 7E D9 05 01 03 'Et1' FF", 300},
        {"OwnVendor", repliedToPort, "35 01 05 52 0C 09 0A 00 00 7E D9 05 01 03 'Et1' FF", "35 01 05 FF", 300},
        {"ForeignVendorInFront", repliedToPort, "52 17 09 15 00 00 00 09 06 'foreig' 00 00 7E D9 05 01 03 'Et1' FF",
         "52 0D 09 0B 00 00 00 09 06 'foreig' FF", 300},
        {"ForeignVendorBehindIsLost", repliedToPort, "52 13 09 11 00 00 7E D9 05 01 03 'Et1' 00 00 00 09 02 'AB' FF",
         "FF", 300},
        {"ForeignVendorAlone", repliedToPort, "52 09 09 07 00 00 00 09 02 'AB' FF",
         "52 09 09 07 00 00 00 09 02 'AB' FF", 300},
        {"EmptyVendor", repliedToPort, "52 02 09 00 FF", "52 02 09 00 FF", 300},
        {"WhatStandsBehindMovesDown", replied, "35 01 05 52 04 01 02 'ab' 36 04 0A 00 0B 01 00 36 01 07 FF",
         "35 01 05 36 04 0A 00 0B 01 00 36 01 07 FF", 300, Verdict::infoOptionNotLast},
    };
    for (const Rewritten& row : rows) expectRewritten(row, newGeneration);
}

TEST(PreparePacketNew, LeavesWhatItRefusesAsItWas) {
    const Tyk::String longText(std::string(256, 'x'));
    const RelayRewrite longCircuitId{.circuitId = longText, .vpnId = "red"}, linked{.linkselectionId = linkAddress},
        atTheWrap{.offset = 65296};
    constexpr char tooLongText[] = "preparePacketNew refused: infoOptionTooLong",
                   emptyText[] =
                       "bool DhcpLib::parseInfoSubOptions(DhcpLib::DhcpMsgOptions::Ptr&, DhcpLib::DhcpMsgOption::Ptr&, "
                       "DhcpLib::DhcpInformationSubOptions::Ptr&)Info opt present but length is zero";
    const std::string byViews =
        "bool DhcpLib::parseDhcpOptions(const Ptr&, U32, DhcpLib::DhcpMsgOptions::Ptr&, "
        "DhcpLib::DhcpMsgOption::Ptr&)DHCP packet missing ";
    const std::string noCookie = byViews + "magic cookie", noOption = byViews + "all options",
                      noEnd = byViews + "end option";
    constexpr auto tooLong = Verdict::infoOptionTooLong;
    const Stopped rows[] = {
        {"NoCookie", ids, Octets(236, scratch) + hex("63 82 53 64 FF"), Verdict::notDhcp, noCookie.c_str()},
        {"NoOption", ids, message("00 00"), Verdict::notDhcp, noOption.c_str()},
        {"NoEnd", ids, message("35 01 01 52 04 01 02 'ab'"), Verdict::notDhcp, noEnd.c_str()},
        {"EndInFrontOfIt", atTheWrap, hex("35 01 01 FF") + Octets(65292, scratch) + message("FF"), Verdict::notDhcp,
         noEnd.c_str()},
        {"Empty", ids, message("52 00 FF"), Verdict::infoOptionEmpty, emptyText},
        {"EmptyInReply", replied, message("52 00 FF"), Verdict::infoOptionEmpty, emptyText},
        {"ReplyWithoutUseForIt", {.op = reply, .vpnId = longText}, message("FF"), tooLong, tooLongText},
        {"ArgumentThatIsNotUsed", longCircuitId, message("52 02 01 00 FF"), tooLong, tooLongText},
        {"Sum", linked, message("52 FA 01 F8 61*248 FF"), tooLong, tooLongText},
        {"VendorSubOption", fromPort, message("52 FA 09 F8 00 00 00 09 F3 61*243 FF"), tooLong, tooLongText},
        {"BeforeTheAssertion", longCircuitId, message("52 02 98 00 FF"), tooLong, tooLongText},
        {"Control", named, message("52 02 98 00 FF"), Verdict::assertion,
         "!infoSubOptPresent( infoSubOpts, DhcpLib::vssControl() )"},
    };
    for (const Stopped& row : rows) expectStopped(row, newGeneration);
}

}  // namespace
