#pragma once

#include <bitset>

#include "Kitnet/Pkt.h"
#include "Reason.h"
#include "Settings.h"

namespace DhcpRelay {

using PktPtr = Kcore::Ptr<Kitnet::Pkt>;

/// A VLAN tag as it stands in a frame; none while `tpid` is 0. A `vid` of 0 says the priority only (IEEE 802.1Q).
struct VlanTag {
    U16 tpid = 0;
    U16 vid = 0;

    bool isPresent() const { return tpid != 0; }
    friend bool operator==(const VlanTag&, const VlanTag&) = default;
};

/// Where clients are: one VLAN of one client link.
struct Port {
    static constexpr U16 noLink = 0xffff;

    U16 link = noLink;  ///< its place in the list of client links
    U16 vlan = 0;
    VlanTag tag;  ///< that frames for clients there carry

    bool isKnown() const { return link != noLink; }
    bool isSame(const Port& other) const { return link == other.link && vlan == other.vlan; }
};

enum class Protocol : U8 { dhcp4, dhcp6 };
enum class Side : U8 { client, server };

/// What is done about the option 82 of a DHCPv4 message.
enum class InfoAction : U8 { leave, replace, remove };

/// What the agent reads of a DHCPv4 message's options.
struct OptionFacts {
    bool isBootp = false;      ///< no magic cookie, so no options
    bool isWellFormed = true;  ///< an end option is reached
    bool hasInfo = false;      ///< relay agent information (option 82)
    U8 messageType = 0;        ///< option 53; 0 without
};

/// One message on its way through the agent. Each step reads what the steps before it found and adds its own part:
/// receive, validate, decide, rewrite, send.
struct Transaction {
    // Receive: where the message is and where it comes from.
    Protocol protocol = Protocol::dhcp4;
    Side side = Side::client;
    PktPtr pkt;
    U32 at = 0;       ///< of the message's first byte in the packet; its last byte is the packet's
    Port port;        ///< client side: where it comes from. Server side: where it goes, once decided
    U32 ifIndex = 0;  ///< server side: of the interface that it came in on, if that matters
    IpGenAddr src, dst;
    EthAddr srcMac, dstMac;

    OptionFacts options;  ///< validate: of a DHCPv4 message

    // Decide: what becomes of it.
    IpGenAddr relayAddress;  ///< giaddr or link-address
    InfoAction info = InfoAction::leave;
    EthAddr clientMac;                ///< server side: zero where it is not known
    IpGenAddr clientAddress;          ///< server side: where the reply goes
    bool toRelay = false;             ///< server side: the next hop is another relay
    U32 replyAt = 0, replyBytes = 0;  ///< server side: what is delivered; the whole message if `replyBytes` is 0

    std::bitset<reasonCount> remarks;

    void remark(Reason reason) { remarks.set(static_cast<std::size_t>(reason)); }
    U32 bytes() const { return pkt->bytes() - at; }
};

}  // namespace DhcpRelay
