#include "DhcpLib/DhcpHdr.h"

#include "AreaRows.h"
#include "HeaderFields.h"
#include "Recorders.h"

using namespace DhcpLib;
using namespace DhcpTest;

namespace {

std::string optionsIn(const PktPtr& pkt, U16 offset) { return kept(*dhcpMsgOptionsFactory(pkt, offset)); }
std::string subOptionsIn(const PktPtr& pkt, U16 offset) {
    return kept(*dhcpInformationSubOptionsFactory(dhcpMsgOptionFactory(pkt, offset)));
}
/// The own vendor block of the sub-option: "offset+len: items"; "none" if there is none.
std::string blockIn(const PktPtr& pkt, U16 offset) {
    const auto view = dhcpVendorSpecificSubOptFactory(dhcpInformationSubOptionFactory(pkt, offset));
    const auto& block = view->quorvaSpecificOpt();
    if (!block) return "none";
    EXPECT_EQ(block->entno(), Constants::quorvaEntNum);
    return std::to_string(block->offset()) + '+' + std::to_string(block->len()) + ": " + kept(*block);
}

TEST(DhcpHdrCollections, HoldTheOptions) {
    const Area rows[] = {
        {"first of two wins, pads are not kept", 0, "52 01 01 00 52 01 02 FF 00", "82@0+1 255@7+0 "},
        {"the walk continues behind the end option", 0, "FF 00 52 02 01 00 3D 00", "61@6+0 82@2+2 255@0+0 "},
        {"an end option whose length overruns is dropped", 0, "0C 00 FF 04 52 01 01", "12@0+0 "},
        {"an overrun within the offset is kept", 4, "EE*4 0C 05 61", "12@4+5 "},
        {"a longer overrun is dropped", 4, "EE*4 0C 06 61", ""},
    };
    expectFound(rows, optionsIn);
}

TEST(DhcpHdrCollections, HoldTheSubOptions) {
    const Area rows[] = {
        {"an overrun is dropped", 0, "52 06 01 02 61 62 02 03 63 64 65", "1@2+2 "},
        {"the length is the last byte", 0, "52 03 01 00 02 07 00*7", "1@2+0 "},
        {"exact fit", 1, "EE 52 05 01 00 02 01 61 05 00", "1@3+0 2@5+1 "},
        {"zero is a code", 0, "52 05 00 01 07 01 00", "0@2+1 1@5+0 "},
        {"first of two wins", 0, "52 05 01 01 61 01 00", "1@2+1 "},
        {"the option overruns the packet", 0, "52 FF 01 02 61 62 02", "1@2+2 2@6+0 "},
    };
    expectFound(rows, subOptionsIn);
}

TEST(DhcpHdrCollections, HoldTheVendorBlock) {
    const Area rows[] = {
        {"behind another", 0, "09 13 00 00 00 09 04 'four' 00 00 7E D9 05 01 03 'abc'", "11+5: 1@16+3 "},
        {"first item of a code", 0, "09 0B 00 00 7E D9 06 01 01 'a' 01 01 'b'", "2+6: 1@7+1 "},
        {"an item overruns the block", 0, "09 0A 00 00 7E D9 05 02 00 01 02 'ab'", "2+5: 2@7+0 "},
        {"too short to search", 0, "09 02 00 00 7E D9 00", "none"},
        {"just long enough", 0, "09 03 00 00 7E D9 00", "2+0: "},
        {"a block below the length, counted from the code, is found", 0, "09 0D 00 00 00 09 05 'five5' 00 00 7E D9 00",
         "12+0: "},
        {"a block at that length is not", 0, "09 0C 00 00 00 09 05 'five5' 00 00 7E D9 00", "none"},
        {"its header passes the packet", 0, "09 0A 00 00 7E D9", "none"},
    };
    expectFound(rows, blockIn);
}

TEST(DhcpHdrPositions, WrapAt65536) {
    Octets bytes(65540, 0);
    overwrite(bytes, 0, hex("03 02 61 62"));
    const auto atTheWrap = [&](U16 at, const char* item) {
        Octets changed = bytes;
        overwrite(changed, at, hex(item));
        return packet(changed);
    };
    EXPECT_EQ(optionsIn(atTheWrap(65535, "0C"), 65530), "12@65535+3 ");
    // The next position would be 3: the walk does not go back.
    EXPECT_EQ(optionsIn(atTheWrap(65534, "0C 03"), 65530), "12@65534+3 ");
    const auto view = dhcpMsgOptionFactory(atTheWrap(65535, "0C"), 65535);
    EXPECT_EQ(view->data(), view->pkt()->data() + 1);
    EXPECT_EQ(view->dataText(), std::string_view("\2ab", 3));
    // A cursor that returns to 0 ends the walk, so options after it are not found.
    overwrite(bytes, 65534, hex("0D 01 00"));
    EXPECT_EQ(optionsIn(packet(bytes + hex("0C 00")), 0), "3@0+2 13@65534+1 ");
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
    writeFields(written, *read->header());
    EXPECT_EQ(bytesOf(*pkt), hex("A5") + Octets(wire.begin() + 1, wire.end()) + hex("A5"));

    const DhcpHdr& record = *read->header();
    DhcpHdr copy = record;
    copy.xidIs({});
    copy.secsIs({});
    copy.flagsIs({});
    EXPECT_NE(copy.hash(), record.hash());
    copy.xidIs(record.xid());
    copy.secsIs(record.secs());
    copy.flagsIs(record.flags());
    EXPECT_EQ(copy, record);
    EXPECT_EQ(copy.hash(), record.hash());

    pkt->newSharedHeadData(7);
    written.handleHeader();
    EXPECT_EQ(written.header(), static_cast<void*>(pkt->data() + 1));
    pkt->delSharedTailData(9);
    EXPECT_EQ(written.header(), nullptr);
    EXPECT_EQ(written.xid(), 0u);
    written.xidIs(1);
    EXPECT_EQ(bytesOf(*pkt), hex("00*7 A5") + Octets(wire.begin() + 1, wire.end() - 8));
    EXPECT_EQ(assertionOf([] { DhcpHdrWrapper(packet(Octets(43)), 0xffffffff); }),
              "DhcpLib/DhcpHdr|void DhcpLib::DhcpHdrWrapper::handleHeader()|"
              "( offset_ + sizeof( DhcpHdr ) ) <= pkt_->frontBytes()");
}

TEST(DhcpHdrHeader, HopsAndFlagsKeepTheirRules) {
    DhcpHdr header;
    header.hopsIs(255);
    header.hopsInc(1);
    EXPECT_EQ(header.hops(), 0);
    header.opIs(3);
    EXPECT_EQ(header.bootpOp(), BootpOpType::bootpOpUnknown);
    Flags set(Kitnet::NetU16(0x1234)), cleared(Kitnet::NetU16(0xffff));
    set.broadcastIs(true);
    EXPECT_EQ(set.value().value(), 0x9234);
    set.mbzIs(0xffff);
    EXPECT_EQ(set.value().value(), 0xffff);
    cleared.broadcastIs(false);
    EXPECT_EQ(cleared.value().value(), 0x7fff);
    EXPECT_EQ(cleared.mbz(), 0x7fff);
    EXPECT_TRUE(set.broadcast() && !cleared.broadcast() && cleared && cleared < set && cleared.hash() != set.hash());
    cleared.valueIs(set.value());
    EXPECT_EQ(cleared, set);
    EXPECT_EQ(Kcore::textOf(set), "65535");
    EXPECT_FALSE(Flags() || BootpOp());
}

TEST(DhcpHdrItem, SettersChangeNothingWhereThereIsNoDataOrNoRoom) {
    const auto pad = dhcpMsgOptionFactory(packet(hex("00 04 61")), 0);
    EXPECT_TRUE(pad->initialized() && pad->len() == 0 && pad->data() == nullptr);
    EXPECT_EQ(internalErrorOf([&] { pad->dataIs(hex("61").data()); }), noRoom);
    EXPECT_EQ(quorvaSpecificSubOptionSubOptFactory(packet(hex("00 01 61")), 0)->dataText(), "a");
    const auto behind = dhcpInformationSubOptionFactory(packet(hex("01 01")), 2);
    EXPECT_EQ(internalErrorOf([&] { behind->optTypeIs(DhcpInformationSubOptionType::circuitId); }), noRoom);
    EXPECT_EQ(internalErrorOf([&] { behind->lenIs(0); }), noRoom);
}

TEST(DhcpHdrVendorData, WritesItsHeaderWhereItFits) {
    const PktPtr pkt = packet(hex("A5*2 A5*5 01 01 61 A5"));
    EXPECT_EQ(kept(*dhcpVendorSpecificDataFactory(pkt, 2, 0x01020304, 0)), "");
    EXPECT_EQ(bytesOf(*pkt), hex("A5*2 01 02 03 04 00 01 01 61 A5"));
    EXPECT_EQ(kept(*dhcpVendorSpecificDataFactory(pkt, 2, 9, 3)), "1@7+1 ");
    EXPECT_EQ(internalErrorOf([&] { dhcpVendorSpecificDataFactory(pkt, 7, 1, 1); }), noRoom);
    EXPECT_EQ(bytesOf(*pkt), hex("A5*2 00 00 00 09 03 01 01 61 A5"));
}

TEST(DhcpHdrCollection, ChangesItsMapAndCountsItsViews) {
    const PktPtr pkt = packet(hex("0C 01 61 35 01 01"));
    auto options = dhcpMsgOptionsFactory(pkt, 0);
    EXPECT_EQ(DhcpMsgOption::memAllocationTracker_.live(), 0u);  // none was asked for
    const auto name = options->option(DhcpOptionType::hostName), type = options->option(DhcpOptionType::msgType);
    options->optionIs(DhcpOptionType::hostName, type);
    EXPECT_EQ(options->option(DhcpOptionType::hostName), type);
    options->optionIs(DhcpOptionType::hostName, nullptr);
    options->optionIs(DhcpOptionType::endOpt, nullptr);
    EXPECT_EQ(kept(*options), "53@3+1 ");
    EXPECT_FALSE(options->optionDel(DhcpOptionType::hostName));
    EXPECT_EQ(options->optionDel(DhcpOptionType::msgType), type);
    options->optionDelAll();
    EXPECT_TRUE(options->option().empty());
    EXPECT_EQ(bytesOf(*pkt), hex("0C 01 61 35 01 01"));
    options = nullptr;
    EXPECT_EQ(DhcpMsgOption::memAllocationTracker_.live(), 2u);  // the two that are held here
    EXPECT_EQ(pkt->useCount(), 3u);
}

TEST(DhcpHdrCollection, CreatesViewsOfWhatItHasRead) {
    const PktPtr pkt = packet(hex("0C 01 61 35 01 01"));
    const auto options = dhcpMsgOptionsFactory(pkt, 0);
    Wire::store<U32>(*pkt, 0, 0);
    const auto name = options->option(DhcpOptionType::hostName);
    EXPECT_EQ(placeOf(*name), "12@0+1 ");
    EXPECT_EQ(options->option(DhcpOptionType::hostName), name);
    std::string found;
    for (const auto& [type, view] : dhcpMsgOptionsFactory(packet(hex("0C 01 61 35 01 01 FF 00")), 0)->option())
        found += placeOf(*view);  // the collection is gone
    EXPECT_EQ(found, "12@0+1 53@3+1 255@6+0 ");
}

TEST(DhcpHdrViews, WithoutAPacketAreEmptyAndRefuseWrites) {
    EXPECT_EQ(optionsIn(nullptr, 0), "");
    EXPECT_TRUE(dhcpInformationSubOptionsFactory(nullptr)->initialized());
    EXPECT_EQ(dhcpVendorSpecificSubOptFactory(nullptr)->quorvaSpecificOpt(), nullptr);
    EXPECT_EQ(blockIn(nullptr, 0), "none");
    EXPECT_EQ(internalErrorOf([] { dhcpVendorSpecificDataFactory(nullptr, 0, 1, 1); }), noRoom);
    EXPECT_EQ(internalErrorOf([] { dhcpMsgOptionFactory(nullptr, 0)->optIs(1); }), noRoom);
    EXPECT_NE(assertionOf([] { dhcpHdrWrapperFactory(nullptr, 0); }), "");
    EXPECT_FALSE(magicCookieFactory(nullptr, 0)->isDhcpMagicCookie());
}

TEST(DhcpHdrVendorBlocks, AreNotSearchedForBehindPosition65535) {
    Octets bytes(65540, 0);
    overwrite(bytes, 65528, hex("09 0D 00 00 00 09 01"));  // the next block would be at position 0
    const PktPtr pkt = packet(bytes);
    Wire::store<U32>(*pkt, 0, Constants::quorvaEntNum);
    EXPECT_EQ(blockIn(pkt, 65528), "none");
}

}  // namespace
