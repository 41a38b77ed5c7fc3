#pragma once

#include <string_view>
#include <vector>

#include "Kcore/Types.h"

namespace DhcpBench {

using Kcore::U16;
using Kcore::U32;
using Kcore::U8;
using Octets = std::vector<U8>;

/// The four bytes of `value` in network order.
Octets bigEndian(U32 value);
Octets octets(std::string_view text);
void append(Octets& bytes, const Octets& more);
/// A DHCPv4 option or sub-option: one byte each for code and length.
void appendItem(Octets& bytes, U8 code, const Octets& data);
/// A DHCPv6 option: two bytes each for code and length.
void appendOption6(Octets& bytes, U16 code, const Octets& data);

enum class Op : U8 { request = 1, reply = 2 };

/// Builds a DHCPv4 message (RFC 2131) piece by piece.
class Message {
public:
    static constexpr std::size_t minBytes = 300;

    explicit Message(Op op);
    Message& xid(U32 value) { return write(4, value); }
    Message& ciaddr(U32 value) { return write(12, value); }
    Message& yiaddr(U32 value) { return write(16, value); }
    Message& giaddr(U32 value) { return write(24, value); }
    Message& option(U8 code, const Octets& data);
    Message& option(U8 code, std::string_view text) { return option(code, octets(text)); }
    Message& option(U8 code, U32 value) { return option(code, bigEndian(value)); }
    Message& pads(std::size_t n);
    /// The message with its end option, padded to at least `atLeast` bytes.
    Octets finished(std::size_t atLeast = minBytes) const;

private:
    Message& write(std::size_t at, U32 value);
    Octets bytes_;
};

/// Source and destination of a message. VLAN 0 means no tag.
struct Path {
    U32 srcIp, dstIp;
    U16 srcPort, dstPort;
    U16 vlan = 0;
};

/// `message` in UDP, IPv4 and Ethernet. Both checksums are 0; no contender verifies them.
Octets frameOf(const Octets& message, const Path& path);

}  // namespace DhcpBench
