#pragma once

#include "DhcpLib/Constants.h"
#include "DhcpLib/PacketView.h"
#include "Kitnet/IpAddr.h"
#include "Kitnet/IpGenAddr.h"
#include "Tyk/String.h"

namespace DhcpLib {

/// Rewrites the DHCPv4 message at `offset` in place on behalf of a relay agent (RFC 3046) and brings it to its minimum
/// size: 548 bytes for a request without option 57, 300 otherwise; pad bytes behind the end option are added or
/// trimmed.
///   op                      a request gains option 82, a reply loses it; any other value only normalises the size
///   infoOpt                 whether the relay handles option 82 at all
///   circuitId, remoteId     sub-options 1 and 2, where option 82 is created here
///   linkselectionId         sub-option 5 (RFC 3527); 0.0.0.0 for none
///   serverId                sub-option 11 (RFC 5107), together with link selection; 0.0.0.0 for none
///   vpnId                   sub-option 151 (RFC 6607), together with link selection; 152 behind it unless
///   vssControlDisable       is set
///   vendorSpecificSubOpt... the system's block in sub-option 9, unless the packet holds one
/// The sub-options stand in the order 1, 2, 9, 5, 11, 151, 152, and option 82 where the end option stood. Options
/// behind an existing option 82 are cut off. True on success. False, after a trace line and with the packet as it was,
/// where the options cannot be walked, for an empty option 82, and where option 82, a sub-option or an argument would
/// pass 255 bytes or an existing sub-option overruns option 82 or has another length than its rewrite. What else an
/// existing option 82 may meet are assertions: ask relayRewriteCheck first. The packet's storage may move.
DHCPLIB_EXPORT bool preparePacket(const PktPtr& pkt, BootpOption op, bool infoOpt, Tyk::String circuitId,
                                  Tyk::String remoteId, Tyk::String vpnId, Kitnet::IpAddr serverId,
                                  Kitnet::IpAddr linkselectionId, U32 offset, bool vssControlDisable,
                                  Tyk::String vendorSpecificSubOptIntfName,
                                  Kitnet::IpGenAddr vendorSpecificSubOptSrcVtepIp);

/// As preparePacket, but rebuilds option 82 in its place and keeps the options behind it. On a request the packet's own
/// circuit-id and remote-id go before the arguments, 11, 151 and 152 do not depend on link selection, and other
/// sub-options of the packet are dropped. On a reply the other enterprises' part of sub-option 9 stays, and with
/// `infoOpt` false circuit-id and remote-id do.
DHCPLIB_EXPORT bool preparePacketNew(const PktPtr& pkt, BootpOption op, bool infoOpt, Tyk::String circuitId,
                                     Tyk::String remoteId, Tyk::String vpnId, Kitnet::IpAddr serverId,
                                     Kitnet::IpAddr linkselectionId, U32 offset, bool vssControlDisable,
                                     Tyk::String vendorSpecificSubOptIntfName,
                                     Kitnet::IpGenAddr vendorSpecificSubOptSrcVtepIp);

/// The arguments of both functions, by name.
struct RelayRewrite {
    BootpOption op = BootpOption::bootpRequest;
    bool infoOpt = true;
    Tyk::String circuitId{};
    Tyk::String remoteId{};
    Tyk::String vpnId{};
    Kitnet::IpAddr serverId{};
    Kitnet::IpAddr linkselectionId{};
    U32 offset = 0;
    bool vssControlDisable = false;
    Tyk::String vendorSpecificSubOptIntfName{};
    Kitnet::IpGenAddr vendorSpecificSubOptSrcVtepIp{};
};

enum class RelayGeneration : U8 { preparePacket, preparePacketNew };

/// What a rewrite would meet, the worst of it first.
enum class RelayRewriteVerdict : U8 {
    fine,
    infoOptionNotLast,    ///< options behind option 82: preparePacket cuts them off on a request
    infoOptionBehindEnd,  ///< an option 82 behind the end option is padding to both
    assertion,            ///< `RelayRewriteForecast::assertion` fails
    notDhcp,              ///< no magic cookie or no end option
    infoOptionEmpty,
    infoOptionTooLong,  ///< option 82, a sub-option or an argument would pass 255 bytes
    infoOptionOverrun,  ///< an existing sub-option overruns option 82 or has another length than its rewrite
};

struct RelayRewriteForecast {
    RelayRewriteVerdict verdict = RelayRewriteVerdict::fine;
    std::string_view assertion;  ///< the text of the assertion that fails
    U32 messageBytes = 0;  ///< what the message will have from `offset` on; what it has where nothing is rewritten

    /// Whether the rewrite may be called and will succeed.
    bool isRewritable() const { return verdict < RelayRewriteVerdict::assertion; }
};

/// Tells, without touching the packet, what preparePacket or preparePacketNew would do with it.
DHCPLIB_EXPORT RelayRewriteForecast relayRewriteCheck(const PktPtr& pkt, const RelayRewrite& rewrite,
                                                      RelayGeneration generation);
/// Calls the one of the two.
DHCPLIB_EXPORT bool relayRewrite(const PktPtr& pkt, const RelayRewrite& rewrite, RelayGeneration generation);

}  // namespace DhcpLib

template <>
struct Kcore::EnumTable<DhcpLib::RelayRewriteVerdict> {
    using enum DhcpLib::RelayRewriteVerdict;
    static constexpr std::string_view name = "RelayRewriteVerdict";
    static constexpr EnumMember<DhcpLib::RelayRewriteVerdict> members[] = {
        {fine, "fine"},
        {infoOptionNotLast, "infoOptionNotLast"},
        {infoOptionBehindEnd, "infoOptionBehindEnd"},
        {DhcpLib::RelayRewriteVerdict::assertion, "assertion"},
        {notDhcp, "notDhcp"},
        {infoOptionEmpty, "infoOptionEmpty"},
        {infoOptionTooLong, "infoOptionTooLong"},
        {infoOptionOverrun, "infoOptionOverrun"},
    };
};
