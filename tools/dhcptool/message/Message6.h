#pragma once

#include <optional>
#include <vector>

#include "DhcpLib/Dhcp6Hdr/Nested.h"
#include "DhcpLib/Dhcp6Hdr/RelayIdentification.h"
#include "DhcpLib/Dhcp6Parser.h"

namespace DhcpTool {

using Kcore::U16;
using Kcore::U32;
using Kcore::U64;
using Kcore::U8;

/// The contents of a DHCPv6 message for display. The first option of a code counts; identity associations are all
/// listed. Fields that are too short for their layout are left out. Texts point into the packet.
struct Message6 {
    struct Duid {
        std::string_view bytes;
        /// Unset if the bytes are not a whole DUID of a known type for Ethernet.
        std::optional<DhcpLib::DuidFields> fields;
    };
    struct Lease {
        Kitnet::Ip6Addr address;
        std::optional<U8> prefixBits;  ///< unset for an address
        U32 preferred, valid;          ///< s
    };
    struct Ia {
        std::string_view kind;  ///< "IA_NA", "IA_TA" or "IA_PD"
        U32 iaid;
        U32 t1, t2;  ///< s; zero for an IA_TA, which has no times
        std::vector<Lease> leases;
    };
    struct InterfaceId {
        std::string_view bytes;
        DhcpLib::InterfaceIdFields fields;  ///< empty if malformed
    };
    struct RemoteId {
        std::string_view bytes;
        DhcpLib::Dhcp6RemoteIdentifier fields;  ///< only `entno` is valid if the rest could not be decoded
    };

    DhcpLib::Dhcp6MsgType type{};
    DhcpLib::Dhcp6Xid xid;  ///< set for client/server messages, like the DUIDs and associations
    U8 hopCount = 0;        ///< set for relay messages, like the next two
    Kitnet::Ip6Addr linkAddr, peerAddr;
    std::optional<Duid> clientId, serverId;
    std::vector<Ia> ias;
    std::optional<InterfaceId> interfaceId;
    std::optional<RemoteId> remoteId;

    bool isRelay() const { return DhcpLib::isDhcp6RelayMsg(type); }
};

/// "LLT", "EN", "LL" or "UUID" (RFC 8415, section 11). Requires: a known type.
std::string_view duidTypeName(U16 type);
/// "00112233-4455-6677-8899-aabbccddeeff". Requires: 16 bytes.
std::string uuidText(std::string_view uuid);

/// The message of the frame that `parser` has parsed, and the messages relayed in it, outermost first. Empty if there
/// is no whole header of a known type.
std::vector<Message6> messages6(const DhcpLib::PktPtr& pkt, const DhcpLib::Dhcp6PacketParser& parser);

}  // namespace DhcpTool
