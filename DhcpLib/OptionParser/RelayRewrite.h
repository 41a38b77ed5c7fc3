#pragma once

#include "DhcpLib/Constants.h"
#include "DhcpLib/PacketView.h"
#include "Kitnet/IpAddr.h"
#include "Kitnet/IpGenAddr.h"
#include "Tyk/String.h"

namespace DhcpLib {

/// Functions with which a DHCPv4 relay agent adds its information (option 82, RFC 3046) to requests and removes it from
/// replies.
///
/// There are two generations with the same arguments; docs/choosing.md compares them.
///   preparePacketNew  rebuilds option 82. It keeps the options after option 82 and drops the sub-options that it does
///                     not know. For new agents.
///   preparePacket     edits option 82 in place. It keeps the sub-options that other relays added, and drops the
///                     options after option 82 of a request.
/// Neither changes an own block in a request (docs/compatibility.md#own-block-is-not-renewed). They look for option 57
/// in different places (docs/compatibility.md#option-57-behind-the-end). Call relayRewriteCheck first: some packets
/// from the network fail a documented assertion, or would get a broken option 82. If isRewritable() is false, drop the
/// packet or forward it unchanged. To forward a message without adding or removing option 82, set `infoOpt` to false.

/// Rewrites the message whose BOOTP header starts at `offset` and brings it to its smallest size: 548 bytes for a
/// request without option 57, 300 otherwise. Pad bytes after the end option are added or removed. Arguments:
///   op                      a request gets option 82, a reply loses it; any other value changes the size only
///   infoOpt                 false: leave option 82 alone
///   circuitId, remoteId     sub-options 1 and 2; not used if the request has an option 82
///   linkselectionId         sub-option 5 (RFC 3527); 0.0.0.0 for none
///   serverId                sub-option 11 (RFC 5107), only together with link selection; 0.0.0.0 for none
///   vpnId                   sub-option 151 (RFC 6607), only together with link selection; empty for none
///   vssControlDisable       false: sub-option 152 follows 151
///   vendorSpecificSubOpt...  the own vendor block in sub-option 9, unless the packet has one
///
/// A new option 82 takes the place of the end option, with the sub-options in the order 1, 2, 9, 5, 11, 151, 152.
/// An existing option 82 keeps its sub-options where they are. With link selection:
///   - its 5 and 11 get the new address, and its 151 the new name (one of the same size stays as it is);
///   - its 11 is removed without `serverId`, its 151 without `vpnId`, its 152 if none is to be written;
///   - the second and further ones of these codes are removed;
///   - new sub-options follow at the end.
/// Without link selection, an option 82 with a sub-option 5 is shortened by the size of its sub-options 5, 11, 151 and
/// 152 (docs/compatibility.md#cut-without-link-selection).
///
/// Returns false, after a trace line and with the packet unchanged, for the verdicts `notDhcp` to `infoSubOptionBehind`
/// of relayRewriteCheck. Fails an assertion for the verdict `assertion`. The packet is unchanged after any exception.
/// The packet's storage may move.
DHCPLIB_EXPORT bool preparePacket(const PktPtr& pkt, BootpOption op, bool infoOpt, Tyk::String circuitId,
                                  Tyk::String remoteId, Tyk::String vpnId, Kitnet::IpAddr serverId,
                                  Kitnet::IpAddr linkselectionId, U32 offset, bool vssControlDisable,
                                  Tyk::String vendorSpecificSubOptIntfName,
                                  Kitnet::IpGenAddr vendorSpecificSubOptSrcVtepIp);

/// As preparePacket, with these differences:
///   - A request's option 82 is rebuilt: its own 1 and 2, or else the arguments; 9, with the own block added if it has
///     none; then 5, 11, 151 and 152 from the arguments, with or without link selection. Its other sub-options are
///     dropped.
///   - A reply's option 82 keeps the blocks of 9 in front of the own block (all of 9 if the arguments contain no vendor
///     data), and 1 and 2 if `infoOpt` is false. If nothing is left, option 82 is removed
///     (docs/compatibility.md#vendor-data-behind-the-own-block-is-lost).
///   - The options after option 82 stay unchanged.
DHCPLIB_EXPORT bool preparePacketNew(const PktPtr& pkt, BootpOption op, bool infoOpt, Tyk::String circuitId,
                                     Tyk::String remoteId, Tyk::String vpnId, Kitnet::IpAddr serverId,
                                     Kitnet::IpAddr linkselectionId, U32 offset, bool vssControlDisable,
                                     Tyk::String vendorSpecificSubOptIntfName,
                                     Kitnet::IpGenAddr vendorSpecificSubOptSrcVtepIp);

/// The arguments of both generations.
struct RelayRewrite {
    BootpOption op = BootpOption::bootpRequest;         ///< a request gets option 82, a reply loses it
    bool infoOpt = true;                                ///< false: leave option 82 alone
    Tyk::String circuitId{};                            ///< sub-option 1
    Tyk::String remoteId{};                             ///< sub-option 2
    Tyk::String vpnId{};                                ///< sub-option 151 (RFC 6607); empty for none
    Kitnet::IpAddr serverId{};                          ///< sub-option 11 (RFC 5107); 0.0.0.0 for none
    Kitnet::IpAddr linkselectionId{};                   ///< sub-option 5 (RFC 3527); 0.0.0.0 for none
    U32 offset = 0;                                     ///< position of the BOOTP header
    bool vssControlDisable = false;                     ///< false: sub-option 152 follows 151
    Tyk::String vendorSpecificSubOptIntfName{};         ///< interface name in the own vendor block; empty for none
    Kitnet::IpGenAddr vendorSpecificSubOptSrcVtepIp{};  ///< tunnel address in the own vendor block; unset for none
};

/// The function that rewrites; docs/choosing.md compares the two.
enum class RelayGeneration : U8 { preparePacket, preparePacketNew };

/// Result of relayRewriteCheck.
enum class RelayRewriteVerdict : U8 {
    // The rewrite returns true.
    fine,
    infoOptionNotLast,    ///< options other than pads follow option 82; preparePacket drops them from a request
    infoOptionBehindEnd,  ///< an option 82 after the end option counts as padding and is lost
    // The rewrite returns true, but do not call it.
    infoOptionWouldBreak,  ///< option 82 would end inside a sub-option, or lack one that was asked for
    // Do not call the rewrite.
    assertion,  ///< RelayRewriteForecast::assertion would fail
    // The rewrite returns false and leaves the packet unchanged.
    notDhcp,              ///< no magic cookie or no end option: not a DHCP message
    infoOptionEmpty,      ///< option 82 has no data
    infoOptionTooLong,    ///< option 82, a sub-option or an argument would exceed 255 bytes: check the configuration
    infoOptionOverrun,    ///< an existing sub-option passes the end of option 82, or its address is not 4 bytes long
    infoSubOptionBehind,  ///< an option after option 82 looks like a sub-option and would be counted as one
};

/// What a rewrite would do.
struct RelayRewriteForecast {
    RelayRewriteVerdict verdict = RelayRewriteVerdict::fine;  ///< what will happen
    std::string_view assertion;                               ///< the text of the assertion that would fail
    U32 messageBytes = 0;  ///< size of the message afterwards, counted from `offset`; to compare with the MTU

    /// Whether the rewrite will succeed and leave an option 82 that is whole.
    bool isRewritable() const { return verdict < RelayRewriteVerdict::infoOptionWouldBreak; }
    static constexpr auto declaration() {
        using F = RelayRewriteForecast;
        return Kcore::declare("RelayRewriteForecast", Kcore::attribute("verdict", &F::verdict),
                              Kcore::attribute("assertion", &F::assertion),
                              Kcore::attribute("messageBytes", &F::messageBytes));
    }
};

/// Predicts the result of a rewrite. Does not change the packet.
DHCPLIB_EXPORT RelayRewriteForecast relayRewriteCheck(const PktPtr& pkt, const RelayRewrite& rewrite,
                                                      RelayGeneration generation);
/// Calls preparePacket or preparePacketNew.
DHCPLIB_EXPORT bool relayRewrite(const PktPtr& pkt, const RelayRewrite& rewrite, RelayGeneration generation);

}  // namespace DhcpLib

template <>
struct Kcore::EnumTable<DhcpLib::RelayGeneration> {
    using enum DhcpLib::RelayGeneration;
    static constexpr std::string_view name = "RelayGeneration";
    static constexpr EnumMember<DhcpLib::RelayGeneration> members[] = {
        {preparePacket, "preparePacket"},
        {preparePacketNew, "preparePacketNew"},
    };
};
template <>
struct Kcore::EnumTable<DhcpLib::RelayRewriteVerdict> {
    using enum DhcpLib::RelayRewriteVerdict;
    static constexpr std::string_view name = "RelayRewriteVerdict";
    static constexpr EnumMember<DhcpLib::RelayRewriteVerdict> members[] = {
        {fine, "fine"},
        {infoOptionNotLast, "infoOptionNotLast"},
        {infoOptionBehindEnd, "infoOptionBehindEnd"},
        {infoOptionWouldBreak, "infoOptionWouldBreak"},
        {DhcpLib::RelayRewriteVerdict::assertion, "assertion"},
        {notDhcp, "notDhcp"},
        {infoOptionEmpty, "infoOptionEmpty"},
        {infoOptionTooLong, "infoOptionTooLong"},
        {infoOptionOverrun, "infoOptionOverrun"},
        {infoSubOptionBehind, "infoSubOptionBehind"},
    };
};
