#pragma once

#include <memory>
#include <span>

#include "Kcore/Ptr.h"
#include "Kcore/TypeData.h"
#include "Kcore/Types.h"
#include "KitSlab/Slab.h"

namespace Kitnet {

using Kcore::U16;
using Kcore::U32;
using Kcore::U8;

/// A packet: one contiguous buffer that can grow at both ends and shrink at its tail. Used by one thread at a time,
/// except for its use count.
///
///    | head room |  bytes()  | tail room | guardBytes |
///                ^ data()
///
/// Growing or shrinking the packet makes every pointer into it stale. Positions stay valid, but growing by n at the
/// head shifts each by n.
class DHCPPLATFORM_EXPORT Pkt final : public Kcore::Node, public KitSlab::SlabObject {
public:
    /// How the bytes are stored. `roomy`: with spare room at both ends, so that usual growth moves nothing. `tight`: in
    /// storage of exactly bytes() bytes that moves whenever the size changes, so that an address sanitizer detects
    /// stale pointers and accesses past the end.
    enum class Storage : U8 { roomy, tight };
    class Manager;

    /// Spare room of a new packet.
    static constexpr U32 headRoom = 128, tailRoom = 1024;  ///< bytes in front of and after the packet
    /// With roomy storage at least this many bytes after bytes() are readable. They are not part of the packet. They
    /// are zero until the packet shrinks, then they may hold its former bytes.
    static constexpr U32 guardBytes = 1024;

    ~Pkt() override;
    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        return Kcore::declare(
            "Pkt", Kcore::attribute("bytes", &Pkt::bytes_), Kcore::attribute("vlanTagPresent", &Pkt::vlanTagPresent_),
            Kcore::attribute("vlanTagTpid", &Pkt::vlanTagTpid_), Kcore::attribute("vlanTagTci", &Pkt::vlanTagTci_));
    }

    /// Number of bytes in the packet.
    U32 bytes() const { return bytes_; }
    /// Number of bytes that can be addressed from data(): all of them.
    U32 frontBytes() const { return bytes_; }
    U8* data() { return data_; }
    const U8* data() const { return data_; }

    /// Grow the packet by `n` zero bytes in front of its first byte, or after its last one. Throw RangeException and
    /// change nothing if it would have more than 4294967295 bytes.
    void newSharedHeadData(U32 n);
    /// As newSharedHeadData(), after the last byte.
    void newSharedTailData(U32 n);
    /// Removes the last `n` bytes. Throws only RangeException, if there are fewer; it then changes nothing.
    void delSharedTailData(U32 n);

    /// The out-of-band 802.1Q tag: the receive path took it out of the frame. TPID and TCI are in host order, and 0 if
    /// there is no tag.
    bool vlanTagPresent() const { return vlanTagPresent_; }
    /// TPID of the tag.
    U16 vlanTagTpid() const { return vlanTagTpid_; }
    /// TCI of the tag: priority (3 bits), drop eligible (1), VLAN (12).
    U16 vlanTagTci() const { return vlanTagTci_; }
    /// Stores a tag beside the packet. The bytes stay as they are.
    void vlanTagIs(U16 tpid, U16 tci);
    /// Removes the tag beside the packet.
    void vlanTagDel();

    static KitSlab::AllocationTracker memAllocationTracker_;

private:
    Pkt(std::span<const U8> bytes, Storage storage);

    U32 grownBy(U32 n) const;
    void makeRoom(U32 head, U32 tail);
    void move(Kcore::U64 head, U32 kept, Kcore::U64 tail);
    std::size_t freeHead() const { return static_cast<std::size_t>(data_ - storage_.get()); }

    U8* data_ = nullptr;
    U32 bytes_ = 0;
    U16 vlanTagTpid_ = 0;
    U16 vlanTagTci_ = 0;
    bool vlanTagPresent_ = false;
    const Storage mode_;
    std::unique_ptr<U8[]> storage_;
    std::size_t freeTail_ = 0;  // after the packet, including the guard bytes
    [[no_unique_address]] KitSlab::Tracked<Pkt> tracked_;
};

/// Makes packets of one storage mode.
class DHCPPLATFORM_EXPORT Pkt::Manager {
public:
    /// A manager of that storage mode.
    explicit Manager(Storage storage) : storage_(storage) {}

    /// An empty packet.
    Kcore::Ptr<Pkt> newPkt() { return newPkt({}); }
    /// A packet with a copy of `bytes`. Throws RangeException for more than 4294967295 bytes.
    Kcore::Ptr<Pkt> newPkt(std::span<const U8> bytes);

    /// Storage mode of new packets.
    Storage storage() const { return storage_; }

private:
    const Storage storage_;
};

/// The manager of the process. Storage is roomy unless the environment has DHCPLIB_PKT_STORAGE=tight at the first call.
DHCPPLATFORM_EXPORT Pkt::Manager& globalPktManager();

}  // namespace Kitnet
