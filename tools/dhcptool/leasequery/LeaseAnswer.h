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

/// What a server says of a lease: the type of its reply (RFC 4388, section 6.1).
enum class LeaseState : Kcore::U8 { unassigned = 11, unknown = 12, active = 13 };

/// A server's reply to a lease query; what it does not tell is not there.
struct LeaseAnswer {
    LeaseState state{};
    std::optional<Kitnet::IpAddr> ip;    ///< not 0.0.0.0
    std::optional<Kitnet::EthAddr> mac;  ///< of a client on Ethernet
    std::optional<Kcore::Duration> leaseTime, lastTransactionTime;
    std::set<Kitnet::IpAddr> associatedIps;
    std::optional<Kitnet::IpAddr> serverId;

    /// A line for each thing that the server told.
    std::string text() const;
    /// One JSON object, null for what the server did not tell.
    std::string json() const;
};

/// What `message`, any bytes, answers to the lease query with that transaction id; nothing where it is no answer to it.
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
