#pragma once

#include <array>
#include <vector>

#include "DhcpLib/Constants.h"
#include "DhcpLib/OptionParser/BasicCheck.h"
#include "Kitnet/IpAddr.h"

namespace DhcpLib {

/// An option or sub-option in the packet: code, length, then `len` data bytes. A pad (code 0) has a code only. Pointers
/// to it point into the packet and become stale when the packet's storage moves.
struct DhcpSingleOption {
    U8 code;  ///< option code
    U8 len;   ///< number of data bytes

    /// The first data byte. Requires: it is in the packet.
    U8* data() { return reinterpret_cast<U8*>(this) + sizeof(DhcpSingleOption); }
    /// The first data byte. Requires: it is in the packet.
    const U8* data() const { return reinterpret_cast<const U8*>(this) + sizeof(DhcpSingleOption); }

    static constexpr auto declaration() {
        return Kcore::declare("DhcpSingleOption", Kcore::attribute("code", &DhcpSingleOption::code),
                              Kcore::attribute("len", &DhcpSingleOption::len));
    }
};
static_assert(sizeof(DhcpSingleOption) == 2 && alignof(DhcpSingleOption) == 1);

/// A request for one option. The walker stores the address of the option in the slot that `option` points to.
struct DhcpSingleOptionWithCode {
    U8 code;                    ///< the code that is wanted
    DhcpSingleOption** option;  ///< the slot that receives the address of the option

    static constexpr auto declaration() {
        return Kcore::declare("DhcpSingleOptionWithCode", Kcore::attribute("code", &DhcpSingleOptionWithCode::code),
                              Kcore::attribute("option", &DhcpSingleOptionWithCode::option));
    }
};

/// The start of the options area: the magic cookie and the first option.
struct DhcpOptions {
    U8 cookie[4];                  ///< 63 82 53 63 in a DHCP message
    DhcpSingleOption firstOption;  ///< the option after the cookie

    static constexpr auto declaration() {
        return Kcore::declare(
            "DhcpOptions",
            Kcore::attribute("cookie", [](const DhcpOptions& o) { return Kitnet::NetU32::fromBytes(o.cookie); }),
            Kcore::attribute("firstOption", [](const DhcpOptions& o) { return &o.firstOption; }));
    }
};
static_assert(sizeof(DhcpOptions) == 6 && alignof(DhcpOptions) == 1);

/// The option after `opt`: one byte further for a pad, else `len` + 2 bytes. Requires: the length byte is readable
/// unless `opt` is a pad.
DHCPLIB_EXPORT DhcpSingleOption* getDhcpNextOpt(DhcpSingleOption* opt);
/// Adds the size of an option with `added` data bytes, header included, to `total`, modulo 256.
DHCPLIB_EXPORT void increaseAddedOptLen(U8& total, U8 added);
/// Writes `value` into 4 bytes in network order.
DHCPLIB_EXPORT void u32ToNetworkBytes(U32 value, char* out);

/// Walks the options of the message whose BOOTP header starts at `offset` and fills the slots of `wanted`. The last
/// option of a code wins (docs/compatibility.md#duplicates-by-layer). If two requests have the same code, only the
/// first is filled (docs/compatibility.md#first-of-equal-requests). Slots of absent options stay unchanged. Returns
/// true if it reached an end option. Returns false after a trace line if there is no space for options, no magic
/// cookie, or no end option (RFC 2131, section 3).
DHCPLIB_EXPORT bool parseDhcpOptions(const PktPtr& pkt, U32 offset, std::vector<DhcpSingleOptionWithCode>& wanted);
/// Walks the sub-options from `first` on, `total` bytes in all, and fills the slot of every request whose code occurs.
/// Always returns true. The count and the position drift apart after a pad
/// (docs/compatibility.md#sub-option-count-drifts-after-a-pad). Requires: all bytes that the lengths announce are
/// readable; the first item is read even if `total` is 0. Fills nothing if `first` is null.
DHCPLIB_EXPORT bool parseDhcpSubOptsInOption(DhcpSingleOption* first, std::size_t total,
                                             std::vector<DhcpSingleOptionWithCode>& wanted);
/// Positions of the magic cookie, the last option 82 (null if there is none), the end option, and the byte after the
/// packet. Requires: dhcpOptionBasicCheck(pkt, offset). Otherwise assertion "0" fails.
DHCPLIB_EXPORT void getDhcpOptions(const PktPtr& pkt, U32 offset, DhcpOptions*& options,
                                   DhcpSingleOption*& relayAgentInfo, DhcpSingleOption*& endOption,
                                   DhcpSingleOption*& packetEnd);

/// The names of the DHCP message types, by number (RFC 2132, section 9.6; RFC 3203; RFC 4388). Number 0 has none.
DHCPLIB_EXPORT extern const std::array<Kcore::String, 14> DhcpMsgTypeTbl;

/// The name of the DHCP message type (RFC 2132, section 9.6); its number goes to `msgType`. Returns "BOOTP" if there is
/// no magic cookie and "INVALID DHCP" if the options area is malformed. If option 53 is absent or its value is not 1 to
/// 13, returns an empty string and leaves `msgType` unchanged. The length of option 53 is not checked
/// (docs/compatibility.md#message-type-length-unchecked).
DHCPLIB_EXPORT Kcore::String getDhcpMsgTypeStringAndOpt(const PktPtr& pkt, U32 offset, U8& msgType);
/// As getDhcpMsgTypeStringAndOpt, without the number.
DHCPLIB_EXPORT Kcore::String getDhcpMsgType(const PktPtr& pkt, U32 offset);
/// The requested IP address (option 50 of length 4) of a request that starts at byte 0, else 0.0.0.0
/// (docs/compatibility.md#message-starts-at-byte-0).
DHCPLIB_EXPORT Kitnet::IpAddr getRequestedIpOption(const PktPtr& pkt, BootpOption direction);
/// The server identifier (option 54 of length 4) of a message that starts at byte 0, else 0.0.0.0.
DHCPLIB_EXPORT Kitnet::IpAddr getServerId(const PktPtr& pkt);

}  // namespace DhcpLib
