#include "DhcpLib/Dhcp6Hdr/Headers.h"

#include <charconv>

namespace DhcpLib {

namespace {

constexpr std::string_view xidPrefix = "0x";
constexpr std::size_t xidDigits = 2 * Dhcp6Const::xid_size;

}  // namespace

void Dhcp6Xid::appendText(std::string& out) const {
    // Bit 24 keeps the leading zeros.
    const U32 marked = 1u << 24 | U32{bytes_[0]} << 16 | U32{bytes_[1]} << 8 | bytes_[2];
    char digits[1 + xidDigits];
    std::to_chars(digits, digits + sizeof digits, marked, 16);
    out.append(xidPrefix).append(digits + 1, xidDigits);
}

bool Dhcp6Xid::parse(std::string_view text, Dhcp6Xid* value) {
    if (!text.starts_with(xidPrefix) || text.size() != xidPrefix.size() + xidDigits) return false;
    U32 number = 0;
    const char* const end = text.data() + text.size();
    if (std::from_chars(text.data() + xidPrefix.size(), end, number, 16).ptr != end) return false;
    *value = {static_cast<U8>(number >> 16), static_cast<U8>(number >> 8), static_cast<U8>(number)};
    return true;
}

Dhcp6HdrBase::~Dhcp6HdrBase() = default;

const Kcore::TypeData& Dhcp6HdrBase::typeData() const { return Kcore::typeDataOf<Dhcp6HdrBase>(); }

void Dhcp6HdrBase::handleInitializedBase() {
    if (std::exchange(initializedBase_, true)) return;
    read(msg_);
}

Dhcp6RegHdr::Ptr dhcp6RegHdrFactory(const PktPtr& pkt, U16 offset) { return Kcore::makeNode<Dhcp6RegHdr>(pkt, offset); }
const Kcore::TypeData& Dhcp6RegHdr::typeData() const { return Kcore::typeDataOf<Dhcp6RegHdr>(); }
Dhcp6RegHdr::Ptr Dhcp6RegHdr::Dhcp6RegHdrIs(const PktPtr& pkt, U16 offset) { return dhcp6RegHdrFactory(pkt, offset); }

void Dhcp6RegHdr::handleInitialized() {
    if (std::exchange(initialized_, true)) return;
    read(xid_);
}

Dhcp6RelayHdr::Ptr dhcp6RelayHdrFactory(const PktPtr& pkt, U16 offset) {
    return Kcore::makeNode<Dhcp6RelayHdr>(pkt, offset);
}
const Kcore::TypeData& Dhcp6RelayHdr::typeData() const { return Kcore::typeDataOf<Dhcp6RelayHdr>(); }
Dhcp6RelayHdr::Ptr Dhcp6RelayHdr::Dhcp6RelayHdrIs(const PktPtr& pkt, U16 offset) {
    return dhcp6RelayHdrFactory(pkt, offset);
}

void Dhcp6RelayHdr::handleInitialized() {
    if (std::exchange(initialized_, true)) return;
    read(hopCount_);
    read(linkAddr_);
    read(peerAddr_);
}

U8 Dhcp6RelayHdr::hopCountInc(U8 n) {
    hopCountIs(static_cast<U8>(hopCount() + n));
    return hopCount();
}

}  // namespace DhcpLib
