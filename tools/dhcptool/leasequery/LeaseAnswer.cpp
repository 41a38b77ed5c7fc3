#include "leasequery/LeaseAnswer.h"

#include "DhcpLib/DhcpHdr.h"
#include "DhcpLib/OptionParser.h"
#include "common/AttributeJson.h"

namespace DhcpTool {

namespace {

constexpr Kcore::U32 messageAt = 0;

/// Requires: the message's options area is well-formed.
std::optional<LeaseState> stateOf(const DhcpLib::PktPtr& message) {
    Kcore::U8 type = 0;
    DhcpLib::getDhcpMsgTypeStringAndOpt(message, messageAt, type);
    const LeaseState state{type};
    return Kcore::enumName(state).empty() ? std::nullopt : std::optional(state);
}

std::optional<Kitnet::EthAddr> ethernetAddress(const DhcpLib::DhcpHdrWrapper& header) {
    const bool ethernet = header.htype() == static_cast<Kcore::U8>(DhcpLib::Constants::hardwareTypeEthernet) &&
                          header.hlen() == sizeof(Kitnet::EthAddr);
    return ethernet ? std::optional(header.chaddr()) : std::nullopt;
}

void readOptions(LeaseAnswer& answer, const DhcpLib::PktPtr& message) {
    Kcore::Duration leaseTime{}, lastTransactionTime{};
    Kitnet::IpAddr serverId;
    bool hasLeaseTime = false, hasLastTransactionTime = false, hasServerId = false;
    DhcpLib::parseLeaseQueryOpts(message, leaseTime, lastTransactionTime, answer.associatedIps, serverId, hasLeaseTime,
                                 hasLastTransactionTime, hasServerId, messageAt);
    if (hasLeaseTime) answer.leaseTime = leaseTime;
    if (hasLastTransactionTime) answer.lastTransactionTime = lastTransactionTime;
    if (hasServerId) answer.serverId = serverId;
}

void appendLine(std::string& out, std::string_view name, const std::string& value) {
    if (!out.empty()) out.push_back('\n');
    out.append(name).append(" ").append(value);
}

template <class T>
Json jsonOrNull(const std::optional<T>& value) {
    return value ? jsonOf(*value) : Json();
}

}  // namespace

std::optional<LeaseAnswer> leaseAnswerOf(const DhcpLib::PktPtr& message, Kcore::U32 xid) {
    if (!DhcpLib::dhcpOptionBasicCheck(message, messageAt)) return std::nullopt;
    const auto header = DhcpLib::dhcpHdrWrapperFactory(message, messageAt);
    const auto state = stateOf(message);
    if (header->header()->bootpOp() != DhcpLib::BootpOpType::bootpRep || header->xid() != xid || !state)
        return std::nullopt;
    LeaseAnswer answer;
    answer.state = *state;
    if (!header->ciaddr().isAny()) answer.ip = header->ciaddr();
    answer.mac = ethernetAddress(*header);
    readOptions(answer, message);
    return answer;
}

std::string LeaseAnswer::text() const {
    using Kcore::textOf;
    std::string out;
    appendLine(out, "state", textOf(state));
    if (ip) appendLine(out, "ip", textOf(*ip));
    if (mac) appendLine(out, "mac", textOf(*mac));
    if (leaseTime) appendLine(out, "lease-time", textOf(*leaseTime) + 's');
    if (lastTransactionTime) appendLine(out, "last-transaction", textOf(*lastTransactionTime) + 's');
    if (!associatedIps.empty()) appendLine(out, "associated", textOf(associatedIps));
    if (serverId) appendLine(out, "server-id", textOf(*serverId));
    return out;
}

std::string LeaseAnswer::json() const {
    return Json{{"state", jsonOf(state)},
                {"ip", jsonOrNull(ip)},
                {"mac", jsonOrNull(mac)},
                {"leaseTime", jsonOrNull(leaseTime)},
                {"lastTransactionTime", jsonOrNull(lastTransactionTime)},
                {"associatedIps", jsonOf(associatedIps)},
                {"serverId", jsonOrNull(serverId)}}
        .dump();
}

}  // namespace DhcpTool
