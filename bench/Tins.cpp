#include "Tins.h"

#include <tins/tins.h>

#include <algorithm>

#include "Kitnet/BigEndian.h"

namespace DhcpBench {

namespace {

using Kitnet::loadBigEndian;
using Tins::DHCP;

const DHCP::option* find(const DHCP& dhcp, U8 code) { return dhcp.search_option(static_cast<DHCP::OptionTypes>(code)); }

U32 hostOrder(const Tins::IPv4Address& address) { return Tins::Endian::be_to_host(static_cast<U32>(address)); }

std::string textOf(const DHCP& dhcp, U8 code) {
    const auto* const option = find(dhcp, code);
    if (option == nullptr) return {};
    return {reinterpret_cast<const char*>(option->data_ptr()), option->data_size()};
}

void readNumber(const DHCP& dhcp, U8 code, bool& present, U32& value) {
    const auto* const option = find(dhcp, code);
    present = option != nullptr;
    value = present && option->data_size() == 4 ? loadBigEndian<U32>(option->data_ptr()) : 0;
}

void readMsgType(const DHCP& dhcp, Numbers& fields) {
    if (const auto* const option = find(dhcp, DHCP::DHCP_MESSAGE_TYPE); option != nullptr && option->data_size() > 0)
        fields.msgType = *option->data_ptr();
}

void readRelayInformation(const DHCP& dhcp, Fields<std::string>& fields) {
    const auto* const option = find(dhcp, DHCP::DHCP_AGENT_OPTIONS);
    if (option == nullptr) return;
    const U8* at = option->data_ptr();
    const U8* const end = at + option->data_size();
    for (; end - at >= 2 && end - at >= 2 + at[1]; at += 2 + at[1]) {
        const char* const text = reinterpret_cast<const char*>(at + 2);
        if (at[0] == 1) fields.circuitId.assign(text, at[1]);
        if (at[0] == 2) fields.remoteId.assign(text, at[1]);
        if (at[0] == 11 && at[1] >= 4) {
            fields.hasServerId = true;
            fields.serverId = loadBigEndian<U32>(at + 2);
        }
    }
}

void readLeaseQuery(const DHCP& dhcp, Fields<std::string>& fields) {
    readNumber(dhcp, 51, fields.hasLeaseTime, fields.leaseTime);
    readNumber(dhcp, 91, fields.hasLastTransaction, fields.lastTransaction);
    readNumber(dhcp, 54, fields.hasServerId, fields.serverId);
    fields.associatedIps = textOf(dhcp, 92);
}

void readProfiling(const DHCP& dhcp, Fields<std::string>& fields) {
    fields.hostName = textOf(dhcp, 12);
    fields.vendorClass = textOf(dhcp, 60);
    const auto* const option = find(dhcp, DHCP::DHCP_PARAMETER_REQUEST_LIST);
    if (option == nullptr) return;
    ParamReqText text;
    fields.paramReqList.assign(text.data(), writeParamReqList(option->data_ptr(), option->data_size(), text));
}

void readHeaders(const Tins::EthernetII& frame, Numbers& fields) {
    const auto dstMac = frame.dst_addr(), srcMac = frame.src_addr();
    std::ranges::copy(dstMac, fields.dstMac.begin());
    std::ranges::copy(srcMac, fields.srcMac.begin());
    if (const auto* const tag = frame.find_pdu<Tins::Dot1Q>()) {
        fields.tagged = true;
        fields.vlan = tag->id();
    }
    const auto& ip = frame.rfind_pdu<Tins::IP>();
    const auto& udp = frame.rfind_pdu<Tins::UDP>();
    fields.srcIp = hostOrder(ip.src_addr());
    fields.dstIp = hostOrder(ip.dst_addr());
    fields.srcPort = udp.sport();
    fields.dstPort = udp.dport();
}

void readMessage(const DHCP& dhcp, Numbers& fields) {
    fields.op = dhcp.opcode();
    fields.xid = dhcp.xid();
    fields.ciaddr = hostOrder(dhcp.ciaddr());
    fields.yiaddr = hostOrder(dhcp.yiaddr());
    fields.giaddr = hostOrder(dhcp.giaddr());
    const auto chaddr = dhcp.chaddr();
    std::copy_n(chaddr.begin(), fields.chaddr.size(), fields.chaddr.begin());
}

}  // namespace

Fields<std::string> parseFrameWithTins(const U8* frame, std::size_t bytes) {
    Fields<std::string> fields;
    const Tins::EthernetII ethernet(frame, static_cast<U32>(bytes));
    readHeaders(ethernet, fields);
    const auto& payload = ethernet.rfind_pdu<Tins::RawPDU>().payload();  // libtins leaves a UDP payload unparsed
    const DHCP dhcp(payload.data(), static_cast<U32>(payload.size()));
    readMessage(dhcp, fields);
    readMsgType(dhcp, fields);
    readLeaseQuery(dhcp, fields);
    readRelayInformation(dhcp, fields);
    readProfiling(dhcp, fields);
    return fields;
}

Fields<std::string> askTins(const U8* message, std::size_t bytes, Question question) {
    Fields<std::string> fields;
    const DHCP dhcp(message, static_cast<U32>(bytes));
    switch (question) {
        case Question::wellFormed:
            break;
        case Question::msgType:
            readMsgType(dhcp, fields);
            break;
        case Question::relayInformation:
            readRelayInformation(dhcp, fields);
            break;
        case Question::leaseQuery:
            readLeaseQuery(dhcp, fields);
            break;
        case Question::profiling:
            readProfiling(dhcp, fields);
            break;
    }
    return fields;
}

Octets rewriteWithTins(const U8* message, std::size_t bytes, Rewriting rewriting, const Octets& information) {
    DHCP dhcp(message, static_cast<U32>(bytes));
    if (rewriting == Rewriting::add) {
        dhcp.remove_option(DHCP::END);
        dhcp.add_option(DHCP::option(DHCP::DHCP_AGENT_OPTIONS, information.begin(), information.end()));
        dhcp.end();
    } else {
        dhcp.remove_option(DHCP::DHCP_AGENT_OPTIONS);
    }
    Octets rewritten = dhcp.serialize();
    rewritten.resize(std::max(rewritten.size(), Message::minBytes));
    return rewritten;
}

Octets leaseQueryWithTins(U32 giaddr, U32 xid) {
    DHCP dhcp;
    dhcp.xid(xid);
    dhcp.giaddr(Tins::IPv4Address(Tins::Endian::host_to_be(giaddr)));
    const Octets wanted{51, 91, 92};
    const U8 leaseQuery = 10;
    dhcp.add_option(DHCP::option(DHCP::DHCP_MESSAGE_TYPE, sizeof leaseQuery, &leaseQuery));
    dhcp.add_option(DHCP::option(DHCP::DHCP_PARAMETER_REQUEST_LIST, wanted.begin(), wanted.end()));
    dhcp.end();
    Octets bytes = dhcp.serialize();
    bytes.resize(Message::minBytes);
    return bytes;
}

}  // namespace DhcpBench
