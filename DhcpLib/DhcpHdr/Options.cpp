#include "DhcpLib/DhcpHdr/Options.h"

namespace DhcpLib {

DhcpMsgOption::Ptr dhcpMsgOptionFactory(const PktPtr& pkt, U16 offset) {
    return Kcore::makeNode<DhcpMsgOption>(pkt, offset);
}
DhcpMsgOption::Ptr DhcpMsgOption::DhcpMsgOptionIs(const PktPtr& pkt, U16 offset) {
    return dhcpMsgOptionFactory(pkt, offset);
}

DhcpInformationSubOption::Ptr dhcpInformationSubOptionFactory(const PktPtr& pkt, U16 offset) {
    return Kcore::makeNode<DhcpInformationSubOption>(pkt, offset);
}
DhcpInformationSubOption::Ptr DhcpInformationSubOption::DhcpInformationSubOptionIs(const PktPtr& pkt, U16 offset) {
    return dhcpInformationSubOptionFactory(pkt, offset);
}

DhcpMsgOptions::Ptr dhcpMsgOptionsFactory(const PktPtr& pkt, U16 offset) {
    return Kcore::makeNode<DhcpMsgOptions>(pkt, offset);
}
DhcpMsgOptions::Ptr DhcpMsgOptions::DhcpMsgOptionsIs(const PktPtr& pkt, U16 offset) {
    return dhcpMsgOptionsFactory(pkt, offset);
}

void DhcpMsgOptions::handleInitialized() {
    if (!beginInitialization()) return;
    keepItems(pkt_, [this](auto visit) { walkMsgOptions(Wire::ByteView(pkt_.get()), offset_, 0, visit); });
}

DhcpInformationSubOptions::Ptr dhcpInformationSubOptionsFactory(const DhcpMsgOption::Ptr& opt) {
    return Kcore::makeNode<DhcpInformationSubOptions>(opt);
}
DhcpInformationSubOptions::Ptr DhcpInformationSubOptions::DhcpInformationSubOptionsIs(const DhcpMsgOption::Ptr& opt) {
    return dhcpInformationSubOptionsFactory(opt);
}

void DhcpInformationSubOptions::handleInitialized() {
    if (!beginInitialization() || !opt_) return;
    const PktPtr& pkt = opt_->pkt();
    keepItems(pkt, [&](auto visit) {
        walkSubItems(Wire::ByteView(pkt.get()), opt_->offset(), DhcpConst::optdata_offset, opt_->len(), visit);
    });
}

}  // namespace DhcpLib
