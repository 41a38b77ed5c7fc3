#include "CapturedLink.h"

#include <map>
#include <set>
#include <sstream>

#include "DhcpLib/DhcpParser.h"

namespace DhcpTest {

namespace {

using Captures::Frame;
using Captures::Json;
using DhcpLib::PacketParser;

Outcome<PacketParser> parse(const PktPtr& pkt) {
    return outcomeOf<PacketParser>([&](PacketParser& parser) { return parser.doParse(pkt, port, false); });
}

/// What the dissector read in a frame, with the rules by which a snooping agent differs from it.
class Record : public LinkRecord {
public:
    using LinkRecord::LinkRecord;

    /// The destination port decides, while the dissector takes either.
    bool arePortsDhcp() const { return json_["udp_dport"] == 67 || json_["udp_dport"] == 68; }

    /// None where the dissection stopped before the end of the options.
    std::optional<Verdict> verdict() const {
        if (isReservedVlan()) return Verdict::reservedVlan;
        if (!isIpSeen() || !arePortsDhcp()) return Verdict::rejected;
        if (!hasHeader()) return Verdict::rejected;
        if (isCutShort()) return std::nullopt;
        // Without a single byte behind the header there is no telling BOOTP from DHCP.
        const bool good = hasCookie() ? !json_["end_off"].is_null() : bytesFrom(json_["off"]) > 236;
        return good ? Verdict::accepted : Verdict::rejected;
    }
    /// The part of the BOOTP header that is read: up to the client's address.
    bool hasHeader() const { return bytesFrom(json_["off"]) >= 34; }
    bool hasCookie() const { return json_["cookie"]; }

    /// A decoded value; `otherwise` where the option is missing or has a length that it must not have.
    template <class T>
    T valueOr(const char* key, T otherwise) const {
        return json_.contains(key) && !json_[key].is_null() ? json_[key].get<T>() : otherwise;
    }
    bool has(unsigned code) const { return last(code) != nullptr; }
    /// The first data byte counts, whatever the length says.
    unsigned messageType() const {
        if (!has(53)) return 0;
        const unsigned type = valueOr<unsigned>("msg_type", byteAt((*last(53))[2].get<std::size_t>() + 2));
        return type <= 13 ? type : 0;
    }
    /// A list that is no whole number of addresses is ignored; the dissector takes what is whole.
    std::set<std::string> associatedIps() const {
        if (!has(92) || (*last(92))[1].get<unsigned>() % 4 != 0) return {};
        return valueOr<std::set<std::string>>("associated_ips", {});
    }

    /// A sub-option of the first option 82, while the dissector tells the last one's. The first of several counts; one
    /// that passes the option's end is dropped with all behind it.
    struct SubOption {
        bool found = false;
        std::size_t at = 0;  // of its data in the frame
        std::string data;    // in hex
    };
    SubOption subOption(unsigned code) const {
        const Json* const info = first(82);
        if (info == nullptr) return {};
        std::size_t at = (*info)[2].get<std::size_t>() + 2;
        const std::size_t end = at + (*info)[1].get<std::size_t>();
        for (const Json& sub : subOptions()) {
            const std::size_t next = at + 2 + sub[1].get<std::size_t>();
            if (next > end) break;
            if (sub[0] == code) return {true, at + 2, sub[2]};
            at = next;
        }
        return {};
    }
    /// Four bytes from the start of the data, whatever the length says.
    std::string serverIdOverride() const {
        const SubOption sub = subOption(11);
        if (!sub.found) return noAddress;
        std::ostringstream address;
        address << byteAt(sub.at) << '.' << byteAt(sub.at + 1) << '.' << byteAt(sub.at + 2) << '.'
                << byteAt(sub.at + 3);
        return address.str();
    }
    std::string serverId() const {
        const std::string override82 = serverIdOverride();
        return override82 != noAddress ? override82 : valueOr<std::string>("server_id", noAddress);
    }
    bool isServerIdKnown() const { return has(54) || serverIdOverride() != noAddress; }

private:
    static constexpr char noAddress[] = "0.0.0.0";

    unsigned byteAt(std::size_t at) const { return at < frame_.bytes.size() ? frame_.bytes[at] : 0; }
    bool isCutShort() const {
        const auto errors = valueOr<std::vector<std::string>>("tshark_errors", {});
        return std::find(errors.begin(), errors.end(), "malformed") != errors.end();
    }
    const Json* first(unsigned code) const {
        for (const Json& option : json_["opts"])
            if (option[0] == code) return &option;
        return nullptr;
    }
    const Json* last(unsigned code) const {
        const Json* found = nullptr;
        for (const Json& option : json_["opts"])
            if (option[0] == code) found = &option;
        return found;
    }
    /// `[code, length, data in hex]` of the first option 82.
    Json subOptions() const {
        if (json_["opt82"]["count"] == 1) return json_["opt82"]["subs"];
        Json subs = Json::array();
        const std::string data = json_["repeated"]["82"][0];
        for (std::size_t at = 0; at + 4 <= data.size();) {
            const auto number = [&](std::size_t i) { return std::stoul(data.substr(i, 2), nullptr, 16); };
            const std::size_t length = number(at + 2);
            subs.push_back({number(at), length, data.substr(at + 4, 2 * length)});
            at += 4 + 2 * length;
        }
        return subs;
    }
};

void expectIpAndUdpFields(const Json& json, const PacketParser& p) {
    expectEtherAndUdpFields(json, p);
    EXPECT_EQ(p.ipHdrLen(), json["ip_hdr_len"]);
    EXPECT_EQ(Kcore::textOf(p.srcIp()), json["src_ip"]);
    EXPECT_EQ(Kcore::textOf(p.dstIp()), json["dst_ip"]);
    EXPECT_EQ(p.offset(), json["off"]);
}

void expectBootpFields(const Json& json, const PacketParser& p) {
    const unsigned op = json["op"];
    EXPECT_EQ(static_cast<unsigned>(p.dhcpOpType()), op <= 2 ? op : 0);
    EXPECT_EQ(p.xid().value(), std::stoul(json["xid"].get<std::string>(), nullptr, 16));
    EXPECT_EQ(hexOf({reinterpret_cast<const char*>(p.chaddr().bytes()), 6}), json["chaddr"]);
    EXPECT_EQ(Kcore::textOf(p.ciaddr()), json["ciaddr"]);
    EXPECT_EQ(Kcore::textOf(p.yiaddr()), json["yiaddr"]);
    EXPECT_EQ(Kcore::textOf(p.giaddr()), json["giaddr"]);
}

void expectOptions(const Record& record, const PacketParser& p) {
    EXPECT_EQ(p.dhcpMsgTypeOpt(), record.messageType());
    EXPECT_EQ(p.dhcpMsgType().empty(), record.messageType() == 0);
    EXPECT_EQ(p.leaseTimeExist(), record.has(51));
    EXPECT_EQ(p.leaseTime().count(), record.valueOr<U32>("lease_time", 0));
    EXPECT_EQ(p.lastTransactionTimeExist(), record.has(91));
    EXPECT_EQ(p.lastTransactionTime().count(), record.valueOr<U32>("last_transaction", 0));
    EXPECT_EQ(p.serverIdExist(), record.isServerIdKnown());
    EXPECT_EQ(Kcore::textOf(p.serverId()), record.serverId());
    std::set<std::string> associatedIps;
    for (const Kitnet::IpAddr& ip : p.associatedIps()) associatedIps.insert(Kcore::textOf(ip));
    EXPECT_EQ(associatedIps, record.associatedIps());
    EXPECT_EQ(hexOf(p.circuitId()), record.subOption(1).data);
    EXPECT_EQ(hexOf(p.remoteId()), record.subOption(2).data);
    EXPECT_EQ(hexOf(p.hostname()), record.valueOr<std::string>("host_name", ""));
    EXPECT_EQ(hexOf(p.vendorClassId()), record.valueOr<std::string>("vendor_class", ""));
    EXPECT_EQ(p.paramReqList().view(), record.valueOr<std::string>("prl", ""));
}

/// IP version, fragment offset, IP total length and UDP length are not looked at, so that a frame which by these holds
/// no whole BOOTP header is taken all the same.
bool isHeaderDenied(const Frame& frame, const PacketParser& p) {
    const auto number = [&](std::size_t at) { return frame.bytes.at(at) << 8 | frame.bytes.at(at + 1); };
    const std::size_t ip = p.etherHdrLen(), udp = ip + p.ipHdrLen(), bootpHeader = 236;
    return frame.bytes[ip] >> 4 != 4 || (number(ip + 6) & 0x1fff) != 0 ||
           static_cast<std::size_t>(number(ip + 2)) < udp - ip + 8 + bootpHeader ||
           static_cast<std::size_t>(number(udp + 4)) < 8 + bootpHeader;
}

void expectAsDissected(const Frame& frame) {
    SCOPED_TRACE("frame " + std::to_string(frame.number));
    const auto [verdict, p] = parse(packet(frame.bytes));
    if (frame.expected.is_null()) {
        EXPECT_TRUE(verdict != Verdict::accepted || isHeaderDenied(frame, p));
        return;
    }
    const Record record(frame);
    EXPECT_EQ(verdict, record.verdict().value_or(verdict));
    if (verdict == Verdict::reservedVlan) return;
    expectLinkFields(record, frame.expected, p);
    EXPECT_EQ(p.isIp(), record.isIpSeen());
    if (!p.isIp()) return;
    expectIpAndUdpFields(frame.expected, p);
    if (!record.arePortsDhcp() || !record.hasHeader()) return;
    expectBootpFields(frame.expected, p);
    if (record.verdict() != Verdict::accepted) return;
    EXPECT_EQ(p.isDhcp(), record.hasCookie());
    if (record.hasCookie())
        expectOptions(record, p);
    else
        EXPECT_EQ(p.dhcpMsgType().view(), "BOOTP");
}

/// The attributes by name, as text; without those that tell how far a parse came.
std::map<std::string_view, std::string> fieldsOf(const PacketParser& p) {
    std::map<std::string_view, std::string> fields;
    Kcore::forEachAttribute(p, [&](std::string_view name, const auto& value) { fields[name] = Kcore::textOf(value); });
    for (const std::string_view progress : {"offset", "isDhcp", "dhcpMsgType"}) fields.erase(progress);
    return fields;
}

class CapturesV4 : public testing::TestWithParam<Captures::Path> {};

TEST_P(CapturesV4, FieldsAreThoseOfADissector) {
    for (const Frame& frame : Captures::read(GetParam())) expectAsDissected(frame);
}

TEST_P(CapturesV4, CutsLoseFieldsAndInventNone) {
    const auto none = fieldsOf(PacketParser(config()));
    for (const Frame& frame : Captures::read(GetParam())) {
        const auto whole = fieldsOf(parse(packet(frame.bytes)).parser);
        for (Octets cut = frame.bytes; !cut.empty(); cut.pop_back())
            for (const auto& [name, value] : fieldsOf(parse(packet(cut)).parser))
                EXPECT_TRUE(value == whole.at(name) || value == none.at(name))
                    << name << ' ' << value << " in frame " << frame.number << " cut to " << cut.size();
    }
}

INSTANTIATE_TEST_SUITE_P(Bundled, CapturesV4, testing::ValuesIn(Captures::bundled("v4-")), Captures::testName);

TEST(CapturesV4Public, FieldsAreThoseOfADissector) {
    const auto folder = Captures::publicFolder();
    if (!folder)
        GTEST_SKIP() << "no folder of public captures: neither DHCPLIB_SHARED_CAPTURES nor beside the checkout";
    for (const Captures::Path& capture : Captures::in(*folder)) {
        SCOPED_TRACE(capture.string());
        for (const Frame& frame : Captures::read(capture))
            if (frame.expected.is_null() || frame.expected["proto"] == "dhcp") expectAsDissected(frame);
    }
}

}  // namespace

}  // namespace DhcpTest
