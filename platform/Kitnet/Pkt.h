#pragma once

#include <atomic>
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

/// A packet: one contiguous block of bytes that can grow at both ends and shrink at its tail. Used by one thread at a
/// time; only its use count may be touched from several.
///
///   | head room |  bytes()  | tail room | guardBytes |
///               ^ data()
///
/// Whatever grows or shrinks the packet makes every pointer into it stale; positions stay good, except that growth by
/// n at the head adds n to each.
class DHCPPLATFORM_EXPORT Pkt final : public Kcore::Node, public KitSlab::SlabObject {
public:
    /// How the bytes are kept. `roomy`: with room at both ends, so that the usual growth moves nothing. `tight`: in
    /// storage of exactly bytes() bytes that moves at every growth and shrink, so that an address sanitizer sees each
    /// use of a stale pointer and each access behind the packet.
    enum class Storage : U8 { roomy, tight };
    class Manager;

    /// Room of a new packet at either end.
    static constexpr U32 headRoom = 128, tailRoom = 1024;
    /// With roomy storage, at least this many bytes behind bytes() can be read at any time. They are no part of the
    /// packet: zero as long as it does not shrink, what it held there after it has.
    static constexpr U32 guardBytes = 1024;

    ~Pkt() override;
    const Kcore::TypeData& typeData() const override;
    static constexpr auto declaration() {
        return Kcore::declare(
            "Pkt", Kcore::attribute("bytes", &Pkt::bytes_), Kcore::attribute("vlanTagPresent", &Pkt::vlanTagPresent_),
            Kcore::attribute("vlanTagTpid", &Pkt::vlanTagTpid_), Kcore::attribute("vlanTagTci", &Pkt::vlanTagTci_));
    }

    /// The number of bytes in the packet.
    U32 bytes() const { return bytes_; }
    /// The number of bytes that can be addressed from data() on: all of them.
    U32 frontBytes() const { return bytes_; }
    U8* data() { return data_; }
    const U8* data() const { return data_; }

    /// Grows the packet by `n` zero bytes, in front of its first byte or behind its last. Raises RangeException, and
    /// changes nothing, if it would have more than 4294967295 bytes.
    void newSharedHeadData(U32 n);
    void newSharedTailData(U32 n);
    /// Takes the last `n` bytes away. Raises RangeException, and changes nothing, if there are fewer.
    void delSharedTailData(U32 n);

    /// The 802.1Q tag that the receive path took out of the frame and delivers beside it; both numbers in host order,
    /// and 0 where there is no such tag.
    bool vlanTagPresent() const { return vlanTagPresent_; }
    U16 vlanTagTpid() const { return vlanTagTpid_; }
    U16 vlanTagTci() const { return vlanTagTci_; }
    void vlanTagIs(U16 tpid, U16 tci);
    void vlanTagDel();

    static KitSlab::AllocationTracker memAllocationTracker_;

private:
    Pkt(std::span<const U8> bytes, Storage storage);

    U32 grownBy(U32 n) const;
    void makeRoom(std::size_t head, std::size_t tail);
    void move(std::size_t head, U32 kept, std::size_t tail);
    std::size_t freeHead() const { return static_cast<std::size_t>(data_ - storage_.get()); }

    U8* data_ = nullptr;
    U32 bytes_ = 0;
    U16 vlanTagTpid_ = 0;
    U16 vlanTagTci_ = 0;
    bool vlanTagPresent_ = false;
    const Storage mode_;
    std::unique_ptr<U8[]> storage_;
    std::size_t freeTail_ = 0;  // behind the packet, guard bytes included
    [[no_unique_address]] KitSlab::Tracked<Pkt> tracked_;
};

/// Makes packets. They keep the storage mode that the manager had when they were made.
class DHCPPLATFORM_EXPORT Pkt::Manager {
public:
    explicit Manager(Storage storage) : storage_(storage) {}

    Kcore::Ptr<Pkt> newPkt() { return newPkt({}); }
    /// A packet with a copy of `bytes`. Raises RangeException for more than 4294967295 of them.
    Kcore::Ptr<Pkt> newPkt(std::span<const U8> bytes);

    Storage storage() const { return storage_.load(std::memory_order_relaxed); }
    void storageIs(Storage storage) { storage_.store(storage, std::memory_order_relaxed); }

private:
    std::atomic<Storage> storage_;
};

/// The manager of the process. Roomy, unless the environment said DHCPLIB_PKT_STORAGE=tight at the first call.
DHCPPLATFORM_EXPORT Pkt::Manager& globalPktManager();

}  // namespace Kitnet
