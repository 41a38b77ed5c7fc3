#pragma once

#include <optional>
#include <span>

#include "DhcpLib/Dhcp6Hdr/Headers.h"
#include "DhcpLib/Dhcp6Hdr/Options.h"

namespace DhcpLib {

/// Builds a DHCPv6 message in a packet of its own: a header, then options in the order in which they are added. The
/// message never passes `maxBytes`; an addition that would do so is refused and changes nothing. The fields of an
/// option are written through the views over the option that add() returns.
class DHCPLIB_EXPORT Dhcp6MessageBuilder {
public:
    /// What fits into a UDP datagram's length field and into the 16-bit positions of the views.
    static constexpr U32 largestMessage = 65535;

    /// Starts a client/server message (RFC 8415, section 8). Raises Kcore::RangeException where `type` is a relay
    /// message's, and where `maxBytes` is less than the header (4) or more than largestMessage.
    Dhcp6MessageBuilder(Dhcp6MsgType type, const Dhcp6Xid& xid, U32 maxBytes = largestMessage);
    /// Starts a relay message (RFC 8415, section 9). Raises Kcore::RangeException where `type` is neither relayForward
    /// nor relayReply, and where `maxBytes` is less than the header (34) or more than largestMessage.
    Dhcp6MessageBuilder(Dhcp6MsgType type, U8 hopCount, const Kitnet::Ip6Addr& linkAddr,
                        const Kitnet::Ip6Addr& peerAddr, U32 maxBytes = largestMessage);

    /// Adds an option with `len` zero bytes of data; null where it does not fit.
    Dhcp6Option::Ptr add(Dhcp6OptionType type, std::size_t len);
    /// Adds an option with a copy of `data`, which must not lie in this message's packet; null where it does not fit.
    Dhcp6Option::Ptr add(Dhcp6OptionType type, std::span<const U8> data);
    /// Adds a relay message option (9) with a copy of `message`; null where it does not fit.
    Dhcp6Option::Ptr addMessage(std::span<const U8> message) { return add(Dhcp6OptionType::relayMsg, message); }
    /// Adds an option with `len` zero bytes at the end of `outer`'s data, and extends the length of `outer` by it, as
    /// for an address in an IA_NA. Null where it does not fit, and where `outer` is not the last option of this
    /// message.
    Dhcp6Option::Ptr addNested(const Dhcp6Option::Ptr& outer, Dhcp6OptionType type, std::size_t len);

    /// The bytes that the message has, and those that can still be added: option headers (4 each) and data.
    U32 bytes() const { return pkt_->bytes(); }
    U32 bytesLeft() const { return maxBytes_ - pkt_->bytes(); }
    /// The message, which starts at the packet's first byte. Shared with the builder: whatever is added later is in it.
    const PktPtr& pkt() const { return pkt_; }

private:
    void start(U32 headerBytes);

    PktPtr pkt_;
    U32 maxBytes_;
};

}  // namespace DhcpLib
