#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <random>

#include "Bytes.h"
#include "DhcpLib/Dhcp6Hdr.h"
#include "Recorders.h"
#include "platform/Refusal.h"

using namespace DhcpLib;
using namespace DhcpTest;

namespace {

constexpr char noRoom[] = "length value exceeds pkt-length.";

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
std::string optionsIn(const PktPtr& pkt, U16 offset) { return kept(*dhcp6OptionsFactory(pkt, offset)); }
std::string subOptionsIn(const PktPtr& pkt, U16 offset) { return kept(*cableLabsSubOptionsFactory(pkt, offset)); }

struct Area {
    const char* rule;
    std::string (*read)(const PktPtr&, U16 offset);
    U16 offset;
    const char* bytes;
    const char* found;
};
class Dhcp6Collections : public testing::TestWithParam<Area> {};

TEST_P(Dhcp6Collections, HoldTheseAndReadNothingBehindThePacket) {
    const Area& row = GetParam();
    const Octets bytes = hex(row.bytes);
    for (std::size_t size = 0; size <= bytes.size(); ++size) {
        const Octets cut(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
        const std::string alone = row.read(packet(cut), row.offset);
        for (const PktPtr& pkt : packets(cut)) {
            EXPECT_EQ(row.read(pkt, row.offset), alone) << "cut to " << size << " bytes, with others behind";
            EXPECT_EQ(bytesOf(*pkt), cut);
        }
        if (size == bytes.size()) {
            EXPECT_EQ(alone, row.found);
        }
    }
    EXPECT_EQ(Dhcp6Option::memAllocationTracker_.live(), 0u);
    EXPECT_EQ(CableLabsSubOption::memAllocationTracker_.live(), 0u);
}

INSTANTIATE_TEST_SUITE_P(
    Options, Dhcp6Collections,
    testing::Values(
        Area{"AnyCode", optionsIn, 0, "00 01 00 02 61 62 00 0A 00 00 FF FF 00 01 63", "1@0+2 10@6+0 65535@10+1"},
        Area{"FirstOfTwoWins", optionsIn, 0, "00 01 00 01 61 00 01 00 00", "1@0+1"},
        Area{"ZeroEndsTheArea", optionsIn, 0, "00 01 00 00 00 00 00 00 00 02 00 00", "1@0+0"},
        Area{"ZeroOfAnyLengthDoes", optionsIn, 0, "00 00 00 04 00 02 00 00 00 02 00 00", ""},
        Area{"MayEndExactlyAtTheEnd", optionsIn, 2, "EE EE 00 01 00 02 61 62", "1@2+2"},
        Area{"OverrunIsDropped", optionsIn, 0, "00 02 00 00 00 01 00 03 61 62", "2@0+0"},
        Area{"OverrunWithinTheOffsetIsKept", optionsIn, 4, "EE*4 00 01 00 06 61 62", "1@4+6"},
        Area{"OverrunBeyondItIsNot", optionsIn, 4, "EE*4 00 01 00 07 61 62", ""},
        Area{"TwoBytesAreACodeOfLength0", optionsIn, 4, "EE*4 00 01 00 00 00 07", "1@4+0 7@8+0"},
        Area{"OneByteIsNoCode", optionsIn, 4, "EE*4 00 01 00 00 00", "1@4+0"},
        Area{"HalfALength", optionsIn, 4, "EE*4 00 01 00", "1@4+0"},
        // The cursor turns back or stands still: such an option is judged by where it seems to end, and is the last.
        Area{"Length65535", optionsIn, 0, "00 01 00 00 00 05 FF FF 00 02 00 00", "1@0+0 5@4+65535"},
        Area{"Length65532", optionsIn, 0, "00 01 00 00 00 05 FF FC 00 02 00 00", "1@0+0 5@4+65532"},
        Area{"Length65520", optionsIn, 0, "00 01 FF F0 00 02 00 00", ""},
        Area{"NothingBehindThePacket", optionsIn, 9, "00 01 00 00", ""},
        Area{"AreaAtThePacketsEnd", optionsIn, 4, "00 01 00 00", ""}),
    [](const auto& row) { return row.param.rule; });
INSTANTIATE_TEST_SUITE_P(
    CableLabs, Dhcp6Collections,
    testing::Values(Area{"LastOfTwoWins", subOptionsIn, 0, "00 3D 00 02 61 62 00 3D 00 01 63", "61@6+1"},
                    Area{"ZeroIsACode", subOptionsIn, 0, "00 00 00 01 61 00 01 00 00", "0@0+1 1@5+0"},
                    Area{"OverrunIsKept", subOptionsIn, 0, "00 01 00 00 00 3D FF 00 61", "1@0+0 61@4+65280"},
                    Area{"LengthsThatTurnBackEndTheWalk", subOptionsIn, 0, "00 01 00 00 00 3D FF FC 00 02 00 00",
                         "1@0+0 61@4+65532"},
                    Area{"OneByteIsNoCode", subOptionsIn, 1, "EE 00 01 00 00 00", "1@1+0"},
                    Area{"AreaAtThePacketsEnd", subOptionsIn, 4, "00 01 00 00", ""}),
    [](const auto& row) { return row.param.rule; });

TEST(Dhcp6Positions, WrapAt65536) {
    Octets bytes(65560, 0);
    std::ranges::copy(hex("00 03 00 02 61 62 00 04 00 00"), bytes.begin());
    const auto options = [&](const char* item) {
        std::ranges::copy(hex(item), bytes.begin() + 65530);
        return optionsIn(packet(bytes), 65530);
    };
    EXPECT_EQ(options("00 07 00 02 61 62"), "3@0+2 4@6+0 7@65530+2");
    // A code in the packet's last 16-bit position has its length at the start of the packet.
    EXPECT_EQ(options("00 07 00 00 00 08"), "7@65530+0 8@65534+3 25088@5+1024");
    const PktPtr pkt = packet(bytes);
    dhcp6OptionFactory(pkt, 65534)->lenIs(7);
    EXPECT_EQ(pkt->data()[1], 7);
}

double secondsOf(const std::function<void()>& act) {
    double best = 1e9;
    for (int i = 0; i < 5; ++i) {
        const auto start = std::chrono::steady_clock::now();
        act();
        best = std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    return best;
}

TEST(Dhcp6Options, TakeLinearTimeUpTo16000Codes) {
    const auto area = [](U32 codes) {
        Octets bytes;
        for (U32 code = 1; code <= codes; ++code)
            bytes.insert(bytes.end(), {static_cast<U8>(code >> 8), static_cast<U8>(code), 0, 0});
        return packet(bytes, Kitnet::Pkt::Storage::roomy);
    };
    const PktPtr small = area(1000), large = area(16000);
    EXPECT_EQ(Dhcp6Options(large, 0).option().size(), 16000u);
    EXPECT_EQ(CableLabsSubOptions(large, 0).option().size(), 16000u);
    // Quadratic time would be 256 times as much.
    EXPECT_LT(secondsOf([&] { Dhcp6Options(large, 0); }), 100 * secondsOf([&] { Dhcp6Options(small, 0); }));
    EXPECT_LT(secondsOf([&] { CableLabsSubOptions(large, 0); }),
              100 * secondsOf([&] { CableLabsSubOptions(small, 0); }));
}

TEST(Dhcp6Options, ChangeOnlyTheMap) {
    const PktPtr pkt = packet(hex("00 01 00 00 00 25 00 01 61"));
    const auto options = Dhcp6Options::Dhcp6OptionsIs(pkt, 0);
    const Kcore::Ptr<const Dhcp6Option> first = options->option(Dhcp6OptionType::clientId);
    options->optionIs(Dhcp6OptionType::vss, first);
    options->optionIs(Dhcp6OptionType::clientId, options->option(Dhcp6OptionType::remoteId));
    EXPECT_EQ(options->option(Dhcp6OptionType::clientId)->len(), 1);
    options->optionIs(Dhcp6OptionType::clientId, nullptr);
    EXPECT_EQ(options->option(Dhcp6OptionType::clientId), nullptr);
    EXPECT_EQ(options->optionDel(Dhcp6OptionType::vss), first);
    EXPECT_EQ(options->optionDel(Dhcp6OptionType::vss), nullptr);
    EXPECT_EQ(options->option().size(), 1u);
    options->optionDelAll();
    EXPECT_TRUE(options->option().empty() && options->initialized());
    options->handleInitialized();
    EXPECT_TRUE(options->option().empty());
    EXPECT_EQ(bytesOf(*pkt), hex("00 01 00 00 00 25 00 01 61"));
}

/// The same on an option and on a CableLabs sub-option.
template <class Item>
class Dhcp6Item : public testing::Test {};
using ItemKinds = testing::Types<Dhcp6Option, CableLabsSubOption>;
TYPED_TEST_SUITE(Dhcp6Item, ItemKinds);

TYPED_TEST(Dhcp6Item, SettersChangeTheirBytesOrNothing) {
    const PktPtr pkt = packet(hex("A5*3 00 01 00 02 61 62 A5*3"));
    const auto item = Kcore::makeNode<TypeParam>(pkt, U16{3});
    EXPECT_EQ(item->dataText(), "ab");
    EXPECT_EQ(item->data(), pkt->data() + 7);
    item->lenIs(5);
    EXPECT_EQ(bytesOf(*pkt), hex("A5*3 00 01 00 05 61 62 A5*3"));
    item->dataIs(hex("01 02 03 04 05").data());
    item->optTypeIs(static_cast<typename TypeParam::Type>(0xabcd1234));
    EXPECT_EQ(bytesOf(*pkt), hex("A5*3 12 34 00 05 01 02 03 04 05"));
    EXPECT_EQ(item->opt(), 0x1234);
    for (const U16 tooMuch : {U16{6}, U16{0xffff}}) EXPECT_EQ(internalErrorOf([&] { item->lenIs(tooMuch); }), noRoom);
    EXPECT_EQ(item->len(), 5);
    pkt->delSharedTailData(1);
    EXPECT_EQ(internalErrorOf([&] { item->dataIs(hex("09*5").data()); }), noRoom);
    EXPECT_EQ(bytesOf(*pkt), hex("A5*3 12 34 00 05 01 02 03 04"));
    const auto behind = Kcore::makeNode<TypeParam>(packet(hex("00 01")), U16{1});
    EXPECT_EQ(internalErrorOf([&] { behind->optTypeIs(typename TypeParam::Type{}); }), noRoom);
    EXPECT_EQ(internalErrorOf([&] { behind->lenIs(0); }), noRoom);
    EXPECT_EQ(behind->data(), nullptr);
}

TEST(CableLabs, WritesCcapCores) {
    const auto address = Kitnet::Ip6Addr::fromText("2001:db8::1:2");
    const PktPtr pkt = packet(hex("A5*2 00 3D 00 20 A5*33"));
    const auto subOption = CableLabsSubOption::CableLabsSubOptionIs(pkt, 2);
    subOption->ip6AddrIs(address, 20);
    EXPECT_EQ(bytesOf(*pkt), hex("A5*2 00 3D 00 20 A5*16 20 01 0D B8 00*8 00 01 00 02 A5"));
    subOption->ip6AddrIs({}, 0x0104);
    EXPECT_EQ(bytesOf(*pkt), hex("A5*2 00 3D 00 20 00*16 20 01 0D B8 00*8 00 01 00 02 A5"));
    EXPECT_EQ(internalErrorOf([&] { subOption->ip6AddrIs(address, 22); }), noRoom);
    EXPECT_EQ(bytesOf(*pkt), hex("A5*2 00 3D 00 20 00*16 20 01 0D B8 00*8 00 01 00 02 A5"));
}

struct Extract {
    const char* rule;
    const char* option;
    U16 wanted;  ///< index or code
    const char* data;
};
class Dhcp6Extractors : public testing::TestWithParam<Extract> {};

std::string extracted(const PktPtr& pkt, U16 wanted) {
    const Dhcp6Options options(pkt, 2);
    if (const auto option = options.userClassOption()) {
        EXPECT_EQ(options.vendorSpecificInformationOption(), nullptr);
        EXPECT_EQ(option->optionCode().value(), 15);
        return option->userClassData(wanted).str();
    }
    const auto option = options.vendorSpecificInformationOption();
    return option ? option->vendorOptionData(wanted).str() : "no option";
}

TEST_P(Dhcp6Extractors, GiveThisAndReadNothingBehindThePacket) {
    const Octets bytes = hex("EE*2") + hex(GetParam().option);
    for (std::size_t size = 2; size <= bytes.size(); ++size) {
        const Octets cut(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
        const std::string alone = extracted(packet(cut), GetParam().wanted);
        for (const PktPtr& pkt : packets(cut)) EXPECT_EQ(extracted(pkt, GetParam().wanted), alone) << "cut to " << size;
        if (size == bytes.size()) {
            EXPECT_EQ(alone, GetParam().data);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(UserClass, Dhcp6Extractors,
                         testing::Values(Extract{"First", "00 0F 00 0C 00 03 'abc' 00 05 'defgh'", 0, "abc"},
                                         Extract{"Second", "00 0F 00 0C 00 03 'abc' 00 05 'defgh' EE", 1, "defgh"},
                                         Extract{"BehindTheLast", "00 0F 00 0C 00 03 'abc' 00 05 'defgh' 00 01 'x'", 2,
                                                 ""},
                                         Extract{"CutAtTheOptionsEnd", "00 0F 00 05 00 08 'abcdefgh'", 0, "abc"},
                                         Extract{"NothingBehindACutOne", "00 0F 00 05 00 08 'abc' 00 01 'x'", 1, ""},
                                         Extract{"EmptyItem", "00 0F 00 07 00 00 00 03 'abc'", 1, "abc"},
                                         Extract{"OneByteIsNoItem", "00 0F 00 01 00 03 'abc'", 0, ""},
                                         Extract{"CutAtThePacketsEnd", "00 0F 00 07 00 05 'abc'", 0, "abc"},
                                         Extract{"TheLastIndex", "00 0F 00 02 00 00", 65535, ""}),
                         [](const auto& row) { return row.param.rule; });
INSTANTIATE_TEST_SUITE_P(
    VendorOptions, Dhcp6Extractors,
    testing::Values(Extract{"First", "00 11 00 0F 00 00 11 8B 00 01 00 03 'abc' 00 02 00 00", 1, "abc"},
                    Extract{"Second", "00 11 00 11 00 00 11 8B 00 01 00 00 00 02 00 05 'defgh' EE", 2, "defgh"},
                    Extract{"FirstOfTwo", "00 11 00 0E 00 00 11 8B 00 02 00 01 'a' 00 02 00 01 'b'", 2, "a"},
                    Extract{"None", "00 11 00 08 00 00 11 8B 00 01 00 00 00 02 00 00", 2, ""},
                    Extract{"EnterpriseNumberAlone", "00 11 00 04 00 00 11 8B 00 02 00 01 'a'", 2, ""},
                    Extract{"CutAtTheOptionsEnd", "00 11 00 0A 00 00 11 8B 00 02 00 08 'abcdefgh'", 2, "ab"},
                    Extract{"NoRoomForAHeader", "00 11 00 07 00 00 11 8B 00 02 00 01 'a'", 2, ""},
                    Extract{"CutAtThePacketsEnd", "00 11 00 0A 00 00 11 8B 00 02 00 08 'a'", 2, "a"},
                    // 3 - 4 wraps: what follows is searched up to the packet's end.
                    Extract{"LengthBelow4", "00 11 00 03 00 00 11 8B 00 01 00 00 00 02 00 02 'ab'", 2, "ab"},
                    Extract{"LengthThatPassesThePacket", "00 11 00 08 00 00 11 8B 00 01 FF FF 00 02 00 02 'ab'", 2,
                            ""}),
    [](const auto& row) { return row.param.rule; });

TEST(Dhcp6Overlays, OutliveTheirCollection) {
    const auto overlay = dhcp6OptionsFactory(packet(hex("00 11 00 09 00 00 11 8B 00 02 00 01 'a'")), 0)
                             ->vendorSpecificInformationOption();
    ASSERT_NE(overlay, nullptr);
    EXPECT_EQ(overlay->enterpriseNumber().value(), Dhcp6Const::cableLabs_entno);
    EXPECT_EQ(overlay->optionLen().value(), 9);
    EXPECT_EQ(overlay->vendorOptionData(2), "a");
    EXPECT_EQ(dhcp6OptionsFactory(packet({}), 0)->userClassOption(), nullptr);
}

TEST(Dhcp6Names, FollowTheNumbers) {
    EXPECT_EQ(stringValue(Dhcp6MsgType::relayForward), "relayForward");
    EXPECT_EQ(stringValue(static_cast<Dhcp6MsgType>(14)), "14");
    EXPECT_EQ(refusalOf([] { Dhcp6OptionTypeInstance(10); }), "Dhcp6OptionType has no member 10");
    EXPECT_EQ(static_cast<unsigned>(Dhcp6OptionTypeInstance("vss")), 68u);
    EXPECT_EQ(static_cast<unsigned>(Dhcp6OptionTypeInstance("linkLayerAddr")), 79u);
    EXPECT_EQ(Dhcp6RemoteIdFormatInstance(0), Dhcp6RemoteIdFormat::intfIdFormat);
    EXPECT_EQ(Dhcp6InterfaceIdCodeInstance("srcVtepMac"), Dhcp6InterfaceIdCodeInstance(4));
    EXPECT_EQ(CableLabsSubOptionTypeInstance(61), CableLabsSubOptionType::ccapCoresOpt);

    const Kcore::TypeData* const constants = Kcore::TypeRegistry::instance().type("Dhcp6Const");
    ASSERT_NE(constants, nullptr);
    const auto rows = constants->attributes();
    ASSERT_EQ(rows.size(), 74u);
    const Dhcp6Const set(Kcore::CharRange("")), other;
    EXPECT_TRUE(set == other && set.isEq(other));
    const auto valueAt = [&](std::size_t i) {
        std::string text(rows[i].name);
        rows[i].appendText(text.append("="), &set);
        return text;
    };
    EXPECT_EQ(valueAt(0), "msgtype_offset=0");
    EXPECT_EQ(valueAt(42), "entno_offset=4");
    EXPECT_EQ(valueAt(72), "entno=32473");
    EXPECT_EQ(valueAt(73), "cableLabs_entno=4491");
}

}  // namespace
