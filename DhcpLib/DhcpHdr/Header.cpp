#include "DhcpLib/DhcpHdr/Header.h"

#include "Kcore/Assert.h"

namespace DhcpLib {

DhcpHdrWrapper::Ptr dhcpHdrWrapperFactory(const PktPtr& pkt, U32 offset) {
    return Kcore::makeNode<DhcpHdrWrapper>(pkt, offset);
}
const Kcore::TypeData& DhcpHdrWrapper::typeData() const { return Kcore::typeDataOf<DhcpHdrWrapper>(); }
DhcpHdrWrapper::Ptr DhcpHdrWrapper::DhcpHdrWrapperIs(const PktPtr& pkt, U32 offset) {
    return dhcpHdrWrapperFactory(pkt, offset);
}

DhcpHdr* DhcpHdrWrapper::header() {
    if (!hasHeader_ || !bytes().has(offset_, sizeof(DhcpHdr))) return nullptr;
    return reinterpret_cast<DhcpHdr*>(pkt()->data() + offset_);
}

void DhcpHdrWrapper::handleHeader() {
    if (!pkt() || U64{offset_} + sizeof(DhcpHdr) > pkt()->frontBytes())
        Kcore::assertionFailed("( offset_ + sizeof( DhcpHdr ) ) <= pkt_->frontBytes()",
                               "void DhcpLib::DhcpHdrWrapper::handleHeader()", "DhcpLib/DhcpHdr");
    hasHeader_ = true;
}

MagicCookie::Ptr magicCookieFactory(const PktPtr& pkt, U16 offset) { return Kcore::makeNode<MagicCookie>(pkt, offset); }
const Kcore::TypeData& MagicCookie::typeData() const { return Kcore::typeDataOf<MagicCookie>(); }
MagicCookie::Ptr MagicCookie::MagicCookieIs(const PktPtr& pkt, U16 offset) { return magicCookieFactory(pkt, offset); }

void MagicCookie::handleInitialized() {
    if (initialized_) return;
    cookie_ = bytes().loadRaw(offset_);
    isDhcpMagicCookie_ = cookie_ == Constants::dhcpMagicCookie;
    initialized_ = true;
}

}  // namespace DhcpLib
