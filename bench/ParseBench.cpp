#include <cstdio>

#include "DhcpLib/DhcpParser.h"
#include "Measure.h"
#include "SinglePass.h"
#include "Tins.h"

namespace DhcpBench {

namespace {

using DhcpLib::PacketParser;

const Kitnet::IntfId port("Ethernet7/2");

const Kcore::Ptr<Bridging::Config>& bridging() {
    static const auto config = [] {
        auto made = Kcore::makeNode<Bridging::Config>();
        for (int i = 1; i <= 64; ++i) made->switchIntfConfigIs(Kitnet::IntfId("Ethernet" + std::to_string(i)));
        made->switchIntfConfigIs(port)->nativeVlanIs(Bridging::VlanId(10));
        return made;
    }();
    return config;
}

PacketParser parseWithLibrary(const Input& input) {
    PacketParser parser(bridging());
    parser.doParse(input.pkt, port, false);
    return parser;
}

/// One parser for all frames.
const PacketParser* parseWithKeptParser(const Input& input) {
    static PacketParser parser(bridging());
    parser.reset();
    parser.doParse(input.pkt, port, false);
    return &parser;
}

template <std::size_t N>
std::array<U8, N> arrayOf(const auto& address) {
    std::array<U8, N> bytes;
    std::copy_n(address.bytes(), N, bytes.begin());
    return bytes;
}

/// Converts the result to the form that all contenders share; not measured.
Fields<std::string> fieldsOf(const PacketParser& parser) {
    Fields<std::string> fields;
    fields.dstMac = arrayOf<6>(parser.dstMac());
    fields.srcMac = arrayOf<6>(parser.srcMac());
    fields.chaddr = arrayOf<6>(parser.chaddr());
    fields.tagged = parser.tagged();
    fields.vlan = parser.tagged() ? parser.vlanId().value() : U16{0};  // the other contenders have no native VLAN
    fields.srcPort = parser.udpSrcPort().value();
    fields.dstPort = parser.udpDstPort().value();
    fields.srcIp = parser.srcIp().value();
    fields.dstIp = parser.dstIp().value();
    fields.op = static_cast<U8>(parser.dhcpOpType());
    fields.msgType = parser.dhcpMsgTypeOpt();
    fields.xid = parser.xid().value();
    fields.ciaddr = parser.ciaddr().value();
    fields.yiaddr = parser.yiaddr().value();
    fields.giaddr = parser.giaddr().value();
    fields.hasLeaseTime = parser.leaseTimeExist();
    fields.leaseTime = static_cast<U32>(parser.leaseTime().count());
    fields.hasLastTransaction = parser.lastTransactionTimeExist();
    fields.lastTransaction = static_cast<U32>(parser.lastTransactionTime().count());
    fields.hasServerId = parser.serverIdExist();
    fields.serverId = parser.serverId().value();
    fields.circuitId = std::string_view(parser.circuitId());
    fields.remoteId = std::string_view(parser.remoteId());
    fields.hostName = std::string_view(parser.hostname());
    fields.vendorClass = std::string_view(parser.vendorClassId());
    fields.paramReqList = std::string_view(parser.paramReqList());
    for (const Kitnet::IpAddr& ip : parser.associatedIps())
        fields.associatedIps.append(reinterpret_cast<const char*>(ip.bytes()), sizeof ip);
    return fields;
}

bool contendersAgree(const Case& compared) {
    for (const Input& input : compared.inputs) {
        const auto floor = parseFrameInOnePass(input.frame.data(), input.frame.size());
        const auto agrees = [&](const char* contender, const Fields<std::string>& fields) {
            const char* const what = floor.understood ? difference(floor, fields) : "refused by the floor";
            if (what == nullptr) return true;
            std::fprintf(stderr, "doParse/%s, frame %td, %s: %s differs\n", compared.name.c_str(),
                         &input - compared.inputs.data(), contender, what);
            return false;
        };
        if (!agrees(library, fieldsOf(parseWithLibrary(input))) ||
            !agrees(tins, parseFrameWithTins(input.frame.data(), input.frame.size())))
            return false;
    }
    return true;
}

}  // namespace

bool registerParsing() {
    const auto withTins = [](const Input& input) { return parseFrameWithTins(input.frame.data(), input.frame.size()); };
    const auto inOnePass = [](const Input& input) {
        return parseFrameInOnePass(input.frame.data(), input.frame.size());
    };
    for (const auto& [group, cases] : {std::pair{"doParse", &typicalCases()}, std::pair{"growth", &growingCases()}}) {
        for (const Case& measured : *cases) {
            if (!contendersAgree(measured)) return false;
            measure(group, measured, library, parseWithLibrary);
            measure(group, measured, tins, withTins);
            measure(group, measured, singlePass, inOnePass);
        }
    }
    measure("doParse, kept parser", caseOf("mixed"), library, parseWithKeptParser);
    measure("doParse, kept parser", caseOf("mixed"), tins, withTins);
    measure("doParse, kept parser", caseOf("mixed"), singlePass, inOnePass);
    return true;
}

}  // namespace DhcpBench
