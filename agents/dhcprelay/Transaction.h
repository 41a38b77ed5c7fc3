#pragma once

#include <bitset>

#include "Kitnet/Pkt.h"
#include "Reason.h"
#include "Settings.h"

namespace DhcpRelay {

using PktPtr = Kcore::Ptr<Kitnet::Pkt>;

/// A VLAN tag of a frame (IEEE 802.1Q); no tag if `tpid` is 0. `tci` has the priority in its high 4 bits and the VLAN
/// in the others. A tag with VLAN 0 gives the priority only.
struct VlanTag {
    U16 tpid = 0;
    U16 tci = 0;

    bool isPresent() const { return tpid != 0; }
    U16 vlan() const { return tci & 0x0fff; }
    friend bool operator==(const VlanTag&, const VlanTag&) = default;
};

/// One VLAN of one client link.
struct Port {
    static constexpr U16 noLink = 0xffff;

    U16 link = noLink;  ///< index in the list of client links
    U16 vlan = 0;
    VlanTag tag;  ///< the tag of frames to and from its clients

    bool isKnown() const { return link != noLink; }
    bool isSame(const Port& other) const { return link == other.link && vlan == other.vlan; }
};

enum class Protocol : U8 { dhcp4, dhcp6 };
enum class Side : U8 { client, server };

/// How the option 82 of a DHCPv4 message is treated.
enum class InfoAction : U8 { leave, replace, remove };

/// The facts that the agent needs about a DHCPv4 message's options.
struct OptionFacts {
    bool isBootp = false;      ///< no magic cookie, so no options
    bool isWellFormed = true;  ///< the options have an end option
    bool hasInfo = false;      ///< relay agent information (option 82)
    bool hidesInfo = false;    ///< option 82 in the file or sname field (RFC 2132, section 9.3)
    U8 messageType = 0;        ///< option 53; 0 if it is absent
};

/// One message and what is known about it. Each step reads the fields that earlier steps have set, and sets its own.
/// The steps are: receive, validate, decide, rewrite, send.
struct Transaction {
    // Set by receive.
    Protocol protocol = Protocol::dhcp4;
    Side side = Side::client;
    PktPtr pkt;
    U32 at = 0;       ///< position of the message in the packet; it ends where the packet ends
    Port port;        ///< client side: the source. Server side: the destination, set by `decide`
    U32 ifIndex = 0;  ///< server side: the receiving interface
    IpGenAddr src, dst;
    EthAddr srcMac, dstMac;

    OptionFacts options;  ///< set by validate, for DHCPv4 only

    // Set by decide.
    IpGenAddr relayAddress;  ///< giaddr or link-address
    InfoAction info = InfoAction::leave;
    EthAddr clientMac;                ///< server side: zero if it is not known
    IpGenAddr clientAddress;          ///< server side: destination address of the reply
    bool toRelay = false;             ///< server side: the next hop is another relay
    U32 replyAt = 0, replyBytes = 0;  ///< server side: the part to deliver; the whole message if `replyBytes` is 0

    std::bitset<reasonCount> remarks;

    void remark(Reason reason) { remarks.set(static_cast<std::size_t>(reason)); }
    U32 bytes() const { return pkt->bytes() - at; }
};

}  // namespace DhcpRelay
