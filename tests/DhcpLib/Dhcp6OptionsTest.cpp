#include <ctime>
#include <limits>

#include "AreaRows.h"
#include "DhcpLib/Dhcp6Hdr.h"
#include "DhcpLib/OptionParser.h"
#include "Recorders.h"

using namespace DhcpLib;
using namespace DhcpTest;

namespace {

std::string optionsIn(const PktPtr& pkt, U16 offset) { return kept(*dhcp6OptionsFactory(pkt, offset)); }

TEST(Dhcp6Options, HoldTheOptions) {
    const Area rows[] = {
        {"first of two wins", 0, "00 01 00 01 61 00 01 00 00", "1@0+1 "},
        {"zero ends the area", 0, "00 01 00 00 00 00 00 00 00 02 00 00", "1@0+0 "},
        {"an overrun within the offset is kept", 4, "EE*4 00 01 00 06 61 62", "1@4+6 "},
        {"a longer overrun is dropped", 4, "EE*4 00 01 00 07 61 62", ""},
        {"two bytes are a code of length 0", 4, "EE*4 00 01 00 00 00 07", "1@4+0 7@8+0 "},
        // The cursor turns back or stands still: such an option is judged by where it seems to end, and is the last.
        {"length 65535", 0, "00 01 00 00 00 05 FF FF 00 02 00 00", "1@0+0 5@4+65535 "},
        {"length 65532", 0, "00 01 00 00 00 05 FF FC 00 02 00 00", "1@0+0 5@4+65532 "},
    };
    expectFound(rows, optionsIn);
    const Area cableLabs[] = {
        {"last of two wins", 0, "00 3D 00 02 61 62 00 3D 00 01 63", "61@6+1 "},
        {"zero is a code", 0, "00 00 00 01 61 00 01 00 00", "0@0+1 1@5+0 "},
        {"an overrun is kept", 0, "00 01 00 00 00 3D FF 00 61", "1@0+0 61@4+65280 "},
        {"lengths that wrap backwards end the walk", 0, "00 01 00 00 00 3D FF FC 00 02 00 00", "1@0+0 61@4+65532 "},
    };
    expectFound(cableLabs,
                [](const PktPtr& pkt, U16 offset) { return kept(*cableLabsSubOptionsFactory(pkt, offset)); });
}

TEST(Dhcp6Options, PositionsWrapAt65536) {
    Octets bytes(65560, 0);
    overwrite(bytes, 0, hex("00 03 00 02 61 62 00 04 00 00"));
    const auto options = [&](const char* item) {
        overwrite(bytes, 65530, hex(item));
        return optionsIn(packet(bytes), 65530);
    };
    // The next position would be 0: the walk does not go back.
    EXPECT_EQ(options("00 07 00 02 61 62"), "7@65530+2 ");
    // The length of an option at 65534 is read from the start of the packet.
    EXPECT_EQ(options("00 07 00 00 00 08"), "7@65530+0 8@65534+3 ");
    const PktPtr pkt = packet(bytes);
    dhcp6OptionFactory(pkt, 65534)->lenIs(7);
    EXPECT_EQ(pkt->data()[1], 7);
}

TEST(Dhcp6Options, TakeLinearTimeUpTo16000Codes) {
    const auto items = [](std::string_view front, U32 n, bool numbered) {
        Octets bytes = hex(front);
        for (U32 i = 1; i <= n; ++i) {
            const U8 high = static_cast<U8>(i >> 8), low = static_cast<U8>(i);
            bytes = std::move(bytes) + (numbered ? Octets{high, low, 0, 0} : Octets{0, 2, high, low});
        }
        return packet(bytes);
    };
    const auto ticksOf = [&](U32 n) {
        const PktPtr codes = items("", n, true), user = items("00 0F FF FF", n, false),
                     vendor = items("00 11 FF FF 00*4", n, true);
        std::clock_t best = std::numeric_limits<std::clock_t>::max();
        for (int run = 0; run < 3; ++run) {
            const std::clock_t start = std::clock();
            EXPECT_EQ(CableLabsSubOptions(codes, 0).option().size(), n);
            Dhcp6Options options(codes, 0);
            for (U32 i = 1; i <= n; ++i) EXPECT_TRUE(options.optionDel(static_cast<Dhcp6OptionType>(i)));
            const Dhcp6UserClassOption inTurn(user, 0);
            for (U32 i = 0; i < n; ++i) EXPECT_EQ(inTurn.userClassData(static_cast<U16>(i)).size(), 2u);
            const Dhcp6VendorSpecificInformationOption backwards(vendor, 0);
            for (U32 i = n; i > 0; --i) EXPECT_EQ(backwards.vendorOptionData(static_cast<U16>(i)), "");
            for (U32 i = n; i > 0; --i) EXPECT_EQ(inTurn.userClassData(static_cast<U16>(i - 1)).size(), 2u);
            best = std::min(best, std::clock() - start);
        }
        return best;
    };
    EXPECT_LT(ticksOf(16000), 64 * ticksOf(1000));  // quadratic time would be 256 times as much
}

TEST(Dhcp6Options, AreWrittenThroughCollectionsAndViews) {
    const PktPtr pkt = packet(hex("00 03 00 0C A5*12"));
    const auto options = dhcp6OptionsFactory(pkt, 0);
    dhcp6IanaFactory(options->option(Dhcp6OptionType::iana))->opt()->dataIs(hex("01*12").data());
    options->option(Dhcp6OptionType::iana)->lenIs(11);
    EXPECT_EQ(bytesOf(*pkt), hex("00 03 00 0B 01*12"));
    const Kcore::Ptr<const Dhcp6Option> readOnly = dhcp6OptionFactory(pkt, 0);
    options->optionIs(Dhcp6OptionType::iata, readOnly);
    EXPECT_EQ(options->optionDel(Dhcp6OptionType::iata), readOnly);
}

TEST(Dhcp6Options, WithoutAPacketAreEmptyAndRefuseWrites) {
    EXPECT_EQ(optionsIn(nullptr, 0), "");
    EXPECT_TRUE(cableLabsSubOptionsFactory(nullptr, 0)->option().empty());
    EXPECT_EQ(dhcp6IanaFactory(nullptr)->iaid(), 0u);
    EXPECT_EQ(internalErrorOf([] { dhcp6IanaFactory(nullptr)->iaidIs(1); }), noRoom);
    EXPECT_EQ(internalErrorOf([] { dhcp6RelayHdrFactory(nullptr, 0)->hopCountIs(1); }), noRoom);
    EXPECT_EQ(Dhcp6UserClassOption(nullptr, 0).userClassData(0), "");
    EXPECT_TRUE(dhcp6NestedOptions(nullptr, 4).empty() && dhcp6MessageOptions(nullptr, {0, 9}).empty());
    EXPECT_TRUE(dhcp6RelayChain(nullptr, {0, 9}).empty() && !dhcp6OptionBasicCheck(nullptr, 0));
}

TEST(Dhcp6Options, TheirSettersChangeTheirBytesOrNothing) {
    const PktPtr pkt = packet(hex("A5*3 00 01 00 02 61 62 A5*3"));
    const auto item = dhcp6OptionFactory(pkt, 3);
    EXPECT_EQ(item->dataText(), "ab");
    item->lenIs(5);
    item->dataIs(hex("01 02 03 04 05").data());
    item->optTypeIs(static_cast<Dhcp6OptionType>(0xabcd1234));
    for (const U16 tooMuch : {U16{6}, U16{0xffff}}) EXPECT_EQ(internalErrorOf([&] { item->lenIs(tooMuch); }), noRoom);
    EXPECT_EQ(bytesOf(*pkt), hex("A5*3 12 34 00 05 01 02 03 04 05"));
    EXPECT_TRUE(item->opt() == 0x1234 && item->len() == 5);
}

TEST(CableLabs, WritesCcapCores) {
    const auto address = Kitnet::Ip6Addr::fromText("2001:db8::1:2");
    const PktPtr pkt = packet(hex("A5*2 00 3D 00 20 A5*33"));
    const auto subOption = CableLabsSubOption::CableLabsSubOptionIs(pkt, 2);
    subOption->ip6AddrIs(address, 20);
    subOption->ip6AddrIs({}, 0x0104);
    EXPECT_EQ(internalErrorOf([&] { subOption->ip6AddrIs(address, 22); }), noRoom);
    EXPECT_EQ(bytesOf(*pkt), hex("A5*2 00 3D 00 20 00*16 20 01 0D B8 00*8 00 01 00 02 A5"));
}

template <class P>
concept HandsOutItsOverlay = requires(P&& p) {
    std::forward<P>(p).get();
};
using UserClassPtr = Dhcp6OverlayPtr<Dhcp6UserClassOption>;
static_assert(HandsOutItsOverlay<UserClassPtr&> && !HandsOutItsOverlay<UserClassPtr>);

/// User class data 0 to 2, or the vendor's option 2.
std::string extracted(const PktPtr& pkt, U16 offset) {
    const auto options = dhcp6OptionsFactory(pkt, offset);
    if (const auto option = options->userClassOption()) {
        EXPECT_EQ(option->optionCode().value(), 15);
        return option->userClassData(0).str() + '|' + option->userClassData(1).str() + '|' +
               option->userClassData(2).str();
    }
    const auto option = options->vendorSpecificInformationOption();
    return option ? option->vendorOptionData(2).str() : "no option";
}

TEST(Dhcp6Overlays, ExtractData) {
    const Area userClass[] = {
        {"each", 2, "EE*2 00 0F 00 0C 00 03 'abc' 00 05 'defgh' 00 01 'x'", "abc|defgh|"},
        {"cut at the option's end", 2, "EE*2 00 0F 00 05 00 08 'abcdefgh'", "abc||"},
        {"an item behind a truncated one", 2, "EE*2 00 0F 00 05 00 08 'abc' 00 01 'x'", "abc||"},
        {"empty item", 2, "EE*2 00 0F 00 07 00 00 00 03 'abc'", "|abc|"},
        {"one byte is no item", 2, "EE*2 00 0F 00 01 00 03 'abc'", "||"},
        {"cut at the packet's end", 2, "EE*2 00 0F 00 07 00 05 'abc'", "abc||"},
    };
    const Area vendor[] = {
        {"second", 2, "EE*2 00 11 00 11 00 00 11 8B 00 01 00 00 00 02 00 05 'defgh' EE", "defgh"},
        {"first of two", 2, "EE*2 00 11 00 0E 00 00 11 8B 00 02 00 01 'a' 00 02 00 01 'b'", "a"},
        {"enterprise number alone", 2, "EE*2 00 11 00 04 00 00 11 8B 00 02 00 01 'a'", ""},
        {"cut at the option's end", 2, "EE*2 00 11 00 0A 00 00 11 8B 00 02 00 08 'abcdefgh'", "ab"},
        {"no room for a header", 2, "EE*2 00 11 00 07 00 00 11 8B 00 02 00 01 'a'", ""},
        {"cut at the packet's end", 2, "EE*2 00 11 00 0A 00 00 11 8B 00 02 00 08 'a'", "a"},
        // 3 - 4 wraps: what follows is searched up to the packet's end.
        {"length below 4", 2, "EE*2 00 11 00 03 00 00 11 8B 00 01 00 00 00 02 00 02 'ab'", "ab"},
        {"a length that passes it", 2, "EE*2 00 11 00 08 00 00 11 8B 00 01 FF FF 00 02 00 02 'ab'", ""},
    };
    expectFound(userClass, extracted);
    expectFound(vendor, extracted);
}

}  // namespace
