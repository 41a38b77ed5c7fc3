#include "capture/LinkLayer.h"

#include <pcap/dlt.h>

#include <algorithm>
#include <limits>

#include "DhcpLib/Wire.h"
#include "Kitnet/BigEndian.h"
#include "common/EtherType.h"

namespace DhcpTool {

namespace {

using DhcpLib::Wire::ByteView;

constexpr U32 macBytes = 6, ethernetBytes = 14, sourceAt = macBytes, typeAt = 2 * macBytes;
constexpr U8 sentToAll = 1, sentByThisHost = 4;  // packet types of a cooked header

/// Positions of the fields of a cooked header; of a field of two bytes below 256, that of the second. The link address
/// has 8 bytes, of which `addressBytes` are used.
struct CookedFields {
    U32 packetType, addressBytes, address, protocol;
};
constexpr CookedFields cooked{1, 5, 6, 14}, cooked2{10, 11, 12, 0};
constexpr U32 cooked2IfIndex = 4;

/// A header with zeros for the addresses.
void startHeader(std::vector<U8>& frame, U16 etherType) {
    frame.assign(ethernetBytes, 0);
    Kitnet::storeBigEndian(&frame[typeAt], etherType);
}

void startCooked(std::vector<U8>& frame, ByteView header, const CookedFields& fields, EthernetFrame& result) {
    // The header's protocol is the EtherType. If that is a VLAN tag, the rest of the tag follows the header.
    startHeader(frame, header.load<U16>(fields.protocol));
    const U8 type = header.load<U8>(fields.packetType);
    if (type == sentToAll) std::fill_n(frame.begin(), macBytes, U8{0xff});
    if (header.load<U8>(fields.addressBytes) == macBytes)
        for (U32 i = 0; i < macBytes; ++i) frame[sourceAt + i] = header.load<U8>(fields.address + i);
    result.outgoing = type == sentByThisHost;
}

/// The EtherType for the version of an IP packet; 0 for others.
U16 etherTypeOf(ByteView packet) {
    switch (packet.load<U8>(0) >> 4) {
        case 4:
            return ipv4EtherType;
        case 6:
            return ipv6EtherType;
        default:
            return 0;
    }
}

}  // namespace

std::optional<LinkLayer> LinkLayer::of(int linkType) {
    switch (linkType) {
        case DLT_EN10MB:
            return LinkLayer(Kind::ethernet, ethernetBytes);
        case DLT_LINUX_SLL:
            return LinkLayer(Kind::cooked, 16);
        case DLT_LINUX_SLL2:
            return LinkLayer(Kind::cooked2, 20);
        case DLT_RAW:
        case DLT_IPV4:
        case DLT_IPV6:
            return LinkLayer(Kind::ip, 0);
        case DLT_NULL:
        case DLT_LOOP:
            return LinkLayer(Kind::family, 4);
        default:
            return std::nullopt;
    }
}

EthernetFrame LinkLayer::ethernet(std::span<const U8> bytes, U32 sentBytes) {
    EthernetFrame result{bytes, std::max(sentBytes, static_cast<U32>(bytes.size()))};
    if (kind_ == Kind::ethernet) return result;
    constexpr U32 mostPayload = std::numeric_limits<U32>::max() - ethernetBytes;
    const U32 sentPayload = result.sentBytes - std::min(headerBytes_, result.sentBytes);
    result.sentBytes = std::min(sentPayload, mostPayload) + ethernetBytes;
    if (bytes.size() < headerBytes_) {
        result.bytes = {};
        return result;
    }
    const ByteView header(bytes.data(), headerBytes_);
    const std::span<const U8> payload = bytes.subspan(headerBytes_);
    if (kind_ == Kind::cooked) startCooked(frame_, header, cooked, result);
    if (kind_ == Kind::cooked2) {
        startCooked(frame_, header, cooked2, result);
        result.ifIndex = header.load<U32>(cooked2IfIndex);
    }
    if (kind_ == Kind::ip || kind_ == Kind::family)
        startHeader(frame_, etherTypeOf(ByteView(payload.data(), static_cast<U32>(payload.size()))));
    frame_.insert(frame_.end(), payload.begin(), payload.end());
    result.bytes = frame_;
    return result;
}

}  // namespace DhcpTool
