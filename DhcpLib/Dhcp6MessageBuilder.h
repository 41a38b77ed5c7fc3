#pragma once

#include <optional>
#include <span>
#include <vector>

#include "DhcpLib/Dhcp6Hdr/Headers.h"
#include "DhcpLib/Dhcp6Hdr/Options.h"

namespace DhcpLib {

/// Builds a DHCPv6 message in a new packet: a header, then options in the order in which they are added. The message
/// never exceeds `maxBytes`: an addition that does not fit is refused and changes nothing. Write the fields of an
/// option through views over the option that add() returns.
class DHCPLIB_EXPORT Dhcp6MessageBuilder {
public:
    /// Limit of the UDP length field and of the views' 16-bit positions.
    static constexpr U32 largestMessage = 65535;

    /// Starts a client/server message (RFC 8415, section 8). Throws Kcore::RangeException if `type` is a relay message
    /// type, or if `maxBytes` is less than the header (4) or more than largestMessage.
    Dhcp6MessageBuilder(Dhcp6MsgType type, const Dhcp6Xid& xid, U32 maxBytes = largestMessage);
    /// Starts a relay message (RFC 8415, section 9). Throws Kcore::RangeException if `type` is neither relayForward nor
    /// relayReply, or if `maxBytes` is less than the header (34) or more than largestMessage.
    Dhcp6MessageBuilder(Dhcp6MsgType type, U8 hopCount, const Kitnet::Ip6Addr& linkAddr,
                        const Kitnet::Ip6Addr& peerAddr, U32 maxBytes = largestMessage);

    /// Adds an option with `len` zero bytes of data. Returns null if it does not fit.
    Dhcp6Option::Ptr add(Dhcp6OptionType type, std::size_t len);
    /// Adds an option with a copy of `data`, which must not be part of this message. Returns null if it does not fit.
    Dhcp6Option::Ptr add(Dhcp6OptionType type, std::span<const U8> data);
    /// Adds a relay message option (9) with a copy of `message`. Returns null if it does not fit.
    Dhcp6Option::Ptr addMessage(std::span<const U8> message) { return add(Dhcp6OptionType::relayMsg, message); }
    /// Adds an option with `len` zero bytes at the end of `outer`'s data, for example an address in an IA_NA. Increases
    /// the lengths of `outer` and of the options that contain it. `outer` is an option that this builder returned and
    /// after whose data nothing has been added. Returns null for any other `outer`, null included, and if the option
    /// does not fit.
    Dhcp6Option::Ptr addNested(const Dhcp6Option::Ptr& outer, Dhcp6OptionType type, std::size_t len);

    /// Size of the message.
    U32 bytes() const { return pkt_->bytes(); }
    /// Number of bytes that can still be added, option headers (4 bytes each) included.
    U32 bytesLeft() const { return maxBytes_ - pkt_->bytes(); }
    /// The message, from the packet's first byte on. Shared with the builder: it changes with later additions.
    const PktPtr& pkt() const { return pkt_; }

private:
    void start(U32 headerBytes);
    Dhcp6Option::Ptr addInside(std::size_t depth, Dhcp6OptionType type, std::size_t len);

    PktPtr pkt_;
    U32 maxBytes_;
    std::vector<Dhcp6Option::Ptr> last_;  // the last option, after the options that contain it, outermost first
};

}  // namespace DhcpLib
