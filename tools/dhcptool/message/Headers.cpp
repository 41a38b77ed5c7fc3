#include "message/Headers.h"

#include "DhcpLib/Constants.h"
#include "Kitnet/IpHdr.h"
#include "common/EtherType.h"

namespace DhcpTool {

namespace {

using DhcpLib::Constants;
using DhcpLib::Wire::ByteView;

constexpr U32 udpLengthAt = 4;

/// Ports and place of the UDP payload.
void readUdp(ByteView bytes, U32 at, Headers& headers) {
    constexpr U32 portBytes = 2;
    if (!bytes.has(at, 2 * portBytes)) return;
    headers.ports = {bytes.load<Kitnet::UdpPort>(at), bytes.load<Kitnet::UdpPort>(at + portBytes)};
    const U16 to = headers.ports.dst.value();
    headers.toDhcpPort = headers.ipv6 ? to == Constants::dhcp6ServerPort || to == Constants::dhcp6ClientPort
                                      : to == Constants::dhcpServerPort || to == Constants::dhcpClientPort;
    headers.messageAt = at + DhcpLib::udpHeaderBytes;
    const U16 length = bytes.load<U16>(at + udpLengthAt);
    headers.messageEnd = length > DhcpLib::udpHeaderBytes ? at + length : bytes.size();
}

void readIpv4(ByteView bytes, U32 at, Headers& headers) {
    constexpr U32 fragmentAt = 6, protocolAt = 9, sourceAt = 12, destinationAt = 16;
    constexpr U16 moreFragments = 0x2000, fragmentOffset = 0x1fff;
    headers.srcIp = bytes.load<Kitnet::IpAddr>(at + sourceAt);
    headers.dstIp = bytes.load<Kitnet::IpAddr>(at + destinationAt);
    const U16 fragment = bytes.load<U16>(at + fragmentAt);
    if (bytes.load<U8>(at + protocolAt) != DhcpLib::udpProtocol) return;
    readUdp(bytes, at + Kitnet::IpHdr::headerBytes(bytes.load<U8>(at)), headers);
    headers.firstFragment = (fragment & moreFragments) != 0;
    if ((fragment & fragmentOffset) == 0) return;
    // The parser ignores fragment offsets: it accepts a later fragment whose bytes look like a message.
    headers.laterFragmentAt = at + fragmentAt;
    headers.toDhcpPort = headers.firstFragment = false;
}

/// Follows the extension headers (RFC 8200, section 4).
void readIpv6(ByteView bytes, U32 at, Headers& headers) {
    constexpr U32 nextHeaderAt = 6, sourceAt = 8, destinationAt = 24, headerBytes = 40;
    constexpr U32 fragmentAt = 2, unit = 8;
    constexpr U16 fragmentOffset = 0xfff8, moreFragments = 1;
    constexpr U8 hopByHop = 0, routing = 43, fragment = 44, destinationOptions = 60;
    headers.ipv6 = true;
    headers.srcIp = bytes.load<Kitnet::Ip6Addr>(at + sourceAt);
    headers.dstIp = bytes.load<Kitnet::Ip6Addr>(at + destinationAt);
    U8 next = bytes.load<U8>(at + nextHeaderAt);
    at += headerBytes;
    while (next != DhcpLib::udpProtocol) {
        const bool isFragment = next == fragment;
        if (!bytes.has(at, unit) || !(isFragment || next == hopByHop || next == routing || next == destinationOptions))
            return;
        const U16 place = isFragment ? bytes.load<U16>(at + fragmentAt) : U16{0};
        if ((place & fragmentOffset) != 0) return;
        headers.firstFragment |= (place & moreFragments) != 0;
        next = bytes.load<U8>(at);
        at += isFragment ? unit : unit * (U32{1} + bytes.load<U8>(at + 1));
    }
    readUdp(bytes, at, headers);
}

}  // namespace

Headers readHeaders(const Kitnet::Pkt& frame) {
    const ByteView bytes(frame);
    Headers headers;
    headers.dstMac = bytes.load<Kitnet::EthAddr>(0);
    headers.srcMac = bytes.load<Kitnet::EthAddr>(sizeof(Kitnet::EthAddr));
    const U32 typeAt = etherTypeAt(bytes), ipAt = typeAt + U32{sizeof(U16)};
    const U16 type = bytes.load<U16>(typeAt);
    if (type == ipv4EtherType) readIpv4(bytes, ipAt, headers);
    if (type == ipv6EtherType) readIpv6(bytes, ipAt, headers);
    return headers;
}

}  // namespace DhcpTool
