#include "CapturedLink.h"
#include "DhcpLib/Dhcp6Hdr.h"
#include "DhcpLib/Dhcp6Parser.h"

namespace DhcpTest {

namespace {

using Captures::Frame;
using Captures::Json;
using namespace DhcpLib;

Outcome<Dhcp6PacketParser> parse(const PktPtr& pkt) {
    return outcomeOf<Dhcp6PacketParser>([&](Dhcp6PacketParser& parser) { return parser.doParseDhcp6(pkt, port); });
}

std::string number(U64 value, int digits) {
    char text[17];
    std::snprintf(text, sizeof text, "%0*llx", digits, static_cast<unsigned long long>(value));
    return text;
}
std::string hexOf(const Kitnet::EthAddr& address) { return DhcpTest::hexOf(Wire::imageOf(address)); }
using DhcpTest::hexOf;

class Record : public LinkRecord {
public:
    using LinkRecord::LinkRecord;

    /// Extension headers hide UDP from the agent; the destination port decides, while the dissector takes either.
    bool isIp6Seen() const { return isIpSeen() && json_["ethertype"] == "86dd"; }
    bool isUdpSeen() const { return isIp6Seen() && json_["ip_proto"] == 17; }
    bool arePortsDhcp() const { return json_["udp_dport"] == 547 || json_["udp_dport"] == 546; }
    bool hasHeader() const { return bytesFrom(json_["off"]) >= 4; }
    Verdict verdict() const {
        if (isReservedVlan()) return Verdict::reservedVlan;
        const bool seen = isUdpSeen() && arePortsDhcp() && hasHeader();
        return seen && json_["msg_type"] >= 1 && json_["msg_type"] <= 11 ? Verdict::accepted : Verdict::rejected;
    }
};

Json listOf(const std::vector<Dhcp6Option::Ptr>& options) {
    Json list = Json::array();
    for (const auto& option : options) list.push_back({option->opt(), option->len(), option->offset()});
    return list;
}
/// The dissector goes on behind the code 0.
Json upToCode0(const Json& options) {
    Json list = Json::array();
    for (const Json& option : options) {
        if (option[0] == 0) break;
        list.push_back(option);
    }
    return list;
}

/// The DUID's bytes put together again from the view's fields, by type; the raw ones for what the view does not split.
std::string rebuiltDuid(const Dhcp6Option::Ptr& option) {
    const Dhcp6Duid duid(option, Dhcp6Const::optdata_offset);
    const std::string type = number(duid.duidType(), 4);
    const std::string hardware = type + number(duid.hardwareType(), 4);
    if (duid.duidType() == 1 && option->len() == 14)
        return hardware + number(duid.duidTime(), 8) + hexOf(duid.llAddr());
    if (duid.duidType() == 2 && option->len() >= 6) return type + number(duid.entno(), 8) + hexOf(duid.entId());
    if (duid.duidType() == 3 && option->len() == 10) return hardware + hexOf(duid.llAddr());
    if (duid.duidType() == 4 && option->len() == 18) return type + hexOf(duid.uuid());
    return hexOf(option->dataText());
}

void expectIa(const Json& json, const PktPtr& pkt) {
    const auto option = dhcp6OptionFactory(pkt, json["off"].get<U16>());
    const bool isIata = json["code"] == 4;  // has no view: an IAID, then options
    if (!isIata) {
        const Dhcp6Iana ia(option);
        EXPECT_EQ(number(ia.iaid(), 8), json["iaid"]);
        EXPECT_EQ(ia.lifetimeT1(), json["t1"]);
        EXPECT_EQ(ia.lifetimeT2(), json["t2"]);
    }
    const auto nested = isIata ? dhcp6NestedOptions(option, 8) : dhcp6NestedOptions(Dhcp6Iapd(option));
    EXPECT_EQ(listOf(nested), json["opts"]);
    Json addresses = Json::array(), prefixes = Json::array();
    for (const auto& inner : nested) {
        if (inner->optType() == Dhcp6OptionType::iaAddress)
            addresses.push_back(Kcore::textOf(dhcp6IaAddrFactory(inner)->pfxAddr()));
        if (inner->optType() == Dhcp6OptionType::iaPrefix)
            prefixes.push_back(Kcore::textOf(dhcp6IaPfxFactory(inner)->pfxAddr()));
    }
    EXPECT_EQ(addresses, json.value("addr", Json::array()));
    EXPECT_EQ(prefixes, json.value("prefix", Json::array()));
}

void expectHeader(const Json& json, const PktPtr& pkt, U16 offset) {
    EXPECT_EQ(Dhcp6HdrBase(pkt, offset).msg(), json["msg_type"]);
    if (json.contains("hop_count")) {
        const Dhcp6RelayHdr header(pkt, offset);
        EXPECT_EQ(header.hopCount(), json["hop_count"]);
        EXPECT_EQ(Kcore::textOf(header.linkAddr()), json["link_addr"]);
        EXPECT_EQ(Kcore::textOf(header.peerAddr()), json["peer_addr"]);
    } else {
        EXPECT_EQ("0x" + json["xid"].get<std::string>(), Kcore::textOf(Dhcp6RegHdr(pkt, offset).xid()));
    }
}

/// The option's data, put together again from the fields of its view where it has one.
std::string rebuilt(const Dhcp6Option::Ptr& option) {
    switch (option->optType()) {
        case Dhcp6OptionType::clientId:
        case Dhcp6OptionType::serverId:
            return rebuiltDuid(option);
        case Dhcp6OptionType::vss: {
            const Dhcp6VirtualSubnetSelection vss(option);
            return number(vss.vssType(), 2) + hexOf(vss.vrfName().view());
        }
        case Dhcp6OptionType::linkLayerAddr: {
            const DhcpLinkLayerAddr client(option);
            return number(client.llAddrType(), 4) + hexOf(client.llAddr());
        }
        default:
            return hexOf(option->dataText());
    }
}

void expectOptions(const Json& json, const PktPtr& pkt, const Dhcp6MessagePlace& place) {
    const auto options = dhcp6MessageOptions(pkt, place);
    EXPECT_EQ(listOf(options), upToCode0(json["opts"]));
    const std::pair<Dhcp6OptionType, const char*> told[] = {
        {Dhcp6OptionType::clientId, "client_duid"},   {Dhcp6OptionType::serverId, "server_duid"},
        {Dhcp6OptionType::remoteId, "remote_id"},     {Dhcp6OptionType::interfaceId, "interface_id"},
        {Dhcp6OptionType::vendorOpts, "vendor_opts"}, {Dhcp6OptionType::vss, "vss"},
        {Dhcp6OptionType::linkLayerAddr, "client_ll"}};
    for (const auto& [type, key] : told) {
        const auto first = std::ranges::find(options, type, [](const auto& option) { return option->optType(); });
        if (first != options.end()) {
            EXPECT_EQ(rebuilt(*first), json[key]) << key;
        }
    }
    for (const Json& ia : json.value("ia", Json::array())) expectIa(ia, pkt);
}

/// The message and those that are relayed in it.
void expectMessages(const Json& json, const PktPtr& pkt) {
    const U16 offset = json["off"];
    const auto chain = dhcp6RelayChain(pkt, {offset, offset + json["size"].get<U32>()});
    const Json* message = &json;
    for (const Dhcp6MessagePlace& place : chain) {
        ASSERT_NE(message, nullptr);
        EXPECT_EQ(place.offset, (*message)["off"]);
        EXPECT_EQ(place.end - place.offset, (*message)["size"]);
        expectHeader(*message, pkt, place.offset);
        expectOptions(*message, pkt, place);
        message = message->contains("relayed") ? &(*message)["relayed"] : nullptr;
    }
    EXPECT_TRUE(message == nullptr || chain.empty());
}

void expectParserFields(const Json& json, const PktPtr& pkt, const Dhcp6PacketParser& p) {
    EXPECT_EQ(Kcore::textOf(p.dhcp6Xid()), "0x" + json["xid"].get<std::string>());
    EXPECT_EQ(static_cast<unsigned>(p.dhcp6MsgType()), json["msg_type"]);
    EXPECT_EQ(p.dhcp6OptionsOffset(), json["off"].get<unsigned>() + 4);
    // The collection takes options as far as the parser does: some that the dissector refuses as overrunning.
    const auto options = dhcp6OptionsFactory(pkt, p.dhcp6OptionsOffset());
    for (const Json& option : upToCode0(json["opts"]))
        EXPECT_NE(options->option(static_cast<Dhcp6OptionType>(option[0].get<unsigned>())), nullptr);
    const auto clientId = options->option(Dhcp6OptionType::clientId);
    EXPECT_EQ(p.cIdOption(), clientId != nullptr);
}

/// IP version and the lengths of IPv6 and UDP are not looked at.
bool isHeaderDenied(const Frame& frame, const Dhcp6PacketParser& p) {
    const std::size_t ip = p.etherHdrLen(), ipPayloadLength = ip + 4, udpLength = ip + 44;
    const auto at = [&](std::size_t i) { return frame.bytes.at(i) << 8 | frame.bytes.at(i + 1); };
    return frame.bytes[ip] >> 4 != 6 || at(ipPayloadLength) < 8 + 4 || at(udpLength) < 8 + 4;
}

void expectAsDissected(const Frame& frame) {
    SCOPED_TRACE("frame " + std::to_string(frame.number));
    const PktPtr pkt = packet(frame.bytes);
    const auto [verdict, p] = parse(pkt);
    const Json& json = frame.expected;
    if (json.is_null()) {
        EXPECT_TRUE(verdict != Verdict::accepted || isHeaderDenied(frame, p));
        return;
    }
    const Record record(frame);
    expectMessages(json, pkt);
    EXPECT_EQ(verdict, record.verdict());
    if (verdict == Verdict::reservedVlan) return;
    expectLinkFields(record, json, p);
    EXPECT_EQ(p.isIp6(), record.isIp6Seen());
    if (!record.isUdpSeen()) return;
    expectEtherAndUdpFields(json, p);
    EXPECT_EQ(Kcore::textOf(p.srcIp6()), json["src_ip"]);
    EXPECT_EQ(Kcore::textOf(p.dstIp6()), json["dst_ip"]);
    EXPECT_EQ(p.udpLen(), json["udp_len"]);
    if (verdict == Verdict::accepted) expectParserFields(json, pkt, p);
}

class CapturesV6 : public testing::TestWithParam<Captures::Path> {};

TEST_P(CapturesV6, FieldsAreThoseOfADissector) {
    for (const Frame& frame : Captures::read(GetParam())) expectAsDissected(frame);
}

INSTANTIATE_TEST_SUITE_P(Bundled, CapturesV6, testing::ValuesIn(Captures::bundled("v6-")), Captures::testName);

TEST(CapturesV6Public, FieldsAreThoseOfADissector) {
    const auto folder = Captures::publicFolder();
    if (!folder)
        GTEST_SKIP() << "no folder of public captures: neither DHCPLIB_SHARED_CAPTURES nor beside the checkout";
    for (const Captures::Path& capture : Captures::in(*folder)) {
        SCOPED_TRACE(capture.string());
        for (const Frame& frame : Captures::read(capture))
            if (!frame.expected.is_null() && frame.expected["proto"] == "dhcpv6") expectAsDissected(frame);
    }
}

}  // namespace

}  // namespace DhcpTest
