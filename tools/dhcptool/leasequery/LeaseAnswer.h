#pragma once

#include <optional>
#include <set>
#include <string>

#include "DhcpLib/PacketView.h"
#include "Kcore/Duration.h"
#include "Kcore/Enum.h"
#include "Kitnet/EthAddr.h"
#include "Kitnet/IpAddr.h"

namespace DhcpTool {

/// State of a lease, by the type of the server's reply (RFC 4388, section 6.1).
enum class LeaseState : Kcore::U8 { unassigned = 11, unknown = 12, active = 13 };

/// A server's reply to a lease query. Fields that the reply does not contain are unset.
struct LeaseAnswer {
    LeaseState state{};
    std::optional<Kitnet::IpAddr> ip;    ///< never 0.0.0.0
    std::optional<Kitnet::EthAddr> mac;  ///< set for Ethernet clients only
    std::optional<Kcore::Duration> leaseTime, lastTransactionTime;
    std::set<Kitnet::IpAddr> associatedIps;
    std::optional<Kitnet::IpAddr> serverId;

    /// One line per field that is set.
    std::string text() const;
    /// One JSON object, with null for fields that are unset.
    std::string json() const;
};

/// Parses `message`, which may contain any bytes, as a reply to the lease query with transaction id `xid`. Empty if it
/// is not one.
std::optional<LeaseAnswer> leaseAnswerOf(const DhcpLib::PktPtr& message, Kcore::U32 xid);

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
