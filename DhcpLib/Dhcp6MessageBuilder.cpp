#include "DhcpLib/Dhcp6MessageBuilder.h"

#include "Kcore/Exception.h"

namespace DhcpLib {

Dhcp6MessageBuilder::Dhcp6MessageBuilder(Dhcp6MsgType type, const Dhcp6Xid& xid, U32 maxBytes)
    : pkt_(Kitnet::globalPktManager().newPkt()), maxBytes_(maxBytes) {
    if (isDhcp6RelayMsg(type)) Kcore::throwException("Dhcp6MessageBuilder: a relay message has no transaction id");
    start(Dhcp6Const::reghdr_size);
    Dhcp6RegHdr header(pkt_, 0);
    header.msgTypeIs(type);
    header.xidIs(xid);
}

Dhcp6MessageBuilder::Dhcp6MessageBuilder(Dhcp6MsgType type, U8 hopCount, const Kitnet::Ip6Addr& linkAddr,
                                         const Kitnet::Ip6Addr& peerAddr, U32 maxBytes)
    : pkt_(Kitnet::globalPktManager().newPkt()), maxBytes_(maxBytes) {
    if (!isDhcp6RelayMsg(type)) Kcore::throwException("Dhcp6MessageBuilder: not a relay message's type");
    start(Dhcp6Const::relayhdr_size);
    Dhcp6RelayHdr header(pkt_, 0);
    header.msgTypeIs(type);
    header.hopCountIs(hopCount);
    header.linkAddrIs(linkAddr);
    header.peerAddrIs(peerAddr);
}

void Dhcp6MessageBuilder::start(U32 headerBytes) {
    if (maxBytes_ < headerBytes || maxBytes_ > largestMessage)
        Kcore::throwException("Dhcp6MessageBuilder: maxBytes is out of range");
    pkt_->newSharedTailData(headerBytes);
}

Dhcp6Option::Ptr Dhcp6MessageBuilder::add(Dhcp6OptionType type, std::size_t len) {
    if (len > bytesLeft() || Dhcp6Const::optdata_offset > bytesLeft() - len) return nullptr;
    const U16 at = packetPosition(pkt_->bytes());
    pkt_->newSharedTailData(static_cast<U32>(Dhcp6Const::optdata_offset + len));
    const Dhcp6Option::Ptr option = dhcp6OptionFactory(pkt_, at);
    option->optTypeIs(type);
    option->lenIs(static_cast<U16>(len));
    return option;
}

Dhcp6Option::Ptr Dhcp6MessageBuilder::add(Dhcp6OptionType type, std::span<const U8> data) {
    const Dhcp6Option::Ptr option = add(type, data.size());
    if (option) option->dataIs(data.data());
    return option;
}

Dhcp6Option::Ptr Dhcp6MessageBuilder::addNested(const Dhcp6Option::Ptr& outer, Dhcp6OptionType type, std::size_t len) {
    const U32 outerEnd = U32{outer->offset()} + Dhcp6Const::optdata_offset + outer->len();
    if (outer->pkt() != pkt_ || outerEnd != pkt_->bytes()) return nullptr;
    const Dhcp6Option::Ptr option = add(type, len);
    if (option) outer->lenIs(static_cast<U16>(outer->len() + Dhcp6Const::optdata_offset + len));
    return option;
}

}  // namespace DhcpLib
