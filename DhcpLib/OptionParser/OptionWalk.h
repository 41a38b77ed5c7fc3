#pragma once

#include <string_view>
#include <vector>

#include "DhcpLib/Constants.h"
#include "DhcpLib/PacketView.h"
#include "Kitnet/IpAddr.h"

namespace DhcpLib {

/// An option or sub-option as it lies in the packet: code, length, then `len` data bytes. Of a pad (code 0) only the
/// code exists. A pointer to one is a pointer into the packet, and gone when the packet's storage moves.
struct DhcpSingleOption {
    U8 code;
    U8 len;

    U8* data() { return reinterpret_cast<U8*>(this) + sizeof(DhcpSingleOption); }
    const U8* data() const { return reinterpret_cast<const U8*>(this) + sizeof(DhcpSingleOption); }
};
static_assert(sizeof(DhcpSingleOption) == 2 && alignof(DhcpSingleOption) == 1);

/// A request for an option: a walker that finds `code` stores the option's address in the slot that `option` points to.
struct DhcpSingleOptionWithCode {
    U8 code;
    DhcpSingleOption** option;
};

/// The options area as it starts in the packet: the magic cookie, then the first option.
struct DhcpOptions {
    U8 cookie[4];
    DhcpSingleOption firstOption;
};
static_assert(sizeof(DhcpOptions) == 6 && alignof(DhcpOptions) == 1);

/// The option behind `opt`: one byte on for a pad, `len` + 2 bytes for every other.
/// Requires: the length byte of an option that is no pad is readable.
DHCPLIB_EXPORT DhcpSingleOption* getDhcpNextOpt(DhcpSingleOption* opt);
/// Adds to `total`, modulo 256, what an added option of `added` data bytes takes.
DHCPLIB_EXPORT void increaseAddedOptLen(U8& total, U8 added);
/// Writes `value` into 4 bytes in network order.
DHCPLIB_EXPORT void u32ToNetworkBytes(U32 value, char* out);

/// Walks the options of the message whose BOOTP header starts at `offset` and fills the slots of `wanted`: an option
/// that occurs more than once leaves its last place, of two requests for one code only the first is filled, slots of
/// what is not there stay as they are. True when an end option was reached; false, after a trace line, where there is
/// no room for options, no magic cookie or no end option (RFC 2131, section 3).
DHCPLIB_EXPORT bool parseDhcpOptions(const PktPtr& pkt, U32 offset, std::vector<DhcpSingleOptionWithCode>& wanted);
/// Whether the message has a magic cookie and a walk over its options reaches an end option.
DHCPLIB_EXPORT bool dhcpOptionBasicCheck(const PktPtr& pkt, U32 offset);
/// Walks the sub-options from `first` on, `total` bytes in all, and fills the slot of every request whose code occurs.
/// Always returns true. The count and the position drift apart after a pad
/// (docs/compatibility.md#sub-option-count-drifts-after-a-pad). Requires: all bytes that the lengths announce are
/// readable; the first item is read even if `total` is 0.
DHCPLIB_EXPORT bool parseDhcpSubOptsInOption(DhcpSingleOption* first, std::size_t total,
                                             std::vector<DhcpSingleOptionWithCode>& wanted);
/// The places of the magic cookie, the last option 82 (or null), the end option, and one past the packet's last byte.
/// Requires: dhcpOptionBasicCheck(pkt, offset). Asserts "0" otherwise.
DHCPLIB_EXPORT void getDhcpOptions(const PktPtr& pkt, U32 offset, DhcpOptions*& options,
                                   DhcpSingleOption*& relayAgentInfo, DhcpSingleOption*& endOption,
                                   DhcpSingleOption*& packetEnd);

/// The name of the DHCP message type (RFC 2132, section 9.6), and its number in `msgType`. "BOOTP" where other bytes
/// stand in the cookie's place, "INVALID DHCP" where the options cannot be walked; empty, `msgType` untouched, where
/// there is no option 53 or its value is not 1 to 13.
DHCPLIB_EXPORT Kcore::String getDhcpMsgTypeStringAndOpt(const PktPtr& pkt, U32 offset, U8& msgType);
DHCPLIB_EXPORT Kcore::String getDhcpMsgType(const PktPtr& pkt, U32 offset);
/// The requested IP address (option 50, of length 4) of a request that starts at byte 0; 0.0.0.0 where there is none.
DHCPLIB_EXPORT Kitnet::IpAddr getRequestedIpOption(const PktPtr& pkt, BootpOption direction);
/// The server identifier (option 54, of length 4) of a message that starts at byte 0; 0.0.0.0 where there is none.
DHCPLIB_EXPORT Kitnet::IpAddr getServerId(const PktPtr& pkt);

}  // namespace DhcpLib
