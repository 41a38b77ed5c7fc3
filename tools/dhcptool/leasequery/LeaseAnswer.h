#pragma once

#include <optional>
#include <set>
#include <string>

#include "Kcore/Duration.h"
#include "Kcore/Enum.h"
#include "Kitnet/EthAddr.h"
#include "Kitnet/IpAddr.h"
#include "leasequery/LeaseQuery.h"

namespace DhcpTool {

/// State of a lease, by the type of the server's reply (RFC 4388, section 6.1).
enum class LeaseState : Kcore::U8 { unassigned = 11, unknown = 12, active = 13 };

/// A server's reply to a lease query. Fields that the reply does not contain are unset.
struct LeaseAnswer {
    LeaseState state{};
    std::optional<Kitnet::IpAddr> ip;    ///< never 0.0.0.0
    std::optional<Kitnet::EthAddr> mac;  ///< set for Ethernet clients only
    std::optional<std::string> clientId;
    std::optional<Kcore::Duration> leaseTime;
    std::optional<Kcore::Duration> lastTransactionTime;  ///< since the client's last transaction: the answer's age
    std::set<Kitnet::IpAddr> associatedIps;
    std::optional<Kitnet::IpAddr> serverId;

    /// One line per field that is set.
    std::string text() const;
    /// One JSON object, with null for fields that are unset.
    std::string json() const;
};

/// An answer, or why a datagram is none.
struct LeaseReply {
    std::optional<LeaseAnswer> answer;
    std::string_view refusal;  ///< a static text; empty if there is an answer
};

/// Reads `message`, which may contain any bytes, as the reply to the query for `subject` with transaction id `xid`. An
/// option that occurs several times is joined first (RFC 3396, section 7).
LeaseReply leaseReplyOf(const DhcpLib::PktPtr& message, const LeaseSubject& subject, Kcore::U32 xid);

}  // namespace DhcpTool

template <>
struct Kcore::EnumTable<DhcpTool::LeaseState> {
    static constexpr std::string_view name = "LeaseState";
    static constexpr EnumMember<DhcpTool::LeaseState> members[] = {
        {DhcpTool::LeaseState::unassigned, "unassigned"},
        {DhcpTool::LeaseState::unknown, "unknown"},
        {DhcpTool::LeaseState::active, "active"},
    };
};
