#include "DhcpLib/DhcpHdr/VendorBlock.h"

namespace DhcpLib {

QuorvaSpecificSubOptionSubOpt::Ptr quorvaSpecificSubOptionSubOptFactory(const PktPtr& pkt, U16 offset) {
    return Kcore::makeNode<QuorvaSpecificSubOptionSubOpt>(pkt, offset);
}
const Kcore::TypeData& QuorvaSpecificSubOptionSubOpt::typeData() const {
    return Kcore::typeDataOf<QuorvaSpecificSubOptionSubOpt>();
}
QuorvaSpecificSubOptionSubOpt::Ptr QuorvaSpecificSubOptionSubOpt::QuorvaSpecificSubOptionSubOptIs(const PktPtr& pkt,
                                                                                                  U16 offset) {
    return quorvaSpecificSubOptionSubOptFactory(pkt, offset);
}

DhcpVendorSpecificData::Ptr dhcpVendorSpecificDataFactory(const PktPtr& pkt, U16 offset, U32 entno, U8 len) {
    return Kcore::makeNode<DhcpVendorSpecificData>(pkt, offset, entno, len);
}
const Kcore::TypeData& DhcpVendorSpecificData::typeData() const { return Kcore::typeDataOf<DhcpVendorSpecificData>(); }
DhcpVendorSpecificData::Ptr DhcpVendorSpecificData::DhcpVendorSpecificDataIs(const PktPtr& pkt, U16 offset, U32 entno,
                                                                             U8 len) {
    return dhcpVendorSpecificDataFactory(pkt, offset, entno, len);
}

void DhcpVendorSpecificData::handleInitialized() {
    if (initialized()) return;
    requireHeaderRoom();
    beginInitialization();
    keepItems(pkt_, [this](auto visit) {
        walkSubItems(Wire::ByteView(*pkt_), offset_, vendorBlockHeaderBytes, len_, visit);
    });
    writeHeader();
}

void DhcpVendorSpecificData::requireHeaderRoom() const {
    const Wire::ByteView bytes(pkt_.get());
    if (!bytes.has(offset_, DhcpConst::entno_offset) || !bytes.has(lenAt(), sizeof len_)) Wire::throwNoRoom();
}

/// Does not write bytes that are equal already, so that reading a block never dirties a shared packet.
void DhcpVendorSpecificData::writeHeader() {
    const Wire::ByteView bytes(*pkt_);
    if (bytes.load<U32>(offset_) != entno_) Wire::store<U32>(*pkt_, offset_, entno_);
    if (bytes.load<U8>(lenAt()) != len_) Wire::store<U8>(*pkt_, lenAt(), len_);
}

DhcpVendorSpecificSubOpt::Ptr dhcpVendorSpecificSubOptFactory(const DhcpInformationSubOption::Ptr& opt) {
    return Kcore::makeNode<DhcpVendorSpecificSubOpt>(opt);
}
const Kcore::TypeData& DhcpVendorSpecificSubOpt::typeData() const {
    return Kcore::typeDataOf<DhcpVendorSpecificSubOpt>();
}
DhcpVendorSpecificSubOpt::Ptr DhcpVendorSpecificSubOpt::DhcpVendorSpecificSubOptIs(
    const DhcpInformationSubOption::Ptr& opt) {
    return dhcpVendorSpecificSubOptFactory(opt);
}

void DhcpVendorSpecificSubOpt::handleInitialized() {
    if (initialized_) return;
    initialized_ = true;
    if (!opt_) return;
    const Wire::ByteView bytes(opt_->pkt().get());
    U16 block = 0;
    VendorBlockHead head;
    if (!findQuorvaBlockOfSubOption(bytes, opt_->offset(), opt_->len(), &block)) return;
    if (vendorBlockAt(bytes, block, &head))
        quorvaSpecificOpt_ = dhcpVendorSpecificDataFactory(opt_->pkt(), block, head.entno, head.len);
}

}  // namespace DhcpLib
