#pragma once

#include "DhcpLib/DhcpHdr/Options.h"

namespace DhcpLib {

struct QuorvaSpecificSubOptionSubOptTraits {
    using Type = DhcpVendorSpecificDataType;
    using Shape = SubOptionShape;
};

/// View of a data item in the own vendor block: code (1), length (1), data. There are no pads.
class DHCPLIB_EXPORT QuorvaSpecificSubOptionSubOpt final : public TlvItem<QuorvaSpecificSubOptionSubOptTraits> {
public:
    using Ptr = Kcore::Ptr<QuorvaSpecificSubOptionSubOpt>;
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    using TlvItem::TlvItem;
    static Ptr QuorvaSpecificSubOptionSubOptIs(const PktPtr& pkt, U16 offset);

    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        return declarationOf<QuorvaSpecificSubOptionSubOpt>("QuorvaSpecificSubOptionSubOpt");
    }

private:
    [[no_unique_address]] KitSlab::Tracked<QuorvaSpecificSubOptionSubOpt> tracked_;
};

DHCPLIB_EXPORT QuorvaSpecificSubOptionSubOpt::Ptr quorvaSpecificSubOptionSubOptFactory(const PktPtr& pkt, U16 offset);

/// Header size of a vendor block, the part of the vendor-specific sub-option under one enterprise number (RFC 4243,
/// section 4). The block with Constants::quorvaEntNum is called the own block.
///   offset 0  enterprise number (4)     4  length of the data (1)     5  data items
inline constexpr U32 vendorBlockHeaderBytes = DhcpConst::entno_offset + 1;

/// The header of a vendor block.
struct VendorBlockHead {
    U32 entno;  ///< IANA enterprise number
    U8 len;     ///< number of data bytes
};
/// Reads the block at `pos`. False if its header is not in the packet.
template <std::unsigned_integral Pos>
bool vendorBlockAt(Wire::ByteView bytes, Pos pos, VendorBlockHead* head) {
    const Pos lenAt = static_cast<Pos>(pos + DhcpConst::entno_offset);
    if (!bytes.has(pos, DhcpConst::entno_offset) || !bytes.has(lenAt, 1)) return false;
    *head = {bytes.load<U32>(pos), bytes.load<U8>(lenAt)};
    return true;
}

/// Finds the own block among the blocks from `pos` on and stores its position in `*found`. The first block is always
/// examined (docs/compatibility.md#first-item-always-read). The walk ends when the blocks passed have `total` bytes or
/// more, or at a block whose header is not in the packet. Positions wrap in the width of `Pos`.
template <std::unsigned_integral Pos>
bool findQuorvaBlock(Wire::ByteView bytes, Pos pos, U32 total, Pos* found) {
    VendorBlockHead head;
    for (U32 passed = 0; vendorBlockAt(bytes, pos, &head);) {
        if (head.entno == Constants::quorvaEntNum) return *found = pos, true;
        const Pos next = static_cast<Pos>(pos + head.len + vendorBlockHeaderBytes);
        passed += head.len + vendorBlockHeaderBytes;
        if (passed >= total || next <= pos) return false;
        pos = next;
    }
    return false;
}

/// View of one vendor block, with its data items by code; the first one of a code is kept. Creating the view writes the
/// enterprise number and the length into the packet unless they are there already
/// (docs/compatibility.md#vendor-view-writes-its-header), then reads the `len` bytes after them. Throws
/// Tyk::InternalException "length value exceeds pkt-length." if the header does not fit.
class DHCPLIB_EXPORT DhcpVendorSpecificData final : public OptionMap<QuorvaSpecificSubOptionSubOpt> {
public:
    using Ptr = Kcore::Ptr<DhcpVendorSpecificData>;
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    DhcpVendorSpecificData(const PktPtr& pkt, U16 offset, U32 entno, U8 len)
        : pkt_(pkt), offset_(offset), entno_(entno), len_(len) {
        handleInitialized();
    }
    static Ptr DhcpVendorSpecificDataIs(const PktPtr& pkt, U16 offset, U32 entno, U8 len);
    void handleInitialized();

    const PktPtr& pkt() const { return pkt_; }
    U16 offset() const { return offset_; }
    /// The IANA enterprise number given to the constructor.
    U32 entno() const { return entno_; }
    /// The number of data bytes given to the constructor.
    U8 len() const { return len_; }

    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        using Kcore::attribute;
        using C = DhcpVendorSpecificData;
        return Kcore::declare("DhcpVendorSpecificData", attribute("pkt", &C::pkt_), attribute("offset", &C::offset_),
                              attribute("entno", &C::entno_), attribute("len", &C::len_),
                              attribute("option", [](const C& c) { return c.option(); }),
                              attribute("initialized", &C::initialized));
    }

private:
    void requireHeaderRoom() const;
    void writeHeader();
    U16 lenAt() const { return static_cast<U16>(offset_ + DhcpConst::entno_offset); }

    PktPtr pkt_;
    U16 offset_;
    U32 entno_;
    U8 len_;
    [[no_unique_address]] KitSlab::Tracked<DhcpVendorSpecificData> tracked_;
};

DHCPLIB_EXPORT DhcpVendorSpecificData::Ptr dhcpVendorSpecificDataFactory(const PktPtr& pkt, U16 offset, U32 entno,
                                                                         U8 len);

/// View of sub-option 9 that searches for the own block: `quorvaSpecificOpt`, null if there is none.
class DHCPLIB_EXPORT DhcpVendorSpecificSubOpt final : public Kcore::Node, public KitSlab::SlabObject {
public:
    using Ptr = Kcore::Ptr<DhcpVendorSpecificSubOpt>;
    static inline KitSlab::AllocationTracker memAllocationTracker_;

    explicit DhcpVendorSpecificSubOpt(const DhcpInformationSubOption::Ptr& opt) : opt_(opt) { handleInitialized(); }
    static Ptr DhcpVendorSpecificSubOptIs(const DhcpInformationSubOption::Ptr& opt);
    void handleInitialized();

    const DhcpInformationSubOption::Ptr& opt() const { return opt_; }
    /// The view of the own block; null if there is none.
    const DhcpVendorSpecificData::Ptr& quorvaSpecificOpt() const { return quorvaSpecificOpt_; }
    bool initialized() const { return initialized_; }

    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        using Kcore::attribute;
        using C = DhcpVendorSpecificSubOpt;
        return Kcore::declare("DhcpVendorSpecificSubOpt", attribute("opt", &C::opt_),
                              attribute("quorvaSpecificOpt", &C::quorvaSpecificOpt_),
                              attribute("initialized", &C::initialized_));
    }

private:
    DhcpInformationSubOption::Ptr opt_;
    DhcpVendorSpecificData::Ptr quorvaSpecificOpt_;
    bool initialized_ = false;
    [[no_unique_address]] KitSlab::Tracked<DhcpVendorSpecificSubOpt> tracked_;
};

DHCPLIB_EXPORT DhcpVendorSpecificSubOpt::Ptr dhcpVendorSpecificSubOptFactory(const DhcpInformationSubOption::Ptr& opt);

/// Stores the position of the own block in `*found`, as the view of the sub-option 9 at `offset` with `len` data bytes
/// finds it.
inline bool findQuorvaBlockOfSubOption(Wire::ByteView bytes, U16 offset, U8 len, U16* found) {
    // The bytes passed are counted from the sub-option's code, so its two header bytes are taken off the length
    // (docs/compatibility.md#vendor-search-counts-from-the-code).
    constexpr U8 shortestSearched = 3;
    if (len < shortestSearched) return false;
    const U16 first = static_cast<U16>(offset + DhcpConst::optdata_offset);
    return findQuorvaBlock<U16>(bytes, first, len - U32{DhcpConst::optdata_offset}, found);
}

}  // namespace DhcpLib
