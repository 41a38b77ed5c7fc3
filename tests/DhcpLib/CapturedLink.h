#pragma once

#include "Bridging/Config.h"
#include "Captures.h"
#include "Kcore/Exception.h"

/// What holding either snooping parser against captures takes: the port, the outcome of a parse, and the headers in
/// front of the message.
namespace DhcpTest {

inline const Kitnet::IntfId port("Ethernet1");
inline constexpr unsigned nativeVlan = 7;

inline const Kcore::Ptr<const Bridging::Config>& config() {
    static const Kcore::Ptr<const Bridging::Config> switchConfig = [] {
        auto made = Kcore::makeNode<Bridging::Config>();
        made->switchIntfConfigIs(port)->nativeVlanIs(Bridging::VlanId(nativeVlan));
        return made;
    }();
    return switchConfig;
}

enum class Verdict { accepted, rejected, reservedVlan };

template <class Parser>
struct Outcome {
    Verdict verdict = Verdict::rejected;
    Parser parser{config()};
    bool operator==(const Outcome&) const = default;
};

/// `run(parser)`: whether the parser took the frame.
template <class Parser, class Run>
Outcome<Parser> outcomeOf(Run run) {
    Outcome<Parser> outcome;
    try {
        if (run(outcome.parser)) outcome.verdict = Verdict::accepted;
    } catch (const Kcore::RangeException&) {
        outcome.verdict = Verdict::reservedVlan;
    }
    return outcome;
}

inline std::string hexOf(std::string_view bytes) {
    std::string out;
    for (const char c : bytes) {
        char pair[3];
        std::snprintf(pair, sizeof pair, "%02x", static_cast<U8>(c));
        out += pair;
    }
    return out;
}

/// What the dissector read in a frame in front of the message, with the rules by which a snooping agent differs from
/// it.
class LinkRecord {
public:
    explicit LinkRecord(const Captures::Frame& frame) : frame_(frame), json_(frame.expected) {}

    /// Of stacked tags the first one is seen, and only 0x8100 is a tag.
    bool tagged() const { return !tags().empty() && tags()[0]["tpid"] == "8100"; }
    /// A priority tag and a tag that is none leave the frame in the port's VLAN.
    unsigned vlan() const {
        const unsigned vid = tagged() ? tags()[0]["vid"].get<unsigned>() : 0;
        return vid == 0 ? nativeVlan : vid;
    }
    /// Nothing else may stand in front of the IP header, such as LLC.
    bool isIpSeen() const { return json_["l3_off"] == (tagged() ? 18 : 14); }
    bool isReservedVlan() const { return tagged() && vlan() == 4095; }

protected:
    std::size_t bytesFrom(std::size_t at) const { return frame_.bytes.size() - std::min(frame_.bytes.size(), at); }

    const Captures::Frame& frame_;
    const Captures::Json& json_;

private:
    const Captures::Json& tags() const { return json_["tags"]; }
};

template <class Parser>
void expectLinkFields(const LinkRecord& record, const Captures::Json& json, const Parser& p) {
    EXPECT_EQ(Kcore::textOf(p.srcMac()), json["src_mac"]);
    EXPECT_EQ(Kcore::textOf(p.dstMac()), json["dst_mac"]);
    EXPECT_EQ(p.tagged(), record.tagged());
    EXPECT_EQ(p.vlanId().value(), record.vlan());
}

/// Of a frame whose IP header was seen.
template <class Parser>
void expectEtherAndUdpFields(const Captures::Json& json, const Parser& p) {
    EXPECT_EQ(p.etherType(), std::stoul(json["ethertype"].get<std::string>(), nullptr, 16));
    EXPECT_EQ(p.etherHdrLen(), json["l3_off"]);
    EXPECT_EQ(p.ipProtocol().value(), json["ip_proto"]);
    EXPECT_TRUE(p.isUdp());
    EXPECT_EQ(p.udpSrcPort().value(), json["udp_sport"]);
    EXPECT_EQ(p.udpDstPort().value(), json["udp_dport"]);
}

}  // namespace DhcpTest
