#include "DhcpLib/DhcpHdr.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "Bytes.h"
#include "Recorders.h"
#include "platform/Refusal.h"

using namespace DhcpLib;
using namespace DhcpTest;

namespace {

constexpr char noRoom[] = "length value exceeds pkt-length.";
constexpr char shortHeader[] =
    "DhcpLib/DhcpHdr|void DhcpLib::DhcpHdrWrapper::handleHeader()|"
    "( offset_ + sizeof( DhcpHdr ) ) <= pkt_->frontBytes()";

/// "code@offset+len" of each view, by code.
template <class Collection>
std::string kept(const Collection& collection) {
    std::map<unsigned, std::string> byCode;
    for (const auto& [type, view] : collection.option()) {
        EXPECT_EQ(view->optType(), type);
        byCode[view->opt()] =
            std::to_string(view->opt()) + '@' + std::to_string(view->offset()) + '+' + std::to_string(view->len());
    }
    std::string all;
    for (const auto& [code, text] : byCode) all += (all.empty() ? "" : " ") + text;
    return all;
}

std::string optionsIn(const PktPtr& pkt, U16 offset) { return kept(*dhcpMsgOptionsFactory(pkt, offset)); }
std::string subOptionsIn(const PktPtr& pkt, U16 offset) {
    return kept(*dhcpInformationSubOptionsFactory(dhcpMsgOptionFactory(pkt, offset)));
}
/// The system's block of the sub-option: "offset+len: items"; "none" without one.
std::string blockIn(const PktPtr& pkt, U16 offset) {
    const auto view = dhcpVendorSpecificSubOptFactory(dhcpInformationSubOptionFactory(pkt, offset));
    const auto& block = view->quorvaSpecificOpt();
    EXPECT_TRUE(view->initialized());
    if (!block) return "none";
    EXPECT_EQ(block->entno(), Constants::quorvaEntNum);
    return std::to_string(block->offset()) + '+' + std::to_string(block->len()) + ": " + kept(*block);
}

struct Area {
    const char* rule;
    std::string (*read)(const PktPtr&, U16 offset);
    U16 offset;
    const char* bytes;
    const char* found;
};
class DhcpHdrCollections : public testing::TestWithParam<Area> {};

TEST_P(DhcpHdrCollections, HoldTheseAndReadNothingBehindThePacket) {
    const Area& row = GetParam();
    const Octets bytes = hex(row.bytes);
    for (std::size_t size = 0; size <= bytes.size(); ++size) {
        const Octets cut(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
        std::string found;
        for (const PktPtr& pkt : packets(cut)) {
            const std::string here = row.read(pkt, row.offset);
            if (found.empty()) found = here;
            EXPECT_EQ(here, found) << "cut to " << size << " bytes, with others behind";
            EXPECT_EQ(bytesOf(*pkt), cut);
        }
        // An option may overrun the packet by `offset`, so that only without one a cut never adds an item.
        std::istringstream items(row.offset == 0 ? found : "");
        for (std::string item; row.read == optionsIn && items >> item;)
            EXPECT_NE((' ' + std::string(row.found) + ' ').find(' ' + item + ' '), std::string::npos) << item;
        if (size == bytes.size()) {
            EXPECT_EQ(found, row.found);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Options, DhcpHdrCollections,
    testing::Values(Area{"EndIsKeptPadsAreNot", optionsIn, 0, "35 01 05 FF 00 00", "53@0+1 255@3+0"},
                    Area{"FirstOfTwoWins", optionsIn, 0, "52 01 01 52 01 02 FF 00", "82@0+1 255@6+0"},
                    Area{"WalkGoesOnBehindTheEnd", optionsIn, 0, "FF 00 52 02 01 00 3D 00", "61@6+0 82@2+2 255@0+0"},
                    Area{"EndTakesALength", optionsIn, 0, "FF 03 52 01 01 0C 00", "12@5+0 255@0+3"},
                    Area{"EndWhoseLengthOverrunsIsDropped", optionsIn, 0, "0C 00 FF 04 52 01 01", "12@0+0"},
                    Area{"EndAsTheLastByteOverruns", optionsIn, 0, "35 01 01 FF", "53@0+1"},
                    Area{"UnlessTheOffsetHidesIt", optionsIn, 1, "EE 35 01 01 FF", "53@1+1 255@4+0"},
                    Area{"OverrunWithinTheOffsetIsKept", optionsIn, 4, "EE*4 0C 05 61", "12@4+5"},
                    Area{"OverrunBeyondItIsNot", optionsIn, 4, "EE*4 0C 06 61", ""},
                    Area{"ThePacketsLastByteIsACode", optionsIn, 2, "EE EE 00 0C", "12@3+0"},
                    Area{"MayEndExactlyAtTheEnd", optionsIn, 0, "00 0C 01 61", "12@1+1"},
                    Area{"ManyPads", optionsIn, 0, "00*300 F0 01 00 00 00", "240@300+1"},
                    Area{"NothingBehindThePacket", optionsIn, 9, "0C 00", ""}),
    [](const auto& row) { return row.param.rule; });
INSTANTIATE_TEST_SUITE_P(
    SubOptions, DhcpHdrCollections,
    testing::Values(Area{"OverrunIsDropped", subOptionsIn, 0, "52 06 01 02 61 62 02 03 63 64 65", "1@2+2"},
                    Area{"LengthIsTheLastByte", subOptionsIn, 0, "52 03 01 00 02 07 00*7", "1@2+0"},
                    Area{"ExactFit", subOptionsIn, 1, "EE 52 05 01 00 02 01 61 05 00", "1@3+0 2@5+1"},
                    Area{"ZeroIsACode", subOptionsIn, 0, "52 05 00 01 07 01 00", "0@2+1 1@5+0"},
                    Area{"FirstOfTwoWins", subOptionsIn, 0, "52 05 01 01 61 01 00", "1@2+1"},
                    Area{"Empty", subOptionsIn, 0, "52 00 01 00", ""},
                    Area{"OptionOverrunsThePacket", subOptionsIn, 0, "52 FF 01 02 61 62 02", "1@2+2 2@6+0"}),
    [](const auto& row) { return row.param.rule; });
INSTANTIATE_TEST_SUITE_P(
    VendorBlocks, DhcpHdrCollections,
    testing::Values(
        Area{"Alone", blockIn, 0, "09 0A 00 00 7E D9 05 01 03 'abc'", "2+5: 1@7+3"},
        Area{"BehindAnother", blockIn, 0, "09 13 00 00 00 09 04 'four' 00 00 7E D9 05 01 03 'abc'", "11+5: 1@16+3"},
        Area{"FirstOfTwo", blockIn, 0, "09 0C 00 00 7E D9 02 02 00 00 00 7E D9 00", "2+2: 2@7+0"},
        Area{"FirstItemOfOneCode", blockIn, 0, "09 0B 00 00 7E D9 06 01 01 'a' 01 01 'b'", "2+6: 1@7+1"},
        Area{"ItemOverrunsTheBlock", blockIn, 0, "09 0A 00 00 7E D9 05 02 00 01 02 'ab'", "2+5: 2@7+0"},
        Area{"EmptyBlock", blockIn, 0, "09 05 00 00 7E D9 00 01 00", "2+0: "},
        Area{"TooShortToSearch", blockIn, 0, "09 02 00 00 7E D9 00", "none"},
        Area{"JustLongEnough", blockIn, 0, "09 03 00 00 7E D9 00", "2+0: "},
        Area{"SearchedBelowTheLengthFromTheCode", blockIn, 0, "09 0D 00 00 00 09 05 'five5' 00 00 7E D9 00", "12+0: "},
        Area{"NotSearchedAtIt", blockIn, 0, "09 0C 00 00 00 09 05 'five5' 00 00 7E D9 00", "none"},
        Area{"HeaderPassesThePacket", blockIn, 0, "09 0A 00 00 7E D9", "none"}),
    [](const auto& row) { return row.param.rule; });

TEST(DhcpHdrPositions, WrapAt65536) {
    Octets bytes(65540, 0);
    std::ranges::copy(hex("03 02 61 62"), bytes.begin());
    const auto atTheWrap = [&](U16 at, const char* item) {
        Octets changed = bytes;
        std::ranges::copy(hex(item), changed.begin() + at);
        return packet(changed);
    };
    EXPECT_EQ(optionsIn(packet(bytes), 65530), "3@0+2");
    EXPECT_EQ(optionsIn(atTheWrap(65535, "0C"), 65530), "12@65535+3");
    EXPECT_EQ(optionsIn(atTheWrap(65534, "0C 03"), 65530), "12@65534+3 98@3+0");
    const auto view = dhcpMsgOptionFactory(atTheWrap(65535, "0C"), 65535);
    EXPECT_EQ(view->data(), view->pkt()->data() + 1);
    EXPECT_EQ(view->dataText(), std::string_view("\2ab", 3));
    // A cursor that comes back to 0 ends the walk: what stands behind is never reached.
    std::ranges::copy(hex("0D 01 00"), bytes.begin() + 65534);
    EXPECT_EQ(optionsIn(packet(bytes + hex("0C 00")), 0), "3@0+2 13@65534+1");
}

TEST(DhcpHdrHeader, ReadsAndWritesEachFieldInItsPlace) {
    const Octets wire =
        hex("EE 02 06 07 08 01 02 03 04 05 06 87 65 0A 00 00 01 0A 00 00 02 0A 00 00 03 0A 00 00 04 "
            "00 11 22 33 44 55");
    const auto read = dhcpHdrWrapperFactory(packet(wire), 1);
    std::string text;
    for (const auto& attribute : read->typeData().attributes().subspan(3)) {
        attribute.appendText(text.append(attribute.name).append("="), static_cast<const Kcore::Node*>(read.get()));
        text.push_back(' ');
    }
    EXPECT_EQ(text,
              "op=2 htype=6 hlen=7 hops=8 xid=16909060 secs=1286 flags=34661 ciaddr=10.0.0.1 yiaddr=10.0.0.2 "
              "siaddr=10.0.0.3 giaddr=10.0.0.4 chaddr=00:11:22:33:44:55 ");

    const PktPtr pkt = packet(Octets(36, scratch));
    DhcpHdrWrapper written(pkt, 1);
    written.opIs(read->op());
    written.htypeIs(read->htype());
    written.hlenIs(read->hlen());
    written.hopsIs(read->hops());
    written.xidIs(0x01020304);
    written.secsIs(0x0506);
    written.flagsIs(0x8765);
    written.ciaddrIs(read->ciaddr());
    written.yiaddrIs(read->yiaddr());
    written.siaddrIs(read->siaddr());
    written.giaddrIs(read->giaddr());
    written.chaddrIs(read->chaddr());
    EXPECT_EQ(bytesOf(*pkt), hex("A5") + Octets(wire.begin() + 1, wire.end()) + hex("A5"));

    pkt->newSharedHeadData(7);
    written.handleHeader();
    EXPECT_EQ(written.header(), static_cast<void*>(pkt->data() + 1));
    pkt->delSharedTailData(9);
    EXPECT_EQ(written.header(), nullptr);
    EXPECT_EQ(written.xid(), 0u);
    written.xidIs(1);
    EXPECT_EQ(bytesOf(*pkt), hex("00*7 A5") + Octets(wire.begin() + 1, wire.end() - 8));
}

TEST(DhcpHdrHeader, NeedsThirtyFourBytes) {
    EXPECT_EQ(assertionOf([] { dhcpHdrWrapperFactory(packet(Octets(44)), 10); }), "");
    EXPECT_EQ(assertionOf([] { dhcpHdrWrapperFactory(packet(Octets(43)), 10); }), shortHeader);
    EXPECT_EQ(assertionOf([] { DhcpHdrWrapper(packet(Octets(43)), 0xffffffff); }), shortHeader);
}

TEST(DhcpHdrHeader, OpHopsAndFlagsKeepTheirRules) {
    DhcpHdr header;
    EXPECT_EQ(Octets(header.bytes(), header.bytes() + sizeof header), Octets(34, 0));
    for (const U8 op : hex("00 01 02 03 FF")) {
        header.opIs(op);
        EXPECT_EQ(header.bootpOp(), op == 1   ? BootpOpType::bootpReq
                                    : op == 2 ? BootpOpType::bootpRep
                                              : BootpOpType::bootpOpUnknown);
        EXPECT_EQ(header.op().value(), op);
    }
    header.hopsIs(255);
    header.hopsInc(1);
    EXPECT_EQ(header.hops(), 0);
    EXPECT_EQ(DhcpHdr::broadcastFlag().value(), 0x8000);
    struct Row {
        U16 before;
        bool broadcast;
        U16 mbz, afterBroadcast, afterMbz;
    };
    for (const Row& row : {Row{0x1234, true, 0xffff, 0x9234, 0x7fff}, Row{0xffff, false, 0x8001, 0x7fff, 0x8001}}) {
        Flags one(Kitnet::NetU16(row.before)), two = one;
        one.broadcastIs(row.broadcast);
        two.mbzIs(row.mbz);
        EXPECT_EQ(one.value().value(), row.afterBroadcast);
        EXPECT_EQ(two.value().value(), row.afterMbz);
        EXPECT_EQ(one.broadcast(), row.broadcast);
        EXPECT_EQ(two.mbz(), row.mbz & 0x7fff);
    }
}

TEST(DhcpHdrHeader, HasATextForm) {
    const DhcpHdr header = DhcpHdr::fromBytes(
        hex("02 06 07 08 01 02 03 04 05 06 87 65 0A 00 00 01 0A 00 00 02 0A 00 00 03 0A 00 00 04 00 11 22 33 44 55")
            .data());
    const std::string text = Kcore::encoded(header);
    EXPECT_EQ(text,
              "DhcpHdr{op=BootpOp{value=2},htype=6,hlen=7,hops=8,xid=16909060,secs=1286,flags=34661,"
              "ciaddr=10.0.0.1,yiaddr=10.0.0.2,siaddr=10.0.0.3,giaddr=10.0.0.4,chaddr=00:11:22:33:44:55}");
    Kcore::CharRange range(text);
    DhcpHdr read;
    EXPECT_TRUE(sequenceToValue(range, &read) && read == header && range.empty());
    Kcore::CharRange flagsText("Flags{value=32768}");
    Flags flags;
    EXPECT_TRUE(sequenceToValue(flagsText, &flags) && flags.broadcast());
}

TEST(DhcpHdrCookie, IsFourBytesInThisOrder) {
    EXPECT_EQ(Constants::dhcpMagicCookie, 1666417251u);
    for (const char* bytes : {"63 82 53 63", "63 53 82 63", "63 82 53", "63 82 53 62", ""})
        for (const PktPtr& pkt : packets(hex("EE") + hex(bytes)))
            EXPECT_EQ(magicCookieFactory(pkt, 1)->isDhcpMagicCookie(), bytes == std::string("63 82 53 63")) << bytes;
}

TEST(DhcpHdrItem, SettersChangeTheirBytesOrNothing) {
    const Octets before = hex("A5*3 0C 02 61 62 A5*3");
    const PktPtr pkt = packet(before);
    const auto option = dhcpMsgOptionFactory(pkt, 3);
    option->optIs(0xf0);
    option->lenIs(5);
    option->dataIs(hex("01 02 03 04 05").data());
    EXPECT_EQ(bytesOf(*pkt), hex("A5*3 F0 05 01 02 03 04 05"));
    EXPECT_EQ(internalErrorOf([&] { option->lenIs(6); }), noRoom);
    EXPECT_EQ(internalErrorOf([&] { option->lenIs(255); }), noRoom);
    EXPECT_EQ(option->len(), 5);
    pkt->delSharedTailData(1);
    EXPECT_EQ(internalErrorOf([&] { option->dataIs(hex("09*5").data()); }), noRoom);
    option->optTypeIs(DhcpOptionType::infoOpt);
    EXPECT_EQ(bytesOf(*pkt), hex("A5*3 52 05 01 02 03 04"));
    EXPECT_EQ(option->optType(), DhcpOptionType::infoOpt);

    const auto pad = dhcpMsgOptionFactory(packet(hex("00 04 61")), 0);
    EXPECT_TRUE(pad->initialized() && pad->len() == 0 && pad->data() == nullptr);
    EXPECT_EQ(internalErrorOf([&] { pad->dataIs(before.data()); }), noRoom);
    const auto ordinary = quorvaSpecificSubOptionSubOptFactory(packet(hex("00 01 61")), 0);
    EXPECT_EQ(ordinary->dataText(), "a");
    const auto behind = dhcpInformationSubOptionFactory(packet(hex("01 01")), 2);
    EXPECT_EQ(internalErrorOf([&] { behind->optTypeIs(DhcpInformationSubOptionType::circuitId); }), noRoom);
    EXPECT_EQ(internalErrorOf([&] { behind->lenIs(0); }), noRoom);
}

TEST(DhcpHdrVendorData, WritesItsHeaderWhereItFits) {
    const PktPtr pkt = packet(hex("A5*2 A5*5 01 01 61 A5"));
    EXPECT_EQ(kept(*dhcpVendorSpecificDataFactory(pkt, 2, 0x01020304, 0)), "");
    EXPECT_EQ(bytesOf(*pkt), hex("A5*2 01 02 03 04 00 01 01 61 A5"));
    EXPECT_EQ(kept(*dhcpVendorSpecificDataFactory(pkt, 2, 9, 3)), "1@7+1");
    EXPECT_EQ(bytesOf(*pkt), hex("A5*2 00 00 00 09 03 01 01 61 A5"));
    EXPECT_EQ(internalErrorOf([&] { dhcpVendorSpecificDataFactory(pkt, 7, 1, 1); }), noRoom);
    EXPECT_EQ(bytesOf(*pkt), hex("A5*2 00 00 00 09 03 01 01 61 A5"));
}

TEST(DhcpHdrCollection, ChangesItsMapAndNeverThePacket) {
    const PktPtr pkt = packet(hex("0C 01 61 35 01 01"));
    const auto options = dhcpMsgOptionsFactory(pkt, 0);
    const auto name = options->option(DhcpOptionType::hostName), type = options->option(DhcpOptionType::msgType);
    options->optionIs(DhcpOptionType::hostName, type);
    EXPECT_EQ(options->option(DhcpOptionType::hostName), type);
    options->optionIs(DhcpOptionType::hostName, nullptr);
    options->optionIs(DhcpOptionType::endOpt, nullptr);
    EXPECT_EQ(kept(*options), "53@3+1");
    EXPECT_FALSE(options->optionDel(DhcpOptionType::hostName));
    EXPECT_EQ(options->optionDel(DhcpOptionType::msgType), type);
    options->optionIs(DhcpOptionType::hostName, name);
    EXPECT_EQ(kept(*options), "12@0+1");
    options->optionDelAll();
    EXPECT_TRUE(options->option().empty());
    EXPECT_EQ(bytesOf(*pkt), hex("0C 01 61 35 01 01"));
}

TEST(DhcpHdrTypes, NameTheirAttributesInOrderAndCountTheirObjects) {
    struct Row {
        const char *type, *attributes;
    };
    const char item[] = "pkt offset opt len data optType initialized ";
    for (const Row& row : {
             Row{"Constants",
                 "dhcpServerPort dhcpClientPort dhcpHopCountLimit dhcp6ServerPort dhcp6ClientPort "
                 "dhcp6HopCountLimit dhcpMagicCookie bootpHdrSize hardwareTypeEthernet quorvaEntNum "},
             Row{"DhcpConst", "opttype_offset opttype_size optlen_offset optlen_size optdata_offset entno_offset "},
             Row{"Flags", "value broadcast mbz "},
             Row{"DhcpHdr",
                 "op htype hlen hops xid secs flags ciaddr yiaddr siaddr giaddr chaddr xidU32 secsU16 "
                 "flagsU16 bootpOp broadcastFlag "},
             Row{"MagicCookie", "pkt offset cookie isDhcpMagicCookie initialized "},
             Row{"DhcpMsgOption", item},
             Row{"DhcpInformationSubOption", item},
             Row{"QuorvaSpecificSubOptionSubOpt", item},
             Row{"DhcpMsgOptions", "pkt offset option initialized "},
             Row{"DhcpInformationSubOptions", "opt option initialized "},
             Row{"DhcpVendorSpecificData", "pkt offset entno len option initialized "},
             Row{"DhcpVendorSpecificSubOpt", "opt quorvaSpecificOpt initialized "},
         }) {
        const Kcore::TypeData* type = Kcore::TypeRegistry::instance().type(row.type);
        ASSERT_TRUE(type != nullptr) << row.type;
        std::string names;
        for (const auto& attribute : type->attributes()) names.append(attribute.name).append(" ");
        EXPECT_EQ(names, row.attributes) << row.type;
    }
    {
        const PktPtr pkt = packet(hex("52 0C 09 0A 00 00 7E D9 05 01 03 'abc' FF 00"));
        const auto options = dhcpMsgOptionsFactory(pkt, 0);
        const auto subOptions = dhcpInformationSubOptionsFactory(options->option(DhcpOptionType::infoOpt));
        EXPECT_EQ(DhcpMsgOption::memAllocationTracker_.live(), 2u);
        EXPECT_EQ(DhcpInformationSubOption::memAllocationTracker_.live(), 1u);
        EXPECT_EQ(pkt->useCount(), 5u);
    }
    EXPECT_EQ(DhcpMsgOption::memAllocationTracker_.live() + DhcpInformationSubOption::memAllocationTracker_.live() +
                  DhcpMsgOptions::memAllocationTracker_.live() + Kitnet::Pkt::memAllocationTracker_.live(),
              0u);
}

TEST(DhcpHdrEnumerations, RefuseWhatTheyDoNotName) {
    EXPECT_EQ(DhcpOptionTypeInstance(82), DhcpOptionType::infoOpt);
    EXPECT_EQ(DhcpInformationSubOptionTypeInstance("vssControl"), DhcpInformationSubOptionType{152});
    EXPECT_EQ(Kcore::stringValue(DhcpVendorSpecificDataTypeInstance(2)), "sourceVtepIp");
    EXPECT_EQ(refusalOf([] { DhcpOptionTypeInstance(61); }), "DhcpOptionType has no member 61");
    EXPECT_EQ(refusalOf([] { BootpOptionInstance("bootpReq"); }), "BootpOption has no member bootpReq");
    EXPECT_EQ(refusalOf([] { BootpOpTypeInstance(3); }), "BootpOpType has no member 3");
}

}  // namespace
