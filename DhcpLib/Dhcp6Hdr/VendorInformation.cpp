#include "DhcpLib/Dhcp6Hdr/VendorInformation.h"

namespace DhcpLib {

Dhcp6VSI::Ptr dhcp6VSIFactory(const Dhcp6OptionPtr& opt) { return Kcore::makeNode<Dhcp6VSI>(opt); }
const Kcore::TypeData& Dhcp6VSI::typeData() const { return Kcore::typeDataOf<Dhcp6VSI>(); }
Dhcp6VSI::Ptr Dhcp6VSI::Dhcp6VSIIs(const Dhcp6OptionPtr& opt) { return dhcp6VSIFactory(opt); }

void Dhcp6VSI::handleInitialized() {
    if (!beginInitialization()) return;
    read(entno_);
}

CableLabsSubOption::Ptr cableLabsSubOptionFactory(const PktPtr& pkt, U16 offset) {
    return Kcore::makeNode<CableLabsSubOption>(pkt, offset);
}
const Kcore::TypeData& CableLabsSubOption::typeData() const { return Kcore::typeDataOf<CableLabsSubOption>(); }
CableLabsSubOption::Ptr CableLabsSubOption::CableLabsSubOptionIs(const PktPtr& pkt, U16 offset) {
    return cableLabsSubOptionFactory(pkt, offset);
}

void CableLabsSubOption::ip6AddrIs(const Kitnet::Ip6Addr& address, U16 fieldOffset) {
    Wire::store(writablePkt(), optionPosition(offset(), fieldOffset), address);
}

CableLabsSubOptions::Ptr cableLabsSubOptionsFactory(const PktPtr& pkt, U16 offset) {
    return Kcore::makeNode<CableLabsSubOptions>(pkt, offset);
}
const Kcore::TypeData& CableLabsSubOptions::typeData() const { return Kcore::typeDataOf<CableLabsSubOptions>(); }
CableLabsSubOptions::Ptr CableLabsSubOptions::CableLabsSubOptionsIs(const PktPtr& pkt, U16 offset) {
    return cableLabsSubOptionsFactory(pkt, offset);
}

void CableLabsSubOptions::handleInitialized() {
    if (!beginInitialization()) return;
    const Wire::ByteView bytes(pkt_.get());
    const auto inside = [&](U16 cursor) { return U32{offset_} + cursor < bytes.size(); };
    keepItems<Keeps::last>(pkt_, [&](auto visit) {
        walkItems<Option6Shape, U16>(bytes, offset_, 0, inside, [&](const auto& head, U16) { return visit(head); });
    });
}

}  // namespace DhcpLib
