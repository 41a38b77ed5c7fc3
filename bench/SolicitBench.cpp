#include <tins/tins.h>

#include <algorithm>
#include <cstdio>

#include "DhcpLib/Dhcp6Hdr.h"
#include "DhcpLib/Dhcp6Parser.h"
#include "Measure.h"
#include "Solicit.h"

namespace DhcpBench {

namespace {

using DhcpLib::Dhcp6PacketParser;

const Kitnet::IntfId port("Ethernet7/2");

Dhcp6PacketParser parseWithLibrary(const Input& input) {
    static const auto bridging = [] {
        auto config = Kcore::makeNode<Bridging::Config>();
        config->switchIntfConfigIs(port);
        return config;
    }();
    Dhcp6PacketParser parser(bridging);
    parser.doParseDhcp6(input.pkt, port);
    return parser;
}

template <class Container>
void copyBytes(const auto& address, Container& out) {
    std::copy_n(address.bytes(), out.size(), out.begin());
}

/// Converts the result to the form that all contenders share; not measured.
Fields6 fieldsOf(const Dhcp6PacketParser& parser) {
    Fields6 fields;
    copyBytes(parser.dstMac(), fields.dstMac);
    copyBytes(parser.srcMac(), fields.srcMac);
    copyBytes(parser.srcIp6(), fields.srcIp);
    copyBytes(parser.dstIp6(), fields.dstIp);
    fields.srcPort = parser.udpSrcPort().value();
    fields.dstPort = parser.udpDstPort().value();
    fields.msgType = static_cast<U8>(parser.dhcp6MsgType());
    for (const U8 octet : std::span(parser.dhcp6Xid().bytes(), 3)) fields.xid = fields.xid << 8 | octet;
    fields.clientIdBytes = parser.cIdOptLen();
    copyBytes(parser.cIdDuidllAddr(), fields.clientMac);
    fields.remoteIdBytes = parser.rIdOptLen();
    if (!parser.rIdOption()) return fields;
    fields.enterprise = parser.rIdEntno();
    copyBytes(parser.rIdDuidllAddr(), fields.remoteMac);
    std::ranges::copy(parser.rIdL2IntfId().name(), fields.interface.begin());
    fields.vlan = parser.rIdVlanId().value();
    return fields;
}

bool contendersAgree(const Case& compared) {
    for (const Input& input : compared.inputs) {
        const Fields6 floor = parseSolicitInOnePass(input.frame.data(), input.frame.size());
        const bool libraryAgrees = fieldsOf(parseWithLibrary(input)) == floor;
        if (libraryAgrees && parseSolicitWithTins(input.frame.data(), input.frame.size()) == floor) continue;
        std::fprintf(stderr, "doParseDhcp6/%s: %s differs\n", compared.name.c_str(), libraryAgrees ? tins : library);
        return false;
    }
    return true;
}

}  // namespace

Fields6 parseSolicitWithTins(const U8* frame, std::size_t bytes) {
    Fields6 fields;
    const Tins::EthernetII ethernet(frame, static_cast<U32>(bytes));
    const auto& ip = ethernet.rfind_pdu<Tins::IPv6>();
    const auto& udp = ethernet.rfind_pdu<Tins::UDP>();
    const auto dstMac = ethernet.dst_addr(), srcMac = ethernet.src_addr();
    const auto dstIp = ip.dst_addr(), srcIp = ip.src_addr();
    std::ranges::copy(dstMac, fields.dstMac.begin());
    std::ranges::copy(srcMac, fields.srcMac.begin());
    std::ranges::copy(dstIp, fields.dstIp.begin());
    std::ranges::copy(srcIp, fields.srcIp.begin());
    fields.srcPort = udp.sport();
    fields.dstPort = udp.dport();
    const auto& payload = ethernet.rfind_pdu<Tins::RawPDU>().payload();
    const Tins::DHCPv6 dhcp(payload.data(), static_cast<U32>(payload.size()));
    fields.msgType = static_cast<U8>(dhcp.msg_type());
    fields.xid = dhcp.transaction_id();
    if (const auto* const option = dhcp.search_option(Tins::DHCPv6::CLIENTID))
        readClientId(option->data_ptr(), option->data_size(), fields);
    if (const auto* const option = dhcp.search_option(Tins::DHCPv6::REMOTE_ID))
        readRemoteId(option->data_ptr(), option->data_size(), fields);
    return fields;
}

bool registerSolicits() {
    for (const auto& [group, cases] :
         {std::pair{"doParseDhcp6", &solicitCases()}, std::pair{"growth6", &growingSolicitCases()}}) {
        for (const Case& measured : *cases) {
            if (!contendersAgree(measured)) return false;
            measure(group, measured, library, parseWithLibrary);
            measure(group, measured, tins,
                    [](const Input& input) { return parseSolicitWithTins(input.frame.data(), input.frame.size()); });
            measure(group, measured, singlePass,
                    [](const Input& input) { return parseSolicitInOnePass(input.frame.data(), input.frame.size()); });
        }
    }
    for (const Case& measured : solicitCases()) {
        measure("Dhcp6Options", measured, library, [](const Input& input) {
            return DhcpLib::Dhcp6Options::Dhcp6OptionsIs(input.pkt, static_cast<U16>(input.messageAt + 4));
        });
        measure("Dhcp6Options", measured, tins,
                [](const Input& input) { return Tins::DHCPv6(input.message(), input.messageBytes()); });
        measure("Dhcp6Options", measured, singlePass,
                [](const Input& input) { return parseSolicitInOnePass(input.frame.data(), input.frame.size()); });
    }
    return true;
}

}  // namespace DhcpBench
