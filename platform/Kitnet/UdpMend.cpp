#include "Kitnet/UdpMend.h"

#include <span>

#include "Kcore/Exception.h"
#include "Kitnet/InternetChecksum.h"
#include "Kitnet/IpHdr.h"

namespace Kitnet {

namespace {

constexpr U32 smallestIpHeader = 20, udpHeader = 8, longestDatagram = 65535;
constexpr U32 ipLengthAt = 2, protocolAt = 9, ipChecksumAt = 10, addressesAt = 12, udpLengthAt = 4, udpChecksumAt = 6;

void put(std::span<U8> bytes, U32 at, U16 value) { storeBigEndian(bytes.subspan(at, sizeof value).data(), value); }

}  // namespace

void mendUdp(Pkt& pkt, U32 ipAt) {
    const U32 ipBytes = IpHdr(pkt, ipAt).headerBytes(), size = ipAt < pkt.bytes() ? pkt.bytes() - ipAt : 0;
    if (ipBytes < smallestIpHeader || size < ipBytes + udpHeader)
        Kcore::throwException("Kitnet::mendUdp: no room for an IPv4 and a UDP header");
    if (size > longestDatagram) Kcore::throwException("Kitnet::mendUdp: datagram > 65535 not allowed");
    const std::span<U8> ip(pkt.data() + ipAt, size), header = ip.first(ipBytes), udp = ip.subspan(ipBytes);
    const U16 udpBytes = static_cast<U16>(udp.size());
    put(header, ipLengthAt, static_cast<U16>(size));
    put(header, ipChecksumAt, 0);
    put(header, ipChecksumAt, internetChecksum(internetSum(header)));
    put(udp, udpLengthAt, udpBytes);
    put(udp, udpChecksumAt, 0);
    const U64 pseudoHeader = internetSum(header.subspan(addressesAt, 8)) + header[protocolAt] + udpBytes;
    const U16 sum = internetChecksum(pseudoHeader + internetSum(udp));
    put(udp, udpChecksumAt, sum != 0 ? sum : U16{0xffff});  // 0 would mean: no checksum
}

}  // namespace Kitnet
