#include "Frame.h"

#include "DhcpLib/Constants.h"
#include "DhcpLib/Wire.h"
#include "Kitnet/InternetChecksum.h"
#include "Kitnet/IpHdr.h"

namespace DhcpRelay {

namespace {

using DhcpLib::Constants;
using DhcpLib::Wire::ByteView;
using DhcpLib::Wire::store;

constexpr U32 macBytes = 6, tagBytes = 4, etherBytes = 14;
constexpr U32 ip4Bytes = 20, ip6Bytes = 40, udpBytes = 8, fragmentBytes = 8;
constexpr U16 ip4Type = 0x0800, ip6Type = 0x86dd;
constexpr U16 moreFragments = 0x2000, fragmentOffset = 0x1fff;
constexpr U8 udpProtocol = 17, fragmentHeader = 44, hopLimit = 64;

bool isTag(U16 etherType) { return etherType == 0x8100 || etherType == 0x88a8 || etherType == 0x9100; }
bool isServedTag(U16 etherType) { return etherType == 0x8100 || etherType == 0x88a8; }

std::span<const U8> part(ByteView bytes, U32 pos, U32 n) { return {bytes.data() + pos, n}; }

/// The checksum's part for the pseudo header (RFC 768; RFC 8200, section 8.1).
U64 pseudoSum(const IpGenAddr& src, const IpGenAddr& dst, U32 udpLength) {
    U64 sum = udpProtocol + U64{udpLength};
    for (const IpGenAddr* a : {&src, &dst})
        sum += a->isV4() ? Kitnet::internetSum({a->v4Addr().bytes(), sizeof(IpAddr)})
                         : Kitnet::internetSum({a->v6Addr().bytes(), sizeof(Ip6Addr)});
    return sum;
}

/// The walk over a frame's headers.
class FrameReader {
public:
    FrameReader(const ArrivedFrame& frame, const Links& links, std::size_t link, Transaction& t)
        : frame_(frame), links_(links), link_(link), bytes_(*frame.pkt), t_(t) {}

    Receipt read() {
        if (!readEthernet()) return {};
        const bool isIp = t_.protocol == Protocol::dhcp4 ? readIp4() : readIp6();
        if (!isIp || (reason_ == Reason::none && !readUdp())) return {};
        if (reason_ == Reason::none) checkPort();
        return {true, reason_};
    }

private:
    /// Returns false for a frame that is not IP or is for another host.
    bool readEthernet() {
        if (!bytes_.has(0, etherBytes)) return false;
        t_.dstMac = bytes_.load<EthAddr>(0);
        t_.srcMac = bytes_.load<EthAddr>(macBytes);
        at_ = etherBytes;
        U16 type = bytes_.load<U16>(at_ - 2);
        if (frame_.pkt->vlanTagPresent()) takeTag(frame_.pkt->vlanTagTpid(), frame_.pkt->vlanTagTci());
        while (isTag(type)) {
            takeTag(type, bytes_.load<U16>(at_));
            at_ += tagBytes;
            type = bytes_.load<U16>(at_ - 2);
        }
        t_.protocol = type == ip4Type ? Protocol::dhcp4 : Protocol::dhcp6;
        const bool isGroup = (t_.dstMac.byte(0) & 1) != 0;
        return (type == ip4Type || type == ip6Type) &&
               (isGroup || t_.dstMac == links_.clients()[link_].device.macAddr());
    }

    void takeTag(U16 tpid, U16 tci) {
        if (tags_++ == 0) tag_ = {tpid, tci};
    }

    bool readIp4() {
        const U32 headerBytes = Kitnet::IpHdr(*frame_.pkt, at_).headerBytes();
        if (!bytes_.has(at_, ip4Bytes) || bytes_.load<U8>(at_ + 9) != udpProtocol) return false;
        const U32 total = bytes_.load<U16>(at_ + 2);
        t_.src = bytes_.load<IpAddr>(at_ + 12);
        t_.dst = bytes_.load<IpAddr>(at_ + 16);
        const U16 fragment = bytes_.load<U16>(at_ + 6);
        if ((fragment & fragmentOffset) != 0) return false;
        if (bytes_.load<U8>(at_) >> 4 != 4 || headerBytes < ip4Bytes || total < headerBytes + udpBytes ||
            !bytes_.has(at_, total)) {
            reason_ = Reason::cutFrame;
            return bytes_.has(at_, headerBytes + udpBytes) && isForRelay(at_ + headerBytes);
        }
        if (Kitnet::internetChecksum(Kitnet::internetSum(part(bytes_, at_, headerBytes))) != 0)
            reason_ = Reason::badChecksum;
        else if ((fragment & moreFragments) != 0)
            reason_ = Reason::fragment;
        at_ += headerBytes;
        payload_ = total - headerBytes;
        return isForRelay(at_);
    }

    bool readIp6() {
        if (!bytes_.has(at_, ip6Bytes) || bytes_.load<U8>(at_ + 6) != udpProtocol) return false;
        payload_ = bytes_.load<U16>(at_ + 4);
        t_.src = bytes_.load<Ip6Addr>(at_ + 8);
        t_.dst = bytes_.load<Ip6Addr>(at_ + 24);
        const bool isVersion6 = bytes_.load<U8>(at_) >> 4 == 6;
        at_ += ip6Bytes;
        if (!isVersion6 || payload_ < udpBytes || !bytes_.has(at_, payload_)) reason_ = Reason::cutFrame;
        return isForRelay(at_);
    }

    bool isForRelay(U32 udpAt) const {
        const U16 port = t_.protocol == Protocol::dhcp4 ? Constants::dhcpServerPort : Constants::dhcp6ServerPort;
        return bytes_.load<U16>(udpAt + 2) == port;
    }

    bool readUdp() {
        const U32 length = bytes_.load<U16>(at_ + 4);
        if (length < udpBytes || length > payload_) {
            reason_ = Reason::cutFrame;
            return true;
        }
        const U16 checksum = bytes_.load<U16>(at_ + 6);
        const bool hasChecksum = checksum != 0 || t_.protocol == Protocol::dhcp6;  // RFC 8200, section 8.1
        if (frame_.checksumReady && hasChecksum &&
            (checksum == 0 || Kitnet::internetChecksum(pseudoSum(t_.src, t_.dst, length) +
                                                       Kitnet::internetSum(part(bytes_, at_, length))) != 0))
            reason_ = Reason::badChecksum;
        t_.pkt = frame_.pkt;
        t_.at = at_ + udpBytes;
        t_.pkt->delSharedTailData(t_.pkt->bytes() - (at_ + length));
        return true;
    }

    void checkPort() {
        if (tags_ > 1) {
            reason_ = Reason::twoTags;
            return;
        }
        t_.port = links_.nativePort(link_);
        if (tags_ == 1) {
            if (tag_.vlan() != 0) t_.port.vlan = tag_.vlan();
            t_.port.tag = tag_;
        }
        if ((tags_ == 1 && !isServedTag(tag_.tpid)) || !links_.serves(t_.port)) reason_ = Reason::vlanNotServed;
    }

    const ArrivedFrame& frame_;
    const Links& links_;
    const std::size_t link_;
    const ByteView bytes_;
    Transaction& t_;
    U32 at_ = 0, payload_ = 0;
    unsigned tags_ = 0;
    VlanTag tag_;
    Reason reason_ = Reason::none;
};

void storeUdp(Kitnet::Pkt& pkt, U32 at, const Destination& to) {
    const U32 length = pkt.bytes() - at;
    store<U16>(pkt, at, to.srcPort);
    store<U16>(pkt, at + 2, to.dstPort);
    store<U16>(pkt, at + 4, static_cast<U16>(length));
    store<U16>(pkt, at + 6, 0);
    const U16 sum =
        Kitnet::internetChecksum(pseudoSum(to.src, to.dst, length) + Kitnet::internetSum({pkt.data() + at, length}));
    store<U16>(pkt, at + 6, sum != 0 ? sum : U16{0xffff});
}

/// The IP header of a packet, or of a fragment of one: `offset` and `more` are those of its payload.
struct IpPart {
    U32 payloadBytes;
    U32 offset;
    bool more;
    bool isFragment;
    U32 id;
};

void storeIp4(Kitnet::Pkt& pkt, U32 at, const Destination& to, const IpPart& p) {
    store<U16>(pkt, at, 0x4500);
    store<U16>(pkt, at + 2, static_cast<U16>(ip4Bytes + p.payloadBytes));
    store<U16>(pkt, at + 4, static_cast<U16>(p.id));
    store<U16>(pkt, at + 6, static_cast<U16>(p.offset / 8 | (p.more ? moreFragments : 0)));
    store<U8>(pkt, at + 8, hopLimit);
    store<U8>(pkt, at + 9, udpProtocol);
    store<U16>(pkt, at + 10, 0);
    store(pkt, at + 12, to.src.v4Addr());
    store(pkt, at + 16, to.dst.v4Addr());
    store<U16>(pkt, at + 10, Kitnet::internetChecksum(Kitnet::internetSum({pkt.data() + at, ip4Bytes})));
}

void storeIp6(Kitnet::Pkt& pkt, U32 at, const Destination& to, const IpPart& p) {
    store<U32>(pkt, at, 0x60000000);
    store<U16>(pkt, at + 4, static_cast<U16>(p.payloadBytes + (p.isFragment ? fragmentBytes : 0)));
    store<U8>(pkt, at + 6, p.isFragment ? fragmentHeader : udpProtocol);
    store<U8>(pkt, at + 7, hopLimit);
    store(pkt, at + 8, to.src.v6Addr());
    store(pkt, at + 24, to.dst.v6Addr());
    if (!p.isFragment) return;
    store<U8>(pkt, at + ip6Bytes, udpProtocol);
    store<U8>(pkt, at + ip6Bytes + 1, 0);
    store<U16>(pkt, at + ip6Bytes + 2, static_cast<U16>(p.offset | (p.more ? 1u : 0u)));
    store<U32>(pkt, at + ip6Bytes + 4, p.id);
}

U32 ipHeaderBytes(const Destination& to, bool isFragment) {
    return to.dst.isV4() ? ip4Bytes : ip6Bytes + (isFragment ? fragmentBytes : 0);
}

/// Grows the packet, which is the IP payload, at its head.
void putHeaders(Kitnet::Pkt& pkt, const Destination& to, const IpPart& p) {
    pkt.newSharedHeadData(etherBytes + ipHeaderBytes(to, p.isFragment));
    store(pkt, 0, to.dstMac);
    store(pkt, macBytes, to.srcMac);
    store<U16>(pkt, 2 * macBytes, to.dst.isV4() ? ip4Type : ip6Type);
    if (to.tag.isPresent()) pkt.vlanTagIs(to.tag.tpid, to.tag.tci);
    if (to.dst.isV4())
        storeIp4(pkt, etherBytes, to, p);
    else
        storeIp6(pkt, etherBytes, to, p);
}

}  // namespace

Receipt receiveFrame(const ArrivedFrame& frame, const Links& links, std::size_t link, Transaction& t) {
    t.side = Side::client;
    return FrameReader(frame, links, link, t).read();
}

std::vector<PktPtr> framesOf(const PktPtr& message, const Destination& to, U32 mtu) {
    static U32 lastId = 0;
    message->newSharedHeadData(udpBytes);
    storeUdp(*message, 0, to);
    const U32 total = message->bytes();
    if (mtu == 0 || ipHeaderBytes(to, false) + total <= mtu) {
        putHeaders(*message, to, {total, 0, false, false, 0});
        return {message};
    }
    const U32 headerBytes = ipHeaderBytes(to, true);
    const U32 step = mtu > headerBytes + 8 ? (mtu - headerBytes) / 8 * 8 : 8;
    std::vector<PktPtr> frames;
    ++lastId;
    for (U32 offset = 0; offset < total; offset += step) {
        const U32 bytes = std::min(step, total - offset);
        frames.push_back(Kitnet::globalPktManager().newPkt({message->data() + offset, bytes}));
        putHeaders(*frames.back(), to, {bytes, offset, offset + bytes < total, true, lastId});
    }
    return frames;
}

}  // namespace DhcpRelay
