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

/// What a DHCPv6 message says, for people. Of several options of one code the first counts, except identity
/// associations. What is too short for its layout is left out. Texts lie in the packet.
struct Message6 {
    struct Duid {
        std::string_view bytes;
        /// Unset where the bytes are no whole DUID of a known type and of Ethernet.
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
        U32 t1, t2;  ///< s; zero for an IA_TA, which has none
        std::vector<Lease> leases;
    };
    struct InterfaceId {
        std::string_view bytes;
        DhcpLib::InterfaceIdFields fields;  ///< empty where it does not decode
    };
    struct RemoteId {
        std::string_view bytes;
        DhcpLib::Dhcp6RemoteIdentifier fields;  ///< all but `entno` mean something only where it decodes
    };

    DhcpLib::Dhcp6MsgType type{};
    DhcpLib::Dhcp6Xid xid;  ///< of a client/server message, as are the DUIDs and associations
    U8 hopCount = 0;        ///< of a relay message, as are the next two
    Kitnet::Ip6Addr linkAddr, peerAddr;
    std::optional<Duid> clientId, serverId;
    std::vector<Ia> ias;
    std::optional<InterfaceId> interfaceId;
    std::optional<RemoteId> remoteId;

    bool isRelay() const { return DhcpLib::isDhcp6RelayMsg(type); }
};

/// "LLT", "EN", "LL" or "UUID" (RFC 8415, section 11). Requires: a type with fields.
std::string_view duidTypeName(U16 type);
/// "00112233-4455-6677-8899-aabbccddeeff". Requires: 16 bytes.
std::string uuidText(std::string_view uuid);

/// The message of the frame in which `parser` found one, and those relayed in it, outermost first. Empty where there is
/// none with a whole header of a known type.
std::vector<Message6> messages6(const DhcpLib::PktPtr& pkt, const DhcpLib::Dhcp6PacketParser& parser);

}  // namespace DhcpTool
