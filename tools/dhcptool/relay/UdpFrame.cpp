#include "relay/UdpFrame.h"

#include "DhcpLib/Constants.h"
#include "DhcpLib/FrameFields.h"
#include "Kitnet/IpHdr.h"
#include "common/EtherType.h"

namespace DhcpTool {

namespace {

using DhcpLib::Constants;
using DhcpLib::udpHeaderBytes;
using DhcpLib::Wire::ByteView;
using enum UdpFrame::Kind;

constexpr U32 smallestIpHeader = 20;

bool isDhcpPort(U16 port) { return port == Constants::dhcpServerPort || port == Constants::dhcpClientPort; }

}  // namespace

UdpFrame udpFrameOf(ByteView frame) {
    const U32 typeAt = etherTypeAt(frame), ipAt = typeAt + U32{sizeof(U16)};
    if (!frame.has(typeAt, sizeof(U16)) || frame.load<U16>(typeAt) != ipv4EtherType) return {};
    if (!frame.has(ipAt, smallestIpHeader)) return {unfit, "IPv4 header cut short"};
    if (frame.load<U8>(ipAt + 9) != DhcpLib::udpProtocol) return {};
    const U32 ipHeader = Kitnet::IpHdr::headerBytes(frame.load<U8>(ipAt)), ipBytes = frame.load<U16>(ipAt + 2);
    if (frame.load<U8>(ipAt) >> 4 != 4 || ipHeader < smallestIpHeader) return {unfit, "malformed IPv4 header"};
    constexpr U16 fragmentOffset = 0x1fff, moreFragments = 0x2000;
    const U16 fragment = frame.load<U16>(ipAt + 6);
    if ((fragment & fragmentOffset) != 0) return {unfit, "fragment"};
    const U32 udpAt = ipAt + ipHeader;
    if (!frame.has(udpAt, udpHeaderBytes)) return {unfit, "UDP header cut short"};
    if (!isDhcpPort(frame.load<U16>(udpAt + 2))) return {};
    if ((fragment & moreFragments) != 0) return {unfit, "fragment"};
    const U32 udpBytes = frame.load<U16>(udpAt + 4);
    if (ipBytes < ipHeader + udpHeaderBytes || udpBytes < udpHeaderBytes || udpBytes > ipBytes - ipHeader)
        return {unfit, "malformed lengths"};
    if (!frame.has(ipAt, ipBytes)) return {unfit, "datagram cut short"};
    return {datagram, "", ipAt, udpAt + udpHeaderBytes, udpBytes - udpHeaderBytes};
}

}  // namespace DhcpTool
