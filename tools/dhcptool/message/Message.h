#pragma once

#include <optional>
#include <span>
#include <vector>

#include "DhcpLib/Dhcp6Parser.h"
#include "DhcpLib/DhcpParser.h"
#include "capture/Arrival.h"
#include "message/Headers.h"
#include "message/Item.h"

namespace DhcpTool {

/// A DHCPv6 status code option (RFC 8415, section 21.13).
struct Status6 {
    U16 code = 0;
    std::string_view text;
    U32 offset = 0;  ///< of the option in the frame
};

/// An address or prefix in an identity association.
struct Lease6 {
    Kitnet::Ip6Addr address;
    std::optional<U8> prefixBits;  ///< unset for an address
    U32 preferred = 0, valid = 0;  ///< s
    std::optional<Status6> status;
};

/// An identity association.
struct Ia6 {
    std::string_view kind;  ///< "IA_NA", "IA_TA" or "IA_PD"
    U32 iaid = 0;
    U32 t1 = 0, t2 = 0;  ///< s; zero for an IA_TA, which has no times
    std::optional<Status6> status;
    U32 firstLease = 0, leaseCount = 0;  ///< in Message::leases6
};

/// A DHCPv6 message: the client's or server's, or a relay message around it.
struct Layer6 {
    DhcpLib::Dhcp6MsgType type{};  ///< need not be a member of the enumeration
    U32 at = 0;                    ///< position in the frame
    DhcpLib::Dhcp6Xid xid;         ///< zero for relay messages
    U8 hopCount = 0;               ///< zero for other messages, like the next two
    Kitnet::Ip6Addr linkAddr, peerAddr;
    U32 firstOption = 0, optionCount = 0;  ///< in Message::options

    bool isRelay() const { return DhcpLib::isDhcp6RelayMsg(type); }
};

/// A frame and what is known of the DHCP message in it, for both protocols. Texts point into the packet that `arrival`
/// holds. Of a cut or malformed message it has what could be read.
struct Message {
    /// What a snooping agent makes of the frame.
    enum class Verdict : U8 {
        other,     ///< no DHCP: not UDP to a DHCP port
        refused,   ///< UDP to a DHCP port, but the parser refuses it: `rejection` says why
        accepted,  ///< a DHCP, BOOTP or DHCPv6 message
    };

    Arrival arrival;
    Verdict verdict = Verdict::other;
    DhcpLib::FrameRejection rejection = DhcpLib::FrameRejection::none;
    std::optional<Fault> fault;  ///< the first one in the frame; an accepted message may have one, too
    Headers headers;
    bool isBootp = false;  ///< DHCPv4 without magic cookie

    DhcpLib::PacketParser parser{nullptr};        ///< result of the DHCPv4 parser; stale for DHCPv6
    DhcpLib::Dhcp6PacketParser parser6{nullptr};  ///< result of the DHCPv6 parser; stale for DHCPv4

    /// DHCPv4: the options in wire order, up to the end option; those in `file` and `sname` come first if option 52
    /// says so. DHCPv6: those of all messages of `layers`.
    std::vector<Item> options;
    DhcpLib::DhcpHdr header;  ///< DHCPv4: the first `headerBytes` bytes; the others are zero
    U32 headerBytes = 0;
    std::string_view sname, file;    ///< DHCPv4: the texts; empty if they hold options
    std::vector<Item> relayInfo;     ///< DHCPv4: the sub-options of option 82
    std::vector<Layer6> layers;      ///< DHCPv6: relay messages, outermost first, then the message inside
    std::vector<Ia6> ias;            ///< DHCPv6: of the innermost message, like the leases
    std::vector<Lease6> leases6;     ///< DHCPv6
    std::optional<Status6> status6;  ///< DHCPv6: of the innermost message

    bool isDhcp6() const { return headers.ipv6; }
    /// Whether the capture's snap length cut the frame inside the UDP datagram.
    bool isCutBySnapLength() const {
        return arrival.sentBytes > arrival.pkt->bytes() && headers.messageEnd > arrival.pkt->bytes();
    }
    const Kitnet::EthAddr& srcMac() const { return headers.srcMac; }
    Bridging::VlanId vlan() const { return isDhcp6() ? parser6.vlanId() : parser.vlanId(); }
    bool isTagged() const { return isDhcp6() ? parser6.tagged() : parser.tagged(); }

    /// Option 53 (DHCPv4; 0 if it is absent), or the message type of the innermost DHCPv6 message.
    U8 typeNumber() const;
    /// "DHCPDISCOVER", "BOOTP bootpReq", "solicit". The number in decimal if it has no name.
    std::string_view typeName() const;
    /// Whether a server sent it, or a relay agent on its behalf: a BOOTP reply; an advertise, reply, reconfigure or
    /// relay-reply.
    bool isFromServer() const;
    /// The transaction id; 24 bits for DHCPv6.
    U32 xid() const;
    /// DHCPv4: chaddr. DHCPv6: option 79, else the MAC in the client identifier; unset if there is none.
    std::optional<Kitnet::EthAddr> clientMac() const;
    /// DHCPv4: option 61. DHCPv6: the client's DUID.
    std::string_view clientId() const;
    /// DHCPv6: the server's DUID.
    std::string_view serverDuid() const;

    // DHCPv4; nothing for DHCPv6. An address is unset if the option is absent or has another length than 4.
    std::optional<Kitnet::IpAddr> addressOption(U8 code) const;
    std::optional<U32> secondsOption(U8 code) const;
    std::optional<Kitnet::IpAddr> requestedAddress() const { return addressOption(50); }
    std::optional<U32> leaseTime() const { return secondsOption(51); }
    std::optional<Kitnet::IpAddr> serverId() const { return addressOption(54); }
    std::optional<Kitnet::IpAddr> serverIdOverride() const;  ///< sub-option 11 of option 82
    std::optional<Kitnet::IpAddr> linkSelection() const;     ///< sub-option 5 of option 82
    std::string_view text() const { return optionData(56); }
    /// The last option or sub-option of that code; null if there is none.
    const Item* option(U8 code) const;
    const Item* relaySubOption(U8 code) const;
    std::string_view optionData(U8 code) const { return dataOf(option(code)); }
    std::string_view relayData(U8 code) const { return dataOf(relaySubOption(code)); }

    // Where a message came from. The circuit-id is sub-option 1 of option 82, or the interface-id (18) of the relay
    // message nearest to the client; the remote-id is sub-option 2, or option 37 of that message.
    bool isRelayed() const;
    std::string_view circuitId() const;
    std::string_view remoteId() const;
    U8 hops() const;  ///< of a DHCPv6 relay message: of the outermost one

    // DHCPv6
    /// The message inside all relay messages; null if the chain ends with a relay message.
    const Layer6* innermost() const;
    std::span<const Item> optionsOf(const Layer6& layer) const {
        return std::span(options).subspan(layer.firstOption, layer.optionCount);
    }
    /// The first option of that code; null if there is none.
    const Item* option(const Layer6& layer, DhcpLib::Dhcp6OptionType code) const;
    std::span<const Lease6> leasesOf(const Ia6& ia) const {
        return std::span(leases6).subspan(ia.firstLease, ia.leaseCount);
    }
    /// Calls `visit(status)` for each status code, whatever its level.
    template <class Visit>
    void forEachStatus(Visit visit) const {
        if (status6) visit(*status6);
        for (const Ia6& ia : ias)
            if (ia.status) visit(*ia.status);
        for (const Lease6& lease : leases6)
            if (lease.status) visit(*lease.status);
    }

private:
    static std::string_view dataOf(const Item* item) { return item != nullptr ? item->data : std::string_view(); }
    std::string_view optionData(const Layer6* layer, DhcpLib::Dhcp6OptionType code) const {
        return layer != nullptr ? dataOf(option(*layer, code)) : std::string_view();
    }
    const Layer6* nearestRelay() const;
};

}  // namespace DhcpTool
