#include "DhcpLib/Dhcp6MessageBuilder.h"

#include <algorithm>

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

Dhcp6Option::Ptr Dhcp6MessageBuilder::add(Dhcp6OptionType type, std::size_t len) { return addInside(0, type, len); }

Dhcp6Option::Ptr Dhcp6MessageBuilder::add(Dhcp6OptionType type, std::span<const U8> data) {
    Dhcp6Option::Ptr option = add(type, data.size());
    if (option) option->dataIs(data.data());
    return option;
}

Dhcp6Option::Ptr Dhcp6MessageBuilder::addNested(const Dhcp6Option::Ptr& outer, Dhcp6OptionType type, std::size_t len) {
    const auto at = std::find(last_.begin(), last_.end(), outer);
    if (at == last_.end()) return nullptr;
    if (U32{outer->offset()} + Dhcp6Const::optdata_offset + outer->len() != pkt_->bytes()) return nullptr;
    return addInside(static_cast<std::size_t>(at - last_.begin()) + 1, type, len);
}

Dhcp6Option::Ptr Dhcp6MessageBuilder::addInside(std::size_t depth, Dhcp6OptionType type, std::size_t len) {
    if (len > bytesLeft() || Dhcp6Const::optdata_offset > bytesLeft() - len) return nullptr;
    const U32 added = static_cast<U32>(Dhcp6Const::optdata_offset + len);
    // Everything that may throw comes before the first change.
    Dhcp6Option::Ptr option = dhcp6OptionFactory(pkt_, packetPosition(pkt_->bytes()));
    last_.reserve(depth + 1);
    pkt_->newSharedTailData(added);
    option->optTypeIs(type);
    option->lenIs(static_cast<U16>(len));
    last_.resize(depth);
    for (const Dhcp6Option::Ptr& outer : last_) outer->lenIs(static_cast<U16>(outer->len() + added));
    last_.push_back(option);
    return option;
}

}  // namespace DhcpLib
