#include "DhcpLib/Dhcp6Hdr/RelayIdentification.h"

namespace DhcpLib {

Dhcp6VirtualSubnetSelection::Ptr dhcp6VirtualSubnetSelectionFactory(const Dhcp6OptionPtr& opt) {
    return Kcore::makeNode<Dhcp6VirtualSubnetSelection>(opt);
}
const Kcore::TypeData& Dhcp6VirtualSubnetSelection::typeData() const {
    return Kcore::typeDataOf<Dhcp6VirtualSubnetSelection>();
}
Dhcp6VirtualSubnetSelection::Ptr Dhcp6VirtualSubnetSelection::Dhcp6VirtualSubnetSelectionIs(const Dhcp6OptionPtr& opt) {
    return dhcp6VirtualSubnetSelectionFactory(opt);
}

void Dhcp6VirtualSubnetSelection::handleInitialized() {
    if (!beginInitialization()) return;
    read(vssType_);
    vrfName_ = text(Dhcp6Const::vrfName_offset, static_cast<U8>(optLen() - Dhcp6Const::vssType_size));
}

void Dhcp6VirtualSubnetSelection::vrfNameIs(const L3::VrfName& name) {
    if (!name.empty()) store(Dhcp6Const::vrfName_offset, name.view());
    vrfName_ = name;
}

DhcpLinkLayerAddr::Ptr dhcpLinkLayerAddrFactory(const Dhcp6OptionPtr& opt) {
    return Kcore::makeNode<DhcpLinkLayerAddr>(opt);
}
const Kcore::TypeData& DhcpLinkLayerAddr::typeData() const { return Kcore::typeDataOf<DhcpLinkLayerAddr>(); }
DhcpLinkLayerAddr::Ptr DhcpLinkLayerAddr::DhcpLinkLayerAddrIs(const Dhcp6OptionPtr& opt) {
    return dhcpLinkLayerAddrFactory(opt);
}

void DhcpLinkLayerAddr::handleInitialized() {
    if (!beginInitialization()) return;
    read(llAddrType_);
    read(llAddr_);
}

}  // namespace DhcpLib
